#include "datafile/RecordCodec.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include "base/zvb_bytes.h"

namespace {

using sortItem::get;
using sortItem::put;

constexpr unsigned char nullForm = 0;
constexpr unsigned char doubleForm = 6;  // beside the types, 1 to 5

constexpr unsigned char realSign = 1;
constexpr unsigned char realLongExponent = 2;
constexpr unsigned realSizeShift = 3;
constexpr std::size_t largestCoefficient = 16;
constexpr std::uint64_t packedSign = std::uint64_t{1} << 62;

constexpr std::size_t longText = 255;
constexpr std::size_t largestReal = 1 + 4 + largestCoefficient;
constexpr std::size_t textHead = 5;  // at most

/// The bytes that a number needs, 1 to 8.
std::size_t bytesOf(std::uint64_t number) noexcept {
  return (static_cast<std::size_t>(std::bit_width(number | 1U)) + 7) / 8;
}

/// Writes all 8 bytes; what comes next overwrites those that are not needed.
void putNumber(unsigned char* bytes, std::uint64_t number) noexcept {
  put(bytes, zvbLowestFirst(number));
}

/// A number of 1 to 8 bytes, behind which there are at least slack bytes.
std::uint64_t getNumber(const unsigned char* bytes, std::size_t size) noexcept {
  const std::size_t unused = 64 - 8 * size;
  return zvbLowestFirst(get<std::uint64_t>(bytes)) << unused >> unused;
}

unsigned char* writeInteger(std::int64_t integer, unsigned char* bytes) noexcept {
  const auto number =
      (static_cast<std::uint64_t>(integer) << 1U) ^ static_cast<std::uint64_t>(integer >> 63);
  const std::size_t size = bytesOf(number);
  *bytes = static_cast<unsigned char>(size);
  putNumber(bytes + 1, number);
  return bytes + 1 + size;
}

unsigned char* writeReal(const ZvbReal& real, unsigned char* bytes) noexcept {
  std::uint64_t words[3];
  real.asFD(&words);
  const auto exponent = static_cast<std::int32_t>(static_cast<std::uint32_t>(words[0]));
  const bool isLong = exponent != static_cast<std::int8_t>(exponent);
  const std::size_t size = words[2] == 0 ? bytesOf(words[1]) : 8 + bytesOf(words[2]);
  bytes[0] = static_cast<unsigned char>(((words[0] & packedSign) != 0 ? realSign : 0) |
                                        (isLong ? realLongExponent : 0) | size << realSizeShift);
  putNumber(bytes + 1, words[0]);  // its lowest bytes are the exponent's
  bytes += isLong ? 5 : 2;
  putNumber(bytes, words[1]);
  if (words[2] != 0) [[unlikely]] {
    putNumber(bytes + 8, words[2]);
  }
  return bytes + size;
}

unsigned char* writeText(const ZvbDatavar& value, unsigned char* bytes) noexcept {
  const std::size_t size = value.asTextView().size();
  if (size < longText) [[likely]] {
    *bytes++ = static_cast<unsigned char>(size);
  } else {
    *bytes = longText;
    put(bytes + 1, static_cast<std::uint32_t>(size));
    bytes += 5;
  }
  value.copyTextTo(reinterpret_cast<char*>(bytes));
  return bytes + size;
}

/// A value that has the type.
unsigned char* writeTyped(zvbType type, const ZvbDatavar& value, unsigned char* bytes) noexcept {
  bool failed = false;
  switch (type) {
    case zvbTypeBoolean:
      *bytes = value.asBool(&failed) ? 1 : 0;
      return bytes + 1;
    case zvbTypeInteger:
      return writeInteger(value.asInt64(&failed), bytes);
    case zvbTypeDate:
      put(bytes, value.asDouble(&failed));
      return bytes + 8;
    case zvbTypeReal:
      return writeReal(value.asReal(&failed), bytes);
    default:
      return writeText(value, bytes);
  }
}

/// The most bytes of a value of the type, the text itself aside.
constexpr std::size_t largestForm(zvbType type) noexcept {
  switch (type) {
    case zvbTypeBoolean:
      return 1;
    case zvbTypeInteger:
      return 9;
    case zvbTypeDate:
      return 8;
    case zvbTypeReal:
      return largestReal;
    default:
      return textHead;
  }
}

std::size_t textSize(const ZvbDatavar& value) noexcept {
  return value.holdsText() ? value.asTextView().size() : 0;
}

/// A null, or a value that its column's type cannot hold.
unsigned char* writeOther(const ZvbDatavar& value, unsigned char* bytes) noexcept {
  if (value.isNull()) {
    *bytes = nullForm;
    return bytes + 1;
  }
  bool failed = false;
  const zvbType type = value.type();
  if (type == zvbTypeReal && (void(value.asReal(&failed)), failed)) {
    *bytes = doubleForm;
    put(bytes + 1, value.asDouble(&failed));
    return bytes + 9;
  }
  *bytes = static_cast<unsigned char>(type);
  return writeTyped(type, value, bytes + 1);
}

/// Reads forms one after another and never beyond their end.
class FormReader {
 public:
  FormReader(const unsigned char* bytes, std::size_t size) noexcept
      : next_(bytes), end_(bytes + size) {}

