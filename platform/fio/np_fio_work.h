/// Work files: bytes that only this program needs, and only for a while.
///
/// A work file has no name that anybody could open, and its space is free again when it is closed
/// or the process ends, however that comes. Transfers name their own place in the file, go straight
/// to the system and are whole or fail. Statuses are those of np_fio.h.
/// Thread rule: the functions may be called from several threads at once, also on one file, which
/// is closed when none uses it any more.
#pragma once

#include <cstddef>
#include <cstdint>

/// Where the system can make no file without a name, a work file has one for a moment: this prefix
/// and what np_fio_tmpfile puts behind one.
inline constexpr const char* npFioWorkPrefix = "zvwork_";

/// An open work file; the caller closes it.
using np_fio_work = std::intptr_t;
constexpr np_fio_work npFioNoWork = -1;

/// Makes an empty work file in `directory` (an empty text is the current directory).
[[nodiscard]] int np_fio_workCreate(const char* directory, np_fio_work* file) noexcept;

[[nodiscard]] int np_fio_workWrite(np_fio_work file, const void* bytes, std::size_t size,
                                   std::int64_t offset) noexcept;
/// A file that ends before the last byte is an input/output error.
[[nodiscard]] int np_fio_workRead(np_fio_work file, void* bytes, std::size_t size,
                                  std::int64_t offset) noexcept;

/// Closing npFioNoWork does nothing.
void np_fio_workClose(np_fio_work file) noexcept;
