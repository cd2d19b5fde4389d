/// The POSIX half; ThisProcess_windows.cpp is its twin.
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/ThisProcess.h"

std::vector<ProcessFile> openFiles() {
  std::vector<ProcessFile> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    found.push_back({std::stoi(entry.path().filename().string()),
                     std::filesystem::read_symlink(entry, ignored).string()});
  }
  return found;
}

/// They have no name in the directory any more.
std::vector<ProcessFile> unseenFiles(const std::string& directory) {
  std::vector<ProcessFile> found = openFiles();
  std::erase_if(found, [&directory](const ProcessFile& file) {
    return !file.path.starts_with(directory) || !file.path.ends_with(" (deleted)");
  });
  return found;
}

std::int64_t sizeOf(const ProcessFile& file) {
  struct stat found;
  return fstat(static_cast<int>(file.number), &found) == 0 ? found.st_size : -1;
}

bool overwrite(const ProcessFile& file, std::int64_t offset, const std::string& bytes) {
  return pwrite(static_cast<int>(file.number), bytes.data(), bytes.size(), offset) ==
         static_cast<ssize_t>(bytes.size());
}

bool runsUnderWine() { return false; }

std::int64_t countThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

std::int64_t peakMemory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmHWM:") {
  }
  std::int64_t kilobytes = 0;
  status >> kilobytes;
  return kilobytes;
}

void forgetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }

std::size_t usableSize(void* block) noexcept { return malloc_usable_size(block); }

// NOLINTBEGIN(concurrency-mt-unsafe): see the declaration
void setVariable(const std::string& name, const char* value) {
  if (value != nullptr) {
    setenv(name.c_str(), value, 1);
  } else {
    unsetenv(name.c_str());
  }
}
// NOLINTEND(concurrency-mt-unsafe)
