/// The Windows half of large memory. Large pages need a privilege there that few programs have, so
/// pieces are as large as asked for.
#include <windows.h>

#include <new>

#include "base/zvb_memory.h"

namespace {

/// Pieces below this size come from the program's own heap.
constexpr bool isSmall(std::size_t size) noexcept { return size < std::size_t{1} << 20; }

}  // namespace

std::size_t zvbLargeSize(std::size_t size) noexcept { return size; }

void* zvbAllocateLarge(std::size_t size) noexcept {
  return isSmall(size) ? ::operator new(size, std::nothrow)
                       : VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void zvbFreeLarge(void* memory, std::size_t size) noexcept {
  if (isSmall(size)) {
    ::operator delete(memory);
  } else if (memory != nullptr) {
    VirtualFree(memory, 0, MEM_RELEASE);
  }
}
