#include "datafile/SortArena.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include "base/zvb_memory.h"

std::unique_ptr<SortArena> SortArena::make(std::size_t size) noexcept {
  auto* bytes = static_cast<unsigned char*>(zvbAllocateLarge(size));
  if (bytes == nullptr) {
    return nullptr;
  }
  auto* arena = new (std::nothrow) SortArena(bytes, size);
  if (arena == nullptr) {
    zvbFreeLarge(bytes, size);
  }
  return std::unique_ptr<SortArena>(arena);
}

SortArena::~SortArena() { zvbFreeLarge(bytes_, size_); }

void SortArena::clear() noexcept {
  used_ = 0;
  last_ = reinterpret_cast<SortEntry*>(bytes_ + size_ / sizeof(SortEntry) * sizeof(SortEntry));
  first_ = last_;
  inOrder_ = true;
}

void SortArena::add(const SortItem& item) noexcept {
  const SortEntry entry = SortEntry::of(KeyPrefix::of(item.key, item.keySize, 0), used_);
  inOrder_ = inOrder_ && followsLast(entry, item);
  *--first_ = entry;
  used_ += static_cast<std::size_t>(item.end() - next());
}

bool SortArena::followsLast(const SortEntry& entry, const SortItem& item) const noexcept {
  if (isEmpty() || !entry.samePrefix(*first_)) {
    return isEmpty() || first_->isBefore(entry);
  }
  return compareKeys(sortItem::read(bytes_ + first_->place()), item, KeyPrefix::size) <= 0;
}

void SortArena::sort() noexcept {
  if (inOrder_) {
    std::reverse(first_, last_);
  } else {
    sortEntries(first_, last_, bytes_);
  }
}
