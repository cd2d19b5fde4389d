/// The POSIX half of large memory.
#include <sys/mman.h>

#include <cstdint>
#include <new>

#include "base/zvb_memory.h"

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;

/// Pieces below this size come from the program's own heap.
constexpr bool isSmall(std::size_t size) noexcept { return size < 2 * largePage; }

/// Maps memory that begins at a large page's boundary, by mapping too much and giving the ends
/// back.
void* mapAligned(std::size_t size) noexcept {
  const std::size_t wide = size + largePage;
  void* mapped = mmap(nullptr, wide, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) {
    return nullptr;
  }
  auto* bytes = static_cast<unsigned char*>(mapped);
  const std::size_t front =
      (largePage - reinterpret_cast<std::uintptr_t>(bytes) % largePage) % largePage;
  if (front != 0) {
    munmap(bytes, front);
  }
  munmap(bytes + front + size, largePage - front);
  return bytes + front;
}

}  // namespace

std::size_t zvbLargeSize(std::size_t size) noexcept {
  return isSmall(size) ? size : (size + largePage - 1) / largePage * largePage;
}

void* zvbAllocateLarge(std::size_t size) noexcept {
  if (isSmall(size)) {
    return ::operator new(size, std::nothrow);
  }
  void* memory = mapAligned(zvbLargeSize(size));
#ifdef MADV_HUGEPAGE
  if (memory != nullptr) {
    (void)madvise(memory, zvbLargeSize(size), MADV_HUGEPAGE);  // a wish
  }
#endif
  return memory;
}

void zvbFreeLarge(void* memory, std::size_t size) noexcept {
  if (isSmall(size)) {
    ::operator delete(memory);
  } else if (memory != nullptr) {
    munmap(memory, zvbLargeSize(size));
  }
}
