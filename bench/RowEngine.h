/// What the benchmarks measure side by side: engines that take the sample rows, leave them in
/// files, sorted or as they came, and give them back, all behind one interface.
#pragma once

#include <bit>
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
/// decimals of our kind and nothing is reckoned with it.
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

/// The same for a row of any engine, and as addSample() and the hand-written twin add it up.
inline void addRow(const RowView& row, RowChecksum* checksum) {
  checksum->add(static_cast<std::uint64_t>(row.id));
  checksum->add(static_cast<std::uint64_t>(row.amount));
  checksum->add(static_cast<std::uint64_t>(row.cents));
  checksum->addText(row.code.data(), row.code.size());
  checksum->addText(row.name.data(), row.name.size());
  checksum->add(std::bit_cast<std::uint64_t>(row.day));
  checksum->add(row.flag ? 1 : 0);
}

/// Engines of one kind and directory share their file: one may read what another has stored.
class RowEngine {
 public:
  using Rows = std::vector<SampleRow>;
  using RowTaker = std::function<void(const RowView&)>;

  RowEngine() = default;
  RowEngine(const RowEngine&) = delete;
  RowEngine& operator=(const RowEngine&) = delete;
  virtual ~RowEngine() = default;

  /// Stores the rows in the order of the keys, or by the shortest way as they come. What an earlier
  /// store left has been removed.
  virtual void store(const Rows& rows, SortOrder order) = 0;
  /// Hands out the stored rows from the first to the last.
  virtual void read(const RowTaker& take) = 0;
  /// Reads the stored rows from the first to the last and adds them all up.
  [[nodiscard]] virtual std::uint64_t checksum() = 0;
  /// Bytes of the stored rows, without an index beside them.
  [[nodiscard]] virtual std::int64_t storedBytes() const = 0;
  /// Bytes that the last store wrote to work files, where the engine tells.
  [[nodiscard]] virtual std::int64_t spilledBytes() const { return 0; }
  /// Removes what store left, if anything.
  virtual void remove() = 0;
  /// Whether rows with equal keys keep the order in which they came.
  [[nodiscard]] virtual bool isStable() const = 0;
};
