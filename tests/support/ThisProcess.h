/// What the system tells about this process, and its environment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct ProcessFile {
  std::intptr_t number;  // the system's
  std::string path;
};

[[nodiscard]] std::vector<ProcessFile> openFiles();

/// Those of a directory that are open and that nobody else can open.
[[nodiscard]] std::vector<ProcessFile> unseenFiles(const std::string& directory);

/// What a file of unseenFiles() has.
[[nodiscard]] std::int64_t sizeOf(const ProcessFile& file);
[[nodiscard]] bool overwrite(const ProcessFile& file, std::int64_t offset,
                             const std::string& bytes);

/// True where Wine plays the system, which cannot do all that the system does.
[[nodiscard]] bool runsUnderWine();

[[nodiscard]] std::int64_t countThreads();

/// The most memory that the process has had resident since forgetPeakMemory(), in KiB.
[[nodiscard]] std::int64_t peakMemory();
void forgetPeakMemory();

/// How many bytes the heap has given for a block of it; 0 for null.
[[nodiscard]] std::size_t usableSize(void* block) noexcept;

/// Null removes the variable. Not while other threads run: the environment has no lock.
void setVariable(const std::string& name, const char* value);
