/// Turns the values of a record into the bytes of an item (SortItem.h) and back.
///
/// The values of an item: a bit for each column, set when the column's value has another form than
/// its type's, then each column in order. A value that can be read from the key
/// (sortKey::keepsValue) and has no other form is left out.
///
///   boolean   1 byte
///   integer   1 byte size, then as many bytes of the number: twice it, or twice its distance from
///             -1 plus 1 below 0
///   date      8 bytes, the double
///   real      1 byte: bit 0 the sign, bit 1 set when the exponent takes 4 bytes and not 1, from
///             bit 3 on the bytes of the coefficient; then the exponent and the coefficient
///   text      1 byte size below 255, or 255 and 4 bytes size; then the text
///   other     1 byte, a zvbType, 0 for a null, or 6 for a real that only a double can hold; then
///             the form of that type (of 6 the double): a value that cannot be converted to the
///             column's type, just as it was given
///
/// Sizes and numbers have their lowest byte first. What the small sizes save is worth more than the
/// time they take: less memory is touched, and less goes to work files.
///
/// Thread rule: one thread at a time.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ZvbDatavar.h"
#include "datafile/SortItem.h"
#include "datafile/SortKey.h"

class RecordCodec {
 public:
  /// Takes a copy of the columns' types. False when memory is short.
  [[nodiscard]] bool setColumns(const zvbType* types, std::size_t count) noexcept;
  /// Takes over the keys, whose columns exist; after the columns. False when memory is short.
  [[nodiscard]] bool setKeys(std::unique_ptr<SortKey[]> keys, std::size_t count) noexcept;

  [[nodiscard]] std::size_t columnCount() const noexcept { return columnCount_; }
  [[nodiscard]] zvbType type(std::size_t column) const noexcept { return types_[column]; }

  struct Sizes {
    std::size_t key;
    std::size_t values;
  };
  /// Tells the most bytes that the key and the values of a record can take. A value of another type
  /// than its column's is converted first, into its place in `own`; it may lie there already. False
  /// when memory was short for that, or has been for a value.
  [[nodiscard]] bool prepare(const ZvbDatavar* const* values, ZvbDatavar* own,
                             Sizes* most) noexcept;
  /// Writes the item of the record that has been prepared, whose values are as they were then.
  /// There is room for those sizes and for sortItem::slack bytes.
  SortItem encode(const Sizes& most, unsigned char* item) const noexcept;

  enum class Decoded : std::uint8_t { done, damaged, memoryShort };
  /// Assigns the values of an item to the variants of a record. The item may be changed: it can be
  /// decoded once.
  [[nodiscard]] Decoded decode(unsigned char* item, ZvbDatavar* record) const noexcept;

 private:
  [[nodiscard]] std::size_t bitmapSize() const noexcept { return (columnCount_ + 7) / 8; }
  [[nodiscard]] bool isLeftOut(std::size_t column) const noexcept {
    return keyOf_[column] != noKey;
  }
  [[nodiscard]] Decoded decodeValues(const SortItem& item, ZvbDatavar* record) const noexcept;
  [[nodiscard]] Decoded decodeKey(const SortItem& item, unsigned char* key,
                                  ZvbDatavar* record) const noexcept;
  [[nodiscard]] bool convert(std::size_t column, ZvbDatavar* own) noexcept;
  [[nodiscard]] bool collect(const ZvbDatavar* const* values, ZvbDatavar* own,
                             std::size_t* most) noexcept;

  std::unique_ptr<zvbType[]> types_;
  // Of the record prepared last:
  std::unique_ptr<const ZvbDatavar*[]> sources_;  // its values
  std::unique_ptr<bool[]> isForeign_;
  bool hasForeign_ = false;  // any of them is set
  std::size_t columnCount_ = 0;
  static constexpr std::uint32_t noKey = 0xFFFFFFFF;

  std::unique_ptr<SortKey[]> keys_;
  std::size_t keyCount_ = 0;
  std::unique_ptr<std::uint32_t[]> keyOf_;  // by column: the key that keeps its value
  std::size_t keysRead_ = 0;                // the keys up to the last one that keeps a value
};
