/// The work files of one sort: where they are made, and how much they may take together.
///
/// Thread rule: one thread at a time; the counts are read from others.
#pragma once

#include <cstdint>
#include <utility>

#include "base/ZvbString.h"
#include "datafile/SortMonitor.h"
#include "datafile/SortSettings.h"
#include "fio/TempDirectories.h"
#include "fio/np_fio_work.h"

/// One work file, which is gone with this object.
class WorkFile {
 public:
  WorkFile() noexcept = default;
  WorkFile(WorkFile&& other) noexcept { *this = std::move(other); }
  WorkFile& operator=(WorkFile&& other) noexcept {
    if (this != &other) {
      close();
      file_ = std::exchange(other.file_, npFioNoWork);
      size_ = std::exchange(other.size_, 0);
      monitor_ = other.monitor_;
    }
    return *this;
  }
  ~WorkFile() { close(); }

  /// In bytes.
  [[nodiscard]] std::int64_t size() const noexcept { return size_; }
  /// A status of np_fio.h.
  [[nodiscard]] int read(void* bytes, std::size_t size, std::int64_t offset) const noexcept {
    return np_fio_workRead(file_, bytes, size, offset);
  }

 private:
  friend class WorkFiles;

  void close() noexcept {
    if (file_ != npFioNoWork) {
      np_fio_workClose(std::exchange(file_, npFioNoWork));
      monitor_->workFileBytes -= std::exchange(size_, 0);
    }
  }

  np_fio_work file_ = npFioNoWork;
  std::int64_t size_ = 0;
  SortMonitor* monitor_ = nullptr;
};

class WorkFiles {
 public:
  WorkFiles(const SortSettings& settings, SortMonitor* monitor) noexcept
      : limit_(settings.workFileLimit), spread_(settings.spread), monitor_(monitor) {}

  /// Takes the directories of a list. False when memory is short.
  [[nodiscard]] bool setDirectories(const ZvbString& list) noexcept;

  /// Makes a file in the next directory that accepts one, or, if they are not to be spread, in the
  /// first. False with the reason in *error.
  [[nodiscard]] bool make(WorkFile* file, ZvbString* error) noexcept;
  /// Adds to the end of the file. False with the reason in *error.
  [[nodiscard]] bool append(WorkFile* file, const void* bytes, std::size_t size,
                            ZvbString* error) noexcept;

 private:
  TempDirectories directories_;
  int nextDirectory_ = 0;
  std::int64_t limit_;  // bytes of all files together; 0 is none
  bool spread_;
  SortMonitor* monitor_;
};
