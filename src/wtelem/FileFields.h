/// The fields of records in files: fixed-width numbers in this machine's byte order or the other
/// one, and names.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "fio/np_fio.h"

template <std::integral Number>
constexpr Number reversedBytes(Number number) noexcept {
  static_assert(sizeof(Number) == 2 || sizeof(Number) == 4 || sizeof(Number) == 8);
  if constexpr (sizeof(Number) == 2) {
    return static_cast<Number>(__builtin_bswap16(static_cast<std::uint16_t>(number)));
  } else if constexpr (sizeof(Number) == 4) {
    return static_cast<Number>(__builtin_bswap32(static_cast<std::uint32_t>(number)));
  } else {
    return static_cast<Number>(__builtin_bswap64(static_cast<std::uint64_t>(number)));
  }
}

/// Reads a field; `swap` when it was written in the other byte order.
template <std::integral Number>
Number loadField(const unsigned char* bytes, bool swap) noexcept {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return swap ? reversedBytes(number) : number;
}

/// Writes a field in this machine's byte order.
template <std::integral Number>
void storeField(unsigned char* bytes, Number number) noexcept {
  std::memcpy(bytes, &number, sizeof number);
}

/// False when not all of the bytes were written.
[[nodiscard]] inline bool putAll(np_fio_handle file, const void* bytes,
                                 std::uint32_t count) noexcept {
  return np_fio_putb(file, bytes, static_cast<int>(count)) == static_cast<int>(count);
}

/// A stored name of `length` bytes; its last byte is taken for the terminator whatever it is. Null
/// when memory is short; *complete tells whether the file had all of the bytes.
[[nodiscard]] inline std::unique_ptr<char[]> readStoredName(np_fio_handle file,
                                                            std::uint32_t length,
                                                            bool* complete) noexcept {
  std::unique_ptr<char[]> name(new (std::nothrow) char[std::size_t{length} + 1]);
  if (name != nullptr) {
    const auto wanted = static_cast<int>(length);
    *complete = wanted == 0 || np_fio_getb(file, name.get(), wanted) == wanted;
    name[length == 0 ? 0 : length - 1] = '\0';
  }
  return name;
}
