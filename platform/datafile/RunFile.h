/// Sorted runs in work files: written once from front to back, read likewise.
///
/// A run is a sequence of blocks of one size, each read at once:
///
///   bytes 0-7    size of the items in bytes
///   bytes 8-15   checksum of the items, or 0
///   the items, back to back, none divided
///
/// An item that does not fit has a block of its own, which is as many times as long as it takes;
/// its size tells. Numbers are in the machine's byte order. Thread rule: one thread at a time.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ZvbString.h"
#include "datafile/SortItem.h"
#include "datafile/SortSettings.h"
#include "datafile/WorkFiles.h"

/// A run that lies in a work file.
struct SpilledRun {
  WorkFile file;
  std::size_t largestItem = 0;  ///< bytes
  int level = 0;                ///< how often its items have been merged since they were spilled
};

class RunWriter {
 public:
  RunWriter(const SortSettings& settings, const SortPlan& plan, WorkFiles* files,
            SortMonitor* monitor) noexcept
      : checksums_(settings.checksums),
        blockSize_(plan.blockSize),
        bufferSize_(plan.writeBuffer),
        files_(files),
        monitor_(monitor) {}

  /// The operations return false with the reason in error().
  [[nodiscard]] bool makeBuffer() noexcept;
  [[nodiscard]] bool start(SpilledRun* run) noexcept;
  [[nodiscard]] bool append(const unsigned char* item, std::size_t size) noexcept;
  /// Brings everything to the file.
  [[nodiscard]] bool finish() noexcept;

  [[nodiscard]] const ZvbString& error() const noexcept { return error_; }

 private:
  [[nodiscard]] bool appendLarge(const unsigned char* item, std::size_t size) noexcept;
  [[nodiscard]] bool endBlock() noexcept;
  [[nodiscard]] bool writeBuffer() noexcept;

  bool checksums_;
  std::size_t blockSize_;
  std::size_t bufferSize_;
  WorkFiles* files_;
  SortMonitor* monitor_;
  SpilledRun* run_ = nullptr;
  std::unique_ptr<unsigned char[]> buffer_;
  std::size_t blockStart_ = 0;  // of the block being filled, in the buffer
  std::size_t blockUsed_ = 0;   // bytes of that block, its head included
  ZvbString error_;
};

class RunReader {
 public:
  /// Stands before the first item. False with the reason in *error.
  [[nodiscard]] bool start(const SpilledRun& run, const SortSettings& settings,
                           const SortPlan& plan, ZvbString* error) noexcept;

  /// The next item, or null at the end or when that cannot be read: then *error has the reason, and
  /// otherwise is left alone. The item is valid until the next call.
  [[nodiscard]] const unsigned char* next(ZvbString* error) noexcept;

 private:
  [[nodiscard]] bool loadBlock(ZvbString* error) noexcept;
  [[nodiscard]] bool loadRest(std::size_t loaded, std::size_t whole, ZvbString* error) noexcept;
  [[nodiscard]] bool growTo(std::size_t size) noexcept;

  const SpilledRun* run_ = nullptr;
  bool checksums_ = true;
  std::size_t blockSize_ = 0;
  std::int64_t offset_ = 0;  // of the next block
  std::unique_ptr<unsigned char[]> buffer_;
  std::size_t capacity_ = 0;  // of the buffer, slack aside
  const unsigned char* item_ = nullptr;
  const unsigned char* end_ = nullptr;  // of the block's items
};
