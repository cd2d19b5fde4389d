#include "datafile/WorkFiles.h"

#include "datafile/messages.h"
#include "fio/np_fio.h"

bool WorkFiles::setDirectories(const ZvbString& list) noexcept {
  return directories_.split(list, np_dir_listsep);
}

bool WorkFiles::make(WorkFile* file, ZvbString* error) noexcept {
  const int count = directories_.count();
  int status = npFioNotFound;
  int tried = 0;
  for (int attempt = 0; attempt < count; ++attempt) {
    tried = (nextDirectory_ + attempt) % count;
    np_fio_work made = npFioNoWork;
    status = np_fio_workCreate(directories_.path(tried), &made);
    if (status == npFioSuccess) {
      nextDirectory_ = spread_ ? (tried + 1) % count : tried;
      *file = WorkFile();
      file->file_ = made;
      file->monitor_ = monitor_;
      return true;
    }
  }
  *error =
      DATAFILE_MESSAGE(noDirectoryTakes, directories_.path(tried), status, np_fio_errdesc(status));
  return false;
}

bool WorkFiles::append(WorkFile* file, const void* bytes, std::size_t size,
                       ZvbString* error) noexcept {
  const auto added = static_cast<std::int64_t>(size);
  if (limit_ > 0 && added > limit_ - monitor_->workFileBytes) {
    *error = DATAFILE_MESSAGE(workLimitPassed, limit_);
    return false;
  }
  const int status = np_fio_workWrite(file->file_, bytes, size, file->size_);
  if (status != npFioSuccess) {
    *error = DATAFILE_MESSAGE(workWriteFailed, np_fio_errdesc(status));
    return false;
  }
  file->size_ += added;
  monitor_->workFileBytes += added;
  monitor_->spilledBytes += added;
  return true;
}
