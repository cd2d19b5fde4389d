/// What the sort benchmark measures: engines that take the sample rows in any order and leave them
/// sorted in files, all behind one interface.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "SampleRows.h"

enum class SortOrder { none, amountName, nameAmount };

/// The keys as SQL names them.
[[nodiscard]] inline const char* sqlKeys(SortOrder order) {
  return order == SortOrder::amountName ? "amount, name" : "name, amount";
}

/// A row as every engine can tell it. The price is a number of cents, because not every engine has
/// decimals of our kind and a sort does not look at it.
struct RowView {
  std::int64_t id;
  std::int64_t amount;
  std::int64_t cents;
  std::string_view code;
  std::string_view name;
  double day;
  bool flag;
};

/// The prices of all samples have two places, so that the packed coefficient is the cents.
[[nodiscard]] inline RowView viewOf(const SampleRow& row) {
  return {row.id,  row.amount, static_cast<std::int64_t>(row.price[1]), row.code, row.name,
          row.day, row.flag};
}

class RowSort {
 public:
  using Rows = std::vector<SampleRow>;
  using RowTaker = std::function<void(const RowView&)>;

  RowSort() = default;
  RowSort(const RowSort&) = delete;
  RowSort& operator=(const RowSort&) = delete;
  virtual ~RowSort() = default;

  /// Stores the rows in the order of the keys: what is measured.
  virtual void store(const Rows& rows, SortOrder order) = 0;
  /// Hands out the stored rows from the first to the last.
  virtual void read(const RowTaker& take) = 0;
  /// Bytes of the stored rows, without an index beside them.
  [[nodiscard]] virtual std::int64_t storedBytes() const = 0;
  /// Bytes that the last store wrote to work files, where the engine tells.
  [[nodiscard]] virtual std::int64_t spilledBytes() const { return 0; }
  /// Removes what store left.
  virtual void remove() = 0;
  /// Whether rows with equal keys keep the order in which they came.
  [[nodiscard]] virtual bool isStable() const = 0;
};
