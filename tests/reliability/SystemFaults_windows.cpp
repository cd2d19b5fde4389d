/// The Windows half; SystemFaults_posix.cpp is its twin. A program reaches the system's functions
/// through pointers, which this file has in place of the system's.
#include <windows.h>
// Needs the types of the header above.
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "reliability/SystemFaults.h"

namespace code {
const int inputOutput = ERROR_IO_DEVICE;
const int diskFull = ERROR_DISK_FULL;
const int quotaUsedUp = 1295;  // ERROR_DISK_QUOTA_EXCEEDED, which not every windows.h has
const int fileTooLarge = ERROR_FILE_TOO_LARGE;
const int tooManyFiles = ERROR_TOO_MANY_OPEN_FILES;
const int outOfMemory = ERROR_NOT_ENOUGH_MEMORY;
const int accessDenied = ERROR_ACCESS_DENIED;
const int readOnlyMedium = ERROR_WRITE_PROTECT;
const int notFound = ERROR_FILE_NOT_FOUND;
const int inUse = ERROR_LOCK_VIOLATION;
const int unheardOf = ERROR_POSSIBLE_DEADLOCK;
const int unsupported = ERROR_NOT_SUPPORTED;
const int interrupted = none;
}  // namespace code

namespace {

/// The system's function of that name.
template <typename Function>
Function* systems(Function* /*type*/, const char* name, const wchar_t* library = L"kernel32") {
  return reinterpret_cast<Function*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

void note(unsigned kind, const wchar_t* path) noexcept {
  std::array<char, 512> text;
  (void)std::snprintf(text.data(), text.size(), "%ls", path);
  call::note(kind, text.data());
}

/// Whether this call is to meet the fault; the last error then says which.
bool strikes(unsigned kind, const wchar_t* path) noexcept {
  if (!call::strikes(kind)) {
    return false;
  }
  note(kind, path);
  SetLastError(static_cast<DWORD>(call::currentFault().code));
  return true;
}

bool strikes(unsigned kind, HANDLE file) noexcept {
  if (!call::strikes(kind)) {
    return false;
  }
  std::array<wchar_t, 512> path{};
  GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), 0);
  note(kind, path.data());
  SetLastError(static_cast<DWORD>(call::currentFault().code));
  return true;
}

/// The result of a transfer that has met the fault; `transfer` does one of so many bytes.
template <typename Transfer>
BOOL transferBadly(DWORD size, DWORD* count, const Transfer& transfer) {
  *count = 0;
  if (call::currentFault().effect == Fault::Effect::transfersLess) {
    return transfer(std::max<DWORD>(size / 2, 1));
  }
  return call::currentFault().effect == Fault::Effect::transfersNone ? TRUE : FALSE;
}

HANDLE WINAPI createFile(const wchar_t* path, DWORD access, DWORD sharing,
                         SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                         HANDLE model) {
  static auto* const real = systems(&::CreateFileW, "CreateFileW");
  const bool describes = (access & (GENERIC_READ | GENERIC_WRITE | DELETE)) == 0;
  const unsigned kind = access == DELETE ? call::unlink : describes ? call::describe : call::open;
  return strikes(kind, path) ? INVALID_HANDLE_VALUE
                             : real(path, access, sharing, security, disposition, flags, model);
}

/// A close that fails has closed.
BOOL WINAPI closeHandle(HANDLE handle) {
  static auto* const real = systems(&::CloseHandle, "CloseHandle");
  const bool fails = GetFileType(handle) == FILE_TYPE_DISK && strikes(call::close, handle);
  const DWORD reason = GetLastError();
  const BOOL closed = real(handle);
  if (fails) {
    SetLastError(reason);
  }
  return fails ? FALSE : closed;
}

BOOL WINAPI readFile(HANDLE file, void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  static auto* const real = systems(&::ReadFile, "ReadFile");
  const auto transfer = [&](DWORD part) { return real(file, bytes, part, count, place); };
  return strikes(call::read, file) ? transferBadly(size, count, transfer) : transfer(size);
}

