#include "wtcheck/CatalogueCheck.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "wtcheck/ElementCheck.h"
#include "wtelem/CatalogueFormat.h"
#include "wtelem/FileFields.h"
#include "wtelem/FileNames.h"
#include "wtelem/messages.h"

namespace {

constexpr int ownVersion = 100;  // in hundredths

/// The fewest bytes that an element's record and a column's take.
constexpr std::int64_t leastElementSize = recordHeadSize + fileNames::sizeOf(fileNames::dataPrefix);
constexpr std::int64_t leastColumnSize = recordHeadSize + 1;

}  // namespace

void CatalogueCheck::run() noexcept {
  if (checkFixedPart() && checkColumns() && checkElements()) {
    checkRowCount();
    if (file_.left() > 0 && isWrittenAtOnce(file_.size())) {
      report_.add(file_.path(), file_.position(),
                  "%" PRId64 " bytes follow the last record: the catalogue must end here",
                  file_.left());
    }
  }
  checkLongestTexts();
}

template <typename Number>
Number CatalogueCheck::field(const unsigned char* bytes) const noexcept {
  return loadField<Number>(bytes, swap_);
}

CheckedColumns CatalogueCheck::columns() const noexcept { return {columns_.get(), columnsRead_}; }

// ---- Parts of records

bool CatalogueCheck::readPart(unsigned char* bytes, int count, const char* what) noexcept {
  if (file_.left() < count) {
    report_.add(file_.path(), file_.position(),
                "the catalogue ends inside %s: it takes %d bytes, %" PRId64 " are left", what,
                count, file_.left());
    return false;
  }
  return file_.read(bytes, count);
}

/// Passes over what a record's length tells beyond the bytes that are known and were read.
bool CatalogueCheck::passSurplus(std::int64_t lengthOffset, std::int64_t length, int known,
                                 const char* what) noexcept {
  if (length == known) {
    return true;
  }
  if (hasOwnVersion_ || length < known) {
    report_.add(file_.path(), lengthOffset, "%s has the length %" PRId64 ": %d is expected", what,
                length, known);
    return hasOwnVersion_;
  }
  const std::int64_t surplus = length - known;
  if (surplus > file_.left()) {
    report_.add(file_.path(), lengthOffset,
                "%s has the length %" PRId64 ": the catalogue has only %" PRId64 " bytes for it",
                what, length, known + file_.left());
    return false;
  }
  return file_.moveTo(file_.position() + surplus);
}

bool CatalogueCheck::checkName(std::int64_t lengthOffset, std::int64_t length,
                               const char* what) noexcept {
  if (length < 1 || length > file_.left()) {
    report_.add(file_.path(), lengthOffset,
                "%s has the length %" PRId64 ": 1 to %" PRId64 " bytes are possible", what, length,
                file_.left());
    return false;
  }
  const std::int64_t begin = file_.position();
  std::int64_t passed = 0;
  bool isTerminated = false;
  if (!file_.passText(length, &passed, &isTerminated)) {
    return false;
  }
  if (!isTerminated) {
    report_.add(file_.path(), begin + length - 1,
                "%s of %" PRId64 " bytes does not end in a zero byte", what, length);
  } else if (passed < length) {
    report_.add(file_.path(), begin + passed - 1,
                "%s of %" PRId64 " bytes has a zero byte before its end", what, length);
  }
  return isTerminated && passed == length;
}

/// Looks at a number of records beside the bytes that are left for them.
bool CatalogueCheck::hasRoomFor(std::uint32_t count, const char* what, std::int64_t countOffset,
                                std::int64_t leastSize) noexcept {
  const std::int64_t most =
      std::min<std::int64_t>(file_.left() / leastSize, std::numeric_limits<std::int32_t>::max());
  if (count > most) {
    report_.add(file_.path(), countOffset,
                "the number of %s is %" PRIu32 ": the catalogue has room for %" PRId64 " at most",
                what, count, most);
  }
  return count <= most;
}

// ---- The fixed part

bool CatalogueCheck::checkFixedPart() noexcept {
  unsigned char bytes[fixedHeaderSize] = {};
  if (!readPart(bytes, fixedHeaderSize, "its fixed part")) {
    return false;
  }
  const auto mark = loadField<std::uint16_t>(bytes, false);
  swap_ = mark == reversedBytes(byteOrderMark);
  if (mark != byteOrderMark && !swap_) {
    report_.add(file_.path(), 0,
                "the byte-order mark is %u: 1 is expected, in one byte order or the other",
                unsigned{mark});
    return false;
  }
  if (!checkVersion(field<std::int16_t>(bytes + 2))) {
    return false;
  }
  columnCount_ = field<std::uint32_t>(bytes + 8);
  elementCount_ = field<std::uint32_t>(bytes + 12);
  rowCount_ = field<std::int64_t>(bytes + 24);
  if (rowCount_ < 0) {
    report_.add(file_.path(), 24, "the number of rows is %" PRId64 ": it cannot be negative",
                rowCount_);
  }
  return passSurplus(4, field<std::uint16_t>(bytes + 4), fixedHeaderSize, "the fixed part") &&
         checkName(6, field<std::uint16_t>(bytes + 6), "the access key");
}

