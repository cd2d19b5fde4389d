#include "wtelem/DirectorySearch.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "wtelem/messages.h"

namespace {

/// The directories that a search visits, in order.
class Visits {
 public:
  Visits(int count, int first, SearchOrder order) noexcept
      : count_(count),
        directory_(std::clamp(first, 0, std::max(count - 1, 0))),
        left_(order == SearchOrder::around ? count : count - directory_) {}

  [[nodiscard]] bool more() const noexcept { return left_ > 0; }
  [[nodiscard]] int next() noexcept {
    --left_;
    const int directory = directory_;
    directory_ = directory_ + 1 == count_ ? 0 : directory_ + 1;
    return directory;
  }

 private:
  int count_;
  int directory_;
  int left_;
};

void setPath(DirectorySearch* search, const char* text) noexcept {
  std::strncpy(search->path, text, sizeof search->path - 1);
  search->path[sizeof search->path - 1] = '\0';
}

/// Fills in path and name of a file just made.
bool describe(const char* path, const char* kind, NewFile* made, ZvbString* error) noexcept {
  char directoryPart[npFioPathSize];
  char namePart[npFioPathSize];
  const int status =
      np_fio_pparse(path, directoryPart, sizeof directoryPart, namePart, sizeof namePart);
  if (status != npFioSuccess) {
    *error = WT_MESSAGE(pathNotSplit, kind, status, np_fio_errdesc(status));
    return false;
  }
  made->path.assign(path);
  made->name.assign(namePart);
  if (made->path.memoryShort() || made->name.memoryShort()) {
    *error = WT_MESSAGE(outOfMemory, "(file path)");
    return false;
  }
  return true;
}

}  // namespace

bool makeFile(const TempDirectories& directories, const NewFileKind& kind, NewFile* made,
              ZvbString* error) noexcept {
  Visits visits(directories.count(), made->directory, kind.order);
  char path[npFioPathSize];
  int status = npFioNotFound;
  while (visits.more()) {
    const int directory = visits.next();
    status =
        np_fio_tmpfile(directories.path(directory), kind.prefix, path, sizeof path, &made->handle);
    if (status == npFioSuccess) {
      made->directory = directory;
      if (describe(path, kind.name, made, error)) {
        return true;
      }
      np_fio_close(std::exchange(made->handle, nullptr));
      (void)np_fio_unlink(path);
      return false;
    }
  }
  *error = WT_MESSAGE(noDirectoryTakes, directories.path(directories.count() - 1), status,
                      np_fio_errdesc(status));
  return false;
}

bool openFile(const TempDirectories& directories, const char* name, int mode, SearchOrder order,
              DirectorySearch* search) noexcept {
  setPath(search, name);
  Visits visits(directories.count(), search->directory, order);
  while (visits.more()) {
    const int directory = visits.next();
    search->status =
        np_fio_pcat(directories.path(directory), name, search->path, sizeof search->path);
    search->joined = search->status == npFioSuccess;
    if (!search->joined) {
      return false;
    }
    search->status = np_fio_open(search->path, mode, &search->file);
    if (search->status == npFioSuccess) {
      search->directory = directory;
      return true;
    }
    if (search->status != npFioNotFound) {
      return false;
    }
  }
  return false;
}
