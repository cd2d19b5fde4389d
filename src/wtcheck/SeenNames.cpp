#include "wtcheck/SeenNames.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

bool SeenNames::contains(const Name& name) const noexcept {
  const Name* run = names_.get();
  for (std::size_t left = count_; left != 0;) {
    const std::size_t size = std::bit_floor(left);
    if (std::binary_search(run, run + size, name)) {
      return true;
    }
    run += size;
    left -= size;
  }
  return false;
}

bool SeenNames::add(const Name& name) noexcept {
  if (count_ == capacity_ && !makeRoom()) {
    return false;
  }
  Name* const begin = names_.get() + count_;
  Name* const end = begin + 1;
  *begin = name;
  Name* merged = begin;
  for (std::size_t size = 1; (count_ & size) != 0; size *= 2) {
    std::inplace_merge(merged - size, merged, end);
    merged -= size;
  }
  ++count_;
  return true;
}

bool SeenNames::makeRoom() noexcept {
  constexpr std::size_t firstCapacity = 64;
  const std::size_t capacity = std::max(2 * capacity_, firstCapacity);
  std::unique_ptr<Name[]> grown(new (std::nothrow) Name[capacity]);
  if (grown == nullptr) {
    return false;
  }
  std::copy_n(names_.get(), count_, grown.get());
  names_ = std::move(grown);
  capacity_ = capacity;
  return true;
}
