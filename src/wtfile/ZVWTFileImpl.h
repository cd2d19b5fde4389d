/// One work table: the object behind ZvWorkTableFile.
///
/// Its operations stand in one file each for what they do: ZVWTFileImpl.cpp (life cycle and
/// columns), TableHeader.cpp (the catalogue's bytes), TableOpen.cpp (opening and positioning),
/// TableReaders.cpp (the openers for reading, and the URI), TableRows.cpp (rows), TableCopy.cpp
/// (copying and appending), TableSorting.cpp (sort keys), TableDescriptions.cpp (statistics and
/// XML). The columns that a reader gets are the selection's (Selection.h), the rows themselves the
/// data elements' (wtelem/DataElement.h). Thread rule: one thread at a time.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "ZvWorkTableFile.h"
#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "fio/TempDirectories.h"
#include "fio/np_fio.h"
#include "wtelem/DataElement.h"
#include "wtelem/TableState.h"
#include "wtfile/Selection.h"
#include "wtfile/SorterSource.h"

/// What a table uses, in bytes and files.
struct TableSizes {
  std::int64_t catalogueBytes = 0;
  std::int64_t dataBytes = 0;
  std::int64_t indexBytes = 0;
};

/// How the rows are to be sorted, for the sorter to interpret.
struct TableSortKey {
  std::uint32_t column = 0;
  bool flag = false;
  std::uint64_t value = 0;
};

class ZVWTFileImpl final : public ZvWorkTableFile {
 public:
  /// Both outlive the table.
  ZVWTFileImpl(const TempDirectories& directories, SorterSource* sorterSource) noexcept;
  ZVWTFileImpl(const ZVWTFileImpl&) = delete;
  ZVWTFileImpl& operator=(const ZVWTFileImpl&) = delete;
  ~ZVWTFileImpl() override;

