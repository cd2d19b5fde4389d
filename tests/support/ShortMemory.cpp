#include "support/ShortMemory.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

thread_local std::int64_t allocations = 0;
thread_local std::int64_t firstFailing = 0;  // counted as the allocations are
thread_local std::int64_t endOfFailing = 0;
thread_local bool hasFailed = false;
thread_local std::int64_t takenBytes = 0;  // below 0 in a thread that frees what another one took
thread_local std::int64_t mostTakenBytes = 0;

void* allocate(std::size_t size) noexcept {
  const std::int64_t allocation = allocations++;
  if (allocation >= firstFailing && allocation < endOfFailing) {
    hasFailed = true;
    return nullptr;
  }
  void* block = std::malloc(size);
  takenBytes += static_cast<std::int64_t>(malloc_usable_size(block));
  mostTakenBytes = std::max(mostTakenBytes, takenBytes);
  return block;
}

void giveBack(void* block) noexcept {
  takenBytes -= static_cast<std::int64_t>(malloc_usable_size(block));
  std::free(block);
}

void* allocateOrThrow(std::size_t size) {
  void* block = allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

}  // namespace

ShortMemory::ShortMemory() noexcept : ShortMemory(0, std::numeric_limits<int>::max()) {}

ShortMemory::ShortMemory(int allocation, int count) noexcept {
  hasFailed = false;
  firstFailing = allocations + allocation;
  endOfFailing = firstFailing + count;
}

ShortMemory::~ShortMemory() { endOfFailing = 0; }

bool ShortMemory::met() const noexcept { return hasFailed; }

std::int64_t countAllocations() noexcept { return allocations; }

PeakMemory::PeakMemory() noexcept : before_(takenBytes) { mostTakenBytes = takenBytes; }

std::int64_t PeakMemory::bytes() const noexcept { return mostTakenBytes - before_; }

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}
void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void operator delete(void* block) noexcept { giveBack(block); }
void operator delete[](void* block) noexcept { giveBack(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { giveBack(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { giveBack(block); }
