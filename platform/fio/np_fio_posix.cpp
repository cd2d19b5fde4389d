/// The POSIX half of the file layer; np_fio_windows.cpp is its twin, function by function.
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fio/np_fio_system.h"
#include "fio/np_fio_work.h"

const char np_dir_listsep = ':';

namespace fioSystem {

const char* const separators = "/";

namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "file offsets need 64 bits");

int statusOf(int code) noexcept {
  switch (code) {
    case EIO:
      return npFioInputOutput;
    case EINVAL:
    case EBADF:
      return npFioBadArgument;
    case ENOENT:
    case ENOTDIR:
      return npFioNotFound;
    case EACCES:
    case EPERM:
      return npFioAccessDenied;
    case EEXIST:
      return npFioExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return npFioDiskFull;
    case EMFILE:
    case ENFILE:
      return npFioTooManyFiles;
    case ENAMETOOLONG:
      return npFioPathTooLong;
    case EISDIR:
    case ELOOP:
    case ENXIO:  // a pipe without a reader, a socket, a device that is not there
    case ENODEV:
      return npFioNotRegular;
    case EWOULDBLOCK:
      return npFioInUse;
    case ENOMEM:
      return npFioNoMemory;
    case EROFS:
      return npFioReadOnlyMedium;
    default:
      return npFioSystem + code;
  }
}

template <typename Call>
auto repeatInterrupted(Call call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

int statusOfCall(int result) noexcept { return result == 0 ? npFioSuccess : statusOf(errno); }

int descriptor(File file) noexcept { return static_cast<int>(file); }

/// O_NONBLOCK: opening a pipe must not wait for its other end. O_NOCTTY: opening a terminal must
/// not make it ours.
constexpr int alwaysFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

int openDescriptor(const char* path, int flags, mode_t permissions, File* file) noexcept {
  const int opened =
      repeatInterrupted([&] { return ::open(path, flags | alwaysFlags, permissions); });
  *file = opened;
  return opened >= 0 ? npFioSuccess : statusOf(errno);
}

/// The lock belongs to the open file and dies with the last process that has it open.
int lockForOnlyWriter(File file) noexcept {
  return statusOfCall(
      repeatInterrupted([&] { return flock(descriptor(file), LOCK_EX | LOCK_NB); }));
}

/// Between its creation and its lock, a new file looks like one that a killed process has left: who
/// reclaims those may be at it, or may have removed it. Then the name is as good as taken.
int lockNewFile(File file) noexcept {
  const int status = lockForOnlyWriter(file);
  if (status != npFioSuccess) {
    return status;
  }
  struct stat found;
  if (fstat(descriptor(file), &found) != 0) {
    return statusOf(errno);
  }
  return found.st_nlink > 0 ? npFioSuccess : npFioExists;
}

int checkRegular(File file) noexcept {
  struct stat found;
  if (fstat(descriptor(file), &found) != 0) {
    return statusOf(errno);
  }
  return S_ISREG(found.st_mode) ? npFioSuccess : npFioNotRegular;
}

/// A write or a truncation past the limit would raise SIGXFSZ, which ends the host. So the limit is
/// asked for and never passed, and neither the host's signal handling nor a thread's signal mask
/// need be touched.
std::uint64_t fileSizeLimit() noexcept {
  rlimit limit;
  if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
    return UINT64_MAX;
  }
  return limit.rlim_cur;
}

/// Times that do not fit become the nearest that does.
template <typename Time>
std::int64_t nanoseconds(const Time& time) noexcept {
  constexpr std::int64_t perSecond = 1'000'000'000;
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / perSecond - 1;
  return std::clamp(std::int64_t{time.tv_sec}, -most, most) * perSecond + time.tv_nsec;
}

}  // namespace

int open(const char* path, NpFioMode mode, File* file) noexcept {
  int status = openDescriptor(path, mode == npFioRead ? O_RDONLY : O_RDWR, 0, file);
  if (status != npFioSuccess) {
    return status;
  }
  status = checkRegular(*file);
  if (status == npFioSuccess && mode == npFioOnlyWriter) {
    status = lockForOnlyWriter(*file);
  }
  if (status != npFioSuccess) {
    ::close(descriptor(*file));
  }
  return status;
}

int create(const char* path, File* file) noexcept {
  int status = openDescriptor(path, O_RDWR | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR, file);
  if (status != npFioSuccess) {
    return status;
  }
  status = lockNewFile(*file);
  if (status != npFioSuccess) {
    ::close(descriptor(*file));
    ::unlink(path);
  }
  return status;
}

int createUnseen(const char* directory, File* file) noexcept {
#ifdef O_TMPFILE
  const char* path = directory[0] == '\0' ? "." : directory;
  const int opened = repeatInterrupted(
      [&] { return ::open(path, O_RDWR | O_TMPFILE | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR); });
  if (opened >= 0) {
    *file = opened;
    return npFioSuccess;
  }
#endif
  // Not every file system can do that. In between, the file has a name for a moment.
  char name[npFioPathSize];
  File made = 0;
  const int status = createUnderRandomName(directory, npFioWorkPrefix, name, sizeof name, &made);
  if (status != npFioSuccess) {
    return status;
  }
  ::unlink(name);
  *file = made;
  return npFioSuccess;
}

int close(File file) noexcept {
  // An interrupted close has closed; repeating it could close another thread's new file.
  return ::close(descriptor(file)) == 0 || errno == EINTR ? npFioSuccess : statusOf(errno);
}

