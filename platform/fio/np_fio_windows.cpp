/// The Windows half of the file layer; np_fio_posix.cpp is its twin, function by function.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// Needs the types of the header above.
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "base/zvb_windows.h"
#include "fio/np_fio_system.h"
#include "fio/np_fio_work.h"

/// The status behind the last error code of this thread. The system has it for everybody, but not
/// in its headers.
extern "C" NTSTATUS NTAPI RtlGetLastNtStatus();

const char np_dir_listsep = ';';

namespace fioSystem {

const char* const separators = "\\/";

namespace {

// Not every windows.h has their names.
constexpr DWORD noSuchDevice = 433;
constexpr DWORD diskQuotaExceeded = 1295;

/// A removed file that others have open may keep its name until they close it. Nobody can open it
/// any more, which the system calls a lack of rights.
int statusOfDenial() noexcept {
  constexpr auto deletePending = static_cast<NTSTATUS>(0xC0000056);
  return RtlGetLastNtStatus() == deletePending ? npFioNotFound : npFioAccessDenied;
}

int statusOf(DWORD code) noexcept {
  switch (code) {
    case ERROR_READ_FAULT:
    case ERROR_WRITE_FAULT:
    case ERROR_GEN_FAILURE:
    case ERROR_CRC:
    case ERROR_SEEK:
    case ERROR_SECTOR_NOT_FOUND:
    case ERROR_NOT_READY:
    case ERROR_IO_DEVICE:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_FILE_CORRUPT:
    case ERROR_DISK_CORRUPT:
    case ERROR_UNEXP_NET_ERR:
    case ERROR_NETNAME_DELETED:
    case ERROR_SEM_TIMEOUT:  // of a network's answer
      return npFioInputOutput;
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_HANDLE:
    case ERROR_NEGATIVE_SEEK:
      return npFioBadArgument;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_DIRECTORY:
    case noSuchDevice:
    case ERROR_DELETE_PENDING:
      return npFioNotFound;
    case ERROR_ACCESS_DENIED:
      return statusOfDenial();
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
      return npFioAccessDenied;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return npFioExists;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case diskQuotaExceeded:
    case ERROR_FILE_TOO_LARGE:
      return npFioDiskFull;
    case ERROR_TOO_MANY_OPEN_FILES:
      return npFioTooManyFiles;
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
    case ERROR_INSUFFICIENT_BUFFER:  // for the path in the other encoding
      return npFioPathTooLong;
    case ERROR_PIPE_BUSY:
    case ERROR_BAD_PIPE:
    case ERROR_CANT_RESOLVE_FILENAME:
    case ERROR_CANT_ACCESS_FILE:
      return npFioNotRegular;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
      return npFioInUse;
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_NO_UNICODE_TRANSLATION:
      return npFioNotPlainName;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_NO_SYSTEM_RESOURCES:
    case ERROR_COMMITMENT_LIMIT:
    case ERROR_NOT_ENOUGH_QUOTA:
      return npFioNoMemory;
    case ERROR_WRITE_PROTECT:
      return npFioReadOnlyMedium;
    default:
      return npFioSystem + static_cast<int>(code);
  }
}

int statusOfCall(BOOL succeeded) noexcept {
  return succeeded != FALSE ? npFioSuccess : statusOf(GetLastError());
}

HANDLE handle(File file) noexcept { return reinterpret_cast<HANDLE>(file); }

/// A path as the system takes it.
class WidePath {
 public:
  explicit WidePath(const char* path) noexcept
      : status_(statusOfCall(zvbToWide(path, wide_.data(), static_cast<int>(wide_.size())))) {}

  /// npFioPathTooLong, or npFioNotPlainName for what is not UTF-8.
  [[nodiscard]] int status() const noexcept { return status_; }
  [[nodiscard]] const wchar_t* get() const noexcept { return wide_.data(); }

