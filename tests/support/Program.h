/// A program that runs beside the test.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class Program {
 public:
  /// What one of its standard streams is connected with.
  struct Stream {
    enum class Kind {
      nothing,  // the system's device that has nothing and takes everything
      sameAsTest,
      file,      // at `path`; written anew
      pipe,      // whose other end is here
      refusing,  // fails each write
    };
    Kind kind = Kind::nothing;
    std::string path;
  };
  struct Streams {
    Stream input;
    Stream output;
    Stream errors;
  };
  static Stream file(std::string path) { return {Stream::Kind::file, std::move(path)}; }

  /// Starts it. `words` are those of programAt() and its arguments, in UTF-8.
  Program(const std::vector<std::string>& words, const Streams& streams);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  /// Kills the program if it still runs.
  ~Program();

  /// Everything, into the pipe that is its input, which ends then.
  void writeInput(std::string_view bytes);
  /// From the pipe that is its output. False when there are not as many bytes before its end, or,
  /// with a `wait` that is not negative, when none come in that time.
  bool readOutput(void* bytes, std::size_t size,
                  std::chrono::milliseconds wait = std::chrono::milliseconds(-1)) const;
  void closeOutput();

  [[nodiscard]] bool isRunning();
  /// Asks it to end, as a person does who wants it to stop. False where there is no way to.
  [[nodiscard]] bool interrupt() const;
  /// Ends it without asking.
  void kill() const;
  /// Its exit code once it has ended; above 255 when it was ended from outside.
  int wait();

 private:
  void lookAtEnd(bool waits);

  std::intptr_t process_ = 0;
  std::intptr_t input_ = -1;
  std::intptr_t output_ = -1;
  bool hasEnded_ = false;
  int exitCode_ = 0;
};

/// The words that start the program at a path, which an emulator's come before.
[[nodiscard]] std::vector<std::string> programAt(const std::string& path);
/// The path of this test.
[[nodiscard]] std::string ownPath();
/// Lets this test's own standard output have the bytes that are written to it.
void keepOutputUnchanged();
