/// What the tool asks of the operating system. Texts and paths are UTF-8 everywhere.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace zvwttool {

/// Before anything else: data pass through the standard streams byte for byte, and a reader that
/// closes a pipe is met as a failed write, so that commands can still clean up.
void prepareStreams() noexcept;

/// What the tool was started with, behind its own name.
[[nodiscard]] std::vector<std::string> commandLineArguments(int count, char** arguments);

/// True when a person may be reading standard error as it is written.
[[nodiscard]] bool standardErrorIsTerminal() noexcept;

/// The name of a file's owner, or the number where there is none.
[[nodiscard]] std::string ownerName(std::uint32_t owner);

/// For reading; null with errno when that fails. The caller closes it.
[[nodiscard]] std::FILE* openForReading(const std::string& path);

/// Makes a temporary file that nobody else can open, for reading and writing, in the first of the
/// directories that takes it. It is gone when it is closed, however the tool ends. Null, with the
/// system's code for the last directory in *errorNumber, when none does. The caller closes it.
[[nodiscard]] std::FILE* openNamelessFile(const std::vector<std::string>& directories,
                                          int* errorNumber);

}  // namespace zvwttool
