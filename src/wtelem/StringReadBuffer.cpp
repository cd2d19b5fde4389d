#include "wtelem/StringReadBuffer.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr std::int32_t firstCapacity = 256 * 1024;

}  // namespace

bool StringReadBuffer::grow(std::int32_t used, std::int32_t needed) noexcept {
  const std::int32_t doubled = capacity_ > needed / 2 ? needed : 2 * capacity_;
  const std::int32_t capacity = std::min(needed, std::max(doubled, firstCapacity));
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[static_cast<std::size_t>(capacity)]);
  if (bytes == nullptr) {
    return false;
  }
  if (used != 0) {
    std::memcpy(bytes.get(), bytes_.get(), static_cast<std::size_t>(used));
  }
  bytes_ = std::move(bytes);
  capacity_ = capacity;
  return true;
}

const char* StringReadBuffer::read(np_fio_handle file, std::int32_t length,
                                   bool* memoryShort) noexcept {
  *memoryShort = false;
  std::int32_t used = 0;
  while (used < length) {
    if (used == capacity_ && !grow(used, length)) {
      *memoryShort = true;
      return nullptr;
    }
    const std::int32_t wanted = std::min(length, capacity_) - used;
    if (np_fio_getb(file, bytes_.get() + used, wanted) != wanted) {
      return nullptr;
    }
    used += wanted;
  }
  return bytes_.get();
}
