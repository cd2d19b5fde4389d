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

/// The system's text for an errno value.
[[nodiscard]] std::string systemErrorText(int errorNumber);

}  // namespace zvwttool
