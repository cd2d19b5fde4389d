/// One kind of work on a number of rows, for counting the instructions that it takes: the
/// difference between two runs of different numbers of rows is free of what starting and ending
/// takes.
///
/// Modes that write leave their table and print its name; modes that read are given it. --list
/// prints each mode with its values per row and the mode that writes the table it reads.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "Measuring.h"
#include "SampleRows.h"
#include "zvwt.h"

namespace {

constexpr std::size_t preparedRows = 100;
constexpr int columnsOfOneType = 8;

struct Order {
  std::string mode;
  std::int64_t rows = 1000;
  std::string table;  ///< that is read
  std::string directory;
};

/// The columns of a table and how a row of them is filled.
struct Layout {
  int columns;
  std::function<bool(ZvWorkTableFile& table)> define;
  std::function<void(const SampleRow& row, ZvbDatavar* values)> fill;
};

struct ValueKind {
  const char* name;
  zvbType type;
  void (*assign)(const SampleRow& row, ZvbDatavar* value);
};

template <std::size_t size>
void assignText(const SampleRow& row, ZvbDatavar* value) {
  value->assign(std::string(size, row.code[0]).c_str(), size);
}

void assignDate(const SampleRow& row, ZvbDatavar* value) {
  value->assign(row.day);
  value->setType(zvbTypeDate);
}

const ValueKind valueKinds[] = {
    {"integer", zvbTypeInteger, [](const auto& row, auto* value) { value->assign(row.amount); }},
    {"real", zvbTypeReal,
     [](const auto& row, auto* value) {
       value->assign(zvbTypeReal, row.price, sizeof row.price, false);
     }},
    {"boolean", zvbTypeBoolean, [](const auto& row, auto* value) { value->assign(row.flag); }},
    {"text-8", zvbTypeString, assignText<8>},
    {"text-40", zvbTypeString, assignText<40>},
    {"text-200", zvbTypeString, assignText<200>},
    {"date", zvbTypeDate, assignDate},
    {"null", zvbTypeInteger, [](const auto&, auto* value) { value->setNull(); }},
};

Layout sampleLayout() { return {sampleColumnCount, defineSampleColumns, assignSample}; }

bool defineColumns(ZvWorkTableFile& table, zvbType type) {
  bool defined = true;
  for (int i = 0; i < columnsOfOneType; ++i) {
    const std::string name = "column" + std::to_string(i);
    defined = defined && table.defineColumn(i, name.c_str(), type, 0);
  }
  return defined;
}

Layout layoutOf(const ValueKind& kind) {
  return {columnsOfOneType,
          [&kind](ZvWorkTableFile& table) { return defineColumns(table, kind.type); },
          [&kind](const SampleRow& row, ZvbDatavar* values) {
            std::for_each_n(values, columnsOfOneType,
                            [&](ZvbDatavar& value) { kind.assign(row, &value); });
          }};
}

class Worker {
 public:
  explicit Worker(const Order& order) : order_(order), samples_(makeSampleRows(preparedRows)) {
    ZvbString error;
    manager_.reset(zvwtCreateManager("bench", order.directory.c_str(), &error));
    if (manager_ == nullptr) {
      stop("no manager", error);
    }
  }

  void writePrepared(const Layout& layout) {
    const auto columns = static_cast<std::size_t>(layout.columns);
    std::vector<ZvbDatavar> values(preparedRows * columns);
    for (std::size_t i = 0; i < preparedRows; ++i) {
      layout.fill(samples_[i], &values[i * columns]);
    }
    write(layout, [&](std::size_t row) { return &values[row % preparedRows * columns]; });
  }

  void writeAssigned() {
    ZvbDatavar values[sampleColumnCount];
    write(sampleLayout(), [&](std::size_t row) {
      assignSample(samples_[row % preparedRows], values);
      return values;
    });
  }

