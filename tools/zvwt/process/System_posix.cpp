/// The POSIX half; System_windows.cpp is its twin.
#include <fcntl.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "process/System.h"

namespace zvwttool {
namespace {

/// Closes the descriptor when that fails.
std::FILE* openStream(int descriptor) {
  std::FILE* file = fdopen(descriptor, "w+b");
  if (file == nullptr) {
    const int reason = errno;
    close(descriptor);
    errno = reason;
  }
  return file;
}

/// What a person or a shell has set for terminals that do not tell their width; 0 when nobody has.
int widthOfEnvironment() noexcept {
  const char* const variable = std::getenv("COLUMNS");  // NOLINT(concurrency-mt-unsafe): one thread
  const std::string_view text = variable != nullptr ? variable : "";
  int width = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), width);
  const bool isNumber = status == std::errc() && end == text.data() + text.size();
  return isNumber && width > 0 ? width : 0;
}

/// A stream that the tool was started without must not be the next file that is opened. What takes
/// its place fails as a closed one does, but for words, which are lost.
void occupyStreams() noexcept {
  constexpr int modes[] = {O_WRONLY, O_RDONLY, O_WRONLY};  // of input, output, errors
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) {
      (void)open("/dev/null", modes[stream]);  // NOLINT(cppcoreguidelines-pro-type-vararg)
    }
  }
}

}  // namespace

void prepareStreams() noexcept {
  (void)std::signal(SIGPIPE, SIG_IGN);
  occupyStreams();
}

void endBySignal(int signal) noexcept {
  sigset_t blocked;  // as it is while its handler runs
  (void)sigemptyset(&blocked);
  (void)sigaddset(&blocked, signal);
  (void)std::signal(signal, SIG_DFL);
  (void)pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
  (void)std::raise(signal);
  constexpr int signalled = 128;  // as shells count them, should it have been of no effect
  std::_Exit(signalled + signal);
}

std::vector<std::string> commandLineArguments(int count, char** arguments) {
  return {arguments + (count > 0 ? 1 : 0), arguments + count};
}

int terminalWidth(OutputStream stream) noexcept {
  constexpr int usualWidth = 80;
  const int descriptor = stream == OutputStream::output ? STDOUT_FILENO : STDERR_FILENO;
  if (isatty(descriptor) == 0) {
    return 0;
  }
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  const int width = widthOfEnvironment();
  return width > 0 ? width : usualWidth;
}

bool enableStyles() noexcept { return true; }

void writeErrors(std::string_view text) noexcept {
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

std::string ownerName(std::uint32_t owner) {
  const passwd* user = getpwuid(owner);  // NOLINT(concurrency-mt-unsafe): the tool has one thread
  return user != nullptr ? user->pw_name : std::to_string(owner);
}

std::FILE* openForReading(const std::string& path) { return std::fopen(path.c_str(), "rb"); }

std::int64_t bytesAhead(std::FILE* file) noexcept {
  struct stat found {};
  const off_t place = ftello(file);
  const bool isKnown = place >= 0 && fstat(fileno(file), &found) == 0 && S_ISREG(found.st_mode);
  return isKnown ? found.st_size - place : -1;
}

std::FILE* openNamelessFile(const std::string& directory) {
#ifdef O_TMPFILE
  const int unseen = open(directory.c_str(), O_RDWR | O_TMPFILE | O_EXCL | O_CLOEXEC, 0600);
  if (unseen >= 0) {
    return openStream(unseen);
  }
#endif
  // Not every file system can do that. In between, the file has a name for a moment.
  std::string path = directory + "/zvwti_XXXXXX";
  const int descriptor = mkstemp(path.data());
  if (descriptor < 0) {
    return nullptr;
  }
  (void)unlink(path.c_str());
  return openStream(descriptor);
}

}  // namespace zvwttool
