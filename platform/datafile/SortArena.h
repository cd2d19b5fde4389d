/// Memory in which items collect until they are sorted: items from the front, an entry for each
/// from the back, full when the two meet.
///
/// Thread rule: one thread at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "datafile/EntrySort.h"
#include "datafile/SortItem.h"

class SortArena {
 public:
  /// Bytes of an arena that holds one item of `itemSize` bytes.
  static constexpr std::size_t sizeFor(std::size_t itemSize) noexcept {
    return itemSize + sortItem::slack + 2 * sizeof(SortEntry);
  }

  /// An empty arena; null when memory is short.
  [[nodiscard]] static std::unique_ptr<SortArena> make(std::size_t size) noexcept;

  SortArena(const SortArena&) = delete;
  SortArena& operator=(const SortArena&) = delete;
  ~SortArena();

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool isEmpty() const noexcept { return entryCount() == 0; }
  /// True when an item of `itemSize` bytes fits.
  [[nodiscard]] bool hasRoom(std::size_t itemSize) const noexcept {
    const auto free = static_cast<std::size_t>(reinterpret_cast<unsigned char*>(first_) - bytes_) -
                      used_ - sortItem::slack;
    return itemSize + sizeof(SortEntry) <= free && used_ <= largestPlace;
  }
  /// Where the next item is to be written.
  [[nodiscard]] unsigned char* next() noexcept { return bytes_ + used_; }
  /// Counts the item written there.
  void add(const SortItem& item) noexcept;

  /// Puts the entries in order.
  void sort() noexcept;
  /// Forgets all items.
  void clear() noexcept;

  [[nodiscard]] std::span<const SortEntry> entries() const noexcept {
    return {first_, entryCount()};
  }
  [[nodiscard]] const unsigned char* bytes() const noexcept { return bytes_; }

  SortArena* nextInLine = nullptr;  ///< for whoever queues it

 private:
  static constexpr std::size_t largestPlace = 0xFFFFFFFF;

  SortArena(unsigned char* bytes, std::size_t size) noexcept : bytes_(bytes), size_(size) {
    clear();
  }
  [[nodiscard]] std::size_t entryCount() const noexcept {
    return static_cast<std::size_t>(last_ - first_);
  }
  [[nodiscard]] bool followsLast(const SortEntry& entry, const SortItem& item) const noexcept;

  unsigned char* bytes_;
  std::size_t size_;
  std::size_t used_ = 0;
  SortEntry* first_ = nullptr;  // the entry added last, until they are sorted
  SortEntry* last_ = nullptr;
  bool inOrder_ = true;  // the items have come in the order of their keys
};
