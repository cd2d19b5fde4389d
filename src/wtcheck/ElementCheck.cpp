#include "wtcheck/ElementCheck.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/ZvbReal.h"
#include "wtelem/FileFields.h"
#include "wtelem/ValueCodec.h"

void ElementCheck::run() noexcept {
  if (!openFile(&data_, element_.dataName)) {
    return;
  }
  if (element_.indexName[0] != '\0' && openFile(&index_, element_.indexName)) {
    checkIndexSize();
  }
  if (!report_.isOver()) {
    checkRows();
  }
}

bool ElementCheck::openFile(CheckedFile* file, const char* name) noexcept {
  if (file->open(directories_, name, SearchOrder::around)) {
    return true;
  }
  if (file->status() == npFioNotFound) {
    report_.add(name, 0, "the file is in none of the directories");
  } else if (file->status() == npFioNotRegular) {
    report_.add(file->path(), 0, "the file of an element must be a regular one");
  } else {
    report_.fail(file->openingFailure("element"));
  }
  return false;
}

void ElementCheck::checkIndexSize() noexcept {
  const std::int64_t wanted = element_.rows * indexEntrySize;
  entries_ = std::min(element_.rows, index_.size() / indexEntrySize);
  if (index_.size() < wanted) {
    report_.add(index_.path(), index_.size(),
                "the index ends after %" PRId64 " bytes: its %" PRId64 " rows take %" PRId64,
                index_.size(), element_.rows, wanted);
  } else if (index_.size() > wanted && !element_.isLast) {
    report_.add(index_.path(), wanted,
                "%" PRId64 " bytes follow the entry of the last row: the index must end here",
                index_.size() - wanted);
  }
}

// ---- Where rows begin

void ElementCheck::checkRows() noexcept {
  // Rows without columns take no bytes: there is nothing to see but their entries.
  const std::int64_t rows = columns_.empty() ? entries_ : element_.rows;
  for (; row_ < rows; ++row_) {
    if (!readEntry() || !(isStartKnown_ ? confirmStart() : takeStartFromEntry()) ||
        !data_.moveTo(start_)) {
      return;
    }
    isStartKnown_ = checkRow();
    if (report_.isOver()) {
      return;
    }
    if (isStartKnown_) {
      start_ = data_.position();
    }
  }
  checkEnd();
}

/// Reads what the index has for the row, if anything.
bool ElementCheck::readEntry() noexcept {
  isEntryRead_ = row_ < entries_;
  unsigned char bytes[indexEntrySize] = {};
  if (isEntryRead_ && !index_.read(bytes, indexEntrySize)) {
    return false;
  }
  nextEntry_ = loadField<std::int64_t>(bytes, element_.swap);
  return true;
}

/// The row begins where the one before it ended, and the index should say so.
bool ElementCheck::confirmStart() noexcept {
  isConfirmed_ = !isEntryRead_ || nextEntry_ == start_;
  if (!isConfirmed_) {
    report_.add(index_.path(), row_ * indexEntrySize,
                "row %" PRId64 " begins at byte %" PRId64 " of the data: its entry tells %" PRId64,
                element_.firstRow + row_, start_, nextEntry_);
    return !report_.isOver();
  }
  sureStart_ = start_;
  return true;
}

/// The row before could not be read to its end.
bool ElementCheck::takeStartFromEntry() noexcept {
  if (!isEntryRead_) {
    return false;
  }
  const bool isPossible = nextEntry_ > sureStart_ && nextEntry_ < data_.size();
  if (!isPossible && !dataEnded_) {
    report_.add(index_.path(), row_ * indexEntrySize,
                "row %" PRId64 " is said to begin at byte %" PRId64
                ": a row before it begins at %" PRId64 ", the data end at %" PRId64,
                element_.firstRow + row_, nextEntry_, sureStart_, data_.size());
  }
  start_ = nextEntry_;
  sureStart_ = start_;
  isConfirmed_ = true;
  return isPossible;
}

/// Data in front of the last element have no writer any more that could leave something behind.
void ElementCheck::checkEnd() noexcept {
  if (isStartKnown_ && !element_.isLast && data_.size() > start_) {
    report_.add(data_.path(), start_,
                "%" PRId64 " bytes follow the last row: the data must end here",
                data_.size() - start_);
  }
}

// ---- Values

bool ElementCheck::checkRow() noexcept {
  dataEnded_ = false;
  column_ = 0;
  for (CheckedColumn& column : columns_) {
    if (!checkValue(&column)) {
      return false;
    }
    ++column_;
  }
  return true;
}

bool ElementCheck::checkValue(CheckedColumn* column) noexcept {
  unsigned char value[valueCodec::fixedValueSize] = {};
  if (!readPart(value, 1) || !checkTag(*column, value[0])) {
    return false;
  }
  if (value[0] == valueCodec::tagOf(StorageCode::text)) {
    return checkText(column);
  }
  const int payload = valueCodec::fixedSizeOf(value[0]) - 1;
  return payload == 0 || (readPart(value + 1, payload) && checkPayload(value));
}