 private:
  std::array<wchar_t, npFioPathSize> wide_;
  int status_;
};

/// Others may do anything with an open file: only-writers agree by a lock.
constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
/// Directories open with backup semantics, and a link opens itself: both are seen, then refused.
constexpr DWORD existingFlags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;

int openHandle(const char* path, DWORD access, DWORD disposition, DWORD sharing, DWORD flags,
               SECURITY_ATTRIBUTES* security, File* file) noexcept {
  const WidePath wide(path);
  if (wide.status() != npFioSuccess) {
    return wide.status();
  }
  HANDLE opened = CreateFileW(wide.get(), access, sharing, security, disposition, flags, nullptr);
  *file = reinterpret_cast<File>(opened);
  return opened != INVALID_HANDLE_VALUE ? npFioSuccess : statusOf(GetLastError());
}

/// The lock is on a byte that no file reaches, so that it keeps nobody from reading and writing. It
/// dies with the process.
int lockForOnlyWriter(File file) noexcept {
  OVERLAPPED place = {};
  place.OffsetHigh = 0x7FFFFFFF;
  return statusOfCall(LockFileEx(handle(file), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY,
                                 0, 1, 0, &place));
}

bool isRegular(DWORD attributes) noexcept {
  return (attributes &
          (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) == 0;
}

int checkRegular(File file) noexcept {
  BY_HANDLE_FILE_INFORMATION found;
  if (GetFileType(handle(file)) != FILE_TYPE_DISK) {
    return npFioNotRegular;
  }
  if (GetFileInformationByHandle(handle(file), &found) == FALSE) {
    return statusOf(GetLastError());
  }
  return isRegular(found.dwFileAttributes) ? npFioSuccess : npFioNotRegular;
}

/// Lets the user of this thread do everything with a new file, and nobody else anything. Its owner
/// is named, too: on another machine's disk that is who this user is there.
class OwnerOnly {
 public:
  OwnerOnly() noexcept { isMade_ = findUser() && nameOwner() && makeList(); }
  OwnerOnly(const OwnerOnly&) = delete;
  OwnerOnly& operator=(const OwnerOnly&) = delete;
  ~OwnerOnly() = default;

  /// Null when the system does not tell the user.
  [[nodiscard]] SECURITY_ATTRIBUTES* get() noexcept { return isMade_ ? &attributes_ : nullptr; }

 private:
  bool findUser() noexcept {
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) == FALSE &&
        OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) {
      return false;
    }
    DWORD size = 0;
    const BOOL found = GetTokenInformation(token, TokenUser, user_, sizeof user_, &size);
    CloseHandle(token);
    return found != FALSE;
  }

  bool nameOwner() noexcept {
    DWORD size = sizeof owner_;
    return CreateWellKnownSid(WinCreatorOwnerRightsSid, nullptr, owner_, &size) != FALSE;
  }

  bool makeList() noexcept {
    auto* list = reinterpret_cast<ACL*>(list_);
    PSID user = reinterpret_cast<const TOKEN_USER*>(user_)->User.Sid;
    attributes_ = {sizeof attributes_, &descriptor_, FALSE};
    return InitializeAcl(list, sizeof list_, ACL_REVISION) != FALSE &&
           AddAccessAllowedAce(list, ACL_REVISION, FILE_ALL_ACCESS, user) != FALSE &&
           AddAccessAllowedAce(list, ACL_REVISION, FILE_ALL_ACCESS, owner_) != FALSE &&
           InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
           SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE) != FALSE &&
           SetSecurityDescriptorControl(&descriptor_, SE_DACL_PROTECTED, SE_DACL_PROTECTED) !=
               FALSE;
  }

  static constexpr std::size_t entrySize = sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE;

