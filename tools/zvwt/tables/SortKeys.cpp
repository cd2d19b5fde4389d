#include "tables/SortKeys.h"

#include <string_view>

#include "process/Failure.h"
#include "tables/ColumnNames.h"
#include "tables/TableColumns.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

constexpr std::uint64_t ignoreCase = 1;
constexpr std::uint64_t nullsLast = 2;

/// A column's name as it has to stand in a sort key.
std::string escaped(const std::string& column) {
  std::string text;
  for (const char character : column) {
    text += std::string_view(",:\\").find(character) != std::string_view::npos ? "\\" : "";
    text += character;
  }
  return text;
}

/// A column whose name ends with what was taken for modifiers, as it has to be written.
std::string columnWithModifiers(const SortKey& key, const std::vector<std::string>& columns) {
  std::string modifiers = key.modifiers;
  while (!modifiers.empty()) {
    if (hasName(columns, (key.column + modifiers).c_str())) {
      return escaped(key.column + modifiers) + key.modifiers.substr(modifiers.size());
    }
    modifiers.resize(modifiers.rfind(':'));
  }
  return "";
}

/// The key with the modifier that what stands behind the column's last colon is near to.
std::string keyWithModifier(const SortKey& key, const std::vector<std::string>& columns) {
  const std::size_t colon = key.column.rfind(':');
  if (colon == std::string::npos || !hasName(columns, key.column.substr(0, colon).c_str())) {
    return "";
  }
  const std::string modifier =
      nearest(key.column.substr(colon + 1), {"desc", "asc", "nulls-last", "nocase"});
  return modifier.empty() ? ""
                          : escaped(key.column.substr(0, colon)) + ':' + modifier + key.modifiers;
}

/// The number of a column.
std::size_t findColumn(const std::vector<TableColumn>& columns, const SortKey& key) {
  std::vector<std::string> others;
  for (std::size_t column = 0; column < columns.size(); ++column) {
    if (sameName(columns[column].name.c_str(), key.column.c_str())) {
      return column;
    }
    others.push_back(columns[column].name);
  }
  throw Failure(ExitCode::usage,
                "the table has no column " + quotedName(key.column) + didYouMean(key, others));
}

}  // namespace

std::string didYouMean(const SortKey& key, const std::vector<std::string>& columns) {
  const std::string column = columnWithModifiers(key, columns);
  const std::string meant = column.empty() ? keyWithModifier(key, columns) : column;
  return meant.empty() ? didYouMean(key.column, columns)
                       : "; did you mean " + quotedName(meant) + '?';
}

void setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns, ZvWorkTableFile* table) {
  const std::vector<TableColumn> known = columnsOf(columns);
  int number = 0;
  for (const SortKey& key : plan.keys) {
    const std::size_t column = findColumn(known, key);
    if (key.ignoresCase && known[column].type != zvbTypeString) {
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
