/// Why something could not be done with a table, in words for whoever named it.
#pragma once

#include <string>

#include "ZvWorkTableManager.h"
#include "process/Failure.h"

namespace zvwttool {

/// What the library gives as the reason why the table was not opened. A text that is no table's
/// name and a table that is not there are told with what may help; behind damage stands `advice`.
[[nodiscard]] Failure openingFailure(ZvWorkTableManager& manager, const std::string& table,
                                     const ZvbString& reason, const std::string& advice);

/// What the library gives as the reason why a table that was opened could not be read.
[[nodiscard]] Failure readingFailure(const std::string& table, const ZvbString& reason);

/// What a message about a damaged table goes on with: how to see more of it.
[[nodiscard]] std::string adviceToCheck(const std::string& table);

}  // namespace zvwttool