bool CatalogueCheck::checkVersion(std::int16_t version) noexcept {
  const bool isTooHigh = version / 100 > highestMajorVersion;
  if (isTooHigh || version < ownVersion) {
    report_.add(file_.path(), 2, "the version is %d hundredths: %d to %d are expected",
                int{version}, ownVersion, highestMajorVersion * 100 + 99);
  }
  hasOwnVersion_ = version <= ownVersion;
  return !isTooHigh;
}

// ---- Columns

bool CatalogueCheck::checkColumns() noexcept {
  if (!hasRoomFor(columnCount_, "columns", 8, leastColumnSize)) {
    return false;
  }
  while (columnsRead_ < columnCount_) {
    if (report_.isOver() || !makeRoomForColumn() || !checkColumn(&columns_[columnsRead_])) {
      return false;
    }
    ++columnsRead_;
  }
  return true;
}

/// Room is made for as many columns again as were found, not for as many as are said to be there.
bool CatalogueCheck::makeRoomForColumn() noexcept {
  if (columnsRead_ < columnCapacity_) {
    return true;
  }
  constexpr std::uint32_t firstCapacity = 64;
  const std::uint32_t capacity = std::max(2 * columnCapacity_, firstCapacity);
  std::unique_ptr<CheckedColumn[]> grown(new (std::nothrow) CheckedColumn[capacity]);
  if (grown == nullptr) {
    report_.fail(WT_MESSAGE(outOfMemory, "(column definition array)"));
    return false;
  }
  std::copy_n(columns_.get(), columnsRead_, grown.get());
  columns_ = std::move(grown);
  columnCapacity_ = capacity;
  return true;
}

bool CatalogueCheck::checkColumn(CheckedColumn* column) noexcept {
  const std::int64_t begin = file_.position();
  unsigned char bytes[recordHeadSize] = {};
  if (!readPart(bytes, recordHeadSize, "a column's record")) {
    return false;
  }
  const auto code = field<std::uint16_t>(bytes + 2);
  column->definition = begin;
  column->width = field<std::int32_t>(bytes + 8);
  column->maxLength = field<std::int32_t>(bytes + 12);
  column->hasKnownCode = code <= static_cast<std::uint16_t>(StorageCode::text);
  if (column->hasKnownCode) {
    column->code = static_cast<StorageCode>(code);
  } else {
    report_.add(file_.path(), begin + 2, "a column has the storage code %u: 0 to 5 are expected",
                unsigned{code});
  }
  if (column->maxLength < 0) {
    report_.add(file_.path(), begin + 12,
                "the longest text of a column has %" PRId32 " bytes: it cannot be negative",
                column->maxLength);
  }
  return passSurplus(begin, field<std::uint16_t>(bytes), recordHeadSize, "a column's head") &&
         checkName(begin + 4, field<std::uint32_t>(bytes + 4), "a column's name");
}

/// The rows decide, once they have been seen.
void CatalogueCheck::checkLongestTexts() noexcept {
  for (const CheckedColumn& column : columns()) {
    if (column.maxLength >= 0 && column.longest > column.maxLength) {
      report_.add(file_.path(), column.definition + 12,
                  "the longest text of a column is said to have %" PRId32
                  " bytes: the rows have one of %" PRId32,
                  column.maxLength, column.longest);
    }
    if (column.width >= 1 && column.longest - 1 > column.width) {
      report_.add(file_.path(), column.definition + 8,
                  "a column's width is %" PRId32 " bytes: the rows have a text of %" PRId32,
                  column.width, column.longest - 1);
    }
  }
}

// ---- Elements

bool CatalogueCheck::checkElements() noexcept {
  if (!hasRoomFor(elementCount_, "elements", 12, leastElementSize)) {
    return false;
  }
  for (std::uint32_t i = 1; i <= elementCount_; ++i) {
    if (report_.isOver() || !checkElement(i == elementCount_)) {
      return false;
    }
  }
  return true;
}