  /// The next `size` bytes, or null.
  const unsigned char* take(std::size_t size) noexcept {
    if (static_cast<std::size_t>(end_ - next_) < size) [[unlikely]] {
      end_ = next_;
      return nullptr;
    }
    const unsigned char* bytes = next_;
    next_ += size;
    return bytes;
  }

  [[nodiscard]] bool readTyped(zvbType type, ZvbDatavar* value) noexcept {
    switch (type) {
      case zvbTypeBoolean:
        return assign(1, [value](const unsigned char* bytes) { value->assign(*bytes != 0); });
      case zvbTypeInteger:
        return readInteger(value);
      case zvbTypeDate:
        return assign(8, [value](const unsigned char* bytes) {
          value->assign(get<double>(bytes));
          value->setType(zvbTypeDate);
        });
      case zvbTypeReal:
        return readReal(value);
      default:
        return readText(value);
    }
  }

  /// `type` is the column's, which a null gets.
  [[nodiscard]] bool readOther(zvbType type, ZvbDatavar* value) noexcept {
    const unsigned char* form = take(1);
    if (form == nullptr || *form > doubleForm) {
      return false;
    }
    if (*form == nullForm) {
      value->setNull();
      return value->setType(type);
    }
    if (*form == doubleForm) {
      return assign(8, [value](const unsigned char* bytes) { value->assign(get<double>(bytes)); });
    }
    return readTyped(static_cast<zvbType>(*form), value);
  }

 private:
  template <typename Take>
  bool assign(std::size_t size, const Take& takeBytes) noexcept {
    const unsigned char* bytes = take(size);
    if (bytes == nullptr) [[unlikely]] {
      return false;
    }
    takeBytes(bytes);
    return true;
  }

  bool readInteger(ZvbDatavar* value) noexcept {
    const unsigned char* const head = take(1);
    if (head == nullptr || *head - 1U >= 8) [[unlikely]] {
      return false;
    }
    return assign(*head, [value, size = *head](const unsigned char* bytes) {
      const std::uint64_t number = getNumber(bytes, size);
      value->assign(static_cast<std::int64_t>((number >> 1U) ^ (0 - (number & 1U))));
    });
  }

  bool readReal(ZvbDatavar* value) noexcept {
    const unsigned char* const head = take(1);
    if (head == nullptr) [[unlikely]] {
      return false;
    }
    const std::size_t size = *head >> realSizeShift;
    const bool isLong = (*head & realLongExponent) != 0;
    const unsigned char* bytes = take((isLong ? 4 : 1) + size);
    if (bytes == nullptr || size - 1 >= largestCoefficient) [[unlikely]] {
      return false;
    }
    std::uint64_t words[3] = {};
    if (isLong) [[unlikely]] {
      words[0] = getNumber(bytes, 4);
      bytes += 4;
    } else {
      words[0] = static_cast<std::uint32_t>(static_cast<std::int8_t>(*bytes++));
    }
    words[0] |= (*head & realSign) != 0 ? packedSign : 0;
    words[1] = getNumber(bytes, std::min<std::size_t>(size, 8));
    words[2] = size > 8 ? getNumber(bytes + 8, size - 8) : 0;
    value->assign(ZvbReal::fromFD(words, false));
    return true;
  }

