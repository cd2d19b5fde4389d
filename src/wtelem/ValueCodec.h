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
/// All of it is inline: writing and reading rows is little else than this.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

#include "base/ZvbDatavar.h"
#include "fio/np_fio.h"
#include "wtelem/ColumnDefinition.h"
#include "wtelem/FileFields.h"
#include "wtelem/StringReadBuffer.h"

namespace valueCodec {

inline constexpr unsigned char nullBit = 0x80;
inline constexpr unsigned char longLengthBit = 0x80;
inline constexpr std::uint32_t shortLengthEnd = 128;
inline constexpr int largestFixedPayload = 24;

enum class Result : std::uint8_t {
  done,
  fileFailed,   ///< a short read or write, a failed seek, or bytes that are no value
  memoryShort,  ///< a text could not be held
};

constexpr unsigned char tagOf(StorageCode code) noexcept {
  return static_cast<unsigned char>(code);
}

/// Writes a tag and a payload of `payloadSize` bytes, which `fill` puts in place.
template <int payloadSize, typename Fill>
Result writeFixed(unsigned char tag, np_fio_handle file, std::int64_t* offset,
                  const Fill& fill) noexcept {
  unsigned char* room = np_fio_reserve(file, 1 + payloadSize);
  if (room == nullptr) {
    return Result::fileFailed;
  }
  room[0] = tag;
  fill(room + 1);
  np_fio_commit(file, 1 + payloadSize);
  *offset += 1 + payloadSize;
  return Result::done;
}

inline Result writeNull(unsigned char code, np_fio_handle file, std::int64_t* offset) noexcept {
  return writeFixed<0>(code | nullBit, file, offset, [](unsigned char*) {});
}

inline Result writeBoolean(const ZvbDatavar& value, np_fio_handle file,
                           std::int64_t* offset) noexcept {
  bool failed = false;
  const bool boolean = value.asBool(&failed);
  if (failed) {
    return writeNull(tagOf(StorageCode::boolean), file, offset);
  }
  return writeFixed<1>(tagOf(StorageCode::boolean), file, offset,
                       [boolean](unsigned char* payload) { payload[0] = boolean ? 1 : 0; });
}

inline Result writeDate(const ZvbDatavar& value, np_fio_handle file,
                        std::int64_t* offset) noexcept {
  bool failed = value.asDate().isNull();
  const double days = failed ? 0 : value.asDouble(&failed);
  if (failed) {
    return writeNull(tagOf(StorageCode::date), file, offset);
  }
  return writeFixed<8>(tagOf(StorageCode::date), file, offset, [days](unsigned char* payload) {
    storeField(payload, std::bit_cast<std::int64_t>(days));
  });
}

inline Result writeInteger(const ZvbDatavar& value, np_fio_handle file,
                           std::int64_t* offset) noexcept {
  bool failed = false;
  const std::int64_t integer = value.asInt64(&failed);
  if (failed) {
    return writeNull(tagOf(StorageCode::integer), file, offset);
  }
  return writeFixed<8>(tagOf(StorageCode::integer), file, offset,
                       [integer](unsigned char* payload) { storeField(payload, integer); });
}

inline Result writeReal(const ZvbDatavar& value, np_fio_handle file,
                        std::int64_t* offset) noexcept {
  bool failed = false;
  const ZvbReal real = value.asReal(&failed);
  if (failed || real.isNull()) {
    return writeNull(tagOf(StorageCode::real), file, offset);
  }
  return writeFixed<24>(tagOf(StorageCode::real), file, offset, [&real](unsigned char* payload) {
    std::uint64_t words[3];
    real.asFD(&words);
    std::memcpy(payload, words, sizeof words);
  });
}

/// Writes a text and its terminator, which follows it only if it was not cut.
inline Result writeTextBytes(std::string_view text, bool cut, ColumnDefinition* column,
                             np_fio_handle file, std::int64_t* offset) noexcept {
  const auto length = static_cast<std::uint32_t>(text.size()) + 1;
  unsigned char* head = np_fio_reserve(file, 5);
  if (head == nullptr) {
    return Result::fileFailed;
  }
  head[0] = tagOf(StorageCode::text);
  int headSize = 2;
  if (length < shortLengthEnd) {
    head[1] = static_cast<unsigned char>(length);
  } else {
    head[1] = static_cast<unsigned char>(longLengthBit | (length >> 24));
    head[2] = static_cast<unsigned char>(length >> 16);
    head[3] = static_cast<unsigned char>(length >> 8);
    head[4] = static_cast<unsigned char>(length);
    headSize = 5;
  }
  np_fio_commit(file, headSize);
  const int together = static_cast<int>(cut ? length - 1 : length);
  if (together != 0 && np_fio_putb(file, text.data(), together) != together) {
    return Result::fileFailed;
  }
  if (cut && np_fio_putb(file, "", 1) != 1) {
    return Result::fileFailed;
  }
  *offset += headSize + static_cast<std::int64_t>(length);
  if (static_cast<std::int32_t>(length) > column->maxLength) {
    column->maxLength = static_cast<std::int32_t>(length);
  }
  return Result::done;
}

inline Result writeCutText(std::string_view text, ColumnDefinition* column, np_fio_handle file,
                           std::int64_t* offset) noexcept {
  const auto width = static_cast<std::size_t>(column->width);
  if (column->width < 1 || text.size() <= width) [[likely]] {
    return writeTextBytes(text, false, column, file, offset);
  }
  const std::size_t size = zvbCutAtCharacter(text.data(), text.size(), width);
  return writeTextBytes(text.substr(0, size), true, column, file, offset);
}

inline Result writeText(const ZvbDatavar& value, ColumnDefinition* column, np_fio_handle file,
                        std::int64_t* offset) noexcept {
  if (value.holdsText()) [[likely]] {
    return writeCutText(value.asTextView(), column, file, offset);
  }
  const ZvbString text = value.asString();
  if (text.memoryShort()) {
    return Result::memoryShort;
  }
  if (text.isNull()) {
    return writeNull(tagOf(StorageCode::text), file, offset);
  }
  return writeCutText(text.asView(), column, file, offset);
}

/// Appends one value, converted to its column's type, and counts its bytes in *offset. A value that
/// cannot be converted is written as a null of the column's code. After a failure some of the bytes
/// may have been written.
inline Result encodeValue(ColumnDefinition* column, const ZvbDatavar& value, np_fio_handle file,
                          std::int64_t* offset) noexcept {
  if (value.isNull()) {
    return value.memoryShort() ? Result::memoryShort : writeNull(0, file, offset);
  }
  switch (column->storageCode) {
    case StorageCode::boolean:
      return writeBoolean(value, file, offset);
    case StorageCode::date:
      return writeDate(value, file, offset);
    case StorageCode::integer:
      return writeInteger(value, file, offset);
    case StorageCode::real:
      return writeReal(value, file, offset);
    default:
      return writeText(value, column, file, offset);
  }
}

/// What is common to all values read from one file.
struct Source {
  np_fio_handle file;
  bool swap;                 // the file is in the other byte order
  StringReadBuffer* buffer;  // for long texts
};

/// Reads a payload of `size` bytes and gives it to `take`, or skips it when there is no target.
template <int size, typename Take>
Result readFixed(const Source& source, ZvbDatavar* target, std::int64_t* offset,
                 const Take& take) noexcept {
  *offset += size;
  if (target == nullptr) {
    return np_fio_seek64(source.file, size, npFioFromHere) < 0 ? Result::fileFailed : Result::done;
  }
  unsigned char payload[size];
  if (np_fio_getb(source.file, payload, size) != size) {
    return Result::fileFailed;
  }
  take(payload);
  return Result::done;
}

inline bool readTextLength(np_fio_handle file, std::int32_t* length,
                           std::int64_t* offset) noexcept {
  unsigned char first;
  if (np_fio_getb(file, &first, 1) != 1) {
    return false;
  }
  *offset += 1;
  *length = first;
  if ((first & longLengthBit) != 0) {
    unsigned char rest[3];
    if (np_fio_getb(file, rest, 3) != 3) {
      return false;
    }
    *offset += 3;
    *length = ((first & ~longLengthBit) << 24) | (rest[0] << 16) | (rest[1] << 8) | rest[2];
  }
  return *length > 0;
}

inline Result readText(const Source& source, ZvbDatavar* target, std::int64_t* offset) noexcept {
  std::int32_t length = 0;
  if (!readTextLength(source.file, &length, offset)) {
    return Result::fileFailed;
  }
  *offset += length;
  if (target == nullptr) {
    return np_fio_seek64(source.file, length, npFioFromHere) < 0 ? Result::fileFailed
                                                                 : Result::done;
  }
  if (length > source.buffer->limit()) {
    return Result::fileFailed;
  }
  if (length <= npFioPeekLimit) [[likely]] {
    const unsigned char* bytes = np_fio_peek(source.file, length);
    if (bytes == nullptr) {
      return Result::fileFailed;
    }
    target->assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    np_fio_consume(source.file, length);
  } else {
    const char* bytes = source.buffer->read(source.file, length);
    if (bytes == nullptr) {
      return Result::fileFailed;
    }
    target->assign(bytes, static_cast<std::size_t>(length));
  }
  return target->memoryShort() ? Result::memoryShort : Result::done;
}

/// Reads one value into `target`, or passes over it when that is null, and counts its bytes in
/// *offset. The tag alone tells the type.
inline Result decodeValue(const Source& source, ZvbDatavar* target, std::int64_t* offset) noexcept {
  unsigned char tag;
  if (np_fio_getb(source.file, &tag, 1) != 1) {
    return Result::fileFailed;
  }
  *offset += 1;
  if ((tag & nullBit) != 0) {
    if (target != nullptr) {
      target->setNull();
    }
    return Result::done;
  }
  switch (static_cast<StorageCode>(tag)) {
    case StorageCode::boolean:
      return readFixed<1>(source, target, offset, [target](const unsigned char* payload) {
        target->assign(payload[0] != 0);
      });
    case StorageCode::date:
      return readFixed<8>(source, target, offset, [&](const unsigned char* payload) {
        target->assign(std::bit_cast<double>(loadField<std::int64_t>(payload, source.swap)));
        target->setType(zvbTypeDate);
      });
    case StorageCode::integer:
      return readFixed<8>(source, target, offset, [&](const unsigned char* payload) {
        target->assign(loadField<std::int64_t>(payload, source.swap));
      });
    case StorageCode::real:
      return readFixed<24>(source, target, offset, [&](const unsigned char* payload) {
        target->assign(zvbTypeReal, payload, 24, source.swap);
      });
    case StorageCode::text:
      return readText(source, target, offset);
    default:
      return Result::fileFailed;
  }
}

}  // namespace valueCodec
