/// Memory that is short on purpose: the tests' own allocation functions, which count and can fail.
#pragma once

#include <cstdint>

enum class ShortFor { thisThread, allThreads };

/// Lets some allocations fail, while it lives: of this thread, or of all, of which there is one at
/// a time.
class ShortMemory {
 public:
  /// All of this thread's.
  ShortMemory() noexcept;
  /// `count` in a row, after the first `allocation`.
  ShortMemory(int allocation, int count, ShortFor whom = ShortFor::thisThread) noexcept;
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;
  ~ShortMemory();

  /// True when an allocation has failed.
  [[nodiscard]] bool met() const noexcept;

 private:
  ShortFor whom_;
};

/// Allocations of this thread so far.
[[nodiscard]] std::int64_t countAllocations() noexcept;

/// How much memory this thread has taken at most, while this lives and beyond what it had.
class PeakMemory {
 public:
  PeakMemory() noexcept;

  [[nodiscard]] std::int64_t bytes() const noexcept;

 private:
  std::int64_t before_;
};
