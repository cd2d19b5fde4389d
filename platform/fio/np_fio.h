/// File I/O: temporary files, paths, and buffered byte streams over open files.
///
/// One interface, one implementation per operating system, chosen by the build. Paths are UTF-8.
/// Every int status is 0 for success or one of NpFioStatus, or 1000 plus the system's own code.
/// Interrupted and partial transfers are repeated here and never show.
///
/// A handle owns one open file, its position and one buffer for both directions. Switching between
/// reading and writing is safe at any time. A null handle reads 0 bytes, writes 0 bytes and seeks
/// to -1. Thread rule: the functions may be called from several threads at once; one handle is used
/// by one thread at a time.
#pragma once

#include <cstdint>
#include <cstring>

#include "fio/np_dir.h"

enum NpFioStatus : int {
  npFioSuccess = 0,
  npFioInputOutput = 1,
  npFioBadArgument = 2,
  npFioNotFound = 3,
  npFioAccessDenied = 4,
  npFioExists = 5,
  npFioDiskFull = 6,  ///< also a file size limit
  npFioTooManyFiles = 7,
  npFioPathTooLong = 8,
  npFioNotRegular = 9,
  npFioInUse = 10,  ///< another writer has it
  npFioNotPlainName = 11,
  npFioNoMemory = 12,
  npFioReadOnlyMedium = 13,
  npFioSystem = 1000,  ///< added to a system code that none of the above stands for
};

/// Callers handle paths in buffers of this many bytes, terminator included.
constexpr int npFioPathSize = 260;

/// The most bytes that np_fio_peek and np_fio_reserve give at once.
constexpr int npFioPeekLimit = 64 * 1024;

/// Behind the bytes that np_fio_readable and np_fio_writable give lie this many more of the buffer,
/// which may be read and written over but mean nothing: short pieces can be copied without a look
/// at their size.
constexpr int npFioSlack = 64;

/// Open modes of np_fio_open.
enum NpFioMode : int {
  npFioRead = 1,       ///< reads; others may do anything
  npFioReadWrite = 2,  ///< reads and writes, shared with others
  /// Reads and writes; a second only-writer in any process gets npFioInUse. As np_fio_writeAlone.
  npFioOnlyWriter = 3,
};

/// From where np_fio_seek64 counts.
enum NpFioWhence : int { npFioFromStart = 0, npFioFromHere = 1, npFioFromEnd = 2 };

/// The part of an open file that the inline functions below work on; only the layer makes one.
/// Between `begin` and `cursor` lie bytes already read or written. While reading, the bytes up to
/// readEnd can be had without a call and writeEnd equals begin; while writing, the room up to
/// writeEnd can be filled without a call and readEnd equals begin.
struct np_fio_file {
  unsigned char* begin;
  unsigned char* cursor;
  unsigned char* readEnd;
  unsigned char* writeEnd;
  std::int64_t beginOffset;  // file offset of the byte at `begin`
};
using np_fio_handle = np_fio_file*;

struct np_fio_stat {
  std::int64_t size;          // bytes
  std::int64_t modifiedTime;  // nanoseconds since 1970-01-01 UTC
  std::uint32_t owner;        // the number of the user
  bool isRegular;
  std::uint64_t device;  // paths with the same device and number lead to the same file
  std::uint64_t number;
};

/// Writes the system's temporary directory, at most `size` bytes with its terminator.
[[nodiscard]] int np_fio_tmpdir(char* buffer, int size) noexcept;

/// Makes and opens a new file in `directory` (an empty text is the current directory) for reading
/// and writing, as its only writer. Its name is the prefix and 16 random lower-case letters and
/// digits; it belongs to the user alone, is not inherited by child processes, and no link is
/// followed. The path is written into `path`; one that does not fit `pathSize` is refused before
/// anything is made.
[[nodiscard]] int np_fio_tmpfile(const char* directory, const char* prefix, char* path,
                                 int pathSize, np_fio_handle* file) noexcept;

