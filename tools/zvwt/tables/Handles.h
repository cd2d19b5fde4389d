/// Owners for the library's objects.
#pragma once

#include <string>

#include "ZvwtHandles.h"
#include "process/Failure.h"

namespace zvwttool {

using ManagerHandle = zvwt::Manager;
/// To be gone before its manager.
using TableHandle = zvwt::Table;

/// A manager over a list of directories.
[[nodiscard]] inline ManagerHandle openManager(const std::string& directories) {
  ZvbString text;
  ManagerHandle manager(zvwtCreateManager("zvwt", directories.c_str(), &text));
  if (manager == nullptr) {
    throw libraryFailure(text);
  }
  return manager;
}

/// A table that is read, by its name or a URI.
[[nodiscard]] inline TableHandle openTable(ZvWorkTableManager& manager, const ZvbString& nameOrUri,
                                           bool readBackwards = false) {
  ZvbString text;
  TableHandle table(manager.openTable(nameOrUri, readBackwards, &text));
  if (table == nullptr) {
    throw libraryFailure(text);
  }
  return table;
}

}  // namespace zvwttool