bool ElementCheck::checkTag(const CheckedColumn& column, unsigned char tag) noexcept {
  constexpr unsigned char highest = valueCodec::tagOf(StorageCode::text);
  const unsigned char code = tag & static_cast<unsigned char>(~valueCodec::nullBit);
  if (tag == valueCodec::nullBit) {
    return true;
  }
  if (!column.hasKnownCode) {
    return (code >= 1 && code <= highest) ||
           refuse(data_.position() - 1, "the tag is %02x, which stands for no type", unsigned{tag});
  }
  const unsigned char wanted =
      column.code == StorageCode::none ? highest : valueCodec::tagOf(column.code);
  return code == wanted || refuse(data_.position() - 1,
                                  "the tag is %02x: %02x is expected, or %02x or %02x for a null",
                                  unsigned{tag}, unsigned{wanted}, unsigned{valueCodec::nullBit},
                                  unsigned{wanted} | valueCodec::nullBit);
}

/// Checks a tag and its payload, which stand in front of the position.
bool ElementCheck::checkPayload(const unsigned char* value) noexcept {
  const std::int64_t begin = data_.position() - valueCodec::fixedSizeOf(value[0]) + 1;
  switch (static_cast<StorageCode>(value[0])) {
    case StorageCode::boolean:
      return value[1] <= 1 ||
             refuse(begin, "the boolean is %u: 0 or 1 is expected", unsigned{value[1]});
    case StorageCode::date:
      return !std::isnan(valueCodec::numberAt<double>(value + 1, element_.swap)) ||
             refuse(begin, "the date's number of days is none");
    case StorageCode::real: {
      std::uint64_t words[3];
      std::memcpy(words, value + 1, sizeof words);
      return !ZvbReal::fromFD(words, element_.swap).isNull() ||
             refuse(begin,
                    "the decimal is none: it has unknown bits, is marked as null or has more than "
                    "%d digits",
                    ZvbReal::maximumDigits);
    }
    default:
      return true;
  }
}

bool ElementCheck::checkText(CheckedColumn* column) noexcept {
  std::int64_t length = 0;
  if (!checkTextLength(&length)) {
    return false;
  }
  const std::int64_t begin = data_.position();
  if (length > data_.left()) {
    dataEnded_ = true;
    return refuse(begin, "the text has %" PRId64 " bytes: the data end after %" PRId64, length,
                  data_.left());
  }
  std::int64_t passed = 0;
  bool isTerminated = false;
  if (!data_.passText(length, &passed, &isTerminated)) {
    return false;
  }
  if (!isTerminated) {
    return refuse(begin + length - 1, "the text of %" PRId64 " bytes does not end in a zero byte",
                  length);
  }
  if (passed < length) {
    return refuse(begin + passed - 1,
                  "the text of %" PRId64 " bytes has a zero byte before its end", length);
  }
  column->longest = std::max(column->longest, static_cast<std::int32_t>(length));
  return true;
}

bool ElementCheck::checkTextLength(std::int64_t* length) noexcept {
  constexpr int bytesOfLong = 4;
  const std::int64_t begin = data_.position();
  unsigned char bytes[bytesOfLong] = {};
  if (!readPart(bytes, 1)) {
    return false;
  }
  if ((bytes[0] & valueCodec::longLengthBit) == 0) {
    *length = bytes[0];
    return *length > 0 || refuse(begin, "the length of the text is 0: its terminator counts");
  }
  if (!readPart(bytes + 1, bytesOfLong - 1)) {
    return false;
  }
  *length = (static_cast<std::int64_t>(bytes[0] & ~valueCodec::longLengthBit) << 24) |
            (std::int64_t{bytes[1]} << 16) | (std::int64_t{bytes[2]} << 8) | bytes[3];
  return *length >= valueCodec::shortLengthEnd ||
         refuse(begin,
                "the length of the text, %" PRId64 ", takes 4 bytes: below %" PRIu32
                " it takes one",
                *length, valueCodec::shortLengthEnd);
}

bool ElementCheck::readPart(unsigned char* bytes, int count) noexcept {
  if (data_.left() < count) {
    dataEnded_ = true;
    return refuse(data_.position(), "%d bytes of the value are missing: the data end here",
                  count - static_cast<int>(data_.left()));
  }
  return data_.read(bytes, count);
}

/// A finding in the row; false, as the row cannot be read on. In a row whose beginning is in doubt
/// it would tell nothing new.
bool ElementCheck::refuse(std::int64_t offset, const char* rule, ...) noexcept {
  if (!isConfirmed_) {
    return false;
  }
  char text[192];  // longer than any of the rules above with its numbers
  std::va_list arguments;
  va_start(arguments, rule);
  (void)std::vsnprintf(text, sizeof text, rule, arguments);
  va_end(arguments);
  report_.add(data_.path(), offset, "row %" PRId64 ", column %d: %s", element_.firstRow + row_,
              column_, text);
  return false;
}
