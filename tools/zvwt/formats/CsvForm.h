/// How a CSV text is written, where that can differ.
#pragma once

#include <string>
#include <string_view>

namespace zvwttool {

/// What some programs put before the first byte of a text; no part of it.
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

struct CsvForm {
  char delimiter = ',';
  std::string null = {};    ///< a field of it is null, unless it stands in quotes
  bool hasHeader = true;    ///< the first line has the columns' names
  bool endsWithCr = false;  ///< before each LF that ends a row; counts for writing only

  bool operator==(const CsvForm&) const = default;
};

/// A Failure when the text for null could not be told from other fields.
void requireUsable(const CsvForm& form);

}  // namespace zvwttool
