/// What the tool has to say to people, on standard error.
#pragma once

#include <string_view>

namespace zvwttool {

/// Writes one line, the tool's name before it.
void say(std::string_view text);

/// The same where there may be no memory: takes none, and writes the text, which is the tool's own,
/// as it is.
void sayPlainly(std::string_view text) noexcept;

/// What say() does for what people may want to know and have not asked for.
void remark(std::string_view text);
/// From now on there are no remarks and no status; what goes wrong is said all the same.
void beQuiet() noexcept;

/// On a terminal, what is said next stands on a line of its own whatever the line has.
void beginLine() noexcept;

/// Whether showStatus() does anything: standard error is a terminal.
[[nodiscard]] bool statusIsSeen() noexcept;
/// Shows on the terminal's last line how far a command is, in ASCII. The next status, and whatever
/// is said, replaces it.
void showStatus(std::string_view text) noexcept;
void removeStatus() noexcept;

}  // namespace zvwttool
