/// The input as a program of calls: tables are created, written, read, appended to, copied and
/// deleted, and every answer is compared with a simple model in memory.

#include <cstdint>
#include <iterator>
#include <optional>

#include "Input.h"
#include "TableModel.h"
#include "WorkFolder.h"

namespace {

constexpr int mostCalls = 150;
constexpr std::size_t mostTables = 6;
constexpr std::size_t mostReaders = 3;
constexpr std::size_t mostRows = 300;  // of one table

std::string text(const ZvbString& string) { return string.asCstr(); }

ZvbDatavar takeVariant(Input* input) {
  switch (input->takeBelow(9)) {
    case 0:
      return {};
    case 1:
      return variantOf(input->takeFlag());
    case 2:
      return variantOf(std::int64_t{input->take<std::int8_t>()});
    case 3:
      return variantOf(input->take<std::int64_t>());
    case 4:
      return variantOf(input->take<double>());
    case 5:
      return variantOf(ZvbDate::fromDays(input->take<double>()));
    case 6: {
      ZvbDatavar real = variantOf(input->takeText().c_str());
      (void)real.setType(zvbTypeReal);
      return real;
    }
    case 7:  // now and then longer than what the file layer shows at once
      return variantOf(std::string(input->take<std::uint16_t>() * std::size_t{3}, 'x').c_str());
    default:
      return variantOf(input->takeText().c_str());
  }
}

/// A table that is being written.
struct Writer {
  zvwt::Table table;
  ModelTable model;
  bool failed = false;  // a call on it has failed: it will not stay
};

/// A table that is being read.
struct Reader {
  zvwt::Table table;
  std::string name;
  std::vector<std::string> expected;
  std::size_t next = 0;
  bool ownsTable = false;  // it has created it, and removes it when a call on it fails
};

class Program {
 public:
  Program(const WorkFolder& folder, Input input)
      : folder_(folder),
        input_(input),
        manager_(zvwtCreateManager("calls", folder.path().c_str(), &error_)) {
    FUZZ_CHECK(manager_ != nullptr, text(error_));
  }

  void run() {
    for (int i = 0; i < mostCalls && !input_.atEnd(); ++i) {
      call();
    }
    finish();
  }

 private:
  void call() {
    using Call = void (Program::*)();
    constexpr Call calls[] = {
        &Program::create,      &Program::writeRow,   &Program::writeRow, &Program::writeRow,
        &Program::writeRow,    &Program::define,     &Program::close,    &Program::open,
        &Program::open,        &Program::readRows,   &Program::readRows, &Program::leaveReader,
        &Program::append,      &Program::copy,       &Program::copyInto, &Program::remove,
        &Program::writeCursor, &Program::readCursor, &Program::describe, &Program::callInWrongMode};
    (this->*calls[input_.takeBelow(std::size(calls))])();
  }

  /// Leaves no table, and so no file.
  void finish() {
    readers_.clear();
    close();
    while (!tables_.empty()) {
      removeLast();
    }
    FUZZ_CHECK(folder_.names().empty(), "left: " + *folder_.names().begin());
    FUZZ_CHECK(folder_.surroundingsAreWhole(), "files elsewhere");
  }

  // ---- Writing

  void create() {
    if (writer_.has_value()) {
      return;
    }
    constexpr std::int64_t elementSizes[] = {0, 1, 50, 1000, -1};
    const auto count = static_cast<int>(input_.takeBelow(5));
    const std::int64_t elementSize = elementSizes[input_.takeBelow(std::size(elementSizes))];
    writer_.emplace();
    writer_->table.reset(manager_->createTable(count, elementSize, &error_));
    FUZZ_CHECK(writer_->table != nullptr, text(error_));
    writer_->model.name = text(writer_->table->getName());
    for (int i = 0; i < count; ++i) {
      const ModelColumn column = {"c" + std::to_string(i), takeType(), takeWidth()};
      FUZZ_CHECK(defineColumn(i, column), column.name);
      writer_->model.columns.push_back(column);
    }
  }

