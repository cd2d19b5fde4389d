/// The bytes of one value: a tag, then its payload unless it is null.
///
///   tag       bits 0-6 the storage code, bit 7 set for a null, after which nothing follows
///   boolean   1 byte, 1 or 0
///   date      8 bytes, a double
///   integer   8 bytes, two's complement
///   real      24 bytes, the packed form of ZvbReal
///   text      its length, then the text with its terminating zero; the length counts that zero and
///             takes 1 byte below 128, else 4 bytes, big-endian, with bit 7 of the first one set
///
/// Dates, integers and reals are in the byte order of the machine that wrote them.
///
/// Writing and reading rows is little else than this, so a value that lies whole in a file's buffer
/// is written or read there, inline and without a call (the operations InPlace). What does not, at
/// the buffer's ends and for long texts, goes through the file's operations (encodeValue,
/// decodeValue).
#pragma once

#include <bit>
#include <cstdint>

#include "base/ZvbDatavar.h"
#include "base/zvb_zero.h"
#include "fio/np_fio.h"
#include "wtelem/ColumnDefinition.h"
#include "wtelem/FileFields.h"
#include "wtelem/StringReadBuffer.h"

namespace valueCodec {

inline constexpr unsigned char nullBit = 0x80;
inline constexpr unsigned char longLengthBit = 0x80;
inline constexpr std::uint32_t shortLengthEnd = 128;
/// Bytes of values with their tag.
inline constexpr int nullSize = 1;
inline constexpr int booleanSize = 1 + 1;
inline constexpr int numberSize = 1 + 8;  ///< of an integer or a date
inline constexpr int realSize = 1 + 24;
inline constexpr int fixedValueSize = realSize;  ///< the largest that is no text
/// Texts of up to this many bytes, terminator included, are read and written in place.
inline constexpr int shortTextSize = ZvbText::inlineCapacity + 1;
static_assert(shortTextSize <= npFioSlack);

enum class Result : std::uint8_t {
  done,
  fileFailed,   ///< a short read or write, a failed seek, or bytes that are no value
  memoryShort,  ///< a text could not be held
  bufferShort,  ///< nor could a long text on its way there
};

constexpr unsigned char tagOf(StorageCode code) noexcept {
  return static_cast<unsigned char>(code);
}

/// The bytes of a value by its tag, which is counted; 0 for a text and for what is no tag.
constexpr int fixedSizeOf(unsigned char tag) noexcept {
  constexpr unsigned char sizes[] = {0, booleanSize, numberSize, numberSize, realSize};
  if (tag < sizeof sizes) {
    return sizes[tag];
  }
  return (tag & nullBit) != 0 ? nullSize : 0;
}

/// Appends one value, converted to its column's type, and counts its bytes in *offset. A value that
/// cannot be converted is written as a null of the column's code. After a failure some of the bytes
/// may have been written.
[[nodiscard, gnu::noinline]] Result encodeValue(ColumnDefinition* column, const ZvbDatavar& value,
                                                np_fio_handle file, std::int64_t* offset) noexcept;

/// What is common to all values read from one file.
struct Source {
  np_fio_handle file;
  bool swap;                 // the file is in the other byte order
  StringReadBuffer* buffer;  // for long texts
};

/// Reads one value into `target`, or passes over it when that is null, and counts its bytes in
/// *offset. The tag alone tells the type.
[[nodiscard, gnu::noinline]] Result decodeValue(Source source, ZvbDatavar* target,
                                                std::int64_t* offset) noexcept;

// ---- In place: the result is the place behind the value; null, and nothing is done, when it does
// not fit in front of `end` or is of a kind that is not dealt with in place. What is always inline
// would otherwise be so or not by whatever else the compiler has just inlined.

/// Puts a tag and a payload.
template <typename Payload>
unsigned char* putInPlace(StorageCode code, const Payload& payload, unsigned char* at,
                          const unsigned char* end) noexcept {
  if (end - at < static_cast<std::ptrdiff_t>(1 + sizeof payload)) [[unlikely]] {
    return nullptr;
  }
  at[0] = tagOf(code);
  std::memcpy(at + 1, &payload, sizeof payload);
  return at + 1 + sizeof payload;
}

inline unsigned char* putNullInPlace(unsigned char code, unsigned char* at,
                                     const unsigned char* end) noexcept {
  if (at >= end) [[unlikely]] {
    return nullptr;
  }
  at[0] = code | nullBit;
  return at + 1;
}

/// putTextInPlace of a text that the variant does not hold inside.
[[gnu::noinline]] unsigned char* putLongTextInPlace(ColumnDefinition* column,
                                                    const ZvbDatavar& value, unsigned char* at,
                                                    const unsigned char* end) noexcept;

inline unsigned char* putTextInPlace(ColumnDefinition* column, const ZvbDatavar& value,
                                     unsigned char* at, const unsigned char* end) noexcept {
  if (!value.holdsText()) [[unlikely]] {
    return nullptr;
  }
  const auto length = static_cast<std::int32_t>(value.asTextView().size()) + 1;
  const bool isCut = column->width >= 1 && length - 1 > column->width;
  if (isCut) [[unlikely]] {
    return nullptr;
  }
  if (length > shortTextSize) {
    return putLongTextInPlace(column, value, at, end);
  }
  if (end - at < 2 + length) [[unlikely]] {
    return nullptr;
  }
  at[0] = tagOf(StorageCode::text);
  at[1] = static_cast<unsigned char>(length);
  value.copyTextTo(reinterpret_cast<char*>(at) + 2);
  if (length > column->maxLength) [[unlikely]] {
    column->maxLength = length;
  }
  return at + 2 + length;
}

/// encodeValue in place.
[[gnu::always_inline]] inline unsigned char* encodeInPlace(ColumnDefinition* column,
                                                           const ZvbDatavar& value,
                                                           unsigned char* at,
                                                           const unsigned char* end) noexcept {
  if (value.isNull()) {
    return value.memoryShort() ? nullptr : putNullInPlace(0, at, end);
  }
  const StorageCode code = column->storageCode;
  bool failed = false;
  switch (code) {
    case StorageCode::boolean: {
      const auto boolean = static_cast<unsigned char>(value.asBool(&failed) ? 1 : 0);
      return failed ? putNullInPlace(tagOf(code), at, end) : putInPlace(code, boolean, at, end);
    }
    case StorageCode::date: {
      failed = value.asDate().isNull();
      const double days = failed ? 0 : value.asDouble(&failed);
      return failed ? putNullInPlace(tagOf(code), at, end) : putInPlace(code, days, at, end);
    }
    case StorageCode::integer: {
      const std::int64_t integer = value.asInt64(&failed);
      return failed ? putNullInPlace(tagOf(code), at, end) : putInPlace(code, integer, at, end);
    }
    case StorageCode::real: {
      const ZvbReal real = value.asReal(&failed);
      std::uint64_t words[3];
      real.asFD(&words);
      failed = failed || real.isNull();
      return failed ? putNullInPlace(tagOf(code), at, end) : putInPlace(code, words, at, end);
    }
    default:
      return putTextInPlace(column, value, at, end);
  }
}

/// A number of 8 bytes, read where it lies.
template <typename Number>
Number numberAt(const unsigned char* bytes, bool swap) noexcept {
  return std::bit_cast<Number>(loadField<std::int64_t>(bytes, swap));
}

/// readTextInPlace of a text that the variant does not hold inside.
[[gnu::noinline]] const unsigned char* readLongTextInPlace(std::int32_t limit, ZvbDatavar* target,
                                                           const unsigned char* at,
                                                           const unsigned char* end) noexcept;

inline const unsigned char* readTextInPlace(const Source& source, ZvbDatavar* target,
                                            const unsigned char* at,
                                            const unsigned char* end) noexcept {
  const int length = at[1];
  if (length > shortTextSize) {
    return readLongTextInPlace(source.buffer->limit(), target, at, end);
  }
  if (length < 1 || end - at < 2 + length || length > source.buffer->limit()) [[unlikely]] {
    return nullptr;
  }
  const char* text = reinterpret_cast<const char*>(at) + 2;
  const std::size_t size = zvbPaddedTextSize(text, static_cast<std::size_t>(length));
  if (size == shortTextSize) [[unlikely]] {  // without its terminator it is a long one
    return nullptr;
  }
  target->assignPadded(text, size);
  return at + 2 + length;
}

/// decodeInPlace of anything but a text.
inline const unsigned char* decodeFixedInPlace(const Source& source, ZvbDatavar* target,
                                               const unsigned char* at,
                                               const unsigned char* end) noexcept {
  const auto holds = [at, end](std::ptrdiff_t size) { return end - at >= size; };
  switch (static_cast<StorageCode>(at[0])) {
    case StorageCode::boolean:
      if (holds(booleanSize)) [[likely]] {
        target->assign(at[1] != 0);
        return at + booleanSize;
      }
      return nullptr;
    case StorageCode::date:
      if (holds(numberSize)) [[likely]] {
        target->assign(numberAt<double>(at + 1, source.swap));
        target->setType(zvbTypeDate);
        return at + numberSize;
      }
      return nullptr;
    case StorageCode::integer:
      if (holds(numberSize)) [[likely]] {
        target->assign(numberAt<std::int64_t>(at + 1, source.swap));
        return at + numberSize;
      }
      return nullptr;
    case StorageCode::real:
      if (holds(realSize)) [[likely]] {
        std::uint64_t words[3];
        std::memcpy(words, at + 1, sizeof words);
        target->assign(ZvbReal::fromFD(words, source.swap));
        return at + realSize;
      }
      return nullptr;
    default:
      if ((at[0] & nullBit) == 0) {
        return nullptr;
      }
      target->setNull();
      return at + nullSize;
  }
}

/// decodeValue in place, into a target. There is at least one byte in front of `end`.
[[gnu::always_inline]] inline const unsigned char* decodeInPlace(
    const Source& source, ZvbDatavar* target, const unsigned char* at,
    const unsigned char* end) noexcept {
  return at[0] == tagOf(StorageCode::text) ? readTextInPlace(source, target, at, end)
                                           : decodeFixedInPlace(source, target, at, end);
}

/// decodeValue in place, without a target. There is at least one byte in front of `end`.
inline const unsigned char* passInPlace(const unsigned char* at,
                                        const unsigned char* end) noexcept {
  // Branches, which the processor foresees, and not a size to wait for, which every next value
  // would have to wait for as well.
  const auto passed = [at, end](std::ptrdiff_t size) {
    return end - at >= size ? at + size : nullptr;
  };
  switch (static_cast<StorageCode>(at[0])) {
    case StorageCode::boolean:
      return passed(booleanSize);
    case StorageCode::date:
    case StorageCode::integer:
      return passed(numberSize);
    case StorageCode::real:
      return passed(realSize);
    case StorageCode::text:
      return at[1] != 0 && (at[1] & longLengthBit) == 0 ? passed(2 + at[1]) : nullptr;
    default:
      return (at[0] & nullBit) != 0 ? passed(nullSize) : nullptr;
  }
}

}  // namespace valueCodec
