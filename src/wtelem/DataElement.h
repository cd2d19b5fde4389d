/// One run of a table's rows: a data file with the encoded rows back to back, and an index file
/// with the 8-byte offset of each row. See docs/file-format.md for both and for the definition
/// record.
///
/// The table drives it: createFiles, then writeRow; or readDefinition, then open, seekRow and
/// readRow or, to append, open and writeRow. Every failure leaves its text in getErrorMessage().
///
/// Its operations stand in DataElement.cpp (files, definition), ElementWriting.cpp and
/// ElementReading.cpp.
/// Thread rule: used by the thread that uses the table.
#pragma once

#include <cstdint>

#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "fio/np_fio.h"
#include "wtelem/FileNames.h"
#include "wtelem/TableState.h"
#include "wtelem/ValueCodec.h"

class DataElement {
 public:
  static constexpr int indexEntrySize = 8;  // bytes

  explicit DataElement(TableState& table) noexcept;
  DataElement(const DataElement&) = delete;
  DataElement& operator=(const DataElement&) = delete;
  /// Closes; the files stay.
  ~DataElement();

  /// Makes both files, from the given directory on, and leaves them open for writing.
  [[nodiscard]] bool createFiles(int startDirectory) noexcept;
  /// Finds and opens both files: for reading at the first row, or for writing behind the last one,
  /// where bytes that no counted row owns (of a writer that was killed) are cut off first.
  [[nodiscard]] bool open(bool readOnly) noexcept;
  [[nodiscard]] bool close() noexcept;
  /// Closes an element that its last row has filled. When that fails, the row is taken back and the
  /// element stays open with the rows it had before.
  [[nodiscard]] bool closeFull() noexcept;
  /// Brings all rows to the files and leaves them open.
  [[nodiscard]] bool flush() noexcept;
  /// Closes after a row was refused, which its writer knows: rows accepted before it that the disk
  /// does not take either are given up, so that only a disk that fails altogether fails this.
  [[nodiscard]] bool closeWithWhatFits() noexcept;
  /// Closes the handles and reports nothing: for what a failed opening leaves behind, and after the
  /// bytes have been brought to the files.
  void abandon() noexcept;
  /// Deletes both files, finding them first if need be.
  [[nodiscard]] bool remove() noexcept;

  [[nodiscard]] bool writeDefinition(np_fio_handle catalogue) noexcept;
  /// Bytes that writeDefinition writes.
  [[nodiscard]] std::int64_t definitionSize() const noexcept;
  [[nodiscard]] bool readDefinition(np_fio_handle catalogue) noexcept;

  /// Appends a row, one value per column. *elementFull tells that the table's maximum size is
  /// passed.
  [[nodiscard]] bool writeRow(const ZvbDatavar* const* values, bool* elementFull) noexcept;
  /// Reads the next row. `valueCount` is the number of values that the columns' targets want, the
  /// same for every row of a pass. False with *endOfData set behind the last row.
  [[nodiscard]] bool readRow(ZvbDatavar* const* targets, int valueCount, bool* endOfData) noexcept;
  /// Makes `row` the next one to read; -1 is the end.
  [[nodiscard]] bool seekRow(std::int64_t row) noexcept;

  /// The sizes of the two files in bytes, 0 for an index that there is not.
  [[nodiscard]] bool measure(std::int64_t* dataBytes, std::int64_t* indexBytes) noexcept;

  [[nodiscard]] const ZvbString& getErrorMessage() const noexcept { return errorMessage_; }
  [[nodiscard]] std::int64_t rowCount() const noexcept { return rowCount_; }
  /// Says how many rows count, whatever its definition record says.
  void countRows(std::int64_t rows) noexcept { rowCount_ = rows; }
  [[nodiscard]] std::int64_t dataSize() const noexcept { return dataSize_; }
  [[nodiscard]] bool hasIndex() const noexcept { return !index_.name.isEmpty(); }
  [[nodiscard]] bool sharesFileWith(const DataElement& other) const noexcept;

