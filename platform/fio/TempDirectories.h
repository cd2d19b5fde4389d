/// The directories of a list, in order: those in which a manager's files live. Does not change once
/// it is filled, and may then be read from any thread.
#pragma once

#include <memory>

#include "base/ZvbString.h"

class TempDirectories {
 public:
  /// Splits a list at each separator; a separator at its end adds nothing. False when memory is
  /// short.
  [[nodiscard]] bool split(const ZvbString& list, char separator) noexcept;

  [[nodiscard]] int count() const noexcept { return count_; }
  /// An empty text for an index that there is not.
  [[nodiscard]] ZvbString get(int index) const noexcept;
  /// As get, without a copy.
  [[nodiscard]] const char* path(int index) const noexcept;

 private:
  int count_ = 0;
  std::unique_ptr<ZvbString[]> directories_;
};
