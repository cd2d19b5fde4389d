/// The system has neither limits nor counts of this kind, so the calls pass through here: a program
/// reaches them through pointers, which this file has in place of the system's.
#include "support/FileCalls.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace {

constexpr auto unlimited = std::numeric_limits<std::int64_t>::max();

std::int64_t limitOfFiles = unlimited;
ReadCount reads;

/// The system's function of that name.
template <typename Function>
Function* systems(Function* /*type*/, const char* name) {
  return reinterpret_cast<Function*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), name)));
}

BOOL WINAPI read(HANDLE file, void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  static auto* const real = systems(&::ReadFile, "ReadFile");
  const BOOL done = real(file, bytes, size, count, place);
  ++reads.calls;
  reads.bytes += done != FALSE ? *count : 0;
  return done;
}

BOOL refuse() {
  SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

/// Takes as much as there is room for.
BOOL WINAPI write(HANDLE file, const void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  static auto* const real = systems(&::WriteFile, "WriteFile");
  if (place == nullptr) {
    return real(file, bytes, size, count, place);
  }
  const auto offset = static_cast<std::int64_t>(std::uint64_t{place->OffsetHigh} << 32 | place->Offset);
  const std::int64_t room = limitOfFiles - offset;
  return room <= 0 ? refuse()
                   : real(file, bytes, static_cast<DWORD>(std::min<std::int64_t>(size, room)),
                          count, place);
}

BOOL WINAPI set(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* value, DWORD size) {
  static auto* const real = systems(&::SetFileInformationByHandle, "SetFileInformationByHandle");
  const bool isSize = what == FileEndOfFileInfo || what == FileAllocationInfo;
  LARGE_INTEGER before;
  if (isSize && static_cast<LARGE_INTEGER*>(value)->QuadPart > limitOfFiles &&
      GetFileSizeEx(file, &before) != FALSE &&
      before.QuadPart < static_cast<LARGE_INTEGER*>(value)->QuadPart) {
    return refuse();
  }
  return real(file, what, value, size);
}

BOOL WINAPI freeSpace(const wchar_t* path, ULARGE_INTEGER* free, ULARGE_INTEGER* all,
                      ULARGE_INTEGER* freeOfAll) {
  static auto* const real = systems(&::GetDiskFreeSpaceExW, "GetDiskFreeSpaceExW");
  const BOOL done = real(path, free, all, freeOfAll);
  free->QuadPart = std::min(free->QuadPart, static_cast<ULONGLONG>(limitOfFiles));
  return done;
}

}  // namespace

extern "C" {
extern decltype(&::ReadFile) const __imp_ReadFile;
extern decltype(&::WriteFile) const __imp_WriteFile;
extern decltype(&::SetFileInformationByHandle) const __imp_SetFileInformationByHandle;
extern decltype(&::GetDiskFreeSpaceExW) const __imp_GetDiskFreeSpaceExW;
decltype(&::ReadFile) const __imp_ReadFile = read;
decltype(&::WriteFile) const __imp_WriteFile = write;
decltype(&::SetFileInformationByHandle) const __imp_SetFileInformationByHandle = set;
decltype(&::GetDiskFreeSpaceExW) const __imp_GetDiskFreeSpaceExW = freeSpace;
}

SizeLimit::SizeLimit(std::int64_t bytes) : former_(limitOfFiles) { limitOfFiles = bytes; }

SizeLimit::~SizeLimit() { limitOfFiles = former_; }

ReadCount countReads() { return reads; }
