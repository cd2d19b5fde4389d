#include "SampleRows.h"

#include <random>

#include "base/ZvbReal.h"

namespace {

template <std::size_t size>
void fillText(char (&text)[size], std::size_t length, std::mt19937_64& random) {
  for (std::size_t i = 0; i < length; ++i) {
    text[i] = static_cast<char>('a' + random() % 26);
  }
  text[length] = '\0';
}

}  // namespace

std::vector<SampleRow> makeSampleRows(std::size_t count) {
  std::mt19937_64 random(20240229);
  std::vector<SampleRow> rows(count);
  for (std::size_t i = 0; i < count; ++i) {
    SampleRow& row = rows[i];
    row.id = static_cast<std::int64_t>(i);
    row.amount = static_cast<std::int64_t>(random() % 1000000000) - 500000000;
    bool failed = false;
    const std::string cents = std::to_string(random() % 10000000) + ".99";
    ZvbReal::fromText(cents, &failed).asFD(&row.price);
    fillText(row.code, 5 + random() % 3, random);
    fillText(row.name, 8 + random() % 17, random);
    row.day = static_cast<double>(random() % 30000) + 0.25;
    row.flag = random() % 2 == 0;
  }
  return rows;
}
