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

bool defineSampleColumns(ZvWorkTableFile& table) {
  const zvbType types[] = {zvbTypeInteger, zvbTypeInteger, zvbTypeReal,   zvbTypeString,
                           zvbTypeString,  zvbTypeDate,    zvbTypeBoolean};
  const char* names[] = {"id", "amount", "price", "code", "name", "day", "flag"};
  bool defined = true;
  for (int i = 0; i < sampleColumnCount; ++i) {
    defined = defined && table.defineColumn(i, names[i], types[i], 0);
  }
  return defined;
}

void assignSample(const SampleRow& row, ZvbDatavar* values) {
  values[0].assign(row.id);
  values[1].assign(row.amount);
  values[2].assign(zvbTypeReal, row.price, sizeof row.price, false);
  values[3].assign(row.code);
  values[4].assign(row.name);
  values[5].assign(row.day);
  values[5].setType(zvbTypeDate);
  values[6].assign(row.flag);
}
