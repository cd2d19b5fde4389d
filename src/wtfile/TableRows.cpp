/// Writing and reading rows, from one data element to the next.

#include <algorithm>
#include <new>
#include <utility>

#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

/// True when the vector was filled for these values, as it is for every row of a caller that uses
/// the same array again.
template <typename Value>
bool pointsAt(const std::unique_ptr<Value*[]>& vector, const void* values) noexcept {
  return vector != nullptr && vector[0] == values;
}

/// Points entry i of the vector, which is made at its first use, at value i. False when memory is
/// short.
template <typename Value>
[[gnu::noinline]] bool pointAt(std::unique_ptr<Value*[]>& vector, Value* values,
                               int count) noexcept {
  const auto entries = static_cast<std::size_t>(count);
  if (vector == nullptr) {
    vector.reset(new (std::nothrow) Value*[std::max<std::size_t>(entries, 1)]());
    if (vector == nullptr) {
      return false;
    }
  }
  for (std::size_t i = 0; i < entries; ++i) {
    vector[i] = values + i;
  }
  return true;
}

}  // namespace

// ---- Writing

bool ZVWTFileImpl::writeRow(const ZvbDatavar* values) noexcept {
  if (!pointsAt(writeVector_, values) && !pointAt(writeVector_, values, state_.columnCount))
      [[unlikely]] {
    return fail(WT_MESSAGE(outOfMemory, "(column value vector)"));
  }
  return writeRow(writeVector_.get());
}

bool ZVWTFileImpl::writeRow(const ZvbDatavar* const* values) noexcept {
  if (mode_ != Mode::writing) {
    return fail(WT_MESSAGE(notOpenForWriting));
  }
  if (sortColumnCount_ != 0) {
    return writeToSorter(values);
  }
  if (current_ == nullptr && !startElement()) {
    return false;
  }
  bool elementFull = false;
  if (!current_->writeRow(values, &elementFull)) {
    return refuseRow();
  }
  if (elementFull) {
    if (!current_->closeFull()) {
      return refuseRow();
    }
    current_ = nullptr;
  }
  ++rowCount_;
  ++rowPosition_;
  return true;
}

bool ZVWTFileImpl::refuseRow() noexcept {
  rowRefused_ = true;
  return failAs(*current_);
}

bool ZVWTFileImpl::startElement() noexcept {
  if (elementCount_ == elementCapacity_ && !growElements()) {
    return fail(WT_MESSAGE(outOfMemory, "(data element array)"));
  }
  if (!assureHeader()) {
    return false;
  }
  std::unique_ptr<DataElement> element(new (std::nothrow) DataElement(state_));
  if (element == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(data element instance)"));
  }
  if (!element->createFiles(directory_)) {
    return failAs(*element);
  }
  current_ = element.get();
  elements_[static_cast<std::size_t>(elementCount_)] = std::move(element);
  ++elementCount_;
  return true;
}

bool ZVWTFileImpl::growElements() noexcept {
  const int capacity = std::max(4, elementCapacity_ + elementCapacity_ / 2);
  Elements grown(new (std::nothrow)
                     std::unique_ptr<DataElement>[static_cast<std::size_t>(capacity)]);
  if (grown == nullptr) {
    return false;
  }
  std::move(elements_.get(), elements_.get() + elementCount_, grown.get());
  elements_ = std::move(grown);
  elementCapacity_ = capacity;
  return true;
}

// ---- Reading

bool ZVWTFileImpl::readRow(ZvbDatavar* values, bool* endOfTable) noexcept {
  if (!pointsAt(readVector_, values) && !pointAt(readVector_, values, getColumnCount()))
      [[unlikely]] {
    *endOfTable = false;
    return fail(WT_MESSAGE(outOfMemory, "(column value vector)"));
  }
  return readRow(readVector_.get(), endOfTable);
}

bool ZVWTFileImpl::readRow(ZvbDatavar* const* values, bool* endOfTable) noexcept {
  *endOfTable = false;
  if (mode_ != Mode::reading) {
    return fail(WT_MESSAGE(notOpenForReading));
  }
  const int valueCount = selection_.storedCount();
  for (;;) {
    if (pastRange()) [[unlikely]] {
      *endOfTable = true;
      return false;
    }
    if (current_ == nullptr && !openNextElement(endOfTable)) [[unlikely]] {
      return false;
    }
    if (selection_.hasConstants() && !selection_.deliverConstants(values)) {
      return fail(WT_MESSAGE(outOfMemory, "(dynamic column value)"));
    }
    bool endOfData = false;
    const bool read = current_->readRow(values, valueCount, &endOfData);
    if (!endOfData) [[likely]] {
      rowPosition_ += state_.readsBackwards ? -1 : 1;
      return read || failAs(*current_);
    }
    leaveElement();
  }
}

bool ZVWTFileImpl::pastRange() const noexcept {
  return state_.readsBackwards ? rowPosition_ < rangeStart_ : rowPosition_ >= rangeEnd_;
}

bool ZVWTFileImpl::openNextElement(bool* endOfTable) noexcept {
  if (nextElement_ < 0 || nextElement_ >= elementCount_) {
    *endOfTable = true;
    return false;
  }
  DataElement& element = *elements_[static_cast<std::size_t>(nextElement_)];
  if (!element.open(true)) {
    element.abandon();
    return failAs(element);
  }
  current_ = &element;
  nextElement_ += state_.readsBackwards ? -1 : 1;
  return true;
}

void ZVWTFileImpl::leaveElement() noexcept {
  if (current_ != nullptr) {
    (void)std::exchange(current_, nullptr)->close();
  }
}
