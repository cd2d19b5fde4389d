/// Keeps Ctrl-C and the like from ending the tool while there is something to clean up.
#pragma once

#include "process/SignalHandler.h"

namespace zvwttool {

/// While it lives, signals that would end the tool are only remembered: ask interrupted() or
/// check() often. One at a time.
class InterruptGuard {
 public:
  InterruptGuard();

  [[nodiscard]] static bool interrupted();
  /// A Failure once a signal has come.
  static void check();
  /// Ends the tool once a signal has come, as its sender expects.
  static void obey();

 private:
  SignalHandler handler_;
};

}  // namespace zvwttool