  zvbType takeType() { return static_cast<zvbType>(zvbTypeBoolean + input_.takeBelow(5)); }
  int takeWidth() { return static_cast<int>(input_.takeBelow(30)) - 1; }

  bool defineColumn(int index, const ModelColumn& column) {
    return writer_->table->defineColumn(index, column.name.c_str(), column.type, column.width);
  }

  /// Defines a column again, perhaps with another one's name, perhaps one that is not there.
  void define() {
    if (!writer_.has_value() || !writer_->model.rows.empty()) {
      return;
    }
    std::vector<ModelColumn>& columns = writer_->model.columns;
    const std::size_t index = input_.takeBelow(6);
    const ModelColumn column = {"C" + std::to_string(input_.takeBelow(6)), takeType(), takeWidth()};
    bool isGood = index < columns.size();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      isGood = isGood && (i == index || !sameName(columns[i].name, column.name));
    }
    FUZZ_CHECK(defineColumn(static_cast<int>(index), column) == isGood, column.name);
    if (isGood) {
      columns[index] = column;
    } else {
      expectFailure(*writer_);
    }
  }

  static bool sameName(const std::string& left, const std::string& right) {
    return ZvbString(left.c_str()).compare(right.c_str(), false) == 0;
  }

  static void expectFailure(Writer& writer) {
    FUZZ_CHECK(!writer.table->getErrorMessage().isEmpty(), "a failure without a reason");
    writer.failed = true;
  }

  void writeRow() {
    if (!writer_.has_value() || writer_->model.rows.size() >= mostRows) {
      return;
    }
    ModelTable& model = writer_->model;
    ModelRow row;
    for (std::size_t i = 0; i < model.columns.size(); ++i) {
      row.push_back(takeVariant(&input_));
    }
    row.emplace_back();  // so that a row without columns has a place, too
    FUZZ_CHECK(writer_->table->writeRow(row.data()), text(writer_->table->getErrorMessage()));
    model.rows.push_back(storedRow(row, model.columns));
    FUZZ_CHECK(writer_->table->getRowCount() == rowCount(model), model.name);
  }

  static std::int64_t rowCount(const ModelTable& model) {
    return static_cast<std::int64_t>(model.rows.size());
  }

  /// Releasing closes, too.
  void close() {
    if (!writer_.has_value()) {
      return;
    }
    if (input_.takeFlag()) {
      FUZZ_CHECK(writer_->table->close(), text(writer_->table->getErrorMessage()));
    }
    writer_->table.reset();
    if (writer_->failed) {
      expectNoTable(writer_->model.name);
    } else {
      tables_.push_back(writer_->model);
    }
    writer_.reset();
    if (tables_.size() > mostTables) {
      readers_.clear();
      removeLast();
    }
  }

  void expectNoTable(const std::string& name) {
    error_.assign("");
    const zvwt::Table table(manager_->openTable(name.c_str(), false, &error_));
    FUZZ_CHECK(table == nullptr && !error_.isEmpty(), name);
  }

  // ---- Reading

  /// One of the closed tables; null without any.
  ModelTable* takeTable() {
    const unsigned choice = input_.take<std::uint8_t>();
    return tables_.empty() ? nullptr : &tables_[choice % tables_.size()];
  }

  void takeRange(const ModelTable& table, ModelView* view) {
    constexpr std::int64_t counts[] = {-1, 0, 1, 3, 100, INT64_MAX / 2};
    view->firstRow =
        input_.takeBelow(static_cast<unsigned>(std::min<std::size_t>(table.rows.size() + 3, 255)));
    view->rowCount = counts[input_.takeBelow(std::size(counts))];
  }

