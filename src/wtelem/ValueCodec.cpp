/// Values that are not dealt with in place.
#include "wtelem/ValueCodec.h"

#include <algorithm>
#include <string_view>

namespace valueCodec {
namespace {

/// A text column's value that has no text.
Result writeNull(np_fio_handle file, std::int64_t* offset) noexcept {
  const unsigned char tag = tagOf(StorageCode::text) | nullBit;
  *offset += 1;
  return np_fio_putb(file, &tag, 1) == 1 ? Result::done : Result::fileFailed;
}

constexpr int largestTextHead = 5;  // bytes

/// Puts the tag and the length of a text, which counts the terminator; the number of bytes.
int putTextHead(std::uint32_t length, unsigned char* head) noexcept {
  head[0] = tagOf(StorageCode::text);
  if (length < shortLengthEnd) {
    head[1] = static_cast<unsigned char>(length);
    return 2;
  }
  head[1] = static_cast<unsigned char>(longLengthBit | (length >> 24));
  head[2] = static_cast<unsigned char>(length >> 16);
  head[3] = static_cast<unsigned char>(length >> 8);
  head[4] = static_cast<unsigned char>(length);
  return largestTextHead;
}

void noteLength(std::uint32_t length, ColumnDefinition* column) noexcept {
  column->maxLength = std::max(column->maxLength, static_cast<std::int32_t>(length));
}

/// Writes a text and its terminator, which follows it only if it was not cut.
Result writeTextBytes(std::string_view text, bool cut, ColumnDefinition* column, np_fio_handle file,
                      std::int64_t* offset) noexcept {
  const auto length = static_cast<std::uint32_t>(text.size()) + 1;
  unsigned char* head = np_fio_reserve(file, largestTextHead);
  if (head == nullptr) {
    return Result::fileFailed;
  }
  const int headSize = putTextHead(length, head);
  np_fio_commit(file, headSize);
  const int together = static_cast<int>(cut ? length - 1 : length);
  if (together != 0 && np_fio_putb(file, text.data(), together) != together) {
    return Result::fileFailed;
  }
  if (cut && np_fio_putb(file, "", 1) != 1) {
    return Result::fileFailed;
  }
  *offset += headSize + static_cast<std::int64_t>(length);
  noteLength(length, column);
  return Result::done;
}

Result writeCutText(std::string_view text, ColumnDefinition* column, np_fio_handle file,
                    std::int64_t* offset) noexcept {
  const auto width = static_cast<std::size_t>(column->width);
  if (column->width < 1 || text.size() <= width) [[likely]] {
    return writeTextBytes(text, false, column, file, offset);
  }
  const std::size_t size = zvbCutAtCharacter(text.data(), text.size(), width);
  return writeTextBytes(text.substr(0, size), true, column, file, offset);
}

Result writeText(const ZvbDatavar& value, ColumnDefinition* column, np_fio_handle file,
                 std::int64_t* offset) noexcept {
  if (value.holdsText()) [[likely]] {
    return writeCutText(value.asTextView(), column, file, offset);
  }
  const ZvbString text = value.asString();
  if (text.memoryShort()) {
    return Result::memoryShort;
  }
  if (text.isNull()) {
    return writeNull(file, offset);
  }
  return writeCutText(text.asView(), column, file, offset);
}

bool pass(np_fio_handle file, int count) noexcept {
  return np_fio_seek64(file, count, npFioFromHere) >= 0;
}

/// A length of four bytes.
std::int32_t longLength(unsigned char first, const unsigned char* rest) noexcept {
  return ((first & ~longLengthBit) << 24) | (rest[0] << 16) | (rest[1] << 8) | rest[2];
}

bool readTextLength(np_fio_handle file, std::int32_t* length, std::int64_t* offset) noexcept {
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
    *length = longLength(first, rest);
  }
  return *length > 0;
}

Result readText(const Source& source, ZvbDatavar* target, std::int64_t* offset) noexcept {
  std::int32_t length = 0;
  if (!readTextLength(source.file, &length, offset)) {
    return Result::fileFailed;
  }
  *offset += length;
  if (target == nullptr) {
    return pass(source.file, length) ? Result::done : Result::fileFailed;
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
    bool memoryShort = false;
    const char* bytes = source.buffer->read(source.file, length, &memoryShort);
    if (bytes == nullptr) {
      return memoryShort ? Result::bufferShort : Result::fileFailed;
    }
    target->assign(bytes, static_cast<std::size_t>(length));
  }
  return target->memoryShort() ? Result::memoryShort : Result::done;
}

}  // namespace

unsigned char* putLongTextInPlace(ColumnDefinition* column, const ZvbDatavar& value,
                                  unsigned char* at, const unsigned char* end) noexcept {
  const std::string_view text = value.asTextView();
  const auto length = static_cast<std::uint32_t>(text.size()) + 1;
  if (end - at < largestTextHead + std::int64_t{length}) {
    return nullptr;
  }
  at += putTextHead(length, at);
  std::memcpy(at, text.data(), length);
  noteLength(length, column);
  return at + length;
}

const unsigned char* readLongTextInPlace(std::int32_t limit, ZvbDatavar* target,
                                         const unsigned char* at,
                                         const unsigned char* end) noexcept {
  const bool isLong = (at[1] & longLengthBit) != 0;
  const std::int32_t length = isLong ? longLength(at[1], at + 2) : at[1];
  at += isLong ? largestTextHead : 2;
  if (length < 1 || length > limit || end - at < length) {
    return nullptr;
  }
  target->assign(reinterpret_cast<const char*>(at), static_cast<std::size_t>(length));
  return target->memoryShort() ? nullptr : at + length;
}

Result encodeValue(ColumnDefinition* column, const ZvbDatavar& value, np_fio_handle file,
                   std::int64_t* offset) noexcept {
  if (value.isNull() && value.memoryShort()) {
    return Result::memoryShort;
  }
  if (!value.isNull() && typeOf(column->storageCode) == zvbTypeString) {
    return writeText(value, column, file, offset);
  }
  unsigned char* room = np_fio_reserve(file, fixedValueSize);
  if (room == nullptr) {
    return Result::fileFailed;
  }
  // Never null: the room suffices for all that is no text, and memory is not short.
  const unsigned char* next = encodeInPlace(column, value, room, room + fixedValueSize);
  np_fio_commit(file, static_cast<int>(next - room));
  *offset += next - room;
  return Result::done;
}

Result decodeValue(Source source, ZvbDatavar* target, std::int64_t* offset) noexcept {
  unsigned char value[fixedValueSize];
  if (np_fio_getb(source.file, value, 1) != 1) {
    return Result::fileFailed;
  }
  *offset += 1;
  if (value[0] == tagOf(StorageCode::text)) {
    return readText(source, target, offset);
  }
  const int size = fixedSizeOf(value[0]);
  if (size == 0) {
    return Result::fileFailed;
  }
  const int payload = size - 1;
  *offset += payload;
  if (target == nullptr) {
    return pass(source.file, payload) ? Result::done : Result::fileFailed;
  }
  if (payload != 0 && np_fio_getb(source.file, value + 1, payload) != payload) {
    return Result::fileFailed;
  }
  (void)decodeFixedInPlace(source, target, value, value + size);
  return Result::done;
}

}  // namespace valueCodec
