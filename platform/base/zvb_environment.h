/// The environment variables of the process.
#pragma once

#include <optional>
#include <string>

/// The value of a variable in UTF-8. One without text counts as one that is not set, and so does
/// one that cannot be UTF-8 because the system keeps no text in it. Throws std::bad_alloc alone.
/// May be called from any thread while none changes the environment.
[[nodiscard]] std::optional<std::string> zvbEnvironmentVariable(const std::string& name);
