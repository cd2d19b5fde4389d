#include "base/ZvbText.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

struct Block {
  std::unique_ptr<char[]> bytes;
  std::uint32_t capacity = 0;
};

Block allocate(std::uint32_t capacity) noexcept {
  Block block;
  block.bytes.reset(new (std::nothrow) char[std::size_t{capacity} + 1]);
  block.capacity = capacity;
  return block;
}

/// Twice the old capacity, so that appending and ever longer texts cost a constant time per byte;
/// just the size when there is no memory for that.
Block allocateFor(std::size_t size, std::uint32_t oldCapacity) noexcept {
  const std::size_t wanted = std::max(size, std::size_t{oldCapacity} * 2) | 15U;
  constexpr std::size_t most = ZvbText::maximumSize;
  Block block = allocate(static_cast<std::uint32_t>(std::min(wanted, most)));
  if (block.bytes == nullptr) {
    block = allocate(static_cast<std::uint32_t>(size));
  }
  return block;
}

}  // namespace

void ZvbText::freeHeap() const noexcept { delete[] heap_; }

bool ZvbText::assignLong(const char* text, std::size_t size) noexcept {
  if (size > maximumSize) {
    return false;
  }
  if (size > capacity_) {
    Block block = allocateFor(size, capacity_);
    if (block.bytes == nullptr) {
      return false;
    }
    std::memcpy(block.bytes.get(), text, size);
    delete[] heap_;
    heap_ = block.bytes.release();
    capacity_ = block.capacity;
  } else {
    std::memmove(heap_, text, size);
  }
  heap_[size] = '\0';
  size_ = static_cast<std::uint32_t>(size);
  return true;
}

bool ZvbText::append(const char* text, std::size_t size) noexcept {
  if (size == 0) {
    return true;
  }
  if (size > maximumSize - size_) {
    return false;
  }
  const std::size_t newSize = size_ + size;
  if (newSize <= inlineCapacity) {
    std::memmove(inline_ + size_, text, size);
    inline_[newSize] = '\0';
    size_ = static_cast<std::uint32_t>(newSize);
    return true;
  }
  if (newSize > capacity_) {
    Block block = allocateFor(newSize, capacity_);
    if (block.bytes == nullptr) {
      return false;
    }
    std::memcpy(block.bytes.get(), data(), size_);
    std::memcpy(block.bytes.get() + size_, text, size);
    delete[] heap_;
    heap_ = block.bytes.release();
    capacity_ = block.capacity;
  } else {
    if (size_ <= inlineCapacity) {
      std::memcpy(heap_, inline_, size_);
    }
    std::memmove(heap_ + size_, text, size);
  }
  heap_[newSize] = '\0';
  size_ = static_cast<std::uint32_t>(newSize);
  return true;
}

void ZvbText::truncate(std::size_t size) noexcept {
  if (size >= size_) {
    return;
  }
  if (size > inlineCapacity) {
    heap_[size] = '\0';
    size_ = static_cast<std::uint32_t>(size);
    return;
  }
  if (size_ > inlineCapacity) {
    copyShort(inline_, heap_, size);
  }
  inline_[size] = '\0';
  size_ = static_cast<std::uint32_t>(size);
}

void ZvbText::take(ZvbText& other) noexcept {
  if (this == &other) {
    return;
  }
  if (other.size_ <= inlineCapacity) {
    copyShort(inline_, other.inline_, other.size_);
    inline_[other.size_] = '\0';
  } else {
    std::swap(heap_, other.heap_);
    std::swap(capacity_, other.capacity_);
  }
  size_ = other.size_;
  other.clear();
}
