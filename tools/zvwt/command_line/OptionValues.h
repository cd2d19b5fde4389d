/// What the texts of options mean. A text that means nothing is a CLI::ValidationError, which names
/// the option and the form that it should have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "commands/Commands.h"

namespace zvwttool {

/// COLUMN=TYPE. Columns may contain equals signs: the last one counts.
[[nodiscard]] GivenType readGivenType(const std::string& text);
/// COLUMN=BYTES
[[nodiscard]] GivenWidth readGivenWidth(const std::string& text);
/// A character, or tab or \t.
[[nodiscard]] char readDelimiter(const std::string& text);
/// FIRST,COUNT
[[nodiscard]] RowRange readRowRange(const std::string& text);

/// COLUMN[:MODIFIER]...,... in each of the texts of an option, the columns in the order of their
/// importance. A modifier is desc, asc, nulls-last or nocase; anything else behind a colon is a
/// part of the name, in which a backslash takes the meaning from a comma, colon or backslash behind
/// it.
[[nodiscard]] std::vector<SortKey> readSortKeys(const std::string& option,
                                                const std::vector<std::string>& texts);
/// A number of bytes that is `least` or more, or a number and K, M or G of 1024.
[[nodiscard]] std::int64_t readSize(const std::string& option, const std::string& text,
                                    std::int64_t least);

/// A number of seconds, or a number and s, m, h or d for seconds, minutes, hours or days; at most
/// 68 years.
[[nodiscard]] std::int64_t readAge(const std::string& option, const std::string& text);

/// A decimal number between the two, whatever zeros it begins with.
[[nodiscard]] std::int64_t readCount(const std::string& option, const std::string& text,
                                     std::int64_t least, std::int64_t most);

}  // namespace zvwttool
