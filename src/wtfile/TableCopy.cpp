/// Moving all rows of one table into another.

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

/// A constant text says its width in characters; stored, it keeps all of its bytes.
std::int32_t storedWidth(const Selection& selection, int position) noexcept {
  const std::int32_t width = selection.column(position).width;
  return width > 0 ? std::max(width, selection.constantTextSize(position)) : width;
}

}  // namespace

bool ZVWTFileImpl::appendFrom(const ZvbString& source) noexcept {
  if (mode_ != Mode::writing) {
    return fail(WT_MESSAGE(notOpenForWriting));
  }
  const std::unique_ptr<ZVWTFileImpl> table(new (std::nothrow)
                                                ZVWTFileImpl(state_.directories, sorterSource_));
  if (table == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(work table file instance)"));
  }
  if (!table->openFromURI(source, false)) {
    return fail(table->getErrorMessage());
  }
  if (!sameColumnCount(*table)) {
    return false;
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    if (!sameColumn(*table, i)) {
      return false;
    }
  }
  return flushRows(copyRows(*table, "Append"));
}

/// A disk that is full is met here rather than by the close, which would have to remove the table;
/// with the rows before a failure, too, which stays the message.
bool ZVWTFileImpl::flushRows(bool copied) noexcept {
  if (current_ == nullptr || current_->flush()) {
    return copied;
  }
  ZvbString cause = copied ? current_->getErrorMessage() : errorMessage_;
  rowRefused_ = true;
  return fail(std::move(cause));
}

bool ZVWTFileImpl::copyFrom(ZVWTFileImpl& source) noexcept {
  if (mode_ != Mode::writing) {
    return fail(WT_MESSAGE(notOpenForWriting));
  }
  if (!sameColumnCount(source)) {
    return false;
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    const ColumnDefinition& from = source.selection_.column(i);
    ColumnDefinition& column = state_.columns[static_cast<std::size_t>(i)];
    column.name = from.name;
    column.type = from.type;
    column.storageCode = from.storageCode;
    column.width = storedWidth(source.selection_, i);
    column.maxLength = std::max(column.maxLength, from.maxLength);
    if (column.name.memoryShort()) {
      return fail(WT_MESSAGE(outOfMemory, "(column name)"));
    }
  }
  return copyRows(source, "Copy");
}

bool ZVWTFileImpl::sameColumnCount(ZVWTFileImpl& source) noexcept {
  const int count = source.getColumnCount();
  return count == state_.columnCount ||
         fail(WT_MESSAGE(otherColumnCount, source.name_.asCstr(), name_.asCstr(), count,
                         int{state_.columnCount}));
}

bool ZVWTFileImpl::sameColumn(const ZVWTFileImpl& source, int index) noexcept {
  const ColumnDefinition& from = source.selection_.column(index);
  const ColumnDefinition& to = state_.columns[static_cast<std::size_t>(index)];
  if (from.name.compare(to.name, false) != 0) {
    return fail(WT_MESSAGE(otherColumnName, source.name_.asCstr(), name_.asCstr(), index,
                           from.name.asCstr(), to.name.asCstr()));
  }
  if (from.type != to.type) {
    return fail(WT_MESSAGE(otherColumnType, source.name_.asCstr(), name_.asCstr(), index,
                           zvbTypeToString(from.type), zvbTypeToString(to.type)));
  }
  return true;
}

bool ZVWTFileImpl::copyRows(ZVWTFileImpl& source, const char* verb) noexcept {
  const auto count = static_cast<std::size_t>(state_.columnCount);
  const std::unique_ptr<ZvbDatavar[]> values(new (std::nothrow) ZvbDatavar[count]);
  if (values == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(column value array)"));
  }
  bool endOfTable = false;
  while (source.readRow(values.get(), &endOfTable)) {
    if (!writeRow(values.get())) {
      return false;
    }
  }
  return endOfTable || fail(WT_MESSAGE(sourceNotRead, verb, source.name_.asCstr(), name_.asCstr(),
                                       source.errorMessage_.asCstr()));
}
