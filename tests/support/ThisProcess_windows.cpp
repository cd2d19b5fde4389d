#include <windows.h>

#include "support/ThisProcess.h"
// Need the types of the header above.
#include <malloc.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <array>
#include <cstdlib>
#include <filesystem>

#include "fio/np_fio_work.h"

namespace {

HANDLE handle(const ProcessFile& file) { return reinterpret_cast<HANDLE>(file.number); }

std::int64_t peakBefore = 0;  // what forgetPeakMemory() has seen, in KiB

std::int64_t peakOfAll() {
  PROCESS_MEMORY_COUNTERS found = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &found, sizeof found);
  return static_cast<std::int64_t>(found.PeakWorkingSetSize / 1024);
}

}  // namespace

/// There is no list: handles are small multiples of 4, and each that could be one is asked.
std::vector<ProcessFile> openFiles() {
  constexpr std::intptr_t end = 4 * 4096;
  std::vector<ProcessFile> found;
  for (std::intptr_t number = 4; number < end; number += 4) {
    ProcessFile file = {number, ""};
    std::array<wchar_t, 1024> path;
    if (GetFileType(handle(file)) == FILE_TYPE_DISK &&
        GetFinalPathNameByHandleW(handle(file), path.data(), static_cast<DWORD>(path.size()), 0) !=
            0) {
      file.path = std::filesystem::path(path.data()).string();
      found.push_back(file);
    }
  }
  return found;
}

/// They have names, as the file layer gives them.
std::vector<ProcessFile> unseenFiles(const std::string& directory) {
  std::vector<ProcessFile> found = openFiles();
  std::erase_if(found, [&directory](const ProcessFile& file) {
    const std::filesystem::path path(file.path);
    std::error_code ignored;
    return !std::filesystem::equivalent(path.parent_path(), directory, ignored) ||
           !path.filename().string().starts_with(npFioWorkPrefix);
  });
  return found;
}

std::int64_t sizeOf(const ProcessFile& file) {
  LARGE_INTEGER size;
  return GetFileSizeEx(handle(file), &size) != FALSE ? size.QuadPart : -1;
}

bool overwrite(const ProcessFile& file, std::int64_t offset, const std::string& bytes) {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD written = 0;
  return WriteFile(handle(file), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   &place) != FALSE &&
         written == bytes.size();
}

std::int64_t countThreads() {
  HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  std::int64_t count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
       more = Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  }
  CloseHandle(snapshot);
  return count;
}

std::int64_t peakMemory() { return peakOfAll() - peakBefore; }

/// The system forgets no peak: what comes later counts above it.
void forgetPeakMemory() { peakBefore = peakOfAll(); }

std::size_t usableSize(void* block) noexcept { return block != nullptr ? _msize(block) : 0; }

/// An empty value removes the variable too.
void setVariable(const std::string& name, const char* value) {
  const std::filesystem::path wide(value != nullptr ? value : "");
  _wputenv_s(std::filesystem::path(name).c_str(), wide.c_str());
}
