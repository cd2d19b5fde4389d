/// The rows that the benchmarks write: two integers, a decimal, a short and a longer text, a date
/// and a boolean, about 82 encoded bytes a row. Generated beforehand, the same for every run.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "zvwt.h"

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

[[nodiscard]] bool defineSampleColumns(ZvWorkTableFile& table);
void assignSample(const SampleRow& row, ZvbDatavar* values);

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

/// Adds up the values of a row, whatever gives them: `valueAt(column)` is a variant, or a reference
/// to one.
template <typename ValueAt>
void addSampleValues(const ValueAt& valueAt, RowChecksum* checksum) {
  bool failed = false;
  checksum->add(static_cast<std::uint64_t>(valueAt(0).asInt64(&failed)));
  checksum->add(static_cast<std::uint64_t>(valueAt(1).asInt64(&failed)));
  std::uint64_t words[3];
  valueAt(2).asReal(&failed).asFD(&words);
  checksum->add(words[1]);
  for (const int column : {3, 4}) {
    const ZvbDatavar& text = valueAt(column);
    checksum->addText(text.asTextView().data(), text.asTextView().size());
  }
  checksum->add(std::bit_cast<std::uint64_t>(valueAt(5).asDouble(&failed)));
  checksum->add(valueAt(6).asBool(&failed) ? 1 : 0);
  if (failed) {
    checksum->add(1);
  }
}

inline void addSample(const ZvbDatavar* values, RowChecksum* checksum) {
  addSampleValues([values](int column) -> const ZvbDatavar& { return values[column]; }, checksum);
}
