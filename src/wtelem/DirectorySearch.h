/// Making and finding files in a list of directories.
#pragma once

#include "fio/np_fio.h"
#include "wtelem/TempDirectories.h"

/// How far a search goes that begins at some directory of the list.
enum class SearchOrder {
  toTheEnd,  ///< to the last directory
  around,    ///< on from the last to the first, once past each
};

/// Where a search stands: give the first directory, find the last one tried.
struct DirectorySearch {
  int directory = 0;                  ///< index; on success, where the file is
  int status = npFioNotFound;         ///< of the last attempt
  bool joined = true;                 ///< false: directory and name could not be joined (status)
  char path[npFioPathSize] = {'\0'};  ///< of the last attempt
  np_fio_handle file = nullptr;       ///< open on success
};

/// Makes a new file in the first directory that accepts it.
[[nodiscard]] bool makeFile(const TempDirectories& directories, const char* prefix,
                            SearchOrder order, DirectorySearch* search) noexcept;

/// Opens the file in the first directory that has it. Any status but "not found" ends the search.
/// Without directories the path is the bare name.
[[nodiscard]] bool openFile(const TempDirectories& directories, const char* name, int mode,
                            SearchOrder order, DirectorySearch* search) noexcept;

/// The name part of a path that makeFile has given; false with a status when it cannot be split.
[[nodiscard]] bool nameOfPath(const char* path, ZvbString* name, int* status) noexcept;
