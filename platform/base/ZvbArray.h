/// An array that grows, and says so when memory is short instead of throwing. It has room for fewer
/// than 2^31 entries.
/// Thread rule: as for any value, no thread may read it while another changes it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

template <typename Entry>
class ZvbArray {
 public:
  /// Adds an entry at the end. False, and nothing changed, when memory is short.
  [[nodiscard]] bool append(Entry entry) noexcept {
    if (size_ == capacity_ && !grow(std::max(4U, capacity_ + capacity_ / 2))) {
      return false;
    }
    entries_[size_++] = std::move(entry);
    return true;
  }

  /// Drops the entries from number `size` on.
  void truncate(std::size_t size) noexcept {
    while (size_ > size) {
      entries_[--size_] = Entry();
    }
  }
  void clear() noexcept {
    entries_.reset();
    size_ = 0;
    capacity_ = 0;
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool isEmpty() const noexcept { return size_ == 0; }
  [[nodiscard]] Entry& operator[](std::size_t index) noexcept { return entries_[index]; }
  [[nodiscard]] const Entry& operator[](std::size_t index) const noexcept {
    return entries_[index];
  }
  [[nodiscard]] Entry* begin() noexcept { return entries_.get(); }
  [[nodiscard]] Entry* end() noexcept { return entries_.get() + size_; }
  [[nodiscard]] const Entry* begin() const noexcept { return entries_.get(); }
  [[nodiscard]] const Entry* end() const noexcept { return entries_.get() + size_; }

 private:
  [[nodiscard]] bool grow(std::uint32_t capacity) noexcept {
    std::unique_ptr<Entry[]> grown(new (std::nothrow) Entry[capacity]);
    if (grown == nullptr) {
      return false;
    }
    std::move(begin(), end(), grown.get());
    entries_ = std::move(grown);
    capacity_ = capacity;
    return true;
  }

  std::unique_ptr<Entry[]> entries_;
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 0;
};