BOOL WINAPI writeFile(HANDLE file, const void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  static auto* const real = systems(&::WriteFile, "WriteFile");
  const auto transfer = [&](DWORD part) { return real(file, bytes, part, count, place); };
  return strikes(call::write, file) ? transferBadly(size, count, transfer) : transfer(size);
}

BOOL WINAPI getFileSize(HANDLE file, LARGE_INTEGER* size) {
  static auto* const real = systems(&::GetFileSizeEx, "GetFileSizeEx");
  return strikes(call::size, file) ? FALSE : real(file, size);
}

BOOL WINAPI getInformation(HANDLE file, BY_HANDLE_FILE_INFORMATION* found) {
  static auto* const real = systems(&::GetFileInformationByHandle, "GetFileInformationByHandle");
  return strikes(call::size, file) ? FALSE : real(file, found);
}

BOOL WINAPI getFileTime(HANDLE file, FILETIME* made, FILETIME* read, FILETIME* written) {
  static auto* const real = systems(&::GetFileTime, "GetFileTime");
  return strikes(call::describe, file) ? FALSE : real(file, made, read, written);
}

BOOL WINAPI setInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* value, DWORD size) {
  static auto* const real = systems(&::SetFileInformationByHandle, "SetFileInformationByHandle");
  const unsigned kind = what == FileEndOfFileInfo    ? call::truncate
                        : what == FileAllocationInfo ? call::reserve
                                                     : call::unlink;
  return strikes(kind, file) ? FALSE : real(file, what, value, size);
}

BOOL WINAPI lockFile(HANDLE file, DWORD flags, DWORD reserved, DWORD low, DWORD high,
                     OVERLAPPED* place) {
  static auto* const real = systems(&::LockFileEx, "LockFileEx");
  return strikes(call::lock, file) ? FALSE : real(file, flags, reserved, low, high, place);
}

HANDLE WINAPI findFirst(const wchar_t* pattern, WIN32_FIND_DATAW* found) {
  static auto* const real = systems(&::FindFirstFileW, "FindFirstFileW");
  return strikes(call::list, pattern) ? INVALID_HANDLE_VALUE : real(pattern, found);
}

BOOL WINAPI findNext(HANDLE search, WIN32_FIND_DATAW* found) {
  static auto* const real = systems(&::FindNextFileW, "FindNextFileW");
  return strikes(call::list, L"") ? FALSE : real(search, found);
}

}  // namespace

#define REPLACE(function, replacement)                 \
  extern decltype(&::function) const __imp_##function; \
  decltype(&::function) const __imp_##function = replacement

extern "C" {

REPLACE(CreateFileW, createFile);
REPLACE(CloseHandle, closeHandle);
REPLACE(ReadFile, readFile);
REPLACE(WriteFile, writeFile);
REPLACE(GetFileSizeEx, getFileSize);
REPLACE(GetFileInformationByHandle, getInformation);
REPLACE(GetFileTime, getFileTime);
REPLACE(SetFileInformationByHandle, setInformation);
REPLACE(LockFileEx, lockFile);
REPLACE(FindFirstFileW, findFirst);
REPLACE(FindNextFileW, findNext);

NTSTATUS NTAPI NtQueryVolumeInformationFile(HANDLE file, IO_STATUS_BLOCK* outcome, void* value,
                                            ULONG size, FS_INFORMATION_CLASS what) {
  constexpr auto notSupported = static_cast<NTSTATUS>(0xC00000BB);
  static auto* const real =
      systems(&::NtQueryVolumeInformationFile, "NtQueryVolumeInformationFile", L"ntdll");
  return strikes(call::fileSystem, file) ? notSupported : real(file, outcome, value, size, what);
}

BOOLEAN NTAPI SystemFunction036(void* bytes, ULONG size) {
  static auto* const real = systems(&::SystemFunction036, "SystemFunction036", L"advapi32");
  return strikes(call::random, L"") ? FALSE : real(bytes, size);
}

}  // extern "C"