  std::int32_t setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                             std::uint64_t value) noexcept override;
  std::int32_t setSortOptionA(std::uint64_t value) noexcept override;
  std::int32_t setSortOptionB(std::uint64_t value) noexcept override;
  bool close() noexcept override;
  bool defineColumn(int index, ZvbString name, zvbType type, int width) noexcept override;
  bool getColumnDefinition(int index, ZvbString* name, zvbType* type, int* width,
                           int* maxLength) noexcept override;
  int getColumnCount() noexcept override;
  ZvbString getErrorMessage() noexcept override;
  ZvbString getName() noexcept override;
  std::int64_t getRowCount() noexcept override;
  bool readRow(ZvbDatavar* const* values, bool* endOfTable) noexcept override;
  bool readRow(ZvbDatavar* values, bool* endOfTable) noexcept override;
  bool asXml(int firstRow, int maxRows, ZvbString* out, bool* endOfTable) noexcept override;
  void release() noexcept override;
  ZvbStringCursor* getStatistics() noexcept override;
  ZvbString getURI(bool allColumns) noexcept override;
  bool writeRow(const ZvbDatavar* const* values) noexcept override;
  bool writeRow(const ZvbDatavar* values) noexcept override;

  /// Makes the catalogue file; once, on a new object.
  [[nodiscard]] bool create(int columnCount, int sortColumnCount,
                            std::int64_t maxElementSize) noexcept;

  /// Opens a table by name for reading or for appending. An object that made or opened a table
  /// before goes back to that table's file, whatever the name.
  [[nodiscard]] bool open(const ZvbString& name, bool forReading, const RowRange* range,
                          bool backwards) noexcept;

  /// Opens for reading with the columns and rows of a URI, or with all of them when the text is
  /// none but a table's name.
  [[nodiscard]] bool openFromURI(const ZvbString& text, bool backwards) noexcept;
  /// Opens for reading with the columns listed; a count of -1 means all.
  [[nodiscard]] bool openWithColumnNames(const ZvbString& name, int count, const ZvbString* names,
                                         const RowRange* range, bool backwards) noexcept;
  [[nodiscard]] bool openWithColumnNumbers(const ZvbString& name, int count, const int* numbers,
                                           const RowRange* range, bool backwards) noexcept;

  /// Adds all rows of the source, a table name or URI, to this table, which is open for appending
  /// and has the same columns. After a failure the rows that came before it stay.
  [[nodiscard]] bool appendFrom(const ZvbString& source) noexcept;
  /// Takes over the column definitions of the source, which is open for reading and has as many
  /// columns, and adds all its rows.
  [[nodiscard]] bool copyFrom(ZVWTFileImpl& source) noexcept;

  /// Closes, then deletes the elements' files and the catalogue.
  [[nodiscard]] bool removeFiles() noexcept;

  [[nodiscard]] bool isBeingWritten() const noexcept { return mode_ == Mode::writing; }
  [[nodiscard]] bool isBeingRead() const noexcept { return mode_ == Mode::reading; }
  /// True for a table created by this object that has seen a failure.
  [[nodiscard]] bool isRemovedOnRelease() const noexcept { return createdHere_ && failed_; }

  /// The sizes of the table's files.
  [[nodiscard]] bool measure(TableSizes* sizes) noexcept;
  [[nodiscard]] int elementCount() const noexcept { return elementCount_; }
  [[nodiscard]] std::int64_t rowsOfElement(int element) const noexcept {
    return elements_[static_cast<std::size_t>(element)]->rowCount();
  }
  [[nodiscard]] std::int64_t maxElementSize() const noexcept { return state_.maxElementSize; }

 private:
  static constexpr std::int16_t writtenVersion = 100;  // in hundredths

  static constexpr std::int64_t toTheEnd = std::numeric_limits<std::int64_t>::max();

  enum class Mode : std::uint8_t { closed, writing, reading };
  using Elements = std::unique_ptr<std::unique_ptr<DataElement>[]>;

  bool fail(ZvbString text) noexcept;
  bool failAs(const DataElement& element) noexcept;

  // Life cycle
  bool closeWritten(bool drained) noexcept;
  bool closeCurrent() noexcept;
  void closeRead() noexcept;
  void closeHeader() noexcept;
  void removeAfterFailure() noexcept;
  bool allocateColumns(std::int64_t count) noexcept;

  // Sorting
  bool allocateSortKeys(int count) noexcept;
  bool setUpSorter() noexcept;
  bool failAsSorter() noexcept;
  bool writeToSorter(const ZvbDatavar* const* values) noexcept;
  bool makeSortedVector() noexcept;
  bool drainSorter() noexcept;

  // The catalogue
  bool writeHeader() noexcept;
  bool writeFixedHeader() noexcept;
  bool writeColumnDefinition(const ColumnDefinition& column) noexcept;
  bool writeRecords() noexcept;
  bool seekHeader(std::int64_t offset) noexcept;
  bool flushHeader() noexcept;
  bool cutHeader() noexcept;
  [[nodiscard]] std::int64_t catalogueSize() const noexcept;
  bool assureHeader() noexcept;
  bool readHeader() noexcept;
  bool readFixedHeader(std::uint32_t* columnCount, std::uint32_t* elementCount) noexcept;
  bool readAccessKey(std::uint16_t length) noexcept;
  bool readColumnDefinitions(std::uint32_t count) noexcept;
  bool readColumnDefinition(ColumnDefinition* column) noexcept;
  bool readElementDefinitions(std::uint32_t count) noexcept;
  bool canHaveRows(const DataElement& element) const noexcept;
  bool skipSurplus(std::uint32_t length, int known) noexcept;
  [[nodiscard]] std::int64_t remainingHeaderBytes() const noexcept;

  // Opening
  void startClean(bool forReading, bool backwards) noexcept;
  bool openHeaderFile(int mode) noexcept;
  bool refuseOtherByteOrder() noexcept;
  bool assureRewriting() noexcept;
  bool takeRange(const RowRange* range) noexcept;
  bool startReading() noexcept;
  bool startReadingAt(std::int64_t row) noexcept;
  bool startAppending() noexcept;
  bool refuseSharedFiles(const DataElement& last) noexcept;
  void abandonOpening() noexcept;
  bool finishOpening(bool selected) noexcept;

  // Copying
  bool sameColumnCount(ZVWTFileImpl& source) noexcept;
  bool sameColumn(const ZVWTFileImpl& source, int index) noexcept;
  bool copyRows(ZVWTFileImpl& source, const char* verb) noexcept;
  bool flushRows(bool copied) noexcept;

  // Rows
  bool refuseRow() noexcept;
  bool startElement() noexcept;
  bool growElements() noexcept;
  [[gnu::noinline]] bool openNextElement(bool* endOfTable) noexcept;
  [[nodiscard]] bool pastRange() const noexcept;
  void leaveElement() noexcept;

  SorterSource* sorterSource_;
  TableState state_;  // what the elements see; outlives them
  ZvbString accessKey_;
  ZvbString errorMessage_;
  ZvbString name_;        // of the catalogue file, without directory
  ZvbString headerPath_;  // of the catalogue file; empty until it was made or found
  np_fio_handle header_ = nullptr;
  std::int64_t headerSize_ = 0;   // bytes of the catalogue file when it was opened
  std::int64_t assuredSize_ = 0;  // bytes that it has space for on the disk, or 0
  int directory_ = 0;             // that holds the catalogue file; new elements start there
  std::int16_t version_ = 0;
  bool createdHere_ = false;
  Mode mode_ = Mode::closed;
  bool failed_ = false;  // any operation has; a table created here is then removed in the end

  std::int64_t rowCount_ = 0;
  std::int64_t rowPosition_ = 0;  // the next row to be written or read
  std::int64_t rangeStart_ = 0;
  std::int64_t rangeCount_ = -1;      // -1: the opener gave none
  std::int64_t rangeEnd_ = toTheEnd;  // the row behind the range

  // Of a table that is sorted when it is closed:
  std::int32_t sortColumnCount_ = 0;  // 0 from the close on
  std::int32_t sortKeyCount_ = 0;
  std::unique_ptr<TableSortKey[]> sortKeys_;
  std::uint64_t sortOptionA_ = 0;
  std::uint64_t sortOptionB_ = 0;
  SorterHandle sorter_;                                // from the first row to the close
  std::unique_ptr<const ZvbDatavar*[]> sortedVector_;  // the addresses of the sorter's values

  Selection selection_;  // of state_.columns, as soon as there are any

  Elements elements_;  // in row order
  int elementCount_ = 0;
  int elementCapacity_ = 0;
  int nextElement_ = 0;             // that a reader opens next
  DataElement* current_ = nullptr;  // being written or read; one of elements_
  bool rowRefused_ = false;         // by an element, since the table was opened

  // The addresses of the values of the array forms, filled anew when the array is another one.
  std::unique_ptr<const ZvbDatavar*[]> writeVector_;
  std::unique_ptr<ZvbDatavar*[]> readVector_;
};
