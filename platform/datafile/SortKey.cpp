#include "datafile/SortKey.h"

#include <bit>
#include <cstring>

#include "base/zvb_bytes.h"

namespace {

constexpr unsigned char nullFirst = 0;
constexpr unsigned char notNull = 1;
constexpr unsigned char nullLast = 2;

constexpr std::uint64_t signBit = std::uint64_t{1} << 63;

void putWord(unsigned char* bytes, std::uint64_t word) noexcept {
  word = zvbHighestFirst(word);
  std::memcpy(bytes, &word, sizeof word);
}

void turnAround(unsigned char* bytes, const unsigned char* end) noexcept {
  for (; bytes != end; ++bytes) {
    *bytes = static_cast<unsigned char>(~*bytes);
  }
}

/// The bits of a double that is no NaN, as a number that compares like it.
std::uint64_t orderedBits(double number) noexcept {
  const auto bits = std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
  return (bits & signBit) != 0 ? ~bits : bits | signBit;
}

unsigned char* writeText(const ZvbDatavar& value, bool ignoreCase, unsigned char* bytes) noexcept {
  std::size_t size = value.asTextView().size();
  if (ignoreCase) {
    size = zvbFoldText(value.asTextView(), reinterpret_cast<char*>(bytes));
  } else {
    value.copyTextTo(reinterpret_cast<char*>(bytes));
  }
  bytes[size] = 0;
  return bytes + size + 1;
}

unsigned char* writeValue(const SortKey& key, zvbType type, const ZvbDatavar& value,
                          unsigned char* bytes) noexcept {
  bool failed = false;  // the value has the type already
  switch (type) {
    case zvbTypeBoolean:
      *bytes = value.asBool(&failed) ? 1 : 0;
      return bytes + 1;
    case zvbTypeInteger:
      putWord(bytes, static_cast<std::uint64_t>(value.asInt64(&failed)) ^ signBit);
      return bytes + sizeof(std::uint64_t);
    case zvbTypeDate:
      putWord(bytes, orderedBits(value.asDouble(&failed)));
      return bytes + sizeof(std::uint64_t);
    case zvbTypeReal:
      return bytes + value.asReal(&failed).toOrderedBytes(bytes);
    default:
      return writeText(value, key.ignoreCase, bytes);
  }
}

/// The bytes of a value behind its marker; 0 when the rest of the key is too short.
std::size_t sizeOf(const SortKey& key, zvbType type, const unsigned char* bytes,
                   std::size_t rest) noexcept {
  std::size_t size = sizeof(std::uint64_t);
  if (type == zvbTypeBoolean) {
    size = 1;
  } else if (type == zvbTypeReal && rest != 0) {
    const auto first = static_cast<unsigned char>(key.descending ? ~bytes[0] : bytes[0]);
    size = ZvbReal::orderedSizeOf(first);
  } else if (type == zvbTypeString) {
    const void* const zero = std::memchr(bytes, key.descending ? 0xFF : 0, rest);
    size = zero == nullptr
               ? rest + 1
               : static_cast<std::size_t>(static_cast<const unsigned char*>(zero) - bytes) + 1;
  }
  return size <= rest ? size : 0;
}

std::uint64_t getWord(const unsigned char* bytes) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return zvbHighestFirst(word);
}

void assignValue(const SortKey& key, zvbType type, unsigned char* bytes, std::size_t size,
                 ZvbDatavar* target) noexcept {
  if (type == zvbTypeInteger) {
    const std::uint64_t word = getWord(bytes) ^ signBit;
    target->assign(static_cast<std::int64_t>(key.descending ? ~word : word));
    return;
  }
  if (key.descending) {
    turnAround(bytes, bytes + size);
  }
  if (type == zvbTypeBoolean) {
    target->assign(*bytes != 0);
  } else {
    target->assign(reinterpret_cast<const char*>(bytes), size - 1);
  }
}

}  // namespace

bool sortKey::keepsValue(const SortKey& key, zvbType type) noexcept {
  return type == zvbTypeBoolean || type == zvbTypeInteger ||
         (type == zvbTypeString && !key.ignoreCase);
}

unsigned char* sortKey::read(const SortKey& key, zvbType type, unsigned char* bytes,
                             const unsigned char* end, ZvbDatavar* target) noexcept {
  if (bytes == end) {
    return nullptr;
  }
  if (*bytes != notNull) {
    return target == nullptr ? bytes + 1 : nullptr;
  }
  ++bytes;
  const std::size_t size = sizeOf(key, type, bytes, static_cast<std::size_t>(end - bytes));
  if (size == 0) {
    return nullptr;
  }
  if (target != nullptr) {
    assignValue(key, type, bytes, size, target);
    if (target->memoryShort()) {
      return nullptr;
    }
  }
  return bytes + size;
}

unsigned char* sortKey::write(const SortKey& key, zvbType type, const ZvbDatavar& value,
                              bool isForeign, unsigned char* bytes) noexcept {
  if (isForeign || value.isNull()) {
    *bytes = key.nullsLast ? nullLast : nullFirst;
    return bytes + 1;
  }
  *bytes = notNull;
  unsigned char* const start = bytes + 1;
  unsigned char* const end = writeValue(key, type, value, start);
  if (key.descending) {
    turnAround(start, end);
  }
  return end;
}
