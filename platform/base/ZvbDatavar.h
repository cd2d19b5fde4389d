/// One value of any of the library's types, or null: what rows are made of.
///
/// A variant holds a boolean, an integer, a real, a text or a date, and gives it as any other type
/// on request:
///
///   to        succeeds from                                    fails for
///   boolean   numbers (not 0 is true); true false yes no 1 0    other texts, dates
///             in any case
///   integer   booleans; reals and doubles cut toward zero;      out of range, other texts, dates
///             decimal text likewise
///   real      booleans, integers, finite doubles (shortest      overflow, other texts, dates
///             text that reads back), decimal text
///   double    numbers, dates; number text, else date text       the rest
///   date      dates, date text, a number as a day number        the rest: a null date
///   string    everything: true/false; digits; plain decimal notation; a date in its exact form;
///             null, an infinite double and NaN, and a date without text give a null string
///
/// Blanks, tabs and line ends around texts are ignored. Overflow fails; nothing wraps. NaN
/// converts to a double and to nothing else.
///
/// Texts of up to 47 bytes and all numbers lie inside the object, and assigning into a variant that
/// has room allocates nothing: keep the variants of a row and assign to them again and again.
/// Nothing throws. A variant whose assignment found no memory is null and memoryShort() until the
/// next assignment; a table refuses the row that it is written in.
/// Thread rule: as for any value, no thread may read it while another changes it.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/ZvbDate.h"
#include "base/ZvbReal.h"
#include "base/ZvbString.h"
#include "base/ZvbText.h"
#include "base/zvb_export.h"
#include "base/zvb_type.h"

class ZVB_API ZvbDatavar {
 public:
  /// A null of type string.
  ZvbDatavar() noexcept = default;
  ZvbDatavar(const ZvbDatavar& other) noexcept
      : type_(other.type_),
        held_(other.held_),
        memoryShort_(other.memoryShort_),
        number_(other.number_) {
    copyText(other);
  }
  ZvbDatavar& operator=(const ZvbDatavar& other) noexcept {
    if (this != &other) {
      copy(other);
    }
    return *this;
  }
  virtual ~ZvbDatavar() = default;

  void assign(bool value) noexcept {
    hold(Held::boolean, zvbTypeBoolean);
    number_.boolean = value;
  }
  void assign(std::int64_t value) noexcept {
    hold(Held::integer, zvbTypeInteger);
    number_.integer = value;
  }
  /// Any other signed integer, which 64 bits always hold.
  template <std::signed_integral Integer>
  requires(sizeof(Integer) <= sizeof(std::int64_t)) void assign(Integer value) noexcept {
    assign(static_cast<std::int64_t>(value));
  }
  /// A real that keeps the exact double until it is asked for a decimal. Followed by
  /// setType(zvbTypeDate) it is a date of as many days.
  void assign(double value) noexcept {
    hold(Held::binary, zvbTypeReal);
    number_.binary = value;
  }
  /// A null pointer makes a null.
  void assign(const char* text) noexcept {
    assignText(text, text == nullptr ? 0 : std::strlen(text));
  }
  /// The first `size` bytes, or those before the first zero byte among them.
  void assign(const char* text, std::size_t size) noexcept {
    const void* end = text == nullptr ? nullptr : std::memchr(text, '\0', size);
    assignText(text, end == nullptr
                         ? size
                         : static_cast<std::size_t>(static_cast<const char*>(end) - text));
  }
  /// The first `size` bytes, none of which is zero, of a text behind whose start at least
  /// ZvbText::inlineCapacity + 1 bytes can be read: the fastest way for texts that lie in a buffer.
  void assignPadded(const char* text, std::size_t size) noexcept {
    type_ = zvbTypeString;
    memoryShort_ = !text_.assignPadded(text, size);
    held_ = memoryShort_ ? Held::null : Held::text;
  }
  /// A null string makes a null, an empty one does not.
  void assign(const ZvbString& text) noexcept {
    const bool isNull = text.isNull() || text.memoryShort();
    assignText(isNull ? nullptr : text.asCstr(), text.cStrSize() - 1);
    memoryShort_ = memoryShort_ || text.memoryShort();
  }
  /// A null number or date makes a null of that type.
  void assign(const ZvbReal& real) noexcept {
    hold(real.isNull() ? Held::null : Held::real, zvbTypeReal);
    real.asFD(&number_.packed);
  }
  void assign(const ZvbDate& date) noexcept {
    hold(date.isNull() ? Held::null : Held::date, zvbTypeDate);
    number_.binary = date.days();
  }
  /// From raw bytes: the 24 bytes of a packed real (see ZvbReal.h), the 8 bytes of an integer or of
  /// a date's days, the one byte of a boolean, the bytes of a text. `swap` when the numbers among
  /// them were written in the other byte order. A size that does not fit the type makes a null.
  void assign(zvbType type, const void* data, unsigned size, bool swap) noexcept {
    if (type == zvbTypeReal && data != nullptr && size == ZvbReal::packedSize) {
      std::uint64_t words[3];
      std::memcpy(words, data, sizeof words);
      assign(ZvbReal::fromFD(words, swap));
    } else {
      assignOther(type, data, size, swap);
    }
  }

