/// What the tool has to say to people, on standard error.
#pragma once

#include <string>
#include <string_view>

#include "ExitCode.h"

namespace zvwttool {

/// Writes one line, the tool's name before it.
void say(std::string_view text);

/// Says why a command fails and gives the code that it ends with.
[[nodiscard]] ExitCode fail(std::string_view text);

/// While standard error is a terminal, shows on its last line how far a command is. The next
/// status, and whatever is said, replaces it.
void showStatus(std::string_view text) noexcept;
void removeStatus() noexcept;

/// The system's text for an errno value.
[[nodiscard]] std::string systemErrorText(int errorNumber);

}  // namespace zvwttool
