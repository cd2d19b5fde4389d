#include "support/ShortMemory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#include "support/ThisProcess.h"

namespace {

/// Counts allocations and says which of them are to fail.
template <typename Number, typename Flag>
struct Shortage {
  Number allocations{0};
  Number firstFailing{0};  // counted as the allocations are
  Number endOfFailing{0};
  Flag hasFailed{false};

  bool takes() noexcept {
    const std::int64_t allocation = allocations++;
    const bool fails = allocation >= firstFailing && allocation < endOfFailing;
    if (fails) {
      hasFailed = true;
    }
    return fails;
  }
  void start(int allocation, int count) noexcept {
    hasFailed = false;
    firstFailing = allocations + allocation;
    endOfFailing = firstFailing + count;
  }
  void end() noexcept { endOfFailing = 0; }
};

thread_local Shortage<std::int64_t, bool> ofThread;
Shortage<std::atomic<std::int64_t>, std::atomic<bool>> ofAll;
std::atomic<bool> isForAll{false};

thread_local std::int64_t takenBytes = 0;  // below 0 in a thread that frees what another one took
thread_local std::int64_t mostTakenBytes = 0;

void* allocate(std::size_t size) noexcept {
  const bool fails = ofThread.takes();
  if (fails || (isForAll && ofAll.takes())) {
    return nullptr;
  }
  void* block = std::malloc(size);
  takenBytes += static_cast<std::int64_t>(usableSize(block));
  mostTakenBytes = std::max(mostTakenBytes, takenBytes);
  return block;
}

void giveBack(void* block) noexcept {
  takenBytes -= static_cast<std::int64_t>(usableSize(block));
  std::free(block);
}

void* allocateOrThrow(std::size_t size) {
  void* block = allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

}  // namespace

ShortMemory::ShortMemory() noexcept : ShortMemory(0, std::numeric_limits<int>::max()) {}

ShortMemory::ShortMemory(int allocation, int count, ShortFor whom) noexcept : whom_(whom) {
  if (whom_ == ShortFor::allThreads) {
    ofAll.start(allocation, count);
    isForAll = true;
  } else {
    ofThread.start(allocation, count);
  }
}

ShortMemory::~ShortMemory() {
  if (whom_ == ShortFor::allThreads) {
    isForAll = false;
    ofAll.end();
  } else {
    ofThread.end();
  }
}

bool ShortMemory::met() const noexcept {
  return whom_ == ShortFor::allThreads ? ofAll.hasFailed.load() : ofThread.hasFailed;
}

std::int64_t countAllocations() noexcept { return ofThread.allocations; }

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