/// Splits a path at its last separator. Without a separator the directory is empty.
[[nodiscard]] int np_fio_pparse(const char* path, char* directory, int directorySize, char* name,
                                int nameSize) noexcept;

/// Joins a directory and a plain file name. A separator or a colon in the name, "." and "..", an
/// empty name and a device name are refused (npFioNotPlainName): a stored name never leads out of
/// its directory.
[[nodiscard]] int np_fio_pcat(const char* directory, const char* name, char* path,
                              int pathSize) noexcept;

/// Opens an existing regular file; no link is followed to it. On failure *file is null.
[[nodiscard]] int np_fio_open(const char* path, int mode, np_fio_handle* file) noexcept;

/// Writes out what is buffered and closes. The handle is gone whatever the status says.
int np_fio_close(np_fio_handle file) noexcept;

/// With mode 0: everything buffered reaches the file. Bytes that the disk refuses stay with the
/// handle, and every later call and write reports the status until a flush succeeds.
[[nodiscard]] int np_fio_bufmode(np_fio_handle file, int mode) noexcept;

/// Says that nobody else writes the file as long as it is open here. Space may then be reserved
/// behind its end, which the close gives back by cutting the file where it ends.
void np_fio_writeAlone(np_fio_handle file) noexcept;

/// Sees to it that the first `size` bytes of the file, written or not, have their space on the
/// disk, as for what the buffer holds: reserved where the disk has little left. Says npFioDiskFull
/// when they cannot have it.
[[nodiscard]] int np_fio_assure(np_fio_handle file, std::int64_t size) noexcept;

/// Cuts the file at the current position.
[[nodiscard]] int np_fio_trunc(np_fio_handle file) noexcept;

/// Cuts the file at `size` bytes and stands there. What is buffered behind it is dropped and never
/// written, even when a flush has failed: this takes back what was written last on a full disk.
[[nodiscard]] int np_fio_cut(np_fio_handle file, std::int64_t size) noexcept;

/// Describes a file by its path, and a link itself rather than what it leads to.
[[nodiscard]] int np_fio_stat64(const char* path, np_fio_stat* info) noexcept;
/// When the file was made, in nanoseconds since 1970-01-01 UTC, which nobody can set, except on
/// Windows who may write the file. The lowest number stands for a time that the system does not
/// tell. No link is followed.
[[nodiscard]] int np_fio_madeTime(const char* path, std::int64_t* time) noexcept;
[[nodiscard]] int np_fio_unlink(const char* path) noexcept;

/// Is given the name of one thing in a directory, valid until it returns, and the caller's context.
/// False ends the listing.
using np_fio_nameTaker = bool (*)(const char* name, void* context);
/// Hands over the names of all that is in a directory (an empty text is the current one), in no
/// order. What is made or removed meanwhile may be among them or not.
[[nodiscard]] int np_fio_list(const char* directory, np_fio_nameTaker taker,
                              void* context) noexcept;

/// The description of a status, or null when it has none. The text is static.
[[nodiscard]] const char* np_fio_errdesc(int status) noexcept;

/// The status of the handle's last failed read, write or seek; 0 when none has failed since it was
/// opened or last flushed.
[[nodiscard]] int np_fio_status(np_fio_handle file) noexcept;

/// What the functions below do when the buffer alone cannot serve them. Kept out of line so that
/// what is inline stays small wherever it is used.
[[gnu::noinline]] int np_fio_getbSlow(np_fio_handle file, void* buffer, int count) noexcept;
[[gnu::noinline]] int np_fio_putbSlow(np_fio_handle file, const void* buffer, int count) noexcept;
[[gnu::noinline]] std::int64_t np_fio_seekSlow(np_fio_handle file, std::int64_t offset,
                                               int whence) noexcept;
[[gnu::noinline]] const unsigned char* np_fio_peekSlow(np_fio_handle file, int count) noexcept;
[[gnu::noinline]] unsigned char* np_fio_reserveSlow(np_fio_handle file, int count) noexcept;

