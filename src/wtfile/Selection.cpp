#include "wtfile/Selection.h"

#include <algorithm>
#include <bit>
#include <new>

#include "wtelem/messages.h"

namespace {

constexpr int allColumns = -1;

bool matches(const ZvbString& name, const ZvbString& other) noexcept {
  return name.compare(other, false) == 0;
}

/// The second text of a URI's column when it names another column than the first does.
bool renames(const ZvbString& name, const ZvbString& second) noexcept {
  return !second.isEmpty() && !matches(name, second);
}

bool memoryIsShort(const char* what, ZvbString* error) noexcept {
  *error = WT_MESSAGE(outOfMemory, what);
  return false;
}

/// Has the column's value delivered at one more position. There is room for as many targets as the
/// next power of two says.
bool addTarget(ColumnDefinition& column, int position) noexcept {
  const std::size_t count = column.targetCount;
  if (count == 0 || std::has_single_bit(count)) {
    const std::size_t capacity = std::max<std::size_t>(count * 2, 1);
    std::unique_ptr<std::int32_t[]> grown(new (std::nothrow) std::int32_t[capacity]);
    if (grown == nullptr) {
      return false;
    }
    std::copy_n(column.targets.get(), count, grown.get());
    column.targets = std::move(grown);
  }
  column.targets[count] = position;
  ++column.targetCount;
  return true;
}

}  // namespace

// ---- Selecting

bool Selection::selectNames(int count, const ZvbString* names, ZvbString* error) noexcept {
  if (count == allColumns || (count == this->count() && namesAreTheTables(names))) {
    selectAll();
    return true;
  }
  if (!makeEntries(count, "(column mapping array)", error)) {
    return false;
  }
  for (int i = 0; i < count; ++i) {
    if (!selectName(i, names[i], error)) {
      return false;
    }
  }
  return true;
}

bool Selection::selectNumbers(int count, const int* numbers, ZvbString* error) noexcept {
  bool inOrder = count == this->count();
  for (int i = 0; i < count && inOrder; ++i) {
    inOrder = numbers[i] == i;
  }
  if (count == allColumns || inOrder) {
    selectAll();
    return true;
  }
  if (!makeEntries(count, "(column mapping array)", error)) {
    return false;
  }
  for (int i = 0; i < count; ++i) {
    if (!selectNumber(i, numbers[i], error)) {
      return false;
    }
  }
  return true;
}

bool Selection::selectFromURI(const ZvURI& uri, ZvbString* error) noexcept {
  if (isTheTables(uri)) {
    selectAll();
    return true;
  }
  if (!makeEntries(uri.getColumnCount(), "(selected column array)", error)) {
    return false;
  }
  for (int i = 0; i < entryCount_; ++i) {
    if (!selectURIColumn(i, uri, error)) {
      return false;
    }
  }
  return true;
}

/// Each column at its own place.
void Selection::selectAll() noexcept {
  for (ColumnDefinition& column : columns_) {
    column.targetCount = 1;
  }
}

bool Selection::namesAreTheTables(const ZvbString* names) const noexcept {
  return std::equal(columns_.begin(), columns_.end(), names,
                    [](const ColumnDefinition& column, const ZvbString& name) {
                      return matches(column.name, name);
                    });
}

bool Selection::isTheTables(const ZvURI& uri) const noexcept {
  if (uri.getColumnCount() != count()) {
    return false;
  }
  for (int i = 0; i < count(); ++i) {
    ZvbString name;
    ZvbString second;
    std::int32_t type = 0;
    (void)uri.getColumn(i, &name, &second, &type);
    if (type != 0 || renames(name, second) || name.memoryShort() || second.memoryShort() ||
        !matches(column(i).name, name)) {
      return false;
    }
  }
  return true;
}

/// The first of the table's columns of that name, or null.
ColumnDefinition* Selection::find(const ZvbString& name) const noexcept {
  const auto found =
      std::find_if(columns_.begin(), columns_.end(),
                   [&name](const ColumnDefinition& column) { return matches(column.name, name); });
  return found == columns_.end() ? nullptr : &*found;
}

bool Selection::makeEntries(int count, const char* what, ZvbString* error) noexcept {
  if (count >= 0) {
    entries_.reset(new (std::nothrow)
                       Entry[std::max<std::size_t>(static_cast<std::size_t>(count), 1)]);
  }
  if (entries_ == nullptr) {
    return memoryIsShort(what, error);
  }
  entryCount_ = count;
  return true;
}

bool Selection::selectName(int position, const ZvbString& name, ZvbString* error) noexcept {
  ColumnDefinition* column = find(name);
  if (column == nullptr) {
    return makeConstant(entry(position), name, zvbTypeString, error);
  }
  if (!addTarget(*column, position)) {
    return memoryIsShort("(selected column)", error);
  }
  entry(position).source = column;
  entry(position).shown = column;
  return true;
}

/// A column at its own place needs no list of targets.
bool Selection::selectNumber(int position, int number, ZvbString* error) noexcept {
  if (number < 0 || static_cast<std::size_t>(number) >= columns_.size()) {
    *error = WT_MESSAGE(noSuchColumnNumber, number);
    return false;
  }
  ColumnDefinition& column = columns_[static_cast<std::size_t>(number)];
  if (column.targetCount != 0) {
    *error = WT_MESSAGE(columnSelectedTwice, number);
    return false;
  }
  if (number == position) {
    column.targetCount = 1;
  } else if (!addTarget(column, position)) {
    return memoryIsShort("(targets array)", error);
  }
  entry(position).source = &column;
  entry(position).shown = &column;
  return true;
}

