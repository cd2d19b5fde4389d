/// The bytes of one text: up to 47 of them inside the object, more of them on the heap.
///
/// Strings and variants keep their text here. Assigning into an object that has the room allocates
/// nothing, and the heap block of an earlier, longer text is kept for the next one.
/// Thread rule: as for any value, no thread may read it while another changes it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/zvb_export.h"

class ZvbText {
 public:
  /// Bytes, without the terminating zero, that need no heap.
  static constexpr std::uint32_t inlineCapacity = 47;
  /// The longest text in bytes; with its terminator its size still fits 31 bits.
  static constexpr std::uint32_t maximumSize = 0x7FFFFFFEU;

  ZvbText() noexcept { inline_[0] = '\0'; }
  ZvbText(const ZvbText&) = delete;
  ZvbText& operator=(const ZvbText&) = delete;
  ~ZvbText() {
    if (heap_ != nullptr) [[unlikely]] {
      freeHeap();
    }
  }

  /// Replaces the text by `size` bytes, which may be part of this very text. False, and the text
  /// unchanged, when memory is short or the text too long.
  [[nodiscard]] bool assign(const char* text, std::size_t size) noexcept {
    if (size <= inlineCapacity) [[likely]] {
      copyShort(inline_, text, size);
      inline_[size] = '\0';
      size_ = static_cast<std::uint32_t>(size);
      return true;
    }
    return assignLong(text, size);
  }

  /// Replaces the text by another one's, which may be this one.
  [[nodiscard]] bool assign(const ZvbText& other) noexcept {
    if (other.size_ <= inlineCapacity) [[likely]] {
      char copy[sizeof inline_];  // through registers, where a move within itself costs a call
      std::memcpy(copy, other.inline_, sizeof copy);
      std::memcpy(inline_, copy, sizeof copy);
      size_ = other.size_;
      return true;
    }
    return assignLong(other.heap_, other.size_);
  }

  /// As assign, for a text behind whose start at least inlineCapacity + 1 bytes can be read: short
  /// texts are copied together with what follows them, which takes no decision on their size. The
  /// text may not be part of this one.
  [[nodiscard]] bool assignPadded(const char* text, std::size_t size) noexcept {
    if (size <= inlineCapacity) [[likely]] {
      std::memcpy(inline_, text, sizeof inline_);
      inline_[size] = '\0';
      size_ = static_cast<std::uint32_t>(size);
      return true;
    }
    return assignLong(text, size);
  }

  /// Adds `size` bytes at the end; result and aliasing as for assign.
  [[nodiscard]] ZVB_API bool append(const char* text, std::size_t size) noexcept;

  /// Keeps the first `size` bytes; does nothing when there are no more than that.
  ZVB_API void truncate(std::size_t size) noexcept;

  void clear() noexcept {
    inline_[0] = '\0';
    size_ = 0;
  }

  /// Takes over the text of `other`, which is empty afterwards.
  ZVB_API void take(ZvbText& other) noexcept;

  /// Zero-terminated; valid until the next change.
  [[nodiscard]] const char* data() const noexcept {
    return size_ <= inlineCapacity ? inline_ : heap_;
  }
  /// Copies the text to room for it and for inlineCapacity + 1 bytes at least; the terminator comes
  /// with a text of up to inlineCapacity bytes.
  void copyTo(char* room) const noexcept {
    if (size_ <= inlineCapacity) [[likely]] {
      std::memcpy(room, inline_, sizeof inline_);
    } else {
      std::memcpy(room, heap_, size_);
    }
  }
  /// In bytes, without the terminator.
  [[nodiscard]] std::uint32_t size() const noexcept { return size_; }
  [[nodiscard]] std::string_view view() const noexcept { return {data(), size_}; }

 private:
  /// Copies up to inlineCapacity bytes in overlapping pieces, from 8 bytes on always in six of
  /// them: a decision on the size costs more than the copy, because the processor cannot foresee
  /// it. All of the source is read before anything is written, so the two ranges may overlap.
  static void copyShort(char* target, const char* source, std::size_t size) noexcept {
    if (size >= pieceSize) {
      copyPieces(target, source, size - pieceSize);
    } else if (size >= 4) {
      copyEnds(target, source, size);
    } else if (size != 0) {
      const char first = source[0];
      const char middle = source[size / 2];
      const char last = source[size - 1];
      target[0] = first;
      target[size / 2] = middle;
      target[size - 1] = last;
    }
  }

  /// `last` is where the last piece begins.
  static void copyPieces(char* target, const char* source, std::size_t last) noexcept {
    std::uint64_t pieces[pieceCount];
    for (std::size_t i = 0; i < pieceCount; ++i) {
      std::memcpy(&pieces[i], source + startOf(i, last), pieceSize);
    }
    for (std::size_t i = 0; i < pieceCount; ++i) {
      std::memcpy(target + startOf(i, last), &pieces[i], pieceSize);
    }
  }
  static std::size_t startOf(std::size_t piece, std::size_t last) noexcept {
    return piece * pieceSize < last ? piece * pieceSize : last;
  }

  /// From 4 to 8 bytes.
  static void copyEnds(char* target, const char* source, std::size_t size) noexcept {
    std::uint32_t first;
    std::uint32_t last;
    std::memcpy(&first, source, sizeof first);
    std::memcpy(&last, source + size - sizeof last, sizeof last);
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + size - sizeof last, &last, sizeof last);
  }

  /// Inline it would give memory of the library to the heap of the program, which on Windows need
  /// not be the same.
  ZVB_API void freeHeap() const noexcept;

  // Kept out of line so that assigning a short text stays small wherever it is inlined.
  [[nodiscard, gnu::noinline]] ZVB_API bool assignLong(const char* text, std::size_t size) noexcept;

  static constexpr std::size_t pieceSize = sizeof(std::uint64_t);
  static constexpr std::size_t pieceCount = (inlineCapacity + 1) / pieceSize;

  char* heap_ = nullptr;        // holds the text when size_ is above inlineCapacity
  std::uint32_t size_ = 0;      // without the terminator
  std::uint32_t capacity_ = 0;  // of heap_, without the terminator
  char inline_[inlineCapacity + 1];
};
