/// Owners for the library's objects, which are freed with release().
#pragma once

#include <memory>
#include <string>

#include "zvwt.h"

namespace zvwttool {

struct Release {
  template <typename Object>
  void operator()(Object* object) const noexcept {
    object->release();
  }
};

using ManagerHandle = std::unique_ptr<ZvWorkTableManager, Release>;
/// To be gone before its manager.
using TableHandle = std::unique_ptr<ZvWorkTableFile, Release>;

using StringCursorHandle = std::unique_ptr<ZvbStringCursor, Release>;

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