/// Reads up to `count` bytes; the number read. Fewer: the end of the file or a failure.
[[nodiscard]] inline int np_fio_getb(np_fio_handle file, void* buffer, int count) noexcept {
  if (file != nullptr && file->readEnd - file->cursor >= count && count > 0) [[likely]] {
    std::memcpy(buffer, file->cursor, static_cast<std::size_t>(count));
    file->cursor += count;
    return count;
  }
  return np_fio_getbSlow(file, buffer, count);
}

/// Writes `count` bytes; the number written. Fewer is a failure. The buffer accepts no bytes that
/// the disk is known to have no space for, but the disk may refuse bytes later all the same, see
/// np_fio_bufmode.
[[nodiscard]] inline int np_fio_putb(np_fio_handle file, const void* buffer, int count) noexcept {
  if (file != nullptr && file->writeEnd - file->cursor >= count && count > 0) [[likely]] {
    std::memcpy(file->cursor, buffer, static_cast<std::size_t>(count));
    file->cursor += count;
    return count;
  }
  return np_fio_putbSlow(file, buffer, count);
}

/// Moves the position; the new one from the start of the file, or negative on failure. A position
/// before the start is a failure and leaves the old one; one past the end is none.
[[nodiscard]] inline std::int64_t np_fio_seek64(np_fio_handle file, std::int64_t offset,
                                                int whence) noexcept {
  if (file != nullptr && whence == npFioFromHere && file->readEnd != file->begin &&
      offset <= file->readEnd - file->cursor && offset >= file->begin - file->cursor) [[likely]] {
    file->cursor += offset;
    return file->beginOffset + (file->cursor - file->begin);
  }
  return np_fio_seekSlow(file, offset, whence);
}

/// Looks at the next `count` bytes (1 to npFioPeekLimit) without moving on: a pointer into the
/// buffer, valid until the next call on the handle, or null when the file has fewer or reading
/// fails.
[[nodiscard]] inline const unsigned char* np_fio_peek(np_fio_handle file, int count) noexcept {
  if (file != nullptr && file->readEnd - file->cursor >= count) [[likely]] {
    return file->cursor;
  }
  return np_fio_peekSlow(file, count);
}

/// Moves past `count` bytes that np_fio_peek has shown.
inline void np_fio_consume(np_fio_handle file, int count) noexcept { file->cursor += count; }

/// Room for `count` bytes (1 to npFioPeekLimit) at the position, to be filled by the caller and
/// counted by np_fio_commit; null when the buffer cannot be made or emptied.
[[nodiscard]] inline unsigned char* np_fio_reserve(np_fio_handle file, int count) noexcept {
  if (file != nullptr && file->writeEnd - file->cursor >= count) [[likely]] {
    return file->cursor;
  }
  return np_fio_reserveSlow(file, count);
}

/// Counts the first `count` bytes of the room that np_fio_reserve has given as written.
inline void np_fio_commit(np_fio_handle file, int count) noexcept { file->cursor += count; }

/// A part of the buffer of a handle, which is not null; empty when `next` is not below `end`. Valid
/// until the next call on the handle.
template <typename Byte>
struct np_fio_part {
  Byte* next;
  const unsigned char* end;
};

/// The bytes at the position that the buffer holds and that np_fio_consume may move past. None tell
/// nothing: np_fio_getb and np_fio_peek fill the buffer.
[[nodiscard]] inline np_fio_part<const unsigned char> np_fio_readable(np_fio_handle file) noexcept {
  return {file->cursor, file->readEnd};
}

/// The room at the position that the buffer has and that np_fio_commit may count as written. None
/// tells nothing: np_fio_putb and np_fio_reserve make room.
[[nodiscard]] inline np_fio_part<unsigned char> np_fio_writable(np_fio_handle file) noexcept {
  return {file->cursor, file->writeEnd};
}
