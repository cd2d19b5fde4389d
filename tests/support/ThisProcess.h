/// What the system tells about this process: its open files, its threads and its memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

struct OpenFile {
  int descriptor;
  std::string path;
};

inline std::vector<OpenFile> openFiles() {
  std::vector<OpenFile> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    found.push_back({std::stoi(entry.path().filename().string()),
                     std::filesystem::read_symlink(entry, ignored).string()});
  }
  return found;
}

/// Those of a directory that are open and have no name there any more.
inline std::vector<OpenFile> namelessFiles(const std::string& directory) {
  std::vector<OpenFile> found = openFiles();
  std::erase_if(found, [&directory](const OpenFile& file) {
    return !file.path.starts_with(directory) || !file.path.ends_with(" (deleted)");
  });
  return found;
}

inline std::int64_t countThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

/// The most memory that the process has had resident since forgetPeakMemory(), in KiB.
inline std::int64_t peakMemory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmHWM:") {
  }
  std::int64_t kilobytes = 0;
  status >> kilobytes;
  return kilobytes;
}

inline void forgetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }
