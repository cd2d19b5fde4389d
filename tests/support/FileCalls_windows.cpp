/// The Windows half; FileCalls_posix.cpp is its twin. The system has neither limits nor counts of
/// this kind, so the calls pass through here: a program reaches them through pointers, which this
/// file has in place of the system's.
#include <windows.h>
// Needs the types of the header above.
#include <winternl.h>

#include <algorithm>
#include <limits>

#include "support/FileCalls.h"

namespace {

constexpr auto unlimited = std::numeric_limits<std::int64_t>::max();

std::int64_t limitOfFiles = unlimited;
ReadCount reads;

/// The system's function of that name.
template <typename Function>
Function* systems(Function* /*type*/, const char* name, const wchar_t* library = L"kernel32") {
  return reinterpret_cast<Function*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
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

/// Takes as much as there is room for, as within the file there always is.
BOOL WINAPI write(HANDLE file, const void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  static auto* const real = systems(&::WriteFile, "WriteFile");
  if (place == nullptr) {
    return real(file, bytes, size, count, place);
  }
  const auto offset =
      static_cast<std::int64_t>(std::uint64_t{place->OffsetHigh} << 32 | place->Offset);
  LARGE_INTEGER end = {};
  GetFileSizeEx(file, &end);
  const std::int64_t room = std::max<std::int64_t>(limitOfFiles, end.QuadPart) - offset;
  return room <= 0 ? refuse()
                   : real(file, bytes, static_cast<DWORD>(std::min<std::int64_t>(size, room)),
                          count, place);
}

/// Under a limit a reservation that fits has succeeded, on systems that know none as well.
BOOL WINAPI set(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* value, DWORD size) {
  static auto* const real = systems(&::SetFileInformationByHandle, "SetFileInformationByHandle");
  if (limitOfFiles == unlimited || (what != FileEndOfFileInfo && what != FileAllocationInfo)) {
    return real(file, what, value, size);
  }
  const std::int64_t wanted = static_cast<LARGE_INTEGER*>(value)->QuadPart;
  LARGE_INTEGER before = {};
  GetFileSizeEx(file, &before);
  if (wanted > limitOfFiles && wanted > before.QuadPart) {
    return refuse();
  }
  return what == FileAllocationInfo ? TRUE : real(file, what, value, size);
}

/// No more space was given to the file than the limit has.
BOOL WINAPI get(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* value, DWORD size) {
  static auto* const real =
      systems(&::GetFileInformationByHandleEx, "GetFileInformationByHandleEx");
  const BOOL done = real(file, what, value, size);
  if (done != FALSE && what == FileStandardInfo) {
    auto* const found = static_cast<FILE_STANDARD_INFO*>(value);
    found->AllocationSize.QuadPart = std::min(found->AllocationSize.QuadPart, limitOfFiles);
  }
  return done;
}

}  // namespace

extern "C" {

extern decltype(&::ReadFile) const __imp_ReadFile;
extern decltype(&::WriteFile) const __imp_WriteFile;
extern decltype(&::SetFileInformationByHandle) const __imp_SetFileInformationByHandle;
extern decltype(&::GetFileInformationByHandleEx) const __imp_GetFileInformationByHandleEx;
decltype(&::GetFileInformationByHandleEx) const __imp_GetFileInformationByHandleEx = get;
decltype(&::ReadFile) const __imp_ReadFile = read;
decltype(&::WriteFile) const __imp_WriteFile = write;
decltype(&::SetFileInformationByHandle) const __imp_SetFileInformationByHandle = set;

/// As many free bytes as the limit has, in units of one byte.
NTSTATUS NTAPI NtQueryVolumeInformationFile(HANDLE file, IO_STATUS_BLOCK* outcome, void* value,
                                            ULONG size, FS_INFORMATION_CLASS what) {
  static auto* const real =
      systems(&::NtQueryVolumeInformationFile, "NtQueryVolumeInformationFile", L"ntdll");
  const NTSTATUS status = real(file, outcome, value, size, what);
  if (limitOfFiles != unlimited && what == FileFsFullSizeInformation) {
    auto* const space = static_cast<FILE_FS_FULL_SIZE_INFORMATION*>(value);
    space->CallerAvailableAllocationUnits.QuadPart = limitOfFiles;
    space->SectorsPerAllocationUnit = 1;
    space->BytesPerSector = 1;
  }
  return status;
}

}  // extern "C"

SizeLimit::SizeLimit(std::int64_t bytes) : former_(limitOfFiles) { limitOfFiles = bytes; }

SizeLimit::~SizeLimit() { limitOfFiles = former_; }

ReadCount countReads() { return reads; }
