#include "base/ZvbString.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "base/zvb_fold.h"
#include "base/zvb_utf8.h"

namespace {

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();
constexpr std::size_t nowhere = std::string_view::npos;

int compareExact(std::string_view left, std::string_view right) noexcept {
  return left.compare(right);
}

/// How many bytes at the start are ASCII on both sides and equal but for their case.
std::size_t sameAsciiStart(std::string_view left, std::string_view right) noexcept {
  const std::size_t most = std::min(left.size(), right.size());
  std::size_t at = 0;
  while (at < most && zvbIsAscii(left[at]) && zvbIsAscii(right[at]) &&
         zvbFold(static_cast<unsigned char>(left[at])) ==
             zvbFold(static_cast<unsigned char>(right[at]))) {
    ++at;
  }
  return at;
}

int compareFolded(std::string_view left, std::string_view right) noexcept {
  const std::size_t same = sameAsciiStart(left, right);
  left.remove_prefix(same);
  right.remove_prefix(same);
  while (!left.empty() && !right.empty()) {
    const ZvbCharacter leftNext = zvbDecode(left);
    const ZvbCharacter rightNext = zvbDecode(right);
    const char32_t leftFolded = zvbFold(leftNext.code);
    const char32_t rightFolded = zvbFold(rightNext.code);
    if (leftFolded != rightFolded) {
      return leftFolded < rightFolded ? -1 : 1;
    }
    left.remove_prefix(leftNext.size);
    right.remove_prefix(rightNext.size);
  }
  return static_cast<int>(right.empty()) - static_cast<int>(left.empty());
}

int compareViews(std::string_view left, std::string_view right, bool exact) noexcept {
  return exact ? compareExact(left, right) : compareFolded(left, right);
}

bool isBetweenCharacters(std::string_view text, std::size_t position) noexcept {
  return zvbCharacterStart(text, position) == position;
}

/// The byte at which `what`, made of whole characters of the text, begins at or after `from`.
std::size_t findBytes(std::string_view text, std::string_view what, std::size_t from) noexcept {
  std::size_t at = text.find(what, from);
  while (at != nowhere &&
         !(isBetweenCharacters(text, at) && isBetweenCharacters(text, at + what.size()))) {
    at = text.find(what, at + 1);
  }
  return at;
}

template <typename Number>
std::string_view writeDigits(char (&digits)[24], Number number) noexcept {
  const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  return {digits, static_cast<std::size_t>(end - digits)};
}

}  // namespace

ZvbString::ZvbString(const char* text, bool /*literal*/) noexcept { assign(text); }

ZvbString& ZvbString::operator=(const ZvbString& other) noexcept {
  if (this != &other) {
    if (other.isNull_) {
      setNull();
    } else {
      assign(other.text_);
    }
    memoryShort_ = memoryShort_ || other.memoryShort_;
  }
  return *this;
}

ZvbString& ZvbString::operator=(ZvbString&& other) noexcept {
  if (this != &other) {
    text_.take(other.text_);
    isNull_ = other.isNull_;
    memoryShort_ = other.memoryShort_;
    other.isNull_ = false;
    other.memoryShort_ = false;
  }
  return *this;
}

ZvbString ZvbString::outOfMemory() noexcept {
  ZvbString result(nullptr);
  result.memoryShort_ = true;
  return result;
}

void ZvbString::assign(const char* text) noexcept {
  assignBytes(text, text == nullptr ? 0 : std::strlen(text));
}

void ZvbString::assign(const char* text, std::size_t size) noexcept {
  const void* zero = text == nullptr ? nullptr : std::memchr(text, '\0', size);
  assignBytes(text, zero == nullptr
                        ? size
                        : static_cast<std::size_t>(static_cast<const char*>(zero) - text));
}

void ZvbString::assign(int number) noexcept { assign(std::int64_t{number}); }

void ZvbString::assign(std::int64_t number) noexcept {
  char digits[24];
  const std::string_view text = writeDigits(digits, number);
  assignBytes(text.data(), text.size());
}

void ZvbString::append(const char* text, bool* failed) noexcept {
  *failed = text != nullptr && !text_.append(text, std::strlen(text));
  isNull_ = isNull_ && (*failed || text == nullptr);
}

void ZvbString::append(const ZvbString& text, bool* failed) noexcept {
  *failed = text.memoryShort_ || !text_.append(text.asCstr(), text.text_.size());
  isNull_ = isNull_ && (*failed || text.isNull_);
}

