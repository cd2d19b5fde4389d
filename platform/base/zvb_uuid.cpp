#include "base/zvb_uuid.h"

#include <array>
#include <cstdint>

#include "base/zvb_random.h"

namespace {

using UuidBytes = std::array<std::uint8_t, 16>;

/// The bits that say "version 4" and "variant of RFC 4122".
void markAsRandom(UuidBytes& bytes) noexcept {
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x40U);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);
}

bool dashFollows(std::size_t byteIndex) noexcept {
  return byteIndex == 3 || byteIndex == 5 || byteIndex == 7 || byteIndex == 9;
}

}  // namespace

ZvbString zvbGetUUID() noexcept {
  UuidBytes bytes;
  ZvbString uuid;
  if (!zvbRandomBytes(bytes.data(), bytes.size())) {
    return uuid;
  }
  markAsRandom(bytes);
  static constexpr char digits[] = "0123456789abcdef";
  std::array<char, 36> text;
  char* end = text.data();
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    *end++ = digits[bytes[index] >> 4U];
    *end++ = digits[bytes[index] & 0x0FU];
    if (dashFollows(index)) {
      *end++ = '-';
    }
  }
  uuid.assign(text.data(), text.size());
  return uuid;
}
