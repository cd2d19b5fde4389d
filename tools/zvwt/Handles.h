/// Owners for the library's objects.
#pragma once

#include <string>

#include "ZvwtHandles.h"

namespace zvwttool {

using ManagerHandle = zvwt::Manager;
/// To be gone before its manager.
using TableHandle = zvwt::Table;

/// A manager over a list of directories; null, with the reason in *error, on failure.
[[nodiscard]] inline ManagerHandle openManager(const std::string& directories, std::string* error) {
  ZvbString text;
  ManagerHandle manager(zvwtCreateManager("zvwt", directories.c_str(), &text));
  if (manager == nullptr) {
    *error = text.isEmpty() ? "out of memory" : text.asCstr();
  }
  return manager;
}

}  // namespace zvwttool
