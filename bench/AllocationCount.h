/// Counts what a program with this file allocates, the library included.
#pragma once

#include <cstdint>

/// Allocations of this thread so far.
[[nodiscard]] std::int64_t allocationCount();
