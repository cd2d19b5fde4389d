/// Lists of directories, as a manager is given them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zvwttool {

/// The directories of a list; an empty entry is the current directory.
[[nodiscard]] std::vector<std::string> splitDirectories(const std::string& list);
[[nodiscard]] std::string joinDirectories(const std::vector<std::string>& directories);

/// Where the library finds a table: in the first of the directories that has it. Empty when none
/// has.
[[nodiscard]] std::string pathOfTable(const std::string& table,
                                      const std::vector<std::string>& directories);

/// Paths as texts in UTF-8.
[[nodiscard]] std::filesystem::path pathOfText(const std::string& text);
[[nodiscard]] std::string textOfPath(const std::filesystem::path& path);

}  // namespace zvwttool
