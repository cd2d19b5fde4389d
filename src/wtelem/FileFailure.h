/// What a file that cannot be read or written is said to lack.
#pragma once

#include <utility>

#include "fio/np_fio.h"
#include "wtelem/messages.h"

/// The message of a failed read or write: the usual one, unless there was no memory for the file's
/// buffer, of which the file knows nothing.
[[nodiscard]] inline ZvbString fileFailure(np_fio_handle file, ZvbString usual) noexcept {
  return np_fio_status(file) == npFioNoMemory ? WT_MESSAGE(outOfMemory, "(file buffer)")
                                              : std::move(usual);
}
