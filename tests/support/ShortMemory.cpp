#include "support/ShortMemory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool isShort = false;
thread_local bool hasFailed = false;
thread_local int failing = 0;
thread_local std::int64_t allocations = 0;

void* allocate(std::size_t size) noexcept {
  ++allocations;
  const bool fails = isShort && (failing == ShortMemory::every || failing == 0);
  if (isShort && failing != ShortMemory::every) {
    isShort = !fails;
    --failing;
  }
  hasFailed = hasFailed || fails;
  return fails ? nullptr : std::malloc(size);
}

void* allocateOrThrow(std::size_t size) {
  void* block = allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

}  // namespace

ShortMemory::ShortMemory(int allocation) noexcept {
  isShort = true;
  hasFailed = false;
  failing = allocation;
}

ShortMemory::~ShortMemory() { isShort = false; }

bool ShortMemory::met() const noexcept { return hasFailed; }

std::int64_t countAllocations() noexcept { return allocations; }

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}
void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { std::free(block); }
