/// Checks an element's two files: every value of every row, and that the index has where each row
/// begins.
///
/// A row is left at its first fault, and the index tells where the next one begins. Where row and
/// index differ, the row is believed until what follows it makes no sense either: so that one
/// damaged entry, or one damaged value, is one finding. Thread rule: used by the thread that makes
/// the check.
#pragma once

#include <cstdint>

#include "fio/TempDirectories.h"
#include "wtcheck/CheckReport.h"
#include "wtcheck/CheckedColumn.h"
#include "wtcheck/CheckedFile.h"

struct ElementToCheck {
  const char* dataName = "";
  const char* indexName = "";  ///< empty: there is none
  std::int64_t rows = 0;
  std::int64_t firstRow = 0;  ///< its number in the table
  /// Behind the rows of the last element may lie what a killed writer left.
  bool isLast = false;
  bool swap = false;  ///< the table is of the other byte order
};

class ElementCheck {
 public:
  static constexpr int indexEntrySize = 8;  // bytes

  ElementCheck(const TempDirectories& directories, CheckedColumns columns,
               const ElementToCheck& element, CheckReport& report) noexcept
      : directories_(directories),
        columns_(columns),
        element_(element),
        report_(report),
        data_(report),
        index_(report) {}

  void run() noexcept;

 private:
  [[nodiscard]] bool openFile(CheckedFile* file, const char* name) noexcept;
  void checkIndexSize() noexcept;
  void checkRows() noexcept;
  void checkEnd() noexcept;

  // False: the rest of the rows cannot be found.
  [[nodiscard]] bool readEntry() noexcept;
  [[nodiscard]] bool confirmStart() noexcept;
  [[nodiscard]] bool takeStartFromEntry() noexcept;

  // False: the row cannot be read on.
  [[nodiscard]] bool checkRow() noexcept;
  [[nodiscard]] bool checkValue(CheckedColumn* column) noexcept;
  [[nodiscard]] bool checkTag(const CheckedColumn& column, unsigned char tag) noexcept;
  [[nodiscard]] bool checkPayload(const unsigned char* value) noexcept;
  [[nodiscard]] bool checkText(CheckedColumn* column) noexcept;
  [[nodiscard]] bool checkTextLength(std::int64_t* length) noexcept;
  [[nodiscard]] bool readPart(unsigned char* bytes, int count) noexcept;
  [[gnu::format(printf, 3, 4)]] bool refuse(std::int64_t offset, const char* rule, ...) noexcept;

  const TempDirectories& directories_;
  CheckedColumns columns_;
  ElementToCheck element_;
  CheckReport& report_;
  CheckedFile data_;
  CheckedFile index_;

  std::int64_t entries_ = 0;  // of rows in the index
  std::int64_t row_ = 0;      // of the element
  int column_ = 0;
  std::int64_t start_ = 0;      // of the row in the data
  std::int64_t sureStart_ = 0;  // of the last row on which the index agrees
  std::int64_t nextEntry_ = 0;  // what the index has for the row
  bool isEntryRead_ = false;
  bool isStartKnown_ = true;  // the row before was whole
  bool isConfirmed_ = true;   // the index agrees on the start, or there is none
  bool dataEnded_ = false;    // a row needed more bytes than there are
};
