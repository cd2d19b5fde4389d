/// One file of a table, read from its beginning on by who knows its size and believes nothing that
/// is in it.
///
/// A read that fails although the file has the bytes, or that meets a file that became shorter,
/// ends the check. Thread rule: used by the thread that makes the check.
#pragma once

#include <cstdint>

#include "fio/TempDirectories.h"
#include "fio/np_fio.h"
#include "wtcheck/CheckReport.h"
#include "wtelem/DirectorySearch.h"

class CheckedFile {
 public:
  explicit CheckedFile(CheckReport& report) noexcept : report_(report) {}
  CheckedFile(const CheckedFile&) = delete;
  CheckedFile& operator=(const CheckedFile&) = delete;
  ~CheckedFile() { np_fio_close(search_.file); }

  /// Opens the file in the first directory that has it. When that fails, status() and
  /// openingFailure() tell why, and path() is the last one tried.
  [[nodiscard]] bool open(const TempDirectories& directories, const char* name,
                          SearchOrder order) noexcept;
  [[nodiscard]] int status() const noexcept { return search_.status; }
  /// A message; `what` is the kind of file.
  [[nodiscard]] ZvbString openingFailure(const char* what) const noexcept;
  [[nodiscard]] const char* path() const noexcept { return search_.path; }

  [[nodiscard]] std::int64_t size() const noexcept { return size_; }
  [[nodiscard]] std::int64_t position() const noexcept { return position_; }
  /// Bytes from the position to the end.
  [[nodiscard]] std::int64_t left() const noexcept { return size_ - position_; }

  /// These take no more bytes than left() tells. False: the check is over.
  [[nodiscard]] bool read(unsigned char* bytes, int count) noexcept;
  [[nodiscard]] bool moveTo(std::int64_t position) noexcept;
  /// Passes over `length` bytes, or those up to the first zero byte among them, that one included;
  /// *passed is their number and *endsInZero tells that the last of them is zero.
  [[nodiscard]] bool passText(std::int64_t length, std::int64_t* passed, bool* endsInZero) noexcept;

 private:
  [[nodiscard]] bool failReading() noexcept;

  CheckReport& report_;
  DirectorySearch search_;
  std::int64_t size_ = 0;
  std::int64_t position_ = 0;
};
