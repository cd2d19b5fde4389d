/// Memory in large pieces, as the operating system gives it.
#pragma once

#include <cstddef>

/// `size` bytes, more than 0, aligned for everything, with large pages where the system has them;
/// null when memory is short. May be called from any thread.
[[nodiscard]] void* zvbAllocateLarge(std::size_t size) noexcept;

/// The bytes that asking for `size` of them really takes: a multiple of the large pages from some
/// size on.
[[nodiscard]] std::size_t zvbLargeSize(std::size_t size) noexcept;

/// Gives memory of zvbAllocateLarge back; `size` is what was asked for. Null does nothing.
void zvbFreeLarge(void* memory, std::size_t size) noexcept;