 private:
  /// One of the element's two files.
  struct File {
    const char* prefix;        // of the names of new files
    const char* creatingName;  // what messages call it
    const char* findingName;
    ZvbString name;  // without directory; empty: there is no such file
    ZvbString path;  // empty until the file was made or found
    np_fio_handle handle = nullptr;
  };

  bool fail(ZvbString text) noexcept;
  bool failAfter(valueCodec::Result result, ZvbString usual) noexcept;
  bool failInFiles(ZvbString usual) noexcept;

  bool createFile(File* file, int startDirectory) noexcept;
  static void discardNewFile(File* file) noexcept;
  bool openFileOf(File* file, int mode) noexcept;
  bool findFile(File* file) noexcept;
  bool unlinkFile(File* file) noexcept;
  bool sizeOf(const File& file, std::int64_t* size) noexcept;
  int bringToFiles() noexcept;
  void resetPosition() noexcept;
  bool readName(np_fio_handle catalogue, std::uint16_t length, const char* what,
                File* file) noexcept;

  int cutBackTo(std::int64_t rows, std::int64_t dataSize) const noexcept;
  bool cutToRows() noexcept;
  bool keepWholeRows() noexcept;
  bool countWholeRows(std::int64_t entries, std::int64_t dataBytes) noexcept;
  bool readRowStart(std::int64_t row, std::int64_t* start) const noexcept;
  bool findEndOfRows(std::int64_t dataFileSize, std::int64_t* end) noexcept;
  std::int64_t firstRowToPass() const noexcept;
  bool standAtStartOf(std::int64_t row) noexcept;
  bool indexAgreesOn(std::int64_t row) const noexcept;
  valueCodec::Result encodeRow(const ZvbDatavar* const* values, std::int64_t* size) const noexcept;

  // Reading. What rows need rarely is never inline: it would take registers from what they need
  // always.
  bool seekToEnd() noexcept;
  bool readIndexEntry(std::int64_t* offset) const noexcept;
  [[gnu::noinline]] bool enterFirstRow() noexcept;
  [[nodiscard]] valueCodec::Source valueSource() const noexcept;
  [[gnu::noinline]] valueCodec::Result decodeRow(ZvbDatavar* const* targets, int valueCount,
                                                 int* columnsRead) noexcept;
  valueCodec::Result decodeWholeRow(ZvbDatavar* const* targets) noexcept;
  bool passRest(int columnsRead) noexcept;
  [[gnu::noinline]] bool placeForwards(int columnsRead) noexcept;
  [[gnu::noinline]] bool placeBackwards() noexcept;
  [[gnu::noinline]] bool leaveDamagedRow(valueCodec::Result result) noexcept;
  void standAtCurrentRow() noexcept;

  TableState& table_;
  ZvbString errorMessage_;
  File index_{.prefix = fileNames::indexPrefix,
              .creatingName = "data element index",
              .findingName = "element index",
              .name = {},
              .path = {}};
  File data_{.prefix = fileNames::dataPrefix,
             .creatingName = "data element",
             .findingName = "element data",
             .name = {},
             .path = {}};
  std::int64_t rowCount_ = 0;
  int directory_ = 0;  // where the files were last made or found

  std::int64_t currentRow_ = 0;    // the next row to read, in the direction of reading
  std::int64_t readOffset_ = 0;    // of the data file while reading
  std::int64_t dataSize_ = 0;      // where the next row written begins
  std::int64_t lastRowStart_ = 0;  // where the last row written begins
  std::int64_t openedRows_ = 0;    // rows that were there when it was opened for writing
  std::int64_t openedSize_ = 0;    // bytes of those rows
  bool fresh_ = true;              // the first entry of the index has yet to be stepped over
  bool positioned_ = false;        // placed at a row by its number
  bool torn_ = false;              // part of a failed row lies behind the last good one
};
