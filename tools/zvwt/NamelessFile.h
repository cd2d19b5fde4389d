/// A temporary file without a name, which is gone when it is closed, however the tool ends.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace zvwttool {

/// Makes one in the first of the directories that takes it, for reading and writing by this user
/// alone. Null, with the system's code for the last directory in *errorNumber, when none does. The
/// caller closes it.
[[nodiscard]] std::FILE* openNamelessFile(const std::vector<std::string>& directories,
                                          int* errorNumber);

}  // namespace zvwttool
