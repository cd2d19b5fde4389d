/// How far something is that takes its time, for people who look at a terminal.
#pragma once

#include <chrono>
#include <cstdint>

#include "base/ZvbString.h"

namespace zvwttool {

enum class ProgressUnit { rows, bytes };

/// How far it is at one moment.
struct ProgressState {
  const char* doing;  ///< such as "importing"
  ProgressUnit unit;
  std::int64_t done;
  std::int64_t total;  ///< -1 when nobody knows
  double seconds;      ///< since it began
};

/// A line of ASCII: what is done, the percentage, a bar, the amounts, the rate and the time left.
/// In fewer than `width` columns as many of the last three as fit, the last ones first; the bar has
/// what is left over.
[[nodiscard]] ZvbString progressText(const ProgressState& state, int width) noexcept;

/// Shows itself on standard error while that is a terminal, ten times a second at most, and is gone
/// with its object, or before that when anything is said.
class Progress {
 public:
  /// `doing` outlives the object; `total` is -1 when nobody knows.
  Progress(const char* doing, ProgressUnit unit, std::int64_t total) noexcept;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// For steps of any size: looks at the clock.
  void show(std::int64_t done) noexcept;
  /// For very many small steps: most of its calls do nothing.
  void update(std::int64_t done) noexcept {
    constexpr unsigned callsForEachLook = 64;
    if (isSeen_ && ++calls_ % callsForEachLook == 0) {
      show(done);
    }
  }
  void hide() noexcept { isSeen_ = false; }

 private:
  using Clock = std::chrono::steady_clock;

  const char* doing_;
  ProgressUnit unit_;
  std::int64_t total_;
  bool isSeen_;
  unsigned calls_ = 0;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point shown_ = begin_;  // what is done in no time is not worth showing
};

}  // namespace zvwttool
