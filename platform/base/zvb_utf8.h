/// Walking over UTF-8 text of which nobody promises that it is valid.
///
/// A character is a code point in its shortest form, no surrogate, at most 0x10FFFF; every byte
/// that is no part of one is a character of its own. Internal to the base library; all functions
/// may be called from any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Added to a byte that is no part of valid UTF-8, so that it differs from every code point.
constexpr char32_t zvbInvalidByte = 0x110000;

struct ZvbCharacter {
  char32_t code;  // or zvbInvalidByte + the byte
  std::size_t size;
};

constexpr bool zvbIsAscii(char byte) noexcept { return static_cast<unsigned char>(byte) < 0x80; }

constexpr bool zvbIsContinuation(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Eight bytes at once; `text` has at least as many.
inline bool zvbIsAsciiWord(const char* text) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, text, sizeof word);
  return (word & 0x8080808080808080U) == 0;
}

/// The first character of `text`, which is not empty.
inline ZvbCharacter zvbDecode(std::string_view text) noexcept {
  // Of a continuation byte the six bits of the code point; more bits of any other byte.
  const auto bits = [text](std::size_t at) -> char32_t {
    return at < text.size() ? static_cast<unsigned char>(text[at]) ^ 0x80U : 0xFFU;
  };
  constexpr char32_t continuation = 0x40;
  const char32_t lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) {
    return {lead, 1};
  }
  if (lead >= 0xC2 && lead <= 0xDF && bits(1) < continuation) {
    return {(lead & 0x1FU) << 6U | bits(1), 2};
  }
  if (lead >= 0xE0 && lead <= 0xEF && (bits(1) | bits(2)) < continuation) {
    const char32_t code = (lead & 0x0FU) << 12U | bits(1) << 6U | bits(2);
    if (code >= 0x800 && (code < 0xD800 || code > 0xDFFF)) {
      return {code, 3};
    }
  }
  if (lead >= 0xF0 && lead <= 0xF4 && (bits(1) | bits(2) | bits(3)) < continuation) {
    const char32_t code = (lead & 0x07U) << 18U | bits(1) << 12U | bits(2) << 6U | bits(3);
    if (code >= 0x10000 && code <= 0x10FFFF) {
      return {code, 4};
    }
  }
  return {zvbInvalidByte + lead, 1};
}

struct ZvbWalk {
  std::size_t bytes = 0;
  std::size_t characters = 0;
};

/// Walks from the start over `limit` characters, or over all of them when there are fewer. The
/// bytes are the position of character `limit`, the characters the length when limit is no limit.
inline ZvbWalk zvbWalk(std::string_view text, std::size_t limit) noexcept {
  constexpr std::size_t word = sizeof(std::uint64_t);
  ZvbWalk done;
  while (done.bytes < text.size() && done.characters < limit) {
    const std::size_t most = std::min(text.size() - done.bytes, limit - done.characters);
    std::size_t ascii = 0;
    while (most - ascii >= word && zvbIsAsciiWord(text.data() + done.bytes + ascii)) {
      ascii += word;
    }
    while (ascii < most && zvbIsAscii(text[done.bytes + ascii])) {
      ++ascii;
    }
    done.bytes += ascii;
    done.characters += ascii;
    while (done.bytes < text.size() && done.characters < limit && !zvbIsAscii(text[done.bytes])) {
      done.bytes += zvbDecode(text.substr(done.bytes)).size;
      ++done.characters;
    }
  }
  return done;
}

/// The start of the character that byte `position` belongs to; the position itself at either end
/// of the text and between two characters. A first byte is never inside another character, so no
/// more than the three bytes before the position are looked at.
inline std::size_t zvbCharacterStart(std::string_view text, std::size_t position) noexcept {
  if (position >= text.size() || !zvbIsContinuation(text[position])) {
    return position;
  }
  for (std::size_t back = 1; back <= 3 && back <= position; ++back) {
    const std::size_t start = position - back;
    if (!zvbIsContinuation(text[start])) {
      return zvbDecode(text.substr(start)).size > back ? start : position;
    }
  }
  return position;
}
