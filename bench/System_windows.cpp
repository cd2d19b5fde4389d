/// The Windows half; System_posix.cpp is its twin.
#include <windows.h>
// Needs the types of the header above.
#include <psapi.h>

#include <filesystem>

#include "System.h"

namespace {

HANDLE handle(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

PROCESS_MEMORY_COUNTERS memory() {
  PROCESS_MEMORY_COUNTERS found = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &found, sizeof found);
  return found;
}

}  // namespace

RawFile::RawFile(const std::string& path, Use use)
    : file_(reinterpret_cast<std::intptr_t>(
          CreateFileW(std::filesystem::path(path).c_str(),
                      use == Use::read ? GENERIC_READ : GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                      use == Use::read ? OPEN_EXISTING : CREATE_ALWAYS, 0, nullptr))) {}

RawFile::~RawFile() {
  if (isOpen()) {
    CloseHandle(handle(file_));
  }
}

bool RawFile::isOpen() const { return handle(file_) != INVALID_HANDLE_VALUE; }

bool RawFile::write(const void* bytes, std::size_t size) {
  DWORD count = 0;
  return WriteFile(handle(file_), bytes, static_cast<DWORD>(size), &count, nullptr) != FALSE &&
         count == size;
}

std::size_t RawFile::read(void* bytes, std::size_t size) {
  DWORD count = 0;
  return ReadFile(handle(file_), bytes, static_cast<DWORD>(size), &count, nullptr) != FALSE ? count
                                                                                            : 0;
}

std::int64_t residentBytes() { return static_cast<std::int64_t>(memory().WorkingSetSize); }

std::int64_t peakResidentBytes() { return static_cast<std::int64_t>(memory().PeakWorkingSetSize); }
