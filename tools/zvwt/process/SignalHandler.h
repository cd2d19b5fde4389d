/// What happens when a signal comes that would end the tool, such as that of Ctrl-C.
#pragma once

#include <array>
#include <csignal>

namespace zvwttool {

/// Has a function called for each such signal while it lives. One at a time; signals that the tool
/// was started to ignore stay ignored.
class SignalHandler {
 public:
  using Handler = void (*)(int);

  explicit SignalHandler(Handler handler);
  SignalHandler(const SignalHandler&) = delete;
  SignalHandler& operator=(const SignalHandler&) = delete;
  /// Handles the signals as before.
  ~SignalHandler();

 private:
#ifdef SIGBREAK
  static constexpr std::array signals = {SIGINT, SIGTERM, SIGBREAK};  // Windows knows no SIGHUP
#else
  static constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};
#endif

  std::array<Handler, signals.size()> handlersBefore_{};
};

/// For what cannot be stopped and cleaned up: while it lives, a signal ends the tool as if it did
/// not, and the text is said before that. One at a time; the text is static.
class LastWords {
 public:
  explicit LastWords(const char* text);

 private:
  SignalHandler handler_;
};

}  // namespace zvwttool
