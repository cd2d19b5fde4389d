/// The POSIX half; System_windows.cpp is its twin.
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "System.h"

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

std::FILE* openIn(const std::string& directory) {
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

}  // namespace

void prepareStreams() noexcept { (void)std::signal(SIGPIPE, SIG_IGN); }

std::vector<std::string> commandLineArguments(int count, char** arguments) {
  return {arguments + (count > 0 ? 1 : 0), arguments + count};
}

bool standardErrorIsTerminal() noexcept { return isatty(STDERR_FILENO) != 0; }

std::string ownerName(std::uint32_t owner) {
  const passwd* user = getpwuid(owner);  // NOLINT(concurrency-mt-unsafe): the tool has one thread
  return user != nullptr ? user->pw_name : std::to_string(owner);
}

std::FILE* openForReading(const std::string& path) { return std::fopen(path.c_str(), "rb"); }

std::FILE* openNamelessFile(const std::vector<std::string>& directories, int* errorNumber) {
  for (const std::string& directory : directories) {
    if (std::FILE* file = openIn(directory); file != nullptr) {
      return file;
    }
    *errorNumber = errno;
  }
  return nullptr;
}

}  // namespace zvwttool
