/// The Windows half; ThisProcess_posix.cpp is its twin.
#include <windows.h>
// Need the types of the header above.
#include <malloc.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "fio/np_fio_work.h"
#include "support/ThisProcess.h"
#include "support/Wide_windows.h"

namespace {

HANDLE handle(const ProcessFile& file) { return reinterpret_cast<HANDLE>(file.number); }

/// Without the prefix that it has for the system.
std::string pathOf(HANDLE file) {
  constexpr std::wstring_view prefix = L"\\\\?\\";
  std::array<wchar_t, 1024> buffer{};
  GetFinalPathNameByHandleW(file, buffer.data(), static_cast<DWORD>(buffer.size()), 0);
  std::wstring_view path = buffer.data();
  path.remove_prefix(path.starts_with(prefix) ? prefix.size() : 0);
  return std::filesystem::path(path).string();
}

std::int64_t peakBefore = 0;  // what forgetPeakMemory() has seen, in KiB

std::int64_t peakOfAll() {
  PROCESS_MEMORY_COUNTERS found = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &found, sizeof found);
  return static_cast<std::int64_t>(found.PeakWorkingSetSize / 1024);
}

}  // namespace

/// There is no list. But handles are small multiples of 4, the smallest that are free, so each that
/// could be one is asked.
std::vector<ProcessFile> openFiles() {
  constexpr int widestGap = 256;
  std::vector<ProcessFile> found;
  std::intptr_t number = 4;
  for (int gap = 0; gap < widestGap; ++gap, number += 4) {
    ProcessFile file = {number, ""};
    DWORD flags = 0;
    if (GetHandleInformation(handle(file), &flags) != FALSE) {
      gap = 0;
      if (GetFileType(handle(file)) == FILE_TYPE_DISK) {
        file.path = pathOf(handle(file));
        found.push_back(file);
      }
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

bool runsUnderWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
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
  _wputenv_s(toWide(name).c_str(), toWide(value != nullptr ? value : "").c_str());
}