int ZvbString::compare(const ZvbString& other, bool exact) const noexcept {
  return compareViews(asView(), other.asView(), exact);
}

int ZvbString::compare(const char* other, bool exact) const noexcept {
  return compareViews(asView(), other == nullptr ? std::string_view() : other, exact);
}

int ZvbString::find(const ZvbString& what, int start) const noexcept {
  const std::string_view text = asView();
  const ZvbWalk before = zvbWalk(text, start < 0 ? 0 : static_cast<std::size_t>(start));
  if (start > 0 && before.characters < static_cast<std::size_t>(start)) {
    return -1;
  }
  const std::size_t at = findBytes(text, what.asView(), before.bytes);
  if (at == nowhere) {
    return -1;
  }
  const std::string_view between = text.substr(before.bytes, at - before.bytes);
  return static_cast<int>(before.characters + zvbWalk(between, noLimit).characters);
}

ZvbString ZvbString::mid(unsigned start, int count) const noexcept {
  if (isNull_) {
    return *this;
  }
  const std::string_view rest = asView().substr(zvbWalk(asView(), start).bytes);
  const std::size_t limit = count < 0 ? noLimit : static_cast<std::size_t>(count);
  ZvbString result;
  result.assignBytes(rest.data(), zvbWalk(rest, limit).bytes);
  return result;
}

ZvbString ZvbString::replace(const ZvbString& what, const ZvbString& with, unsigned start,
                             int count) const noexcept {
  if (isNull_ || what.isEmpty()) {
    return *this;
  }
  const std::string_view text = asView();
  ZvbString result;
  bool added = true;
  std::size_t done = 0;
  std::size_t from = zvbWalk(text, start).bytes;
  for (int left = count; left != 0 && added; left -= left > 0 ? 1 : 0) {
    const std::size_t at = findBytes(text, what.asView(), from);
    if (at == nowhere) {
      break;
    }
    added = result.text_.append(text.data() + done, at - done) &&
            result.text_.append(with.asCstr(), with.text_.size());
    done = at + what.text_.size();
    from = done;
  }
  if (!added || !result.text_.append(text.data() + done, text.size() - done)) {
    return outOfMemory();
  }
  return result;
}

void ZvbString::truncate(unsigned length) noexcept {
  text_.truncate(zvbWalk(asView(), length).bytes);
}

unsigned ZvbString::length() const noexcept {
  return static_cast<unsigned>(zvbWalk(asView(), noLimit).characters);
}

std::size_t zvbFoldText(std::string_view text, char* folded) noexcept {
  char* next = folded;
  while (!text.empty()) {
    const ZvbCharacter character = zvbDecode(text);
    const char32_t code = zvbFold(character.code);
    if (code < 0x80) {
      *next++ = static_cast<char>(code);
    } else if (code < zvbFoldEnd) {
      *next++ = static_cast<char>(0xC0U | (code >> 6U));
      *next++ = static_cast<char>(0x80U | (code & 0x3FU));
    } else if (code < zvbInvalidByte) {
      std::memcpy(next, text.data(), character.size);
      next += character.size;
    } else {  // sorts above all characters, none of which begins with this byte
      *next++ = '\xFF';
      *next++ = text[0];
    }
    text.remove_prefix(character.size);
  }
  return static_cast<std::size_t>(next - folded);
}

std::size_t zvbCutAtCharacter(const char* text, std::size_t size, std::size_t limit) noexcept {
  return limit >= size ? size : zvbCharacterStart({text, size}, limit);
}

ZvbString zvbStringFormat(const char* format, ...) noexcept {
  if (format == nullptr) {
    return {nullptr};
  }
  char shortText[256];
  std::va_list arguments;
  va_start(arguments, format);
  const int size = std::vsnprintf(shortText, sizeof shortText, format, arguments);
  va_end(arguments);
  if (size < 0) {
    return {nullptr};
  }
  if (static_cast<std::size_t>(size) < sizeof shortText) {
    return {shortText};
  }
  const std::size_t room = static_cast<std::size_t>(size) + 1;
  const std::unique_ptr<char[]> text(new (std::nothrow) char[room]);
  if (text == nullptr) {
    return ZvbString::outOfMemory();
  }
  va_start(arguments, format);
  const int written = std::vsnprintf(text.get(), room, format, arguments);
  va_end(arguments);
  return {written == size ? text.get() : nullptr};
}
