/// The hand-written twin of the library: the same bytes put into a buffer and given to the
/// operating system, and read back from it, with nothing in between. What the library is measured
/// against.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SampleRows.h"

/// Writes data and index files; the number of data bytes, or -1.
[[nodiscard]] std::int64_t writeByHand(const std::vector<SampleRow>& rows,
                                       const std::string& dataPath, const std::string& indexPath);

/// Decodes every row into plain variables; a checksum of them.
[[nodiscard]] std::uint64_t readByHand(const std::string& dataPath);

/// What both sides add up of each value, so that no value can be left out.
class RowChecksum {
 public:
  void add(std::uint64_t value) { sum_ = sum_ * 31 + value; }
  void addText(const char* text, std::size_t size) {
    add(size == 0 ? 0 : static_cast<unsigned char>(text[0]) + size * 256);
  }
  [[nodiscard]] std::uint64_t value() const { return sum_; }

 private:
  std::uint64_t sum_ = 0;
};
