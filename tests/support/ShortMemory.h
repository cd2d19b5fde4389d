/// Memory that is short on purpose: the tests' own allocation functions, which count and can fail.
#pragma once

#include <cstdint>

/// Lets some of this thread's allocations fail, while it lives.
class ShortMemory {
 public:
  /// All of them.
  ShortMemory() noexcept;
  /// `count` in a row, after the first `allocation`.
  ShortMemory(int allocation, int count) noexcept;
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;
  ~ShortMemory();

  /// True when an allocation has failed.
  [[nodiscard]] bool met() const noexcept;
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
