/// What the tool asks of the operating system. Texts and paths are UTF-8 everywhere.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace zvwttool {

/// Before anything else: data pass through the standard streams byte for byte, a reader that closes
/// a pipe is met as a failed write, so that commands can still clean up, and no file that is opened
/// takes the place of a stream that the tool was started without.
void prepareStreams() noexcept;

/// Ends the tool as one that a signal has ended, so that whoever started it can tell. May be called
/// by the handler of a signal.
[[noreturn]] void endBySignal(int signal) noexcept;

/// What the tool was started with, behind its own name.
[[nodiscard]] std::vector<std::string> commandLineArguments(int count, char** arguments);

enum class OutputStream { output, errors };

/// The columns of the terminal that a stream is; 0 when it is none. On POSIX the environment's
/// COLUMNS counts where a terminal does not tell.
[[nodiscard]] int terminalWidth(OutputStream stream) noexcept;

/// Has the terminal that standard output is take the sequences for bold and dim text; false when it
/// cannot.
[[nodiscard]] bool enableStyles() noexcept;

/// Writes to standard error at once. May be called by the handler of a signal.
void writeErrors(std::string_view text) noexcept;

/// The name of a file's owner, or the number where there is none.
[[nodiscard]] std::string ownerName(std::uint32_t owner);

/// For reading; null with errno when that fails. The caller closes it.
[[nodiscard]] std::FILE* openForReading(const std::string& path);

/// The bytes of a regular file from where it stands to its end; -1 for anything else.
[[nodiscard]] std::int64_t bytesAhead(std::FILE* file) noexcept;

/// Makes a temporary file that nobody else can open, for reading and writing. It is gone when it is
/// closed, however the tool ends. Null with errno when that fails. The caller closes it.
[[nodiscard]] std::FILE* openNamelessFile(const std::string& directory);

}  // namespace zvwttool
