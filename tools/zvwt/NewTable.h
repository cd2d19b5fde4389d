/// A table being made, which vanishes unless it is kept.
#pragma once

#include <cstdint>
#include <string>

#include "Handles.h"

namespace zvwttool {

class NewTable {
 public:
  /// The manager outlives the table.
  explicit NewTable(ZvWorkTableManager* manager) : manager_(manager) {}
  NewTable(const NewTable&) = delete;
  NewTable& operator=(const NewTable&) = delete;
  ~NewTable();

  /// The operations return false with the reason in errorText().
  [[nodiscard]] bool create(int columnCount, std::int64_t maxElementSize);
  [[nodiscard]] bool defineColumn(int index, const std::string& name, zvbType type, int width);
  [[nodiscard]] bool writeRow(const ZvbDatavar* values);
  [[nodiscard]] bool close();
  /// Leaves the closed table on disk.
  void keep() { isKept_ = true; }

  [[nodiscard]] std::string name() const { return table_->getName().asCstr(); }
  [[nodiscard]] const std::string& errorText() const { return error_; }

 private:
  [[nodiscard]] bool check(bool done);

  ZvWorkTableManager* manager_;
  TableHandle table_;
  std::string error_;
  bool isClosed_ = false;
  bool isKept_ = false;
};

}  // namespace zvwttool
