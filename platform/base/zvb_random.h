/// Random bytes of the operating system, fit for names and identifiers that nobody can guess.
#pragma once

#include <cstddef>

/// Fills `size` bytes, at most 256. False when the system has none to give. May be called from any
/// thread.
[[nodiscard]] bool zvbRandomBytes(void* bytes, std::size_t size) noexcept;
