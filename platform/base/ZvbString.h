/// A text that may also be null, passed around by value.
///
/// Texts are UTF-8. A character is a code point; a byte that is no part of valid UTF-8 counts as
/// one character, so every text survives a round trip. A text ends at its first zero byte. Nothing
/// here throws: an operation that finds no memory leaves the string as it was, and memoryShort()
/// tells. Thread rule: as for any value, no thread may read it while another changes it.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/ZvbText.h"
#include "base/zvb_export.h"

class ZVB_API ZvbString {
 public:
  /// An empty string, which is not null.
  ZvbString() noexcept = default;
  /// A copy of `text`; a null pointer makes a null string. `literal` is true for texts that live as
  /// long as the program; it is a remark to the reader and changes nothing.
  ZvbString(const char* text, bool literal = false) noexcept;
  ZvbString(const ZvbString& other) noexcept { *this = other; }
  ZvbString(ZvbString&& other) noexcept { *this = static_cast<ZvbString&&>(other); }
  ZvbString& operator=(const ZvbString& other) noexcept;
  ZvbString& operator=(ZvbString&& other) noexcept;
  virtual ~ZvbString() = default;

  /// A null string that is memoryShort(): what an operation returns that finds no memory for its
  /// result.
  [[nodiscard]] static ZvbString outOfMemory() noexcept;

  /// Replaces the text; a null pointer makes the string null.
  void assign(const char* text) noexcept;
  /// Replaces the text by `size` bytes, or by those before the first zero byte among them.
  void assign(const char* text, std::size_t size) noexcept;
  /// Replaces the text by `size` bytes, none of which is zero; a null pointer makes it null.
  void assignBytes(const char* text, std::size_t size) noexcept {
    if (text == nullptr) {
      setNull();
      return;
    }
    memoryShort_ = !text_.assign(text, size);
    isNull_ = isNull_ && memoryShort_;
  }
  /// Replaces the text by that of a variant or of another string.
  void assign(const ZvbText& text) noexcept {
    memoryShort_ = !text_.assign(text);
    isNull_ = isNull_ && memoryShort_;
  }
  /// Replaces the text by the number's decimal digits.
  void assign(int number) noexcept;
  void assign(std::int64_t number) noexcept;

  /// Adds to the end and sets *failed on every call: true when memory is short, or was so for the
  /// string to be added, and then this string is as it was. A null adds nothing.
  void append(const char* text, bool* failed) noexcept;
  void append(const ZvbString& text, bool* failed) noexcept;

  /// 0 when the texts are equal; below 0 or above 0 gives their order. With `exact` bytes count;
  /// without it case is ignored by one fixed folding (ASCII, Latin-1, Greek and Cyrillic letters),
  /// whatever the locale. Null and empty are equal.
  [[nodiscard]] int compare(const ZvbString& other, bool exact) const noexcept;
  [[nodiscard]] int compare(const char* other, bool exact) const noexcept;

  /// The position, in characters, of the first occurrence of `what` at or after `start`; negative
  /// when there is none. A negative `start` is taken for 0; an empty `what` occurs everywhere.
  [[nodiscard]] int find(const ZvbString& what, int start) const noexcept;
  /// At most `count` characters from position `start` on; a negative count means all of the rest.
  /// Of a null string a null string, here and below.
  [[nodiscard]] ZvbString mid(unsigned start, int count) const noexcept;
  /// A copy in which `what` is replaced by `with`: from character `start` on, at most `count`
  /// times, or every time when the count is negative. An empty `what` replaces nothing.
  [[nodiscard]] ZvbString replace(const ZvbString& what, const ZvbString& with, unsigned start,
                                  int count) const noexcept;
  /// Keeps the first `length` characters.
  void truncate(unsigned length) noexcept;

  /// The number of characters; counted at each call.
  [[nodiscard]] unsigned length() const noexcept;
  /// Bytes of asCstr(), its terminating zero included; 1 for an empty string.
  [[nodiscard]] unsigned cStrSize() const noexcept { return text_.size() + 1; }
  /// Never null; valid while the string is unchanged.
  [[nodiscard]] const char* asCstr() const noexcept { return text_.data(); }
  [[nodiscard]] std::string_view asView() const noexcept { return text_.view(); }

  /// Makes the string null: without text, and told apart from an empty one by isNull.
  void setNull() noexcept {
    text_.clear();
    isNull_ = true;
    memoryShort_ = false;
  }
  [[nodiscard]] bool isNull() const noexcept { return isNull_; }
  [[nodiscard]] bool isEmpty() const noexcept { return text_.size() == 0; }
  /// True when the last assignment or construction found no memory for its text, or was a copy of
  /// a string of which that is so.
  [[nodiscard]] bool memoryShort() const noexcept { return memoryShort_; }

 private:
  ZvbText text_;
  bool isNull_ = false;
  bool memoryShort_ = false;
};

/// The number of bytes, at most `limit`, to which `size` bytes of UTF-8 text are cut so that no
/// character is divided. Looks at the few bytes around the cut only.
[[nodiscard]] ZVB_API std::size_t zvbCutAtCharacter(const char* text, std::size_t size,
                                                    std::size_t limit) noexcept;

/// Writes bytes whose order, byte by byte, is that of ZvbString::compare without case: equal for
/// texts that differ only in case. `folded` has room for twice the text; returns the number of
/// bytes written. A text without zero bytes gives none.
[[nodiscard]] ZVB_API std::size_t zvbFoldText(std::string_view text, char* folded) noexcept;

/// printf-style formatting; an unusable format gives a null string.
[[nodiscard]] ZVB_API ZvbString zvbStringFormat(const char* format, ...) noexcept
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