  /// The conversions set *failed when the value cannot be converted (a null never can), and leave
  /// it alone otherwise: clear it first.
  [[nodiscard]] bool asBool(bool* failed) const noexcept {
    return held_ == Held::boolean ? number_.boolean : convertToBool(failed);
  }
  [[nodiscard]] std::int64_t asInt64(bool* failed) const noexcept {
    return held_ == Held::integer ? number_.integer : convertToInt64(failed);
  }
  /// For a date, its days since 1970-01-01.
  [[nodiscard]] double asDouble(bool* failed) const noexcept {
    return held_ == Held::date || held_ == Held::binary ? number_.binary : convertToDouble(failed);
  }
  [[nodiscard]] ZvbReal asReal(bool* failed) const noexcept {
    return held_ == Held::real ? packedReal() : convertToReal(failed);
  }
  /// A null date when the value cannot be converted.
  [[nodiscard]] ZvbDate asDate() const noexcept {
    return held_ == Held::date ? ZvbDate::fromDays(number_.binary) : convertToDate();
  }
  [[nodiscard]] ZvbString asString() const noexcept;

  /// The text itself, without a copy, when holdsText(); valid until the next change.
  [[nodiscard]] std::string_view asTextView() const noexcept { return text_.view(); }
  [[nodiscard]] bool holdsText() const noexcept { return held_ == Held::text; }
  /// Copies the text when holdsText(), one of up to ZvbText::inlineCapacity bytes with its
  /// terminator. There is room for the text and for ZvbText::inlineCapacity + 1 bytes at least:
  /// short texts are copied together with what lies behind them, which takes no decision on their
  /// size.
  void copyTextTo(char* room) const noexcept { text_.copyTo(room); }
  /// True for a real that has been assigned as a double and is held as one.
  [[nodiscard]] bool holdsDouble() const noexcept { return held_ == Held::binary; }

  [[nodiscard]] bool isNull() const noexcept { return held_ == Held::null; }
  /// Makes the value null and keeps the type.
  void setNull() noexcept {
    held_ = Held::null;
    memoryShort_ = false;
  }
  /// Converts the value in place. What cannot be converted becomes a null of that type, and the
  /// result is false. A null only changes its type; an unknown type counts as zvbTypeString.
  bool setType(zvbType type) noexcept {
    if (type == zvbTypeDate && held_ == Held::binary && number_.binary == number_.binary) {
      hold(Held::date, zvbTypeDate);
      return true;
    }
    return type == type_ || convertTo(type);
  }
  [[nodiscard]] zvbType type() const noexcept { return type_; }
  [[nodiscard]] bool memoryShort() const noexcept { return memoryShort_; }

 private:
  enum class Held : std::uint8_t { null, boolean, integer, real, binary, date, text };

  void hold(Held held, zvbType type) noexcept {
    held_ = held;
    type_ = type;
    memoryShort_ = false;
  }
  void assignText(const char* text, std::size_t size) noexcept {
    type_ = zvbTypeString;
    memoryShort_ = text != nullptr && !text_.assign(text, size);
    held_ = text == nullptr || memoryShort_ ? Held::null : Held::text;
  }
  void copy(const ZvbDatavar& other) noexcept {
    type_ = other.type_;
    held_ = other.held_;
    memoryShort_ = other.memoryShort_;
    number_ = other.number_;
    copyText(other);
  }
  void copyText(const ZvbDatavar& other) noexcept {
    if (held_ == Held::text && !text_.assign(other.text_)) [[unlikely]] {
      held_ = Held::null;
      memoryShort_ = true;
    }
  }

  /// What is no packed real.
  void assignOther(zvbType type, const void* data, unsigned size, bool swap) noexcept;
  [[nodiscard]] bool convertToBool(bool* failed) const noexcept;
  [[nodiscard]] std::int64_t convertToInt64(bool* failed) const noexcept;
  [[nodiscard]] double convertToDouble(bool* failed) const noexcept;
  [[nodiscard]] ZvbReal convertToReal(bool* failed) const noexcept;
  [[nodiscard]] ZvbDate convertToDate() const noexcept;
  /// The text of anything but a text; the result is its size, 0 when there is none.
  std::size_t writeText(char (&text)[ZvbReal::textCapacity]) const noexcept;
  [[nodiscard]] bool convertTo(zvbType type) noexcept;
  [[nodiscard]] ZvbReal packedReal() const noexcept { return ZvbReal::fromKnownFD(number_.packed); }

  zvbType type_ = zvbTypeString;
  Held held_ = Held::null;
  bool memoryShort_ = false;
  union {
    bool boolean;
    std::int64_t integer;
    double binary;            // a double as it was assigned, or the days of a date
    std::uint64_t packed[3];  // ZvbReal's packed form
  } number_ = {.packed = {0, 0, 0}};
  ZvbText text_;
};
