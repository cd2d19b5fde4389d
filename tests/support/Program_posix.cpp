/// The POSIX half; Program_windows.cpp is its twin.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/Program.h"

namespace {

struct Pipe {
  std::array<int, 2> ends;

  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      std::abort();
    }
  }
};

/// Connects the program's stream `number`; this end of a pipe, if it is one.
int connect(posix_spawn_file_actions_t* actions, int number, const Program::Stream& stream,
            std::vector<int>* theirs) {
  using Kind = Program::Stream::Kind;
  const bool isInput = number == STDIN_FILENO;
  if (stream.kind == Kind::pipe) {
    const Pipe pipe;
    posix_spawn_file_actions_adddup2(actions, pipe.ends[isInput ? 0 : 1], number);
    theirs->push_back(pipe.ends[isInput ? 0 : 1]);
    return pipe.ends[isInput ? 1 : 0];
  }
  if (stream.kind != Kind::sameAsTest) {
    const std::string path = stream.kind == Kind::file       ? stream.path
                             : stream.kind == Kind::refusing ? "/dev/full"
                                                             : "/dev/null";
    posix_spawn_file_actions_addopen(actions, number, path.c_str(),
                                     isInput ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }
  return -1;
}

}  // namespace

Program::Program(const std::vector<std::string>& words, const Streams& streams) {
  std::vector<char*> arguments;
  for (const std::string& word : words) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  std::vector<int> theirs;
  input_ = connect(&actions, STDIN_FILENO, streams.input, &theirs);
  output_ = connect(&actions, STDOUT_FILENO, streams.output, &theirs);
  (void)connect(&actions, STDERR_FILENO, streams.errors, &theirs);
  pid_t process = 0;
  if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
    std::abort();
  }
  posix_spawn_file_actions_destroy(&actions);
  for (const int end : theirs) {
    close(end);
  }
  process_ = process;
}

Program::~Program() {
  kill();
  (void)wait();
  closeOutput();
}

void Program::writeInput(std::string_view bytes) {
  const int input = static_cast<int>(input_);
  while (!bytes.empty()) {
    const ssize_t written = write(input, bytes.data(), bytes.size());
    if (written <= 0) {
      break;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  close(input);
  input_ = -1;
}

bool Program::readOutput(void* bytes, std::size_t size, std::chrono::milliseconds wait) const {
  pollfd waiting = {.fd = static_cast<int>(output_), .events = POLLIN, .revents = 0};
  if (poll(&waiting, 1, static_cast<int>(wait.count())) != 1) {
    return false;
  }
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = read(waiting.fd, static_cast<char*>(bytes) + done, size - done);
    if (count <= 0) {
      return false;
    }
    done += static_cast<std::size_t>(count);
  }
  return true;
}

void Program::closeOutput() {
  if (output_ >= 0) {
    close(static_cast<int>(output_));
    output_ = -1;
  }
}

bool Program::isRunning() {
  lookAtEnd(false);
  return !hasEnded_;
}

bool Program::interrupt() const {
  return !hasEnded_ && ::kill(static_cast<pid_t>(process_), SIGTERM) == 0;
}

void Program::kill() const {
  if (!hasEnded_) {
    ::kill(static_cast<pid_t>(process_), SIGKILL);
  }
}

int Program::wait() {
  lookAtEnd(true);
  return exitCode_;
}

void Program::lookAtEnd(bool waits) {
  int status = 0;
  if (!hasEnded_ && waitpid(static_cast<pid_t>(process_), &status, waits ? 0 : WNOHANG) > 0) {
    hasEnded_ = true;
    exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 256 + WTERMSIG(status);
  }
}

std::vector<std::string> programAt(const std::string& path) {
  std::vector<std::string> words;
  std::istringstream emulator(ZVWT_TEST_EMULATOR);
  for (std::string word; std::getline(emulator, word, '|');) {
    words.push_back(word);
  }
  words.push_back(path);
  return words;
}

std::string ownPath() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

void keepOutputUnchanged() {}  // as it always does here
