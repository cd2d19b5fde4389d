/// Keeps Ctrl-C and the like from ending the tool while there is something to clean up.
#pragma once

#include <array>
#include <csignal>
#include <string_view>

namespace zvwttool {

/// Why a command fails that was interrupted.
inline constexpr std::string_view interruption = "interrupted";

/// While it lives, these signals are only remembered: ask interrupted() often. One at
/// a time; signals that the tool was started to ignore stay ignored.
class InterruptGuard {
 public:
  InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;
  /// Handles the signals as before, and sends the remembered one again, which ends the tool.
  ~InterruptGuard();

  [[nodiscard]] static bool interrupted();

 private:
#ifdef SIGBREAK
  static constexpr std::array signals = {SIGINT, SIGTERM, SIGBREAK};  // Windows knows no SIGHUP
#else
  static constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};
#endif
  using Handler = void (*)(int);

  std::array<Handler, signals.size()> handlersBefore_{};
};

}  // namespace zvwttool
