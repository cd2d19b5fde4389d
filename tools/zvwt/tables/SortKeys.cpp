#include "tables/SortKeys.h"

#include <string_view>

#include "process/Failure.h"
#include "tables/ColumnNames.h"
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

/// The number of a column, and its type.
int findColumn(ZvWorkTableFile& columns, const SortKey& key, zvbType* type) {
  const int count = columns.getColumnCount();
  std::vector<std::string> others;
  for (int column = 0; column < count; ++column) {
    ZvbString name;
    int width = 0;
    int maxLength = 0;
    if (!columns.getColumnDefinition(column, &name, type, &width, &maxLength)) {
      throw libraryFailure(columns.getErrorMessage());
    }
    if (sameName(name, key.column.c_str())) {
      return column;
    }
    others.emplace_back(name.asCstr());
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
  int number = 0;
  for (const SortKey& key : plan.keys) {
    zvbType type = zvbTypeString;
    const int column = findColumn(columns, key, &type);
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
