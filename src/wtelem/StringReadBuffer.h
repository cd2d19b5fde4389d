/// Where texts too long to be looked at in a file's own buffer are put together.
#pragma once

#include <cstdint>
#include <memory>

#include "fio/np_fio.h"

class StringReadBuffer {
 public:
  /// Sets the longest text, in bytes with its terminator, that the table's columns can hold. A
  /// longer one in a file means that the file is damaged.
  void setLimit(std::int32_t limit) noexcept {
    limit_ = limit;
    bytes_.reset();
    capacity_ = 0;
  }
  [[nodiscard]] std::int32_t limit() const noexcept { return limit_; }

  /// Reads `length` bytes. The buffer grows with what the file really has, so a damaged length
  /// costs no memory. Null when the file ends first or memory is short, as *memoryShort then tells;
  /// valid until the next call.
  [[nodiscard]] const char* read(np_fio_handle file, std::int32_t length,
                                 bool* memoryShort) noexcept;

 private:
  [[nodiscard]] bool grow(std::int32_t used, std::int32_t needed) noexcept;

  std::int32_t limit_ = 0;
  std::int32_t capacity_ = 0;
  std::unique_ptr<char[]> bytes_;
};
