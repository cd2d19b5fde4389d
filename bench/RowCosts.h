/// What writing and reading rows takes besides time.
#pragma once

#include <string>
#include <vector>

#include "SampleRows.h"

/// Prints the system calls, the allocations and the growth of resident memory of a write and of
/// reads in both directions, beside what is asked of them.
void printCosts(const std::vector<SampleRow>& rows, const std::string& directory);
