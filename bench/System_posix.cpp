/// The POSIX half; System_windows.cpp is its twin.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "System.h"

RawFile::RawFile(const std::string& path, Use use)
    : file_(use == Use::read ? open(path.c_str(), O_RDONLY | O_CLOEXEC)
                             : open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600)) {
}

RawFile::~RawFile() {
  if (isOpen()) {
    close(static_cast<int>(file_));
  }
}

bool RawFile::isOpen() const { return file_ >= 0; }

// NOLINTBEGIN(readability-make-member-function-const): they change the file
bool RawFile::write(const void* bytes, std::size_t size) {
  return ::write(static_cast<int>(file_), bytes, size) == static_cast<ssize_t>(size);
}

std::size_t RawFile::read(void* bytes, std::size_t size) {
  const ssize_t count = ::read(static_cast<int>(file_), bytes, size);
  return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}
// NOLINTEND(readability-make-member-function-const)

std::int64_t residentBytes() {
  std::ifstream pages("/proc/self/statm");
  std::int64_t all = 0;
  std::int64_t resident = 0;
  if (!(pages >> all >> resident)) {
    throw std::runtime_error("this system does not tell the memory of a process");
  }
  return resident * sysconf(_SC_PAGESIZE);
}

std::int64_t peakResidentBytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    if (word == "VmHWM:") {
      std::int64_t kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  }
  throw std::runtime_error("this system does not tell the most memory of a process");
}
