/// The names of the element files in a catalogue, and whether there is a catalogue at all.
#pragma once

#include "fio/np_fio.h"

enum class CatalogueKind {
  whole,       ///< all of its names were handed over
  unfinished,  ///< no fixed header was written: the file of a table that was never closed
  damaged,     ///< some of its names may not have been handed over
};

/// Is given one name at a time and the caller's context.
using ElementNameTaker = void (*)(const char* name, void* context);

/// Reads a catalogue from its beginning on. Takes no memory, and no more time than the file's bytes
/// account for, whatever its numbers say. `taker` may be null.
[[nodiscard]] CatalogueKind readElementNames(np_fio_handle catalogue, ElementNameTaker taker,
                                             void* context) noexcept;