bool Selection::selectURIColumn(int position, const ZvURI& uri, ZvbString* error) noexcept {
  ZvbString name;
  ZvbString second;
  std::int32_t type = 0;
  (void)uri.getColumn(position, &name, &second, &type);
  if (name.memoryShort() || second.memoryShort()) {
    return memoryIsShort("(selected column mapping)", error);
  }
  const bool renamed = renames(name, second);
  Entry& selected = entry(position);
  ColumnDefinition* column = type != 0 ? nullptr : find(renamed ? second : name);
  if (column == nullptr) {
    return makeConstant(selected, name, static_cast<zvbType>(type), error) &&
           (second.isEmpty() || giveValue(selected, second, error));
  }
  if (!addTarget(*column, position)) {
    return memoryIsShort("(selected column targets)", error);
  }
  selected.source = column;
  selected.shown = column;
  return !renamed || rename(selected, name, error);
}

/// Gives the entry a record of its own under which the reader sees it.
bool Selection::makeOwn(Entry& entry, const ZvbString& name, const char* what,
                        ZvbString* error) noexcept {
  entry.own.reset(new (std::nothrow) ColumnDefinition);
  if (entry.own != nullptr) {
    entry.own->name = name;
  }
  if (entry.own == nullptr || entry.own->name.memoryShort()) {
    return memoryIsShort(what, error);
  }
  entry.shown = entry.own.get();
  return true;
}

bool Selection::rename(Entry& entry, const ZvbString& name, ZvbString* error) noexcept {
  if (!makeOwn(entry, name, "(renamed column mapping)", error)) {
    return false;
  }
  entry.own->type = entry.source->type;
  entry.own->storageCode = entry.source->storageCode;
  entry.own->width = entry.source->width;
  entry.own->maxLength = entry.source->maxLength;
  return true;
}

bool Selection::makeConstant(Entry& entry, const ZvbString& name, zvbType type,
                             ZvbString* error) noexcept {
  if (!makeOwn(entry, name, "(selected column mapping)", error)) {
    return false;
  }
  entry.own->storageCode = storageCodeOf(type);
  entry.own->type = typeOf(entry.own->storageCode);
  ++constantCount_;
  return true;
}

/// A text that cannot be converted to the constant's type makes it a null.
bool Selection::giveValue(Entry& entry, const ZvbString& text, ZvbString* error) noexcept {
  entry.constant.reset(new (std::nothrow) ZvbDatavar);
  if (entry.constant != nullptr) {
    entry.constant->assign(text);
  }
  if (entry.constant == nullptr || entry.constant->memoryShort()) {
    return memoryIsShort("(dynamic column value)", error);
  }
  (void)entry.constant->setType(entry.own->type);
  if (entry.own->type == zvbTypeDate) {
    // As exact as its text, which is what a URI can say of it.
    entry.constant->assign(entry.constant->asString());
    (void)entry.constant->setType(zvbTypeDate);
  }
  if (entry.own->type == zvbTypeString) {
    entry.own->width = static_cast<std::int32_t>(text.length());
    entry.own->maxLength = entry.own->width;
  }
  return true;
}

// ---- What is selected

int Selection::count() const noexcept {
  return exists() ? entryCount_ : static_cast<int>(columns_.size());
}

const ColumnDefinition& Selection::column(int position) const noexcept {
  return exists() ? *entry(position).shown : columns_[static_cast<std::size_t>(position)];
}

std::int32_t Selection::longestText() const noexcept {
  std::int32_t longest = 0;
  for (int i = 0; i < count(); ++i) {
    longest = std::max(longest, column(i).maxLength);
  }
  return longest;
}

std::int32_t Selection::constantTextSize(int position) const noexcept {
  const ZvbDatavar* constant = exists() ? entry(position).constant.get() : nullptr;
  return constant != nullptr && constant->holdsText()
             ? static_cast<std::int32_t>(constant->asTextView().size())
             : 0;
}

std::int32_t Selection::linkDelivered() const noexcept {
  std::size_t next = columns_.size();
  for (std::size_t i = columns_.size(); i-- > 0;) {
    columns_[i].nextDelivered = static_cast<std::int32_t>(next);
    next = columns_[i].targetCount != 0 ? i : next;
  }
  return static_cast<std::int32_t>(next);
}

bool Selection::deliverConstants(ZvbDatavar* const* values) const noexcept {
  for (int i = 0; i < entryCount_; ++i) {
    const Entry& selected = entry(i);
    ZvbDatavar& value = *values[i];
    if (selected.constant != nullptr) {
      value = *selected.constant;
      if (value.memoryShort()) {
        return false;
      }
    } else if (selected.source == nullptr) {
      value.setNull();
      value.setType(selected.own->type);
    }
  }
  return true;
}

bool Selection::describe(bool unread, ZvWorkTableURI& uri) const noexcept {
  ZvbString unused;
  bool complete = true;
  for (int i = 0; i < count() && complete; ++i) {
    if (exists()) {
      complete = describeEntry(entry(i), uri);
    } else if (unread || column(i).targetCount != 0) {
      complete = uri.appendColumn(column(i).name, ZvbString(), 0, &unused);
    }
  }
  return complete;
}

bool Selection::describeEntry(const Entry& entry, ZvWorkTableURI& uri) noexcept {
  ZvbString unused;
  if (entry.source != nullptr) {
    const ZvbString none;
    const bool isRenamed = entry.own != nullptr;
    return uri.appendColumn(entry.shown->name, isRenamed ? entry.source->name : none, 0, &unused);
  }
  return uri.appendColumn(entry.shown->name,
                          entry.constant != nullptr ? entry.constant->asString() : ZvbString(),
                          static_cast<std::int32_t>(entry.shown->type), &unused);
}
