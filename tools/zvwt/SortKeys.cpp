#include "SortKeys.h"

#include "DisplayText.h"
#include "Failure.h"
#include "NearName.h"

namespace zvwttool {
namespace {

constexpr std::uint64_t ignoreCase = 1;
constexpr std::uint64_t nullsLast = 2;

/// The number of a column, and its type.
int findColumn(ZvWorkTableFile& columns, const std::string& wanted, zvbType* type) {
  const int count = columns.getColumnCount();
  std::vector<std::string> others;
  for (int column = 0; column < count; ++column) {
    ZvbString name;
    int width = 0;
    int maxLength = 0;
    if (!columns.getColumnDefinition(column, &name, type, &width, &maxLength)) {
      throw libraryFailure(columns.getErrorMessage());
    }
    if (name.compare(wanted.c_str(), false) == 0) {
      return column;
    }
    others.emplace_back(name.asCstr());
  }
  throw Failure(ExitCode::usage,
                "the table has no column " + quotedName(wanted) + didYouMean(wanted, others));
}

}  // namespace

void setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns, ZvWorkTableFile* table) {
  int number = 0;
  for (const SortKey& key : plan.keys) {
    zvbType type = zvbTypeString;
    const int column = findColumn(columns, key.column, &type);
    if (key.ignoresCase && type != zvbTypeString) {
      throw Failure(ExitCode::usage, "column " + quotedName(key.column) +
                                         " has no texts whose case could be ignored");
    }
    (void)table->setSortColumn(
        number++, static_cast<std::uint32_t>(column), key.isDescending,
        (key.ignoresCase ? ignoreCase : 0) | (key.putsNullsLast ? nullsLast : 0));
  }
  (void)table->setSortOptionA(static_cast<std::uint64_t>(plan.memory));
  (void)table->setSortOptionB(static_cast<std::uint64_t>(plan.workFileLimit));
}

}  // namespace zvwttool
