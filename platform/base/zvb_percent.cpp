#include "base/zvb_percent.h"

#include <charconv>
#include <cstddef>

namespace {

/// Appends bytes to a string, many at a time.
class Appender {
 public:
  explicit Appender(ZvbString* target) noexcept : target_(target) {}

  void add(char byte) noexcept {
    if (used_ == sizeof piece_ - 1) {
      (void)flush();  // a failure is remembered
    }
    piece_[used_++] = byte;
  }

  /// True when all bytes have found room.
  [[nodiscard]] bool flush() noexcept {
    piece_[used_] = '\0';
    bool failed = false;
    target_->append(piece_, &failed);
    failed_ = failed_ || failed;
    used_ = 0;
    return !failed_;
  }

 private:
  ZvbString* target_;
  bool failed_ = false;
  std::size_t used_ = 0;
  char piece_[128];
};

constexpr bool standsForItself(char byte) noexcept {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

/// The byte that the two characters at the start of `digits` stand for, or -1.
int readHexByte(std::string_view digits) noexcept {
  unsigned value = 0;
  if (digits.size() < 2 ||
      std::from_chars(digits.data(), digits.data() + 2, value, 16).ptr != digits.data() + 2) {
    return -1;
  }
  return static_cast<int>(value);
}

}  // namespace

void zvbAppendEncoded(std::string_view text, ZvbString* target, bool* failed) noexcept {
  static constexpr char digits[] = "0123456789ABCDEF";
  Appender appender(target);
  for (const char byte : text) {
    if (standsForItself(byte)) {
      appender.add(byte);
    } else {
      const auto value = static_cast<unsigned char>(byte);
      appender.add('%');
      appender.add(digits[value >> 4U]);
      appender.add(digits[value & 0x0FU]);
    }
  }
  *failed = !appender.flush() || *failed;
}

bool zvbDecodePercent(std::string_view text, ZvbString* decoded) noexcept {
  decoded->assign("");
  Appender appender(decoded);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      appender.add(text[i]);
      continue;
    }
    const int byte = readHexByte(text.substr(i + 1));
    if (byte <= 0) {
      return false;
    }
    appender.add(static_cast<char>(byte));
    i += 2;
  }
  if (!appender.flush()) {
    *decoded = ZvbString::outOfMemory();
    return false;
  }
  return true;
}
