#include "wtelem/DirectorySearch.h"

#include <algorithm>
#include <cstring>

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

}  // namespace

bool makeFile(const TempDirectories& directories, const char* prefix, SearchOrder order,
              DirectorySearch* search) noexcept {
  Visits visits(directories.count(), search->directory, order);
  while (visits.more()) {
    const int directory = visits.next();
    search->status = np_fio_tmpfile(directories.path(directory), prefix, search->path,
                                    sizeof search->path, &search->file);
    if (search->status == npFioSuccess) {
      search->directory = directory;
      return true;
    }
  }
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

bool nameOfPath(const char* path, ZvbString* name, int* status) noexcept {
  char directoryPart[npFioPathSize];
  char namePart[npFioPathSize];
  *status = np_fio_pparse(path, directoryPart, sizeof directoryPart, namePart, sizeof namePart);
  if (*status != npFioSuccess) {
    return false;
  }
  name->assign(namePart);
  if (name->memoryShort()) {
    *status = npFioNoMemory;
    return false;
  }
  return true;
}