int read(File file, void* bytes, std::size_t size, std::int64_t offset,
         std::size_t* transferred) noexcept {
  const ssize_t count =
      repeatInterrupted([&] { return pread(descriptor(file), bytes, size, offset); });
  *transferred = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  return count >= 0 ? npFioSuccess : statusOf(errno);
}

int write(File file, const void* bytes, std::size_t size, std::int64_t offset,
          std::size_t* transferred) noexcept {
  *transferred = 0;
  const std::uint64_t limit = fileSizeLimit();
  const auto start = static_cast<std::uint64_t>(offset);
  if (start >= limit) {
    return npFioDiskFull;
  }
  const auto allowed = static_cast<std::size_t>(std::min<std::uint64_t>(size, limit - start));
  const ssize_t count =
      repeatInterrupted([&] { return pwrite(descriptor(file), bytes, allowed, offset); });
  if (count <= 0) {
    return count == 0 ? npFioInputOutput : statusOf(errno);
  }
  *transferred = static_cast<std::size_t>(count);
  return npFioSuccess;
}

int size(File file, std::int64_t* bytes) noexcept {
  struct stat found;
  if (fstat(descriptor(file), &found) != 0) {
    return statusOf(errno);
  }
  *bytes = found.st_size;
  return npFioSuccess;
}

int truncate(File file, std::int64_t bytes) noexcept {
  if (static_cast<std::uint64_t>(bytes) > fileSizeLimit()) {
    std::int64_t before = 0;
    const int status = size(file, &before);
    if (status != npFioSuccess || bytes > before) {  // a file that shrinks may stay past the limit
      return status != npFioSuccess ? status : npFioDiskFull;
    }
  }
  return statusOfCall(repeatInterrupted([&] { return ftruncate(descriptor(file), bytes); }));
}

Room room(File file) noexcept {
  constexpr auto unlimited = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t usualBlock = 4096;
  Room found{.freeBytes = unlimited,
             .sizeLimit = static_cast<std::int64_t>(
                 std::min(fileSizeLimit(), static_cast<std::uint64_t>(unlimited))),
             .blockSize = usualBlock,
             .isInMemory = false};
  struct statfs system;
  // A file system that counts no blocks has no limit, or does not tell it. It counts in fragments,
  // where its blocks are what it likes to transfer at once.
  if (fstatfs(descriptor(file), &system) == 0 && system.f_frsize > 0 && system.f_blocks != 0) {
    const auto blocks = static_cast<std::uint64_t>(unlimited / system.f_frsize);
    found.blockSize = system.f_frsize;
    found.freeBytes = static_cast<std::int64_t>(std::min<std::uint64_t>(system.f_bavail, blocks)) *
                      system.f_frsize;
    found.isInMemory = system.f_type == TMPFS_MAGIC;
  }
  return found;
}

int reserve(File file, std::int64_t offset, std::int64_t bytes) noexcept {
  return statusOfCall(repeatInterrupted(
      [&] { return fallocate(descriptor(file), FALLOC_FL_KEEP_SIZE, offset, bytes); }));
}

void willRead(File file, std::int64_t offset, std::int64_t bytes) noexcept {
  (void)posix_fadvise(descriptor(file), offset, bytes, POSIX_FADV_WILLNEED);
}

int stat(const char* path, np_fio_stat* info) noexcept {
  struct stat found;
  if (lstat(path, &found) != 0) {
    return statusOf(errno);
  }
  *info = {.size = found.st_size,
           .modifiedTime = nanoseconds(found.st_mtim),
           .owner = found.st_uid,
           .isRegular = S_ISREG(found.st_mode),
           .device = found.st_dev,
           .number = found.st_ino};
  return npFioSuccess;
}

int madeTime(const char* path, std::int64_t* time) noexcept {
  struct statx found;
  if (statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, STATX_BTIME, &found) != 0) {
    return statusOf(errno);
  }
  *time = (found.stx_mask & STATX_BTIME) != 0 ? nanoseconds(found.stx_btime)
                                              : std::numeric_limits<std::int64_t>::min();
  return npFioSuccess;
}

int list(const char* directory, np_fio_nameTaker taker, void* context) noexcept {
  DIR* const opened = opendir(directory[0] == '\0' ? "." : directory);
  if (opened == nullptr) {
    return statusOf(errno);
  }
  const dirent* entry = nullptr;
  do {
    errno = 0;
    entry = readdir(opened);  // NOLINT(concurrency-mt-unsafe): nobody else reads this stream
  } while (entry != nullptr && taker(entry->d_name, context));
  const int status = entry == nullptr && errno != 0 ? statusOf(errno) : npFioSuccess;
  closedir(opened);
  return status;
}

int remove(const char* path) noexcept { return statusOfCall(::unlink(path)); }

}  // namespace fioSystem

int np_fio_tmpdir(char* buffer, int size) noexcept {
  if (buffer == nullptr || size <= 0) {
    return npFioBadArgument;
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment can only be read in this way
  const char* directory = std::getenv("TMPDIR");
  if (directory == nullptr || *directory == '\0') {
    directory = "/tmp";
  }
  const std::size_t length = std::strlen(directory);
  if (length >= static_cast<std::size_t>(size)) {
    return npFioPathTooLong;
  }
  std::memcpy(buffer, directory, length + 1);
  return npFioSuccess;
}
