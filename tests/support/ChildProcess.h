/// A process that does something with tables, tells how far it is, and may be killed meanwhile.
///
/// It is forked: the tests that make one have no other threads. What it does must not use gtest.
#pragma once

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>

/// What a child tells: a number for the stage it has reached, and what the test makes of the rest.
struct Note {
  int stage = 0;
  std::int64_t number = 0;
  char text[320] = "";
};

/// The child's end.
class Teller {
 public:
  explicit Teller(int pipe) : pipe_(pipe) {}

  void tell(int stage, const char* text = "", std::int64_t number = 0) const {
    Note note = {.stage = stage, .number = number};
    (void)std::snprintf(note.text, sizeof note.text, "%s", text);
    // So few bytes are written whole or not at all.
    if (write(pipe_, &note, sizeof note) != sizeof note) {
      _exit(2);
    }
  }

  /// Ends the child, which has met what it must not meet.
  [[noreturn]] void fail(const char* text) const {
    tell(failed, text);
    _exit(1);
  }

  static constexpr int failed = -1;  // a stage

 private:
  int pipe_;
};

class ChildProcess {
 public:
  explicit ChildProcess(const std::function<void(const Teller&)>& action) {
    int ends[2];
    if (pipe(ends) != 0 || (process_ = fork()) < 0) {
      std::abort();
    }
    if (process_ == 0) {
      close(ends[0]);
      action(Teller(ends[1]));
      _exit(0);
    }
    close(ends[1]);
    pipe_ = ends[0];
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    (void)end();
    close(pipe_);
  }

  /// The next note, once there is one; none when the child has ended. `wait` is the longest to wait
  /// for it, negative for as long as it takes.
  std::optional<Note> next(std::chrono::milliseconds wait = std::chrono::milliseconds(-1)) const {
    pollfd waiting = {.fd = pipe_, .events = POLLIN, .revents = 0};
    Note note;
    const bool isThere = poll(&waiting, 1, static_cast<int>(wait.count())) == 1 &&
                         read(pipe_, &note, sizeof note) == sizeof note;
    return isThere ? std::optional(note) : std::nullopt;
  }

  [[nodiscard]] bool isRunning() {
    if (process_ > 0 && waitpid(process_, &status_, WNOHANG) == process_) {
      process_ = 0;
    }
    return process_ > 0;
  }

  /// Kills the child, if it still runs, and waits for its end. True when it had ended by itself and
  /// well.
  bool end() {
    if (process_ > 0) {
      kill(process_, SIGKILL);
      waitpid(process_, &status_, 0);
      process_ = 0;
    }
    return WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
  }

  /// Waits for the child's own end. True when all went well.
  bool join() {
    if (process_ > 0) {
      waitpid(process_, &status_, 0);
      process_ = 0;
    }
    return end();
  }

 private:
  pid_t process_ = 0;
  int pipe_ = -1;
  int status_ = 0;
};
