/// What the texts of options mean. A text that means nothing is a CLI::ValidationError, which names
/// the option and the form that it should have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "Commands.h"

namespace zvwttool {

/// COLUMN=TYPE. Columns may contain equals signs: the last one counts.
[[nodiscard]] GivenType readGivenType(const std::string& text);
/// COLUMN=BYTES
[[nodiscard]] GivenWidth readGivenWidth(const std::string& text);
/// FIRST,COUNT
[[nodiscard]] RowRange readRowRange(const std::string& text);

/// Accepts a decimal number that is `least` or more.
[[nodiscard]] CLI::Validator countFrom(std::int64_t least);

}  // namespace zvwttool
