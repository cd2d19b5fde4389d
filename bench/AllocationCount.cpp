#include "AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::int64_t allocations = 0;

void* allocate(std::size_t size) noexcept {
  ++allocations;
  return std::malloc(size);
}

}  // namespace

std::int64_t allocationCount() { return allocations; }

// This program's allocation functions, which are the library's too, count. Those of arrays call
// them.
void* operator new(std::size_t size) {
  void* block = allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}
// Inlined where its new is not, a delete seems to the compiler to free what malloc has not made.
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}
