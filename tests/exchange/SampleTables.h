/// The tables that go from one machine to another: every type of column, rows of one element and of
/// several, a table that was sorted, and one without rows. They are the same wherever they are
/// made.
#pragma once

#include <string>
#include <vector>

#include "ZvwtHandles.h"

/// What a step throws that does not succeed.
[[noreturn]] void fail(const std::string& what, const ZvbString& reason);

zvwt::Manager openDirectory(const std::string& directory);

/// Makes the tables, and the list of their names.
void writeTables(const std::string& directory);

/// Their names, in the order in which they were made.
std::vector<std::string> tableNames(const std::string& directory);