  void open() {
    const ModelTable* table = takeTable();
    if (table == nullptr || readers_.size() >= mostReaders) {
      return;
    }
    using Opener = zvwt::Table (Program::*)(const ModelTable&, ModelView*);
    constexpr Opener openers[] = {&Program::openByName, &Program::openRange, &Program::openNames,
                                  &Program::openNumbers, &Program::openUri};
    ModelView view;
    view.backwards = input_.takeFlag();
    Reader reader;
    reader.table = (this->*openers[input_.takeBelow(std::size(openers))])(*table, &view);
    FUZZ_CHECK(reader.table != nullptr, text(error_));
    reader.name = table->name;
    expectRows(*table, view, &reader);
    readers_.push_back(std::move(reader));
  }

  static void expectRows(const ModelTable& table, const ModelView& view, Reader* reader) {
    FUZZ_CHECK(reader->table->getRowCount() == rowCount(table), table.name);
    checkColumns(*reader->table, view);
    for (const ModelRow& row : viewedRows(table, view)) {
      reader->expected.push_back(shownRow(row));
    }
  }

  static void checkColumns(ZvWorkTableFile& table, const ModelView& view) {
    FUZZ_CHECK(table.getColumnCount() == static_cast<int>(view.sources.size()), "columns");
    for (int i = 0; i < table.getColumnCount(); ++i) {
      ZvbString name;
      zvbType type{};
      int width = 0;
      int maxLength = 0;
      FUZZ_CHECK(table.getColumnDefinition(i, &name, &type, &width, &maxLength), "column");
      const ModelColumn& expected = view.sources[static_cast<std::size_t>(i)].column;
      FUZZ_CHECK(sameName(text(name), expected.name), text(name) + " for " + expected.name);
      FUZZ_CHECK(type == expected.type, expected.name);
    }
  }

  zvwt::Table openByName(const ModelTable& table, ModelView* view) {
    view->sources = wholeView(table).sources;
    return zvwt::Table(manager_->openTable(table.name.c_str(), view->backwards, &error_));
  }

  zvwt::Table openRange(const ModelTable& table, ModelView* view) {
    view->sources = wholeView(table).sources;
    takeRange(table, view);
    const RowRange range = {view->firstRow, view->rowCount};
    const int* noNumbers = nullptr;
    return zvwt::Table(
        manager_->openTable(table.name.c_str(), -1, noNumbers, &range, view->backwards, &error_));
  }

  /// A column of the table, by a number that may be one too high.
  ModelSource takeSource(const ModelTable& table) {
    const std::size_t number = input_.takeBelow(static_cast<unsigned>(table.columns.size()) + 1);
    if (number == table.columns.size()) {
      return {{"none", zvbTypeString, 0}, -1, {}};
    }
    return {table.columns[number], static_cast<int>(number), {}};
  }

  zvwt::Table openNames(const ModelTable& table, ModelView* view) {
    std::vector<ZvbString> names(1);
    const auto count = static_cast<int>(input_.takeBelow(6));
    for (int i = 0; i < count; ++i) {
      view->sources.push_back(takeSource(table));
      names.insert(names.end() - 1, view->sources.back().column.name.c_str());
    }
    const ZvbString* first = names.data();
    return zvwt::Table(
        manager_->openTable(table.name.c_str(), count, first, nullptr, view->backwards, &error_));
  }

  zvwt::Table openNumbers(const ModelTable& table, ModelView* view) {
    std::vector<int> numbers(1);
    const auto count = static_cast<int>(input_.takeBelow(5));
    for (int i = 0; i < count; ++i) {
      const ModelSource source = takeSource(table);
      const bool isNew =
          std::find(numbers.begin(), numbers.end() - 1, source.number) == numbers.end() - 1;
      if (source.number >= 0 && isNew) {
        view->sources.push_back(source);
        numbers.insert(numbers.end() - 1, source.number);
      }
    }
    const int* first = numbers.data();
    return zvwt::Table(manager_->openTable(table.name.c_str(),
                                           static_cast<int>(view->sources.size()), first, nullptr,
                                           view->backwards, &error_));
  }