  /// `numbers` are the columns read; empty: all.
  void read(const std::vector<int>& numbers, bool backwards) {
    ZvbString error;
    const int count = numbers.empty() ? -1 : static_cast<int>(numbers.size());
    const Table table(manager_->openTable(order_.table.c_str(), count, numbers.data(), nullptr,
                                          backwards, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    std::vector<ZvbDatavar> values(static_cast<std::size_t>(table->getColumnCount()));
    std::int64_t rows = 0;
    bool end = false;
    while (table->readRow(values.data(), &end)) {
      ++rows;
    }
    require(end && rows == table->getRowCount(), "read", *table);
  }

  void copy() {
    ZvbString error;
    const Table table(manager_->copyTable(0, manager_.get(), order_.table.c_str(), &error));
    if (table == nullptr) {
      stop("copy", error);
    }
    closeWritten(*table);
  }

 private:
  template <typename RowMaker>
  void write(const Layout& layout, const RowMaker& makeRow) {
    ZvbString error;
    const Table table(manager_->createTable(layout.columns, 0, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    require(layout.define(*table), "column", *table);
    for (std::int64_t row = 0; row < order_.rows; ++row) {
      require(table->writeRow(makeRow(static_cast<std::size_t>(row))), "write", *table);
    }
    closeWritten(*table);
  }

  static void closeWritten(ZvWorkTableFile& table) {
    require(table.close(), "close", table);
    std::printf("%s\n", table.getName().asCstr());
  }

  Order order_;
  std::vector<SampleRow> samples_;
  Manager manager_;
};

struct Mode {
  std::string name;
  int valuesPerRow;
  std::string tableFrom;  ///< the mode that writes the table it reads, or "-"
  std::function<void(Worker& worker)> run;
};

std::vector<Mode> sampleModes() {
  const auto reading = [](const std::vector<int>& numbers, bool backwards = false) {
    return [numbers, backwards](Worker& worker) { worker.read(numbers, backwards); };
  };
  return {
      {"write", sampleColumnCount, "-", [](auto& worker) { worker.writePrepared(sampleLayout()); }},
      {"assign", sampleColumnCount, "-", [](auto& worker) { worker.writeAssigned(); }},
      {"read", sampleColumnCount, "write", reading({})},
      {"backwards", sampleColumnCount, "write", reading({}, true)},
      {"first-two", 2, "write", reading({0, 1})},
      {"last-two", 2, "write", reading({sampleColumnCount - 2, sampleColumnCount - 1})},
      {"copy", sampleColumnCount, "write", [](auto& worker) { worker.copy(); }},
  };
}

std::vector<Mode> allModes() {
  std::vector<Mode> modes = sampleModes();
  for (const ValueKind& kind : valueKinds) {
    const std::string write = std::string("write-") + kind.name;
    modes.push_back({write, columnsOfOneType, "-",
                     [&kind](Worker& worker) { worker.writePrepared(layoutOf(kind)); }});
    modes.push_back({std::string("read-") + kind.name, columnsOfOneType, write,
                     [](Worker& worker) { worker.read({}, false); }});
  }
  return modes;
}

void list(const std::vector<Mode>& modes) {
  for (const Mode& mode : modes) {
    std::printf("%s %d %s\n", mode.name.c_str(), mode.valuesPerRow, mode.tableFrom.c_str());
  }
}

void run(const Order& order, const std::vector<Mode>& modes) {
  const auto mode = std::find_if(modes.begin(), modes.end(),
                                 [&](const Mode& entry) { return entry.name == order.mode; });
  if (mode == modes.end()) {
    stop("no such mode", order.mode.c_str());
  }
  Worker worker(order);
  mode->run(worker);
}

int obey(int argc, char** argv) {
  CLI::App app("One kind of work on rows, for counting its instructions.");
  Order order;
  bool lists = false;
  app.add_option("mode", order.mode, "what to do");
  app.add_option("--rows", order.rows, "rows that are written");
  app.add_option("--table", order.table, "table that is read");
  app.add_option("--dir", order.directory, "directory of the tables");
  app.add_flag("--list", lists, "print the modes");
  CLI11_PARSE(app, argc, argv);
  const std::vector<Mode> modes = allModes();
  if (lists) {
    list(modes);
  } else {
    run(order, modes);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return obey(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
