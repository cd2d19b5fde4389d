/// Memory that is short on purpose: the tests' own allocation functions, which count and can fail.
#pragma once

#include <cstdint>

/// Lets one of this thread's allocations fail, while it lives.
class ShortMemory {
 public:
  static constexpr int every = -1;

  /// `allocation` counts from 0; `every` means all of them.
  explicit ShortMemory(int allocation = every) noexcept;
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;
  ~ShortMemory();

  /// True when an allocation has failed.
  [[nodiscard]] bool met() const noexcept;
};

/// Allocations of this thread so far.
[[nodiscard]] std::int64_t countAllocations() noexcept;
