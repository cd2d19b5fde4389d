/// The rows that the benchmarks write: two integers, a decimal, a short and a longer text, a date
/// and a boolean, about 82 encoded bytes a row. Generated beforehand, the same for every run.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct SampleRow {
  std::int64_t id;
  std::int64_t amount;
  std::uint64_t price[3];  // packed decimal
  char code[12];           // about 6 bytes of text
  char name[28];           // 8 to 24 bytes of text
  double day;
  bool flag;
};

inline constexpr int sampleColumnCount = 7;

[[nodiscard]] std::vector<SampleRow> makeSampleRows(std::size_t count);
