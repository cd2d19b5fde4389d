/// The POSIX half; SystemFaults_windows.cpp is its twin.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "reliability/SystemFaults.h"

namespace code {
const int inputOutput = EIO;
const int diskFull = ENOSPC;
const int quotaUsedUp = EDQUOT;
const int fileTooLarge = EFBIG;
const int tooManyFiles = EMFILE;
const int outOfMemory = ENOMEM;
const int accessDenied = EACCES;
const int readOnlyMedium = EROFS;
const int notFound = ENOENT;
const int inUse = EWOULDBLOCK;
const int unheardOf = EXFULL;
const int unsupported = EOPNOTSUPP;
const int interrupted = EINTR;
}  // namespace code

namespace {

using Path = std::array<char, 512>;

/// The system's function of that name, or what a sanitizer has in front of it.
template <typename Function>
Function* systems(Function* /*type*/, const char* name) noexcept {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Whether this call is to meet the fault; errno then says which.
bool strikes(unsigned kind, const char* path) noexcept {
  if (!call::strikes(kind)) {
    return false;
  }
  call::note(kind, path);
  errno = call::currentFault().code;
  return true;
}

bool strikes(unsigned kind, int descriptor) noexcept {
  if (!call::strikes(kind)) {
    return false;
  }
  Path link;
  Path path{};
  (void)std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
  (void)readlink(link.data(), path.data(), path.size() - 1);
  call::note(kind, path.data());
  errno = call::currentFault().code;
  return true;
}

/// The result of a transfer that has met the fault; `transfer` does one of so many bytes.
template <typename Transfer>
ssize_t transferBadly(std::size_t size, const Transfer& transfer) {
  if (call::currentFault().effect == Fault::Effect::transfersLess) {
    return transfer(std::max<std::size_t>(size / 2, 1));
  }
  return call::currentFault().effect == Fault::Effect::transfersNone ? 0 : -1;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  static auto* const real = systems(&::open, "open");
  mode_t mode = 0;
  if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
    std::va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return strikes(call::open, path) ? -1 : real(path, flags, mode);
}

/// A close that fails has closed.
int close(int descriptor) {
  static auto* const real = systems(&::close, "close");
  const bool fails = strikes(call::close, descriptor);
  const int code = errno;
  const int result = real(descriptor);
  if (fails) {
    errno = code;
  }
  return fails ? -1 : result;
}

ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t offset) {
  static auto* const real = systems(&::pread, "pread");
  const auto transfer = [&](std::size_t count) { return real(descriptor, bytes, count, offset); };
  return strikes(call::read, descriptor) ? transferBadly(size, transfer) : transfer(size);
}

ssize_t pwrite(int descriptor, const void* bytes, std::size_t size, off_t offset) {
  static auto* const real = systems(&::pwrite, "pwrite");
  const auto transfer = [&](std::size_t count) { return real(descriptor, bytes, count, offset); };
  return strikes(call::write, descriptor) ? transferBadly(size, transfer) : transfer(size);
}

int fstat(int descriptor, struct stat* found) noexcept {
  static auto* const real = systems(&::fstat, "fstat");
  return strikes(call::size, descriptor) ? -1 : real(descriptor, found);
}

int lstat(const char* path, struct stat* found) noexcept {
  static auto* const real = systems(&::lstat, "lstat");
  return strikes(call::describe, path) ? -1 : real(path, found);
}

int statx(int directory, const char* path, int flags, unsigned mask, struct statx* found) noexcept {
  static auto* const real = systems(&::statx, "statx");
  return strikes(call::describe, path) ? -1 : real(directory, path, flags, mask, found);
}

DIR* opendir(const char* path) {
  static auto* const real = systems(&::opendir, "opendir");
  return strikes(call::list, path) ? nullptr : real(path);
}

dirent* readdir(DIR* directory) {
  static auto* const real = systems(&::readdir, "readdir");
  return strikes(call::list, "") ? nullptr : real(directory);
}

int ftruncate(int descriptor, off_t size) noexcept {
  static auto* const real = systems(&::ftruncate, "ftruncate");
  return strikes(call::truncate, descriptor) ? -1 : real(descriptor, size);
}

int unlink(const char* path) noexcept {
  static auto* const real = systems(&::unlink, "unlink");
  return strikes(call::unlink, path) ? -1 : real(path);
}

int flock(int descriptor, int operation) noexcept {
  static auto* const real = systems(&::flock, "flock");
  return strikes(call::lock, descriptor) ? -1 : real(descriptor, operation);
}

int fallocate(int descriptor, int mode, off_t offset, off_t size) {
  static auto* const real = systems(&::fallocate, "fallocate");
  return strikes(call::reserve, descriptor) ? -1 : real(descriptor, mode, offset, size);
}

int fstatfs(int descriptor, struct statfs* found) noexcept {
  static auto* const real = systems(&::fstatfs, "fstatfs");
  return strikes(call::fileSystem, descriptor) ? -1 : real(descriptor, found);
}

int posix_fadvise(int descriptor, off_t offset, off_t size, int advice) noexcept {
  static auto* const real = systems(&::posix_fadvise, "posix_fadvise");
  return strikes(call::advise, descriptor) ? call::currentFault().code
                                           : real(descriptor, offset, size, advice);
}

int getrlimit(__rlimit_resource_t resource, struct rlimit* limit) noexcept {
  static auto* const real = systems(&::getrlimit, "getrlimit");
  return strikes(call::limit, "") ? -1 : real(resource, limit);
}

int getentropy(void* bytes, std::size_t size) noexcept(noexcept(::getentropy(bytes, size))) {
  static auto* const real = systems(&::getentropy, "getentropy");
  return strikes(call::random, "") ? -1 : real(bytes, size);
}

}  // extern "C"
