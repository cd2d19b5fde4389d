#include "tables/Condition.h"

#include <algorithm>
#include <new>
#include <optional>

#include "process/Failure.h"
#include "tables/ColumnNames.h"
#include "tables/ValueOrder.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

struct Sign {
  std::string_view text;
  Comparison comparison;
};

// One that another one begins with comes behind that.
constexpr Sign signs[] = {
    {"==", Comparison::equal},
    {"!=", Comparison::unequal},
    {"<>", Comparison::unequal},
    {"<=", Comparison::lessOrEqual},
    {">=", Comparison::greaterOrEqual},
    {"=", Comparison::equal},
    {"<", Comparison::less},
    {">", Comparison::greater},
    {"~", Comparison::contains},
};

// What stands behind a column in place of a sign and a value; the second ends like the first.
constexpr Sign phrases[] = {
    {" is not null", Comparison::isNotNull},
    {" is null", Comparison::isNull},
};

const Sign* signAt(std::string_view text) {
  const Sign* found = std::find_if(std::begin(signs), std::end(signs), [text](const Sign& sign) {
    return text.starts_with(sign.text);
  });
  return found == std::end(signs) ? nullptr : found;
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

std::string_view withoutQuotes(std::string_view text) {
  const bool isQuoted = text.size() >= 2 && text.front() == text.back() &&
                        (text.front() == '\'' || text.front() == '"');
  return isQuoted ? text.substr(1, text.size() - 2) : text;
}

std::optional<ConditionParts> readPhrase(std::string_view text) {
  for (const Sign& phrase : phrases) {
    const std::size_t begin = text.size() - std::min(text.size(), phrase.text.size());
    if (sameName(std::string(text.substr(begin)).c_str(), phrase.text.data())) {
      return ConditionParts{.column = std::string(withoutBlanks(text.substr(0, begin))),
                            .comparison = phrase.comparison,
                            .value = {}};
    }
  }
  return std::nullopt;
}

/// What it is when the column ends before the sign at a place.
ConditionParts splitAt(std::string_view text, std::size_t place, const Sign& sign) {
  const std::string_view value = withoutBlanks(text.substr(place + sign.text.size()));
  return {.column = std::string(withoutBlanks(text.substr(0, place))),
          .comparison = sign.comparison,
          .value = std::string(withoutQuotes(value))};
}

}  // namespace

ConditionParts readCondition(const std::string& text,
                             const std::vector<std::string>& columnsOfTable) {
  std::optional<ConditionParts> first = readPhrase(withoutBlanks(text));
  if (first.has_value() && hasName(columnsOfTable, first->column.c_str())) {
    return *first;
  }
  std::optional<ConditionParts> longest;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (const Sign* sign = signAt(std::string_view(text).substr(place))) {
      ConditionParts parts = splitAt(text, place, *sign);
      first = first.has_value() ? first : parts;
      longest = hasName(columnsOfTable, parts.column.c_str()) ? std::move(parts) : longest;
    }
  }
  if (longest.has_value()) {
    return *longest;
  }
  if (!first.has_value()) {
    throw Failure(ExitCode::usage,
                  "--where: " + quotedName(text) +
                      " is no condition: the form is COLUMN=VALUE, or another one of != < <= > >= "
                      "and ~ (contains), or COLUMN is null, or COLUMN is not null");
  }
  throw Failure(ExitCode::usage, "--where: the table has no column " + quotedName(first->column) +
                                     didYouMean(first->column, columnsOfTable));
}

Condition::Condition(const ConditionParts& parts, zvbType type)
    : comparison_(parts.comparison), text_(parts.value) {
  const bool hasValue = comparison_ < Comparison::contains;
  if (hasValue && !readField(parts.value, type, &value_)) {
    throw Failure(ExitCode::usage, "--where: column " + quotedName(parts.column) +
                                       " has values of type " + typeWord(type) + ", and " +
                                       quotedName(parts.value) + " is none" +
                                       (type == zvbTypeDate ? "; the form is YYYY-MM-DD" : ""));
  }
  if (value_.memoryShort()) {
    throw std::bad_alloc();
  }
}

bool Condition::holdsFor(const ZvbDatavar& value) {
  if (comparison_ == Comparison::isNull || value.isNull()) {
    return (comparison_ == Comparison::isNull) && value.isNull();
  }
  if (comparison_ == Comparison::isNotNull) {
    return true;
  }
  if (comparison_ == Comparison::contains) {
    return valueText_.of(value).find(text_) != std::string_view::npos;
  }
  return holdsForOrder(compareValues(value, value_));
}

bool Condition::holdsForOrder(int order) const {
  switch (comparison_) {
    case Comparison::equal:
      return order == 0;
    case Comparison::unequal:
      return order != 0;
    case Comparison::less:
      return order < 0;
    case Comparison::lessOrEqual:
      return order <= 0;
    case Comparison::greater:
      return order > 0;
    case Comparison::greaterOrEqual:
      return order >= 0;
    default:
      return false;
  }
}

}  // namespace zvwttool