bool CatalogueCheck::checkElement(bool isLast) noexcept {
  bool hasIndex = false;
  std::int64_t rows = 0;
  char dataName[nameRoom] = "";
  char indexName[nameRoom] = "";
  if (!checkElementHead(&hasIndex, &rows) ||
      !checkFileName(fileNames::dataPrefix, &dataNames_, dataName) ||
      (hasIndex && !checkFileName(fileNames::indexPrefix, &indexNames_, indexName))) {
    return false;
  }
  if (isLast && !isWrittenAtOnce(file_.size()) && rowCount_ >= rowsFound_) {
    rows = rowCount_ - rowsFound_;
  }
  const bool isPossible = rows >= 0 && rows <= maximumRowCount;
  if (isPossible && dataName[0] != '\0') {
    const ElementToCheck element = {.dataName = dataName,
                                    .indexName = indexName,
                                    .rows = rows,
                                    .firstRow = rowsFound_,
                                    .isLast = isLast,
                                    .swap = swap_};
    ElementCheck(directories_, columns(), element, report_).run();
  }
  hasAllElementRows_ = hasAllElementRows_ && isPossible;
  const std::int64_t room = std::numeric_limits<std::int64_t>::max() - rowsFound_;
  rowsFound_ += isPossible ? std::min(rows, room) : 0;
  return !report_.isOver();
}

bool CatalogueCheck::checkElementHead(bool* hasIndex, std::int64_t* rows) noexcept {
  const std::int64_t begin = file_.position();
  unsigned char bytes[recordHeadSize] = {};
  if (!readPart(bytes, recordHeadSize, "an element's record") ||
      !passSurplus(begin, field<std::uint32_t>(bytes), recordHeadSize, "an element's head")) {
    return false;
  }
  const int dataNameLength = field<std::uint16_t>(bytes + 4);
  const int indexNameLength = field<std::uint16_t>(bytes + 6);
  *hasIndex = indexNameLength != 0;
  *rows = field<std::int64_t>(bytes + 8);
  if (dataNameLength != fileNames::sizeOf(fileNames::dataPrefix)) {
    report_.add(file_.path(), begin + 4,
                "the name of a data file has the length %d: %d is expected", dataNameLength,
                fileNames::sizeOf(fileNames::dataPrefix));
  }
  if (*hasIndex && indexNameLength != fileNames::sizeOf(fileNames::indexPrefix)) {
    report_.add(file_.path(), begin + 6,
                "the name of an index file has the length %d: %d is expected, or 0 for none",
                indexNameLength, fileNames::sizeOf(fileNames::indexPrefix));
  }
  if (columnCount_ == 0 && !*hasIndex && *rows > 0) {
    report_.add(file_.path(), begin + 6, "an element whose rows have no columns needs an index");
  }
  if (*rows < 0 || *rows > maximumRowCount) {
    report_.add(file_.path(), begin + 8,
                "an element has %" PRId64 " rows: 0 to %" PRId64 " are possible", *rows,
                maximumRowCount);
  }
  return true;
}

/// The name is left empty when it is none that an element's file can have, or one of an element
/// before: that element's file is not read again.
bool CatalogueCheck::checkFileName(const char* prefix, SeenNames* seen,
                                   char (&name)[nameRoom]) noexcept {
  const int size = fileNames::sizeOf(prefix);
  const std::int64_t begin = file_.position();
  unsigned char bytes[nameRoom] = {};
  if (!readPart(bytes, size, "the name of an element's file")) {
    return false;
  }
  const std::string_view text(reinterpret_cast<const char*>(bytes),
                              static_cast<std::size_t>(size) - 1);
  if (bytes[size - 1] != 0 || !fileNames::isOf(prefix, text)) {
    report_.add(file_.path(), begin,
                "the name of an element's file must be \"%s\", %d lower-case letters and digits "
                "and a zero byte",
                prefix, fileNames::randomCharacters);
    return true;
  }
  if (isNewFile(text, begin, seen)) {
    std::memcpy(name, bytes, static_cast<std::size_t>(size));
  }
  return !report_.isOver();
}

bool CatalogueCheck::isNewFile(std::string_view name, std::int64_t offset,
                               SeenNames* seen) noexcept {
  SeenNames::Name random;
  name.copy(random.data(), random.size(), name.size() - random.size());
  if (seen->contains(random)) {
    report_.add(file_.path(), offset, "the file is that of an element before");
    return false;
  }
  if (!seen->add(random)) {
    report_.fail(WT_MESSAGE(outOfMemory, "(element name)"));
    return false;
  }
  return true;
}

void CatalogueCheck::checkRowCount() noexcept {
  if (rowCount_ >= 0 && hasAllElementRows_ && rowCount_ != rowsFound_) {
    report_.add(file_.path(), 24,
                "the table has %" PRId64 " rows: those of its elements add up to %" PRId64,
                rowCount_, rowsFound_);
  }
}
