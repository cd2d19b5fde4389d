/// Making and finding files in a list of directories.
#pragma once

#include "fio/TempDirectories.h"
#include "fio/np_fio.h"

/// How far a search goes that begins at some directory of the list.
enum class SearchOrder {
  toTheEnd,  ///< to the last directory
  around,    ///< on from the last to the first, once past each
};

/// What new file to make.
struct NewFileKind {
  const char* prefix;  ///< of its name
  const char* name;    ///< what messages call it
  SearchOrder order;
};

/// Give the first directory to try; the rest is filled when the file is made.
struct NewFile {
  int directory = 0;               ///< index; where the file is
  np_fio_handle handle = nullptr;  ///< the caller closes it
  ZvbString path;
  ZvbString name;  ///< without directory
};

/// Makes a file in the first directory that accepts it. False with a text in *error, and no file.
[[nodiscard]] bool makeFile(const TempDirectories& directories, const NewFileKind& kind,
                            NewFile* made, ZvbString* error) noexcept;

/// Where a search for a file stands: give the first directory, find the last one tried.
struct DirectorySearch {
  int directory = 0;                  ///< index; on success, where the file is
  int status = npFioNotFound;         ///< of the last attempt
  bool joined = true;                 ///< false: directory and name could not be joined (status)
  char path[npFioPathSize] = {'\0'};  ///< of the last attempt
  np_fio_handle file = nullptr;       ///< open on success
};

/// Opens the file in the first directory that has it. Any status but "not found" ends the search.
/// Without directories the path is the bare name.
[[nodiscard]] bool openFile(const TempDirectories& directories, const char* name, int mode,
                            SearchOrder order, DirectorySearch* search) noexcept;
