#include "exchange/Printing.h"

#include <bit>
#include <cstdio>

#include "exchange/SampleTables.h"
#include "support/TemporaryDirectory.h"

namespace {

std::string bitsOf(double number) { return std::to_string(std::bit_cast<std::uint64_t>(number)); }

std::string digitsOf(const ZvbReal& real) {
  char text[ZvbReal::textCapacity];
  return {text, real.toText(text)};
}

/// What a value is taken for: "-" where it is no such thing.
std::string shown(const ZvbDatavar& value) {
  std::string line = std::to_string(value.type());
  const auto add = [&line](const auto& convert) {
    bool failed = false;
    const std::string converted = convert(&failed);
    line += ' ' + (failed ? "-" : converted);
  };
  add([&](bool* failed) { return std::to_string(value.asBool(failed) ? 1 : 0); });
  add([&](bool* failed) { return std::to_string(value.asInt64(failed)); });
  add([&](bool* failed) { return digitsOf(value.asReal(failed)); });
  add([&](bool* failed) { return bitsOf(value.asDouble(failed)); });
  add([&](bool* failed) {
    const ZvbDate date = value.asDate();
    *failed = date.isNull();
    return bitsOf(date.days());
  });
  return line + ' ' + (value.isNull() ? "null" : value.asString().asCstr());
}

void print(const std::string& line) { (void)std::printf("%s\n", line.c_str()); }

class TablePrinter {
 public:
  TablePrinter(ZvWorkTableManager& manager, const std::string& name)
      : manager_(manager), name_(name) {}

  void printAll() {
    check();
    for (const bool backwards : {false, true}) {
      printOpened("all rows", open({}, backwards));
      for (const RowRange& range : {RowRange{0, 1}, {7, 150}, {99, -1}, {299, 5}, {300, -1}}) {
        printOpened("a range", open(range, backwards));
      }
      printOpened(
          "columns by a URI",
          openUri("?rows=5,120&col=text&col=number,again&col=id&col=k,42,2&col=n,,3", backwards));
    }
    printOpened("columns by their numbers", openNumbers({7, 0, 5}));
    printOpened("the last column", openNumbers({8}));
    printCursor("texts", zvwt::StringCursor(zvwtCreateStringCursor(&manager_)));
    printCursor("values", zvwt::Cursor(zvwtCreateCursor(&manager_)));
    printStatistics();
    printParts();
    printCopy();
  }

 private:
  zvwt::Table take(ZvWorkTableFile* table) const {
    if (table == nullptr) {
      fail("open", error_);
    }
    return zvwt::Table(table);
  }
  zvwt::Table open(const RowRange& range, bool backwards) {
    const ZvbString* all = nullptr;
    return take(manager_.openTable(name_.c_str(), -1, all, &range, backwards, &error_));
  }
  zvwt::Table openUri(const std::string& selection, bool backwards) {
    return take(manager_.openTable(("zvwt:" + name_ + selection).c_str(), backwards, &error_));
  }
  zvwt::Table openNumbers(const std::vector<int>& numbers) {
    return take(manager_.openTable(name_.c_str(), static_cast<int>(numbers.size()), numbers.data(),
                                   nullptr, false, &error_));
  }

  void check() {
    std::int64_t findings = 0;
    if (!zvwtCheckTable(&manager_, name_.c_str(), nullptr, nullptr, &findings, &error_)) {
      fail("check", error_);
    }
    if (findings != 0) {
      fail("check", "there are findings");
    }
  }

  void printOpened(const std::string& title, const zvwt::Table& table) {
    print("-- " + title + ", of " + std::to_string(table->getRowCount()));
    zvwt::Rows rows(*table);
    for (const std::span<const ZvbDatavar> row : rows) {
      for (const ZvbDatavar& value : row) {
        print(shown(value));
      }
    }
    if (!rows.complete()) {
      fail("read", table->getErrorMessage());
    }
  }

  static std::string shownInCursor(const ZvbDatavar& value) { return shown(value); }
  static std::string shownInCursor(const ZvbString& text) { return text.asCstr(); }

  template <typename CursorHandle>
  void printCursor(const std::string& title, const CursorHandle& cursor) {
    cursor->setRemoveOnClose(false);
    if (!cursor->setWorkTable(open({}, false).release())) {
      fail("cursor", cursor->errorMessage());
    }
    print("-- " + title + " by a cursor");
    printRows(*cursor);
  }

  template <typename Cursor>
  static void printRows(Cursor& cursor) {
    zvwt::CursorRows rows(cursor);
    for (const auto row : rows) {
      for (int i = 0; i < row.size(); ++i) {
        print(shownInCursor(row[i]));
      }
    }
    if (!rows.complete()) {
      fail("cursor", cursor.errorMessage());
    }
  }

  void printStatistics() {
    print("-- statistics");
    const zvwt::Table table = open({}, false);
    const zvwt::Statistics statistics(table->getStatistics());
    if (statistics == nullptr) {
      fail("statistics", table->getErrorMessage());
    }
    printRows(*statistics);
  }

  void printParts() {
    RowRange ranges[20];
    int count = static_cast<int>(std::size(ranges));
    if (!manager_.partitionTable(name_.c_str(), &count, ranges, &error_)) {
      fail("partition", error_);
    }
    print("-- parts");
    for (int i = 0; i < count; ++i) {
      print(std::to_string(ranges[i].firstRow) + ", " + std::to_string(ranges[i].rowCount));
    }
  }

  /// A copy has the byte order of the machine that makes it.
  void printCopy() {
    const TemporaryDirectory directory;
    const zvwt::Manager own = openDirectory(directory.path());
    const zvwt::Table copy = take(own->copyTable(10000, &manager_, name_.c_str(), &error_));
    if (!copy->close()) {
      fail("copy", copy->getErrorMessage());
    }
    const ZvbString name = copy->getName();
    printOpened("a copy", take(own->openTable(name, false, &error_)));
  }

  ZvWorkTableManager& manager_;
  const std::string name_;
  ZvbString error_;
};

}  // namespace

void printTable(ZvWorkTableManager& manager, const std::string& name) {
  TablePrinter(manager, name).printAll();
}
