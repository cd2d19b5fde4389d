#include "TableEngine.h"

namespace {

constexpr std::uint32_t amountColumn = 1;
constexpr std::uint32_t nameColumn = 4;

void setKeys(ZvWorkTableFile& table, SortOrder order) {
  const bool amountFirst = order == SortOrder::amountName;
  table.setSortColumn(0, amountFirst ? amountColumn : nameColumn, false, 0);
  table.setSortColumn(1, amountFirst ? nameColumn : amountColumn, false, 0);
}

RowView viewOf(const ZvbDatavar* values) {
  bool failed = false;
  std::uint64_t price[3];
  values[2].asReal(&failed).asFD(&price);
  const RowView row{
      values[0].asInt64(&failed), values[1].asInt64(&failed), static_cast<std::int64_t>(price[1]),
      values[3].asTextView(),     values[4].asTextView(),     values[5].asDouble(&failed),
      values[6].asBool(&failed)};
  if (failed) {
    stop("a value is not of its type", ZvbString());
  }
  return row;
}

}  // namespace

TableEngine::TableEngine(const std::string& directory, const TableEngineSettings& settings)
    : settings_(settings) {
  ZvbString error;
  manager_.reset(zvwtCreateManager("bench", directory.c_str(), &error));
  if (manager_ == nullptr) {
    stop("no manager", error);
  }
  if (!manager_->sortAndSize1(settings.secondThread)) {
    stop("threads", manager_->getLastError());
  }
  if (!zvwtSetSortProgress(manager_.get(), keepProgress, this, &error)) {
    stop("progress", error);
  }
}

TableEngine::~TableEngine() {
  ZvbString ignored;
  if (name_.length() != 0) {
    static_cast<void>(manager_->deleteTable(name_, &ignored));
  }
}

Table TableEngine::create(SortOrder order) {
  const int keyCount = order == SortOrder::none ? 0 : 2;
  ZvbString error;
  Table table(manager_->createTable(sampleColumnCount, keyCount, 0, &error));
  if (table == nullptr) {
    stop("no table", error);
  }
  require(defineSampleColumns(*table), "column", *table);
  if (keyCount != 0) {
    setKeys(*table, order);
    table->setSortOptionA(static_cast<std::uint64_t>(settings_.memory));
  }
  return table;
}

void TableEngine::store(const Rows& rows, SortOrder order) {
  spilledBytes_ = 0;
  const Table table = create(order);
  ZvbDatavar values[sampleColumnCount];
  for (const SampleRow& row : rows) {
    assignSample(row, values);
    require(table->writeRow(values), "write", *table);
  }
  require(table->close(), "close", *table);
  name_ = table->getName();
}

Table TableEngine::open(int count, const int* numbers, bool backwards) {
  ZvbString error;
  Table table(manager_->openTable(name_, count, numbers, nullptr, backwards, &error));
  if (table == nullptr) {
    stop("open", error);
  }
  return table;
}

void TableEngine::read(const RowTaker& take) {
  const Table table = open();
  ZvbDatavar values[sampleColumnCount];
  bool end = false;
  while (table->readRow(values, &end)) {
    take(viewOf(values));
  }
  require(end, "read", *table);
}

std::uint64_t TableEngine::checksum() {
  const Table table = open();
  ZvbDatavar values[sampleColumnCount];
  RowChecksum checksum;
  bool end = false;
  while (table->readRow(values, &end)) {
    addSample(values, &checksum);
  }
  require(end, "read", *table);
  return checksum.value();
}

void TableEngine::remove() {
  ZvbString error;
  if (name_.length() != 0 && !manager_->deleteTable(name_, &error)) {
    stop("delete", error);
  }
  name_.setNull();
}

std::int64_t TableEngine::storedBytes() const {
  ZvwtTableSizes sizes;
  ZvbString error;
  if (!zvwtGetTableSizes(manager_.get(), name_, &sizes, &error)) {
    stop("sizes", error);
  }
  return sizes.dataBytes;
}

bool TableEngine::keepProgress(const ZvDatafileSortProgress* progress, void* context) {
  static_cast<TableEngine*>(context)->spilledBytes_ = progress->spilledBytes;
  return true;
}
