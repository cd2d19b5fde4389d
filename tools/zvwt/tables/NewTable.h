/// A table being made, which vanishes unless it is kept.
#pragma once

#include <cstdint>
#include <string>

#include "tables/Handles.h"
#include "tables/SortPlan.h"
#include "tables/SortProgress.h"
#include "tables/TableRows.h"

namespace zvwttool {

class NewTable {
 public:
  /// The manager outlives the table.
  explicit NewTable(ZvWorkTableManager* manager) : manager_(manager) {}
  NewTable(const NewTable&) = delete;
  NewTable& operator=(const NewTable&) = delete;
  ~NewTable();

  void create(int columnCount, std::int64_t maxElementSize, std::size_t sortKeyCount = 0);
  /// Makes a closed table of what a URI stands for, in place of create().
  void copy(const ZvbString& uri, std::int64_t maxElementSize);
  /// The same with the rows sorted; `rowCount` is how many there are.
  void copySorted(const ZvbString& uri, std::int64_t maxElementSize, const SortPlan& plan,
                  std::int64_t rowCount);
  /// Makes a closed table of the rows that are wanted, sorted if the plan has keys.
  void copyWanted(TableRows* rows, std::int64_t maxElementSize, const SortPlan& plan);
  /// Adds what a URI stands for to the closed table.
  void append(const ZvbString& uri);
  void defineColumn(int index, const std::string& name, zvbType type, int width);
  /// Has close() sort the rows of a table that was created with as many keys as the plan has; to be
  /// called between the last column and the first row.
  void sortBy(const SortPlan& plan);
  void writeRow(const ZvbDatavar* values);
  void close();
  /// Prints the closed table's name and leaves it on disk, unless a signal or a failed output says
  /// that nobody wants it any more.
  void finish();

 private:
  void writeWanted(TableRows* rows);
  void describeSort(const SortPlan& plan, ZvWorkTableFile& columns, std::int64_t rowCount);
  /// Fails when an operation of the table, or of the manager, has not been done.
  void require(bool done) const;
  void requireOfManager(bool done, const ZvbString& reason) const;
  /// The same where rows of what a URI stands for were to be read.
  void requireOfCopy(bool done, const ZvbString& reason, const ZvbString& uri) const;
  [[nodiscard]] bool closeQuietly();

  ZvWorkTableManager* manager_;
  SortProgress progress_;  // outlives the table
  TableHandle table_;
  bool isClosed_ = false;
  bool isKept_ = false;
};

}  // namespace zvwttool
