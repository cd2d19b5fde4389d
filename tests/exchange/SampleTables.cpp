#include "exchange/SampleTables.h"

#include <fstream>
#include <stdexcept>

namespace {

struct Column {
  const char* name;
  zvbType type;
  int width = 0;
};

constexpr Column columns[] = {
    {"id", zvbTypeInteger},  {"flag", zvbTypeBoolean},    {"number", zvbTypeInteger},
    {"amount", zvbTypeReal}, {"measure", zvbTypeReal},    {"moment", zvbTypeDate},
    {"text", zvbTypeString}, {"code", zvbTypeString, 10}, {"nothing", zvbTypeInteger}};
constexpr int columnCount = std::size(columns);

struct Kind {
  int rowCount;
  std::int64_t maxElementSize = 0;
  bool isSorted = false;
};
constexpr Kind kinds[] = {{300}, {300, 4096}, {300, 50000, true}, {0}};

/// Texts that a column converts, or stores as a null: the last of each list.
constexpr const char* flags[] = {"true", "no", nullptr, "maybe"};
constexpr const char* numbers[] = {
    "0", "-1", "258", "9223372036854775807", "-9223372036854775808", nullptr, "many"};
constexpr const char* amounts[] = {"0",
                                   "-0.5",
                                   "12.30",
                                   "99999999999999999999999999999999999999",
                                   "-12345678901234567890.1234567890123456",
                                   "1e-300",
                                   "-7e2000000000",
                                   "18446744073709551616",
                                   nullptr,
                                   "much"};
constexpr std::size_t textSizes[] = {0, 1, 46, 47, 48, 126, 127, 128, 300, 2000};
constexpr std::size_t longestText = 70000;  // more than a file's buffer holds

template <typename List>
const char* pick(const List& list, int number) {
  return list[static_cast<std::size_t>(number) % std::size(list)];
}

/// Of characters of one to four bytes, the last of which may be cut.
std::string sampleText(int row) {
  const std::size_t size =
      row == 137 ? longestText : textSizes[static_cast<std::size_t>(row) % std::size(textSizes)];
  std::string text = std::to_string(row % 7);
  while (text.size() < size) {
    text += "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
  }
  return text.substr(0, size);
}

void fillRow(int row, ZvbDatavar* values) {
  values[0].assign(row);
  values[1].assign(pick(flags, row));
  values[2].assign(pick(numbers, row));
  values[3].assign(pick(amounts, row));
  values[4].assign((row - 150) / 7.0);
  values[5].assign(row * 1000 / 11.0);
  values[5].setType(zvbTypeDate);
  values[6].assign(sampleText(row).c_str());
  values[7].assign(("code " + std::to_string(row) + "\xC3\xA9\xC3\xA9").c_str());
  values[8].setNull();
}

/// Returns the table's name.
std::string writeTable(ZvWorkTableManager& manager, const Kind& kind) {
  ZvbString error;
  const zvwt::Table table(
      manager.createTable(columnCount, kind.isSorted ? 2 : 0, kind.maxElementSize, &error));
  if (table == nullptr) {
    fail("create", error);
  }
  bool good = true;
  for (int i = 0; i < columnCount; ++i) {
    good = good && table->defineColumn(i, columns[i].name, columns[i].type, columns[i].width);
  }
  if (kind.isSorted) {
    table->setSortColumn(0, 3, true, 2);
    table->setSortColumn(1, 6, false, 1);
    table->setSortOptionA(65536);  // so that it takes work files
  }
  ZvbDatavar values[columnCount];
  for (int row = 0; good && row < kind.rowCount; ++row) {
    fillRow(row, values);
    good = table->writeRow(values);
  }
  if (!good || !table->close()) {
    fail("write", table->getErrorMessage());
  }
  return table->getName().asCstr();
}

std::string listOf(const std::string& directory) { return directory + "/names"; }

}  // namespace

void fail(const std::string& what, const ZvbString& reason) {
  throw std::runtime_error(what + ": " + reason.asCstr());
}

zvwt::Manager openDirectory(const std::string& directory) {
  ZvbString error;
  zvwt::Manager manager(zvwtCreateManager("exchange", directory.c_str(), &error));
  if (manager == nullptr) {
    fail("manager", error);
  }
  return manager;
}

void writeTables(const std::string& directory) {
  const zvwt::Manager manager = openDirectory(directory);
  std::ofstream list(listOf(directory), std::ios::binary);
  for (const Kind& kind : kinds) {
    list << writeTable(*manager, kind) << '\n';
  }
}

std::vector<std::string> tableNames(const std::string& directory) {
  std::ifstream list(listOf(directory), std::ios::binary);
  std::vector<std::string> names;
  for (std::string name; std::getline(list, name);) {
    names.push_back(name);
  }
  if (names.size() != std::size(kinds)) {
    fail(listOf(directory), "not all tables are listed");
  }
  return names;
}
