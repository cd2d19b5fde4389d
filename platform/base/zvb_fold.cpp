#include "base/zvb_fold.h"

#include <cstddef>

namespace {

using FoldTable = std::array<std::uint16_t, zvbFoldEnd>;

/// Capitals at every `step`-th code point from `first` to `last` fold to the one `distance` on.
struct Capitals {
  int first;
  int last;
  int distance;
  int step;
};

constexpr Capitals capitals[] = {
    // ASCII and Latin-1, the micro sign being the Greek letter
    {0x41, 0x5A, 32, 1},
    {0xB5, 0xB5, 0x3BC - 0xB5, 1},
    {0xC0, 0xD6, 32, 1},
    {0xD8, 0xDE, 32, 1},
    // Latin Extended-A: capitals alternate with their small letters; the long s is an s
    {0x100, 0x12E, 1, 2},
    {0x132, 0x136, 1, 2},
    {0x139, 0x147, 1, 2},
    {0x14A, 0x176, 1, 2},
    {0x178, 0x178, 0xFF - 0x178, 1},
    {0x179, 0x17D, 1, 2},
    {0x17F, 0x17F, 0x73 - 0x17F, 1},
    // Greek: the combining iota, archaic letters, letters with accents, the alphabet
    {0x345, 0x345, 0x3B9 - 0x345, 1},
    {0x370, 0x372, 1, 2},
    {0x376, 0x376, 1, 1},
    {0x37F, 0x37F, 0x3F3 - 0x37F, 1},
    {0x386, 0x386, 0x3AC - 0x386, 1},
    {0x388, 0x38A, 37, 1},
    {0x38C, 0x38C, 64, 1},
    {0x38E, 0x38F, 63, 1},
    {0x391, 0x3A1, 32, 1},
    {0x3A3, 0x3AB, 32, 1},
    // final sigma, letters in the shape of symbols, archaic and Coptic letters
    {0x3C2, 0x3C2, 1, 1},
    {0x3CF, 0x3CF, 0x3D7 - 0x3CF, 1},
    {0x3D0, 0x3D0, 0x3B2 - 0x3D0, 1},
    {0x3D1, 0x3D1, 0x3B8 - 0x3D1, 1},
    {0x3D5, 0x3D5, 0x3C6 - 0x3D5, 1},
    {0x3D6, 0x3D6, 0x3C0 - 0x3D6, 1},
    {0x3D8, 0x3EE, 1, 2},
    {0x3F0, 0x3F0, 0x3BA - 0x3F0, 1},
    {0x3F1, 0x3F1, 0x3C1 - 0x3F1, 1},
    {0x3F4, 0x3F4, 0x3B8 - 0x3F4, 1},
    {0x3F5, 0x3F5, 0x3B5 - 0x3F5, 1},
    {0x3F7, 0x3F7, 1, 1},
    {0x3F9, 0x3F9, 0x3F2 - 0x3F9, 1},
    {0x3FA, 0x3FA, 1, 1},
    {0x3FD, 0x3FF, 0x37B - 0x3FD, 1},
    // Cyrillic and its supplement
    {0x400, 0x40F, 80, 1},
    {0x410, 0x42F, 32, 1},
    {0x460, 0x480, 1, 2},
    {0x48A, 0x4BE, 1, 2},
    {0x4C0, 0x4C0, 15, 1},
    {0x4C1, 0x4CD, 1, 2},
    {0x4D0, 0x52E, 1, 2},
};

constexpr FoldTable makeFoldTable() {
  FoldTable table = {};
  for (std::size_t code = 0; code < table.size(); ++code) {
    table[code] = static_cast<std::uint16_t>(code);
  }
  for (const Capitals& range : capitals) {
    for (int code = range.first; code <= range.last; code += range.step) {
      table[static_cast<std::size_t>(code)] = static_cast<std::uint16_t>(code + range.distance);
    }
  }
  return table;
}

}  // namespace

constexpr FoldTable zvbFoldTable = makeFoldTable();
