/// What a sort of this library takes besides time: memory, and the patience of who cancels it.
#pragma once

#include <string>
#include <vector>

#include "SampleRows.h"

/// Prints how far the resident memory of a process grows during sorts of different ceilings.
void printMemoryOfSorts(const std::vector<SampleRow>& rows, const std::string& directory);

/// Cancels sorts that spill, at each report of their progress in turn, and prints how long they
/// took to return. The directory must be empty and has to be so again after each.
void printCancelledSorts(const std::vector<SampleRow>& rows, const std::string& directory);
