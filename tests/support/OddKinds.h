/// What a directory can have under a name that is no file of one's own.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct OddKind {
  const char* name;
  std::function<bool(const std::string& path)> make;
};

/// Those that this system has. `same` is a good file, of the kind that is expected.
[[nodiscard]] std::vector<OddKind> oddKinds(const std::string& same);
