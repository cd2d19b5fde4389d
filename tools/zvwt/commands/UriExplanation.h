/// What a URI stands for.
#pragma once

#include "process/OutputBuffer.h"
#include "tables/Source.h"

namespace zvwttool {

/// Prints the table, the rows, and where each column comes from. Says on standard error which
/// columns the table has not: the library reads constants in place of them. Unless it is to be
/// wide, it fits a terminal.
void explainForPeople(ZvWorkTableManager& manager, const Source& source, bool isWide,
                      OutputBuffer* output);
/// The same as a JSON object, which has the URI, too.
void explainInJson(ZvWorkTableManager& manager, const Source& source, OutputBuffer* output);

}  // namespace zvwttool
