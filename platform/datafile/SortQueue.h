/// A line of objects that link themselves, first in, first out: waiting in it takes no memory.
/// Thread rule: as for any value.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

/// `Entry` has a member `nextInLine`, a pointer to another one. The queue owns what waits in it.
template <typename Entry>
class SortQueue {
 public:
  SortQueue() noexcept = default;
  SortQueue(const SortQueue&) = delete;
  SortQueue& operator=(const SortQueue&) = delete;
  ~SortQueue() {
    while (take() != nullptr) {
    }
  }

  void put(std::unique_ptr<Entry> entry) noexcept {
    entry->nextInLine = nullptr;
    Entry* const added = entry.release();
    (first_ == nullptr ? first_ : last_->nextInLine) = added;
    last_ = added;
    ++size_;
  }
  /// The first in line, or null.
  std::unique_ptr<Entry> take() noexcept {
    if (first_ == nullptr) {
      return nullptr;
    }
    --size_;
    std::unique_ptr<Entry> entry(first_);
    first_ = first_->nextInLine;
    return entry;
  }

  /// Without taking it; the others follow by nextInLine.
  [[nodiscard]] const Entry* first() const noexcept { return first_; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool isEmpty() const noexcept { return first_ == nullptr; }

 private:
  Entry* first_ = nullptr;
  Entry* last_ = nullptr;
  std::size_t size_ = 0;
};