  zvwt::Table openUri(const ModelTable& table, ModelView* view) {
    const ZvbString uri = takeUri(table, view);
    zvwt::Table opened(manager_->openTable(uri, view->backwards, &error_));
    FUZZ_CHECK(opened != nullptr, text(uri) + "\n" + text(error_));
    // The URI that the reader gives stands for the same rows.
    const ZvbString again = opened->getURI(false);
    return zvwt::Table(manager_->openTable(again, view->backwards, &error_));
  }

  /// A URI with columns under names of their own, constants and a range.
  ZvbString takeUri(const ModelTable& table, ModelView* view) {
    takeRange(table, view);
    const zvwt::TableUri uri(
        getWorkTableURIFromComponents(table.name.c_str(), view->firstRow, view->rowCount));
    FUZZ_CHECK(uri != nullptr, table.name);
    const unsigned count = input_.takeBelow(6);
    for (unsigned i = 0; i < count; ++i) {
      ModelSource source = takeSource(table);
      source.column.name = "x" + std::to_string(i);
      if (source.number >= 0) {
        append(*uri, source, table.columns[static_cast<std::size_t>(source.number)].name, 0);
      } else {
        appendConstant(*uri, &source);
      }
      view->sources.push_back(source);
    }
    return uri->toString();
  }

  void append(ZvWorkTableURI& uri, const ModelSource& source, const std::string& second,
              std::int32_t type) {
    FUZZ_CHECK(uri.appendColumn(source.column.name.c_str(), second.c_str(), type, &error_), second);
  }

  void appendConstant(ZvWorkTableURI& uri, ModelSource* source) {
    static const std::string values[] = {"",      "7",          "yes", "2024-02-29 10:00",
                                         "-1.50", "a,&\xC3\xA9"};
    const std::string& value = values[input_.takeBelow(std::size(values))];
    ModelColumn& column = source->column;
    column.type = takeType();
    column.width = column.type == zvbTypeString ? static_cast<int>(value.size()) : 0;
    const ZvbDatavar given = value.empty() ? nullVariant() : variantOf(value.c_str());
    source->constant = stored(given, column);
    append(uri, *source, value, static_cast<std::int32_t>(column.type));
  }

  Reader* takeReader() {
    const unsigned choice = input_.take<std::uint8_t>();
    return readers_.empty() ? nullptr : &readers_[choice % readers_.size()];
  }

  void readRows() {
    Reader* reader = takeReader();
    if (reader == nullptr) {
      return;
    }
    const std::size_t columns = static_cast<std::size_t>(reader->table->getColumnCount());
    ModelRow row(columns + 1);
    for (unsigned left = 1 + input_.takeBelow(10); left != 0; --left) {
      bool atEnd = false;
      const bool read = reader->table->readRow(row.data(), &atEnd);
      const bool expected = reader->next < reader->expected.size();
      FUZZ_CHECK(read == expected && atEnd != expected, text(reader->table->getErrorMessage()));
      if (read) {
        const std::string line = shownRow(ModelRow(row.begin(), row.end() - 1));
        FUZZ_CHECK(line == reader->expected[reader->next],
                   line + " for " + reader->expected[reader->next]);
        ++reader->next;
      }
    }
  }

  void leaveReader() {
    if (!readers_.empty()) {
      readers_.erase(readers_.begin());
    }
  }

  // ---- Whole tables

  /// A table in some view, as a URI.
  ZvbString takeSourceUri(const ModelTable& table, ModelView* view) {
    if (input_.takeFlag()) {
      return takeUri(table, view);
    }
    *view = wholeView(table);
    return table.name.c_str();
  }

  static std::vector<ModelColumn> columnsOf(const ModelView& view) {
    std::vector<ModelColumn> columns;
    for (const ModelSource& source : view.sources) {
      columns.push_back(source.column);
    }
    return columns;
  }