  bool readText(ZvbDatavar* value) noexcept {
    const unsigned char* head = take(1);
    if (head == nullptr) [[unlikely]] {
      return false;
    }
    std::size_t size = *head;
    if (size == longText) {
      head = take(4);
      if (head == nullptr) {
        return false;
      }
      size = get<std::uint32_t>(head);
    }
    return assign(size,
                  [value, size](const unsigned char* bytes) {
                    value->assign(reinterpret_cast<const char*>(bytes), size);
                  }) &&
           !value->memoryShort();
  }

  const unsigned char* next_;
  const unsigned char* end_;
};

}  // namespace

bool RecordCodec::setColumns(const zvbType* types, std::size_t count) noexcept {
  types_.reset(new (std::nothrow) zvbType[count]);
  isForeign_.reset(new (std::nothrow) bool[count]());
  sources_.reset(new (std::nothrow) const ZvbDatavar*[count]());
  if (types_ == nullptr || isForeign_ == nullptr || sources_ == nullptr) {
    return false;
  }
  std::copy(types, types + count, types_.get());
  columnCount_ = count;
  return true;
}

bool RecordCodec::setKeys(std::unique_ptr<SortKey[]> keys, std::size_t count) noexcept {
  keyOf_.reset(new (std::nothrow) std::uint32_t[columnCount_]);
  if (keyOf_ == nullptr) {
    return false;
  }
  keys_ = std::move(keys);
  keyCount_ = count;
  std::fill_n(keyOf_.get(), columnCount_, noKey);
  for (std::size_t k = 0; k < count; ++k) {
    std::uint32_t& keyOf = keyOf_[keys_[k].column];
    if (keyOf == noKey && sortKey::keepsValue(keys_[k], types_[keys_[k].column])) {
      keyOf = static_cast<std::uint32_t>(k);
      keysRead_ = k + 1;
    }
  }
  return true;
}

/// Makes `own` the column's value, converted to its type; or marks the value as foreign and leaves
/// it. False when memory is short.
bool RecordCodec::convert(std::size_t column, ZvbDatavar* own) noexcept {
  ZvbDatavar converted = *sources_[column];
  bool isForeign = !converted.setType(types_[column]);
  if (types_[column] == zvbTypeReal && !isForeign) {
    converted.assign(converted.asReal(&isForeign));  // not every double is a decimal
  }
  if (converted.memoryShort()) {
    return false;
  }
  if (isForeign) {
    isForeign_[column] = true;
    hasForeign_ = true;
    return true;
  }
  *own = converted;
  sources_[column] = own;
  return !own->memoryShort();
}

/// Collects the values, converts those that are not of their column's type, and counts the most
/// bytes that all take. False when memory is short.
bool RecordCodec::collect(const ZvbDatavar* const* values, ZvbDatavar* own,
                          std::size_t* most) noexcept {
  if (hasForeign_) {
    std::fill_n(isForeign_.get(), columnCount_, false);
    hasForeign_ = false;
  }
  std::size_t size = bitmapSize();
  for (std::size_t i = 0; i < columnCount_; ++i) {
    const ZvbDatavar& value = *values[i];
    sources_[i] = &value;
    if (value.isNull()) [[unlikely]] {
      if (value.memoryShort()) {
        return false;
      }
      ++size;
      continue;
    }
    const zvbType type = types_[i];
    if ((value.type() != type || value.holdsDouble()) && !convert(i, &own[i])) [[unlikely]] {
      return false;
    }
    size += largestForm(type) + textSize(*sources_[i]);
    size += isForeign_[i] ? 1 + largestReal : 0;
  }
  *most = size;
  return true;
}

