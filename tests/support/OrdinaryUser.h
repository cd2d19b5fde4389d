/// Tests for which permissions count, which they do not for root.
#pragma once

#include <functional>
#include <string>

/// True when this process may do everything.
[[nodiscard]] bool isRoot();

/// Makes a file or directory one of the user that root becomes for such tests.
[[nodiscard]] bool giveToOrdinaryUser(const std::string& path);

/// Runs as an ordinary user if this process is root's; what fails is printed. True if nothing has.
[[nodiscard]] bool passesForOrdinaryUser(const std::function<void()>& test);