  static bool sameColumns(const std::vector<ModelColumn>& left,
                          const std::vector<ModelColumn>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const ModelColumn& one, const ModelColumn& other) {
                        return sameName(one.name, other.name) && one.type == other.type;
                      });
  }

  static void addRows(const std::vector<ModelRow>& rows, ModelTable* table) {
    for (const ModelRow& row : rows) {
      table->rows.push_back(storedRow(row, table->columns));
    }
  }

  void append() {
    ModelTable* target = takeTable();
    const ModelTable* source = takeTable();
    if (target == nullptr) {
      return;
    }
    ModelView view;
    const ZvbString uri = takeSourceUri(*source, &view);
    const std::vector<ModelRow> rows = viewedRows(*source, view);
    if (target->rows.size() + rows.size() > mostRows) {
      return;
    }
    error_.assign("");
    const bool appended = manager_->appendTable(target->name.c_str(), uri, &error_);
    FUZZ_CHECK(appended == sameColumns(target->columns, columnsOf(view)), text(error_));
    FUZZ_CHECK(appended || !error_.isEmpty(), text(uri));
    if (appended) {
      addRows(rows, target);
    }
  }

  /// The copy goes on as the table that is being written.
  void copy() {
    const ModelTable* source = takeTable();
    if (source == nullptr || writer_.has_value()) {
      return;
    }
    ModelView view;
    const ZvbString uri = takeSourceUri(*source, &view);
    const std::int64_t elementSize = input_.take<std::int8_t>();
    writer_.emplace();
    writer_->table.reset(manager_->copyTable(elementSize, "", uri, &error_));
    FUZZ_CHECK(writer_->table != nullptr, text(error_));
    writer_->model.name = text(writer_->table->getName());
    writer_->model.columns = columnsOf(view);
    addRows(viewedRows(*source, view), &writer_->model);
  }

  /// The table that is being written is read afterwards.
  void copyInto() {
    const ModelTable* source = takeTable();
    if (source == nullptr || !writer_.has_value() || !writer_->model.rows.empty() ||
        readers_.size() >= mostReaders || writer_->failed) {
      return;
    }
    ModelView view;
    const ZvbString uri = takeSourceUri(*source, &view);
    const bool fits = view.sources.size() == writer_->model.columns.size();
    error_.assign("");
    const bool copied = manager_->copyIntoTable(writer_->table.get(), manager_.get(), uri, &error_);
    FUZZ_CHECK(copied == fits, text(error_));
    if (!copied) {
      expectFailure(*writer_);
      return;
    }
    ModelTable model = {writer_->model.name, columnsOf(view), {}};
    addRows(viewedRows(*source, view), &model);
    Reader reader;
    reader.table = std::move(writer_->table);
    reader.name = model.name;
    reader.ownsTable = true;
    expectRows(model, wholeView(model), &reader);
    readers_.push_back(std::move(reader));
    writer_.reset();
    tables_.push_back(std::move(model));
  }

  void remove() {
    const ModelTable* table = takeTable();
    if (table == nullptr) {
      return;
    }
    for (const Reader& reader : readers_) {
      if (reader.name == table->name) {
        return;
      }
    }
    const std::size_t number = static_cast<std::size_t>(table - tables_.data());
    std::swap(tables_[number], tables_.back());
    removeLast();
  }

  void removeLast() {
    const std::string name = tables_.back().name;
    FUZZ_CHECK(manager_->deleteTable(name.c_str(), &error_), text(error_));
    expectNoTable(name);
    tables_.pop_back();
  }

  /// What is said of a table without reading its rows.
  void describe() {
    const ModelTable* table = takeTable();
    if (table == nullptr) {
      return;
    }
    ZvwtTableSizes sizes;
    FUZZ_CHECK(zvwtGetTableSizes(manager_.get(), table->name.c_str(), &sizes, &error_),
               text(error_));
    FUZZ_CHECK(sizes.rowCount == rowCount(*table), table->name);
    RowRange ranges[8];
    int parts = 1 + static_cast<int>(input_.takeBelow(std::size(ranges)));
    FUZZ_CHECK(manager_->partitionTable(table->name.c_str(), &parts, ranges, &error_),
               text(error_));
    std::int64_t next = 0;
    for (int i = 0; i < parts; ++i) {
      FUZZ_CHECK(ranges[i].firstRow == next, std::to_string(i));
      next += ranges[i].rowCount;
    }
    FUZZ_CHECK(next == rowCount(*table), table->name);
  }

  void callInWrongMode() {
    ZvbDatavar values[8];
    if (writer_.has_value()) {
      bool atEnd = true;
      FUZZ_CHECK(!writer_->table->readRow(values, &atEnd) && !atEnd, "read while writing");
      expectFailure(*writer_);
    }
    const Reader* reader = takeReader();
    if (reader != nullptr && !reader->ownsTable) {
      FUZZ_CHECK(!reader->table->writeRow(values), "written while reading");
      FUZZ_CHECK(!reader->table->getErrorMessage().isEmpty(), "a failure without a reason");
    }
  }

  // ---- Cursors

  static std::vector<std::string> readCursorRows(ZvWorkTableCursor& cursor) {
    std::vector<std::string> rows;
    int step = cursor.next();
    for (; step == zvbCursorRow; step = cursor.next()) {
      ModelRow row;
      for (int i = 0; i < cursor.columnCount(); ++i) {
        row.push_back(cursor.value(i));
      }
      rows.push_back(shownRow(row));
    }
    FUZZ_CHECK(step == zvbCursorEnd, text(cursor.errorMessage()));
    return rows;
  }

  /// All rows of the cursor, twice.
  static void checkCursor(ZvWorkTableCursor& cursor, const std::vector<ModelRow>& rows) {
    std::vector<std::string> expected;
    for (const ModelRow& row : rows) {
      expected.push_back(shownRow(row));
    }
    FUZZ_CHECK(readCursorRows(cursor) == expected, "rows of a cursor");
    FUZZ_CHECK(cursor.rewind(), text(cursor.errorMessage()));
    FUZZ_CHECK(readCursorRows(cursor) == expected, "rows of a cursor that was rewound");
  }

  /// A cursor's own table gets the rows of another one.
  void writeCursor() {
    const ModelTable* table = takeTable();
    if (table == nullptr) {
      return;
    }
    const zvwt::Cursor cursor(zvwtCreateCursor(manager_.get()));
    for (const ModelColumn& column : table->columns) {
      cursor->addColumn(column.name.c_str(), column.type);
    }
    FUZZ_CHECK(cursor->create() == !table->columns.empty(), text(cursor->errorMessage()));
    if (table->columns.empty()) {
      return;
    }
    for (const ModelRow& row : table->rows) {
      FUZZ_CHECK(cursor->newRow(), text(cursor->errorMessage()));
      for (std::size_t i = 0; i < row.size(); ++i) {
        cursor->setValue(static_cast<int>(i), row[i]);
      }
      FUZZ_CHECK(cursor->appendRow(), text(cursor->errorMessage()));
    }
    FUZZ_CHECK(cursor->endAppend(), text(cursor->errorMessage()));
    checkCursor(*cursor, table->rows);
  }

  /// A cursor reads a table in some view and leaves it where it is.
  void readCursor() {
    const ModelTable* table = takeTable();
    if (table == nullptr) {
      return;
    }
    ModelView view;
    const ZvbString uri = takeSourceUri(*table, &view);
    zvwt::Table opened(manager_->openTable(uri, false, &error_));
    FUZZ_CHECK(opened != nullptr, text(error_));
    const zvwt::Cursor cursor(zvwtCreateCursor(manager_.get()));
    cursor->setRemoveOnClose(false);
    FUZZ_CHECK(cursor->setWorkTable(opened.release()), text(cursor->errorMessage()));
    checkCursor(*cursor, viewedRows(*table, view));
  }

  const WorkFolder& folder_;
  Input input_;
  ZvbString error_;
  zvwt::Manager manager_;
  std::vector<ModelTable> tables_;  // closed
  std::vector<Reader> readers_;
  std::optional<Writer> writer_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const WorkFolder folder;
  folder.clear();
  Program(folder, Input(bytes, size)).run();
  return 0;
}