bool RecordCodec::prepare(const ZvbDatavar* const* values, ZvbDatavar* own, Sizes* most) noexcept {
  if (!collect(values, own, &most->values)) {
    return false;
  }
  most->key = 0;
  for (std::size_t k = 0; k < keyCount_; ++k) {
    const std::size_t column = keys_[k].column;
    most->key += types_[column] == zvbTypeString
                     ? sortKey::largestText(textSize(*sources_[column]), keys_[k].ignoreCase)
                     : sortKey::largestFixed;
  }
  return true;
}

SortItem RecordCodec::encode(const Sizes& most, unsigned char* item) const noexcept {
  const std::size_t headSize = sortItem::headSize(most.key, most.values);
  unsigned char* const key = item + headSize;
  unsigned char* next = key;
  for (std::size_t k = 0; k < keyCount_; ++k) {
    const std::size_t column = keys_[k].column;
    next = sortKey::write(keys_[k], types_[column], *sources_[column], isForeign_[column], next);
  }
  unsigned char* const values = next;
  std::memset(values, 0, bitmapSize());
  next += bitmapSize();
  for (std::size_t i = 0; i < columnCount_; ++i) {
    const ZvbDatavar& value = *sources_[i];
    if (value.isNull() || isForeign_[i]) [[unlikely]] {
      values[i / 8] = static_cast<unsigned char>(values[i / 8] | 1U << (i % 8));
      next = writeOther(value, next);
    } else if (!isLeftOut(i)) {
      next = writeTyped(types_[i], value, next);
    }
  }
  const SortItem written = {key, static_cast<std::size_t>(values - key), values,
                            static_cast<std::size_t>(next - values)};
  sortItem::writeHead(item, headSize, written.keySize, written.valuesSize);
  return written;
}

namespace {

bool isOther(const unsigned char* bitmap, std::size_t column) noexcept {
  return (bitmap[column / 8] >> (column % 8) & 1U) != 0;
}

RecordCodec::Decoded whyNot(const ZvbDatavar& value) noexcept {
  return value.memoryShort() ? RecordCodec::Decoded::memoryShort : RecordCodec::Decoded::damaged;
}

}  // namespace

RecordCodec::Decoded RecordCodec::decode(unsigned char* item, ZvbDatavar* record) const noexcept {
  const SortItem read = sortItem::read(item);
  const Decoded decoded = decodeValues(read, record);
  return decoded == Decoded::done ? decodeKey(read, item + (read.key - item), record) : decoded;
}

RecordCodec::Decoded RecordCodec::decodeValues(const SortItem& item,
                                               ZvbDatavar* record) const noexcept {
  FormReader reader(item.values, item.valuesSize);
  const unsigned char* const bitmap = reader.take(bitmapSize());
  if (bitmap == nullptr) {
    return Decoded::damaged;
  }
  for (std::size_t i = 0; i < columnCount_; ++i) {
    ZvbDatavar& value = record[i];
    if (isOther(bitmap, i)) [[unlikely]] {
      if (!reader.readOther(types_[i], &value)) {
        return whyNot(value);
      }
    } else if (!isLeftOut(i) && !reader.readTyped(types_[i], &value)) [[unlikely]] {
      return whyNot(value);
    }
  }
  return Decoded::done;
}

/// `key` is where the key of the item begins.
RecordCodec::Decoded RecordCodec::decodeKey(const SortItem& item, unsigned char* key,
                                            ZvbDatavar* record) const noexcept {
  const unsigned char* const bitmap = item.values;
  for (std::size_t k = 0; k < keysRead_; ++k) {
    const std::size_t column = keys_[k].column;
    const bool isWanted = keyOf_[column] == k && !isOther(bitmap, column);
    key = sortKey::read(keys_[k], types_[column], key, item.values,
                        isWanted ? &record[column] : nullptr);
    if (key == nullptr) [[unlikely]] {
      return isWanted ? whyNot(record[column]) : Decoded::damaged;
    }
  }
  return Decoded::done;
}
