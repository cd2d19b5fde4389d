/// The calls into the operating system that the file layer makes; nothing else in it makes any.
///
/// Each does one thing on an open file or a path and answers with a status of np_fio.h. Interrupted
/// calls are repeated here; a transfer may still be partial, and the caller goes on where it ended.
/// Pointers are never null. Thread rule: all may be called from any thread; several threads may
/// read and write one file, as every transfer names its own place.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fio/np_fio.h"

namespace fioSystem {

/// A descriptor or a handle of the operating system.
using File = std::intptr_t;

/// Opens an existing regular file in one of the modes of NpFioMode.
[[nodiscard]] int open(const char* path, NpFioMode mode, File* file) noexcept;
/// Makes a file that did not exist, for this user alone, and opens it as its only writer. When that
/// fails no file is left behind; npFioExists and npFioInUse ask for another name.
[[nodiscard]] int create(const char* path, File* file) noexcept;
/// Makes and opens a file in `directory` that nobody else can open by the time this returns, and
/// that is gone when it is closed.
[[nodiscard]] int createUnseen(const char* directory, File* file) noexcept;
/// Makes a file under a name that nobody has yet, the prefix and 16 random lower-case letters and
/// digits; writes its path. The same on every system.
[[nodiscard]] int createUnderRandomName(const char* directory, const char* prefix, char* path,
                                        int pathSize, File* file) noexcept;
/// The same with a way of making the file that says npFioExists when the name is taken.
using Create = int(const char* path, File* file) noexcept;
[[nodiscard]] int makeUnderRandomName(Create* make, const char* directory, const char* prefix,
                                      char* path, int pathSize, File* file) noexcept;
/// The file is closed whatever the status says.
[[nodiscard]] int close(File file) noexcept;

/// Success with 0 bytes is the end of the file.
[[nodiscard]] int read(File file, void* bytes, std::size_t size, std::int64_t offset,
                       std::size_t* transferred) noexcept;
/// Success moves at least one byte.
[[nodiscard]] int write(File file, const void* bytes, std::size_t size, std::int64_t offset,
                        std::size_t* transferred) noexcept;
[[nodiscard]] int size(File file, std::int64_t* bytes) noexcept;
/// Makes the file `bytes` long; zero bytes fill what is new, and space reserved behind it is free.
[[nodiscard]] int truncate(File file, std::int64_t bytes) noexcept;
/// What a file has room for.
struct Room {
  std::int64_t freeBytes;  // of its file system, that this user may take
  std::int64_t sizeLimit;  // of the file, in bytes
  std::int64_t blockSize;  // bytes that the file system gives at once
  bool isInMemory;         // there is no disk below
};
/// As much as can be told without asking: what the system does not tell counts as without limit.
[[nodiscard]] Room room(File file) noexcept;
/// Reserves space for `bytes` from `offset` on, whether the file has reached it or not; its size
/// stays. A reservation that fails may have reserved a part.
[[nodiscard]] int reserve(File file, std::int64_t offset, std::int64_t bytes) noexcept;
/// A hint that these bytes will be read soon.
void willRead(File file, std::int64_t offset, std::int64_t bytes) noexcept;

/// Describes a link itself, not what it leads to.
[[nodiscard]] int stat(const char* path, np_fio_stat* info) noexcept;
/// See np_fio_madeTime.
[[nodiscard]] int madeTime(const char* path, std::int64_t* time) noexcept;
/// See np_fio_list.
[[nodiscard]] int list(const char* directory, np_fio_nameTaker taker, void* context) noexcept;
[[nodiscard]] int remove(const char* path) noexcept;

/// The characters that part the directories of a path; the first is the one to write.
extern const char* const separators;

}  // namespace fioSystem