  alignas(TOKEN_USER) unsigned char user_[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  alignas(SID) unsigned char owner_[SECURITY_MAX_SID_SIZE];
  alignas(ACL) unsigned char list_[sizeof(ACL) + 2 * entrySize];
  SECURITY_DESCRIPTOR descriptor_;
  SECURITY_ATTRIBUTES attributes_;
  bool isMade_;
};

OVERLAPPED placeAt(std::int64_t offset) noexcept {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

/// A transfer counts its bytes in 32 bits, and network file systems may refuse large ones.
DWORD transferSize(std::size_t size) noexcept {
  constexpr std::size_t most = std::size_t{1} << 24;
  return static_cast<DWORD>(std::min(size, most));
}

std::int64_t wholeNumber(DWORD high, DWORD low) noexcept {
  return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

/// The system counts in steps of 100 nanoseconds since 1601. Times that do not fit become the
/// nearest that does.
std::int64_t nanoseconds(const FILETIME& time) noexcept {
  constexpr std::int64_t stepsTo1970 = 116'444'736'000'000'000;
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / 100;
  const std::int64_t steps = wholeNumber(time.dwHighDateTime, time.dwLowDateTime) - stepsTo1970;
  return std::clamp(steps, -most, most) * 100;
}

/// File systems that keep no such time give 0.
bool isTold(const FILETIME& time) noexcept {
  return time.dwLowDateTime != 0 || time.dwHighDateTime != 0;
}

/// Opens whatever there is, a link itself, to be described, with its owner where that may be known.
int openToDescribe(const char* path, File* file) noexcept {
  const auto openFor = [&](DWORD access) {
    return openHandle(path, access, OPEN_EXISTING, sharedWithAll, existingFlags, nullptr, file);
  };
  const int status = openFor(FILE_READ_ATTRIBUTES | READ_CONTROL);
  return status == npFioAccessDenied ? openFor(FILE_READ_ATTRIBUTES) : status;
}

/// The last part of the owner's identifier, by which the users of one machine differ; 0 when the
/// system does not tell.
std::uint32_t ownerOf(File file) noexcept {
  alignas(
      SECURITY_DESCRIPTOR) unsigned char bytes[sizeof(SECURITY_DESCRIPTOR) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  PSID owner = nullptr;
  BOOL isDefault = FALSE;
  const bool found = GetKernelObjectSecurity(handle(file), OWNER_SECURITY_INFORMATION, bytes,
                                             sizeof bytes, &size) != FALSE &&
                     GetSecurityDescriptorOwner(bytes, &owner, &isDefault) != FALSE &&
                     owner != nullptr && *GetSidSubAuthorityCount(owner) > 0;
  return found ? *GetSidSubAuthority(owner, *GetSidSubAuthorityCount(owner) - 1U) : 0;
}

/// File systems that number their files with 128 bits have no 64 that tell all of them apart.
void identify(File file, const BY_HANDLE_FILE_INFORMATION& found, np_fio_stat* info) noexcept {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;  // so that the halves rarely cancel out
  FILE_ID_INFO wide;
  if (GetFileInformationByHandleEx(handle(file), FileIdInfo, &wide, sizeof wide) != FALSE) {
    std::uint64_t halves[2];
    static_assert(sizeof halves == sizeof wide.FileId);
    std::memcpy(halves, &wide.FileId, sizeof halves);
    info->device = wide.VolumeSerialNumber;
    info->number = halves[0] + halves[1] * spread;
  } else {
    info->device = found.dwVolumeSerialNumber;
    info->number = std::uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow;
  }
}

/// Between its creation and its lock, a new file looks like one that a killed process has left: who
/// reclaims those may be at it, or may have removed it. Then the name is as good as taken.
int lockNewFile(File file) noexcept {
  const int status = lockForOnlyWriter(file);
  if (status != npFioSuccess) {
    return status;
  }
  FILE_STANDARD_INFO found;
  if (GetFileInformationByHandleEx(handle(file), FileStandardInfo, &found, sizeof found) == FALSE) {
    return statusOf(GetLastError());
  }
  return found.DeletePending == FALSE && found.NumberOfLinks > 0 ? npFioSuccess : npFioExists;
}

/// Frees the name at once, even where others have the file open, if the file system can do that;
/// otherwise when the last of them closes it.
int markDeleted(File file) noexcept {
  constexpr auto dispositionEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
  constexpr DWORD deleteFreeingName = 0x1 | 0x2;  // not every windows.h has these names
  DWORD flags = deleteFreeingName;
  if (SetFileInformationByHandle(handle(file), dispositionEx, &flags, sizeof flags) != FALSE) {
    return npFioSuccess;
  }
  FILE_DISPOSITION_INFO disposition = {TRUE};
  return statusOfCall(SetFileInformationByHandle(handle(file), FileDispositionInfo, &disposition,
                                                 sizeof disposition));
}

int removeOnce(const char* path) noexcept {
  File file = 0;
  int status = openHandle(path, DELETE, OPEN_EXISTING, sharedWithAll, FILE_FLAG_OPEN_REPARSE_POINT,
                          nullptr, &file);
  if (status == npFioSuccess) {
    status = markDeleted(file);
    CloseHandle(handle(file));
  }
  return status;
}

int createDeletedOnClose(const char* path, File* file) noexcept {
  OwnerOnly owner;
  return openHandle(
      path, GENERIC_READ | GENERIC_WRITE | DELETE, CREATE_NEW, 0,
      FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_FLAG_DELETE_ON_CLOSE,
      owner.get(), file);
}

}  // namespace

int open(const char* path, NpFioMode mode, File* file) noexcept {
  const DWORD access = mode == npFioRead ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
  int status = openHandle(path, access, OPEN_EXISTING, sharedWithAll, existingFlags, nullptr, file);
  if (status != npFioSuccess) {
    return status;
  }
  status = checkRegular(*file);
  if (status == npFioSuccess && mode == npFioOnlyWriter) {
    status = lockForOnlyWriter(*file);
  }
  if (status != npFioSuccess) {
    CloseHandle(handle(*file));
  }
  return status;
}

int create(const char* path, File* file) noexcept {
  OwnerOnly owner;
  int status =
      openHandle(path, GENERIC_READ | GENERIC_WRITE, CREATE_NEW, sharedWithAll,
                 FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED, owner.get(), file);
  if (status != npFioSuccess) {
    return status;
  }
  status = lockNewFile(*file);
  if (status != npFioSuccess) {
    CloseHandle(handle(*file));
    (void)remove(path);
  }
  return status;
}

int createUnseen(const char* directory, File* file) noexcept {
  // The file has a name, but nobody else can open it and the system removes it when it is closed,
  // however the process ends.
  char path[npFioPathSize];
  return makeUnderRandomName(createDeletedOnClose, directory, npFioWorkPrefix, path, sizeof path,
                             file);
}

int close(File file) noexcept { return statusOfCall(CloseHandle(handle(file))); }

int read(File file, void* bytes, std::size_t size, std::int64_t offset,
         std::size_t* transferred) noexcept {
  OVERLAPPED place = placeAt(offset);
  DWORD count = 0;
  const BOOL done = ReadFile(handle(file), bytes, transferSize(size), &count, &place);
  *transferred = done != FALSE ? count : 0;
  return done != FALSE || GetLastError() == ERROR_HANDLE_EOF ? npFioSuccess
                                                             : statusOf(GetLastError());
}

int write(File file, const void* bytes, std::size_t size, std::int64_t offset,
          std::size_t* transferred) noexcept {
  OVERLAPPED place = placeAt(offset);
  DWORD count = 0;
  const BOOL done = WriteFile(handle(file), bytes, transferSize(size), &count, &place);
  *transferred = done != FALSE ? count : 0;
  if (done != FALSE) {
    return count != 0 ? npFioSuccess : npFioInputOutput;
  }
  return statusOf(GetLastError());
}

int size(File file, std::int64_t* bytes) noexcept {
  LARGE_INTEGER found;
  if (GetFileSizeEx(handle(file), &found) == FALSE) {
    return statusOf(GetLastError());
  }
  *bytes = found.QuadPart;
  return npFioSuccess;
}

int truncate(File file, std::int64_t bytes) noexcept {
  FILE_END_OF_FILE_INFO end;
  end.EndOfFile.QuadPart = bytes;
  return statusOfCall(
      SetFileInformationByHandle(handle(file), FileEndOfFileInfo, &end, sizeof end));
}

Room room(File file) noexcept {
  constexpr auto unlimited = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t usualCluster = 4096;
  Room found{.freeBytes = unlimited,
             .sizeLimit = unlimited,
             .blockSize = usualCluster,
             .isInMemory = false};
  IO_STATUS_BLOCK block;
  FILE_FS_FULL_SIZE_INFORMATION space = {};
  const NTSTATUS status = NtQueryVolumeInformationFile(handle(file), &block, &space, sizeof space,
                                                       FileFsFullSizeInformation);
  const std::int64_t cluster =
      std::int64_t{space.SectorsPerAllocationUnit} * std::int64_t{space.BytesPerSector};
  if (status >= 0 && cluster > 0) {
    const std::int64_t clusters = space.CallerAvailableAllocationUnits.QuadPart;
    found.blockSize = cluster;
    found.freeBytes = std::clamp<std::int64_t>(clusters, 0, unlimited / cluster) * cluster;
  }
  return found;
}

/// The system takes the space back when the file is closed. Asked for less than the file has, it
/// would cut the file.
int reserve(File file, std::int64_t offset, std::int64_t bytes) noexcept {
  FILE_STANDARD_INFO before;
  if (GetFileInformationByHandleEx(handle(file), FileStandardInfo, &before, sizeof before) ==
      FALSE) {
    return statusOf(GetLastError());
  }
  FILE_ALLOCATION_INFO space;
  space.AllocationSize.QuadPart = offset + bytes;
  if (space.AllocationSize.QuadPart <=
      std::max(before.AllocationSize.QuadPart, before.EndOfFile.QuadPart)) {
    return npFioSuccess;
  }
  return statusOfCall(
      SetFileInformationByHandle(handle(file), FileAllocationInfo, &space, sizeof space));
}

void willRead(File /*file*/, std::int64_t /*offset*/, std::int64_t /*bytes*/) noexcept {
  // There is no hint to give for a file that is not mapped.
}

int stat(const char* path, np_fio_stat* info) noexcept {
  File file = 0;
  int status = openToDescribe(path, &file);
  if (status != npFioSuccess) {
    return status;
  }
  BY_HANDLE_FILE_INFORMATION found;
  status = statusOfCall(GetFileInformationByHandle(handle(file), &found));
  if (status == npFioSuccess) {
    *info = {.size = wholeNumber(found.nFileSizeHigh, found.nFileSizeLow),
             .modifiedTime = nanoseconds(found.ftLastWriteTime),
             .owner = ownerOf(file),
             .isRegular = isRegular(found.dwFileAttributes),
             .device = 0,
             .number = 0};
    identify(file, found, info);
  }
  CloseHandle(handle(file));
  return status;
}

int madeTime(const char* path, std::int64_t* time) noexcept {
  File file = 0;
  int status = openToDescribe(path, &file);
  if (status != npFioSuccess) {
    return status;
  }
  FILETIME made;
  status = statusOfCall(GetFileTime(handle(file), &made, nullptr, nullptr));
  if (status == npFioSuccess) {
    *time = isTold(made) ? nanoseconds(made) : std::numeric_limits<std::int64_t>::min();
  }
  CloseHandle(handle(file));
  return status;
}

int list(const char* directory, np_fio_nameTaker taker, void* context) noexcept {
  char pattern[npFioPathSize + 2];
  const std::size_t length = std::strlen(directory);
  if (length >= npFioPathSize) {
    return npFioPathTooLong;
  }
  std::memcpy(pattern, directory, length);
  const bool needsSeparator =
      length != 0 && std::strchr(separators, pattern[length - 1]) == nullptr;
  std::strcpy(pattern + length, needsSeparator ? "\\*" : "*");
  std::array<wchar_t, sizeof pattern> wide;
  if (!zvbToWide(pattern, wide.data(), static_cast<int>(wide.size()))) {
    return statusOf(GetLastError());
  }
  WIN32_FIND_DATAW found;
  HANDLE const search = FindFirstFileW(wide.data(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    // A root has no "." and "..": when it is empty, nothing is found in a directory that is there.
    const DWORD code = GetLastError();
    return code == ERROR_FILE_NOT_FOUND ? npFioSuccess : statusOf(code);
  }
  BOOL hasMore = TRUE;
  for (bool goesOn = true; goesOn && hasMore != FALSE;) {
    char name[4 * MAX_PATH];
    // A name that is no text is none that this library gives.
    goesOn = !zvbFromWide(found.cFileName, name, sizeof name) || taker(name, context);
    hasMore = goesOn ? FindNextFileW(search, &found) : TRUE;
  }
  const DWORD code = hasMore != FALSE ? ERROR_NO_MORE_FILES : GetLastError();
  FindClose(search);
  return code == ERROR_NO_MORE_FILES ? npFioSuccess : statusOf(code);
}

/// Virus scanners and the like open what was just written, and some let nobody remove it meanwhile.
int remove(const char* path) noexcept {
  constexpr int attempts = 10;
  constexpr DWORD pause = 20;  // milliseconds
  int status = removeOnce(path);
  for (int attempt = 1; attempt < attempts && status == npFioInUse; ++attempt) {
    Sleep(pause);
    status = removeOnce(path);
  }
  return status;
}

}  // namespace fioSystem

int np_fio_tmpdir(char* buffer, int size) noexcept {
  if (buffer == nullptr || size <= 0) {
    return npFioBadArgument;
  }
  std::array<wchar_t, MAX_PATH + 1> wide;
  const DWORD length = GetTempPathW(static_cast<DWORD>(wide.size()), wide.data());
  if (length == 0) {
    return fioSystem::statusOf(GetLastError());
  }
  if (length >= wide.size()) {
    return npFioPathTooLong;
  }
  const bool isRoot = length <= 3;  // "C:\"
  if (!isRoot && wide[length - 1] == L'\\') {
    wide[length - 1] = L'\0';
  }
  return fioSystem::statusOfCall(zvbFromWide(wide.data(), buffer, size));
}
