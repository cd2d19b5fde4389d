/// A table being made, which vanishes unless it is kept.
#pragma once

#include <cstdint>
#include <string>

#include "Commands.h"
#include "ExitCode.h"
#include "Handles.h"
#include "SortProgress.h"

namespace zvwttool {

class NewTable {
 public:
  /// The manager outlives the table.
  explicit NewTable(ZvWorkTableManager* manager) : manager_(manager) {}
  NewTable(const NewTable&) = delete;
  NewTable& operator=(const NewTable&) = delete;
  ~NewTable();

  /// The operations return false with the reason in errorText().
  [[nodiscard]] bool create(int columnCount, std::int64_t maxElementSize,
                            std::size_t sortKeyCount = 0);
  /// Makes a closed table of what a URI stands for, in place of create().
  [[nodiscard]] bool copy(const ZvbString& uri, std::int64_t maxElementSize);
  /// The same with the rows sorted; `rowCount` is how many there are.
  [[nodiscard]] bool copySorted(const ZvbString& uri, std::int64_t maxElementSize,
                                const SortPlan& plan, std::int64_t rowCount);
  /// Adds what a URI stands for to the closed table.
  [[nodiscard]] bool append(const ZvbString& uri);
  [[nodiscard]] bool defineColumn(int index, const std::string& name, zvbType type, int width);
  /// Has close() sort the rows of a table that was created with as many keys as the plan has; to be
  /// called between the last column and the first row.
  [[nodiscard]] bool sortBy(const SortPlan& plan);
  [[nodiscard]] bool writeRow(const ZvbDatavar* values);
  [[nodiscard]] bool close();
  /// Prints the closed table's name and leaves it on disk, unless a signal or a failed output says
  /// that nobody wants it any more.
  [[nodiscard]] ExitCode finish();

  [[nodiscard]] const std::string& errorText() const { return error_; }

 private:
  [[nodiscard]] bool describeSort(const SortPlan& plan, ZvWorkTableFile& columns,
                                  std::int64_t rowCount);
  [[nodiscard]] bool check(bool done);
  [[nodiscard]] bool checkManager(bool done, const ZvbString& text);

  ZvWorkTableManager* manager_;
  SortProgress progress_;  // outlives the table
  TableHandle table_;
  std::string error_;
  bool isClosed_ = false;
  bool isKept_ = false;
};

}  // namespace zvwttool
