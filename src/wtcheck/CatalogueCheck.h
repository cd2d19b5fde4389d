/// Checks a catalogue and the elements that it lists.
///
/// The writer's lengths are fixed in the version that it writes, so a length that differs there is
/// a finding and is not followed; in a later minor version lengths lead the way. Thread rule: used
/// by the thread that makes the check.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "fio/TempDirectories.h"
#include "wtcheck/CheckReport.h"
#include "wtcheck/CheckedColumn.h"
#include "wtcheck/CheckedFile.h"
#include "wtcheck/SeenNames.h"

class CatalogueCheck {
 public:
  CatalogueCheck(const TempDirectories& directories, CheckedFile& file,
                 CheckReport& report) noexcept
      : directories_(directories), file_(file), report_(report) {}

  void run() noexcept;

 private:
  static constexpr int nameRoom = 32;  // bytes, more than an element file's name takes

  // Each goes on to the place behind what it checks; false when that cannot be found.
  [[nodiscard]] bool checkFixedPart() noexcept;
  [[nodiscard]] bool checkColumns() noexcept;
  [[nodiscard]] bool makeRoomForColumn() noexcept;
  [[nodiscard]] bool checkColumn(CheckedColumn* column) noexcept;
  [[nodiscard]] bool checkElements() noexcept;
  [[nodiscard]] bool checkElement(bool isLast) noexcept;
  [[nodiscard]] bool checkElementHead(bool* hasIndex, std::int64_t* rows) noexcept;
  [[nodiscard]] bool hasRoomFor(std::uint32_t count, const char* what, std::int64_t countOffset,
                                std::int64_t leastSize) noexcept;
  [[nodiscard]] bool checkName(std::int64_t lengthOffset, std::int64_t length,
                               const char* what) noexcept;
  [[nodiscard]] bool checkFileName(const char* prefix, SeenNames* seen,
                                   char (&name)[nameRoom]) noexcept;
  [[nodiscard]] bool isNewFile(std::string_view name, std::int64_t offset,
                               SeenNames* seen) noexcept;
  [[nodiscard]] bool readPart(unsigned char* bytes, int count, const char* what) noexcept;
  [[nodiscard]] bool passSurplus(std::int64_t lengthOffset, std::int64_t length, int known,
                                 const char* what) noexcept;

  [[nodiscard]] bool checkVersion(std::int16_t version) noexcept;
  void checkRowCount() noexcept;
  void checkLongestTexts() noexcept;

  template <typename Number>
  [[nodiscard]] Number field(const unsigned char* bytes) const noexcept;
  [[nodiscard]] CheckedColumns columns() const noexcept;

  const TempDirectories& directories_;
  CheckedFile& file_;
  CheckReport& report_;
  bool swap_ = false;           // the table is of the other byte order
  bool hasOwnVersion_ = false;  // the one that this library writes, or an impossible one
  std::uint32_t columnCount_ = 0;
  std::uint32_t elementCount_ = 0;
  std::int64_t rowCount_ = 0;
  std::int64_t rowsFound_ = 0;     // by the elements
  bool hasAllElementRows_ = true;  // every element has a possible number of them
  std::unique_ptr<CheckedColumn[]> columns_;
  std::uint32_t columnCapacity_ = 0;
  std::uint32_t columnsRead_ = 0;
  SeenNames dataNames_;
  SeenNames indexNames_;
};
