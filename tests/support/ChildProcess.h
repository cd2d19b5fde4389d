/// A process that does something with tables, tells how far it is, and may be killed meanwhile. It
/// is this test's program, started again to play one of the parts that the test gives names.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/Program.h"

/// What a child tells: a number for the stage it has reached, and what the test makes of the rest.
struct Note {
  int stage = 0;
  std::int64_t number = 0;
  char text[320] = "";
};

/// The child's end.
class Teller {
 public:
  void tell(int stage, const char* text = "", std::int64_t number = 0) const;

  /// Ends the child, which has met what it must not meet.
  [[noreturn]] void fail(const char* text) const;

  static constexpr int failed = -1;  // a stage
};

using Words = std::vector<std::string>;

/// Gives a part its name, before main. What is played must not use gtest.
class ChildPart {
 public:
  ChildPart(const char* name, void (*play)(const Teller&, const Words&));
};

class ChildProcess {
 public:
  explicit ChildProcess(const std::string& part, const Words& words);

  /// The next note, once there is one; none when the child has ended. `wait` is the longest to wait
  /// for it, negative for as long as it takes.
  std::optional<Note> next(std::chrono::milliseconds wait = std::chrono::milliseconds(-1)) const;

  [[nodiscard]] bool isRunning() { return program_.isRunning(); }
  /// Kills the child, if it still runs, and waits for its end.
  void end();
  /// Waits for the child's own end. True when all went well.
  bool join() { return program_.wait() == 0; }

 private:
  Program program_;
};
