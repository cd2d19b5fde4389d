#include "SortKeys.h"

#include "DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::uint64_t ignoreCase = 1;
constexpr std::uint64_t nullsLast = 2;

/// The number of a column, and its type; -1 when there is none of the name.
int findColumn(ZvWorkTableFile& columns, const std::string& wanted, zvbType* type) {
  const int count = columns.getColumnCount();
  for (int column = 0; column < count; ++column) {
    ZvbString name;
    int width = 0;
    int maxLength = 0;
    if (columns.getColumnDefinition(column, &name, type, &width, &maxLength) &&
        name.compare(wanted.c_str(), false) == 0) {
      return column;
    }
  }
  return -1;
}

}  // namespace

bool setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns, ZvWorkTableFile* table,
                 std::string* error) {
  int number = 0;
  for (const SortKey& key : plan.keys) {
    zvbType type = zvbTypeString;
    const int column = findColumn(columns, key.column, &type);
    if (column < 0) {
      *error = "the table has no column " + quotedName(key.column);
      return false;
    }
    if (key.ignoresCase && type != zvbTypeString) {
      *error = "column " + quotedName(key.column) + " has no texts whose case could be ignored";
      return false;
    }
    (void)table->setSortColumn(
        number++, static_cast<std::uint32_t>(column), key.isDescending,
        (key.ignoresCase ? ignoreCase : 0) | (key.putsNullsLast ? nullsLast : 0));
  }
  (void)table->setSortOptionA(static_cast<std::uint64_t>(plan.memory));
  (void)table->setSortOptionB(static_cast<std::uint64_t>(plan.workFileLimit));
  return true;
}

}  // namespace zvwttool
