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
