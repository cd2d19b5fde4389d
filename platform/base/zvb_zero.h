/// Where a text ends.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/ZvbText.h"

/// The bytes before the first zero among the first `size`, or `size` when there is none. `size` is
/// at most ZvbText::inlineCapacity + 1, and as many bytes can be read at `text` in any case: what
/// lies behind the text is looked at, so that nothing has to be decided on its size.
inline std::size_t zvbPaddedTextSize(const char* text, std::size_t size) noexcept {
#if defined(__SSE2__)
  static_assert(ZvbText::inlineCapacity + 1 == 3 * sizeof(__m128i));
  const __m128i zero = _mm_setzero_si128();
  const auto zerosAt = [text, zero](std::size_t at) {
    __m128i piece;
    std::memcpy(&piece, text + at, sizeof piece);
    return static_cast<std::uint64_t>(
        static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(piece, zero))));
  };
  const std::uint64_t end = std::uint64_t{1} << size;
  return static_cast<std::size_t>(
      std::countr_zero(zerosAt(0) | zerosAt(16) << 16 | zerosAt(32) << 32 | end));
#else
  const void* zero = std::memchr(text, '\0', size);
  return zero == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(zero) - text);
#endif
}
