/// Cursors over work tables: typed and string ones, the functions for C, and what becomes of the
/// tables.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <set>
#include <utility>

#include "base/zvb_assert.h"
#include "base/zvb_cursor.h"
#include "support/Bytes.h"
#include "support/FileCalls.h"
#include "support/ShortMemory.h"
#include "support/TableFixture.h"

namespace {

using Lines = std::vector<std::string>;
using CursorHandle = zvwt::Cursor;
using StringCursorHandle = zvwt::StringCursor;

ZvbDatavar variant(const Cell& cell) {
  ZvbDatavar value;
  assignCell(&value, cell);
  return value;
}

std::string shown(const ZvbString& text) { return text.isNull() ? "null" : text.asCstr(); }

class CursorTest : public TableTest {
 protected:
  ~CursorTest() override { zvbSetAssertHandler(nullptr); }

  CursorHandle makeCursor() { return CursorHandle(zvwtCreateCursor(manager.get())); }
  StringCursorHandle makeStringCursor() {
    return StringCursorHandle(zvwtCreateStringCursor(manager.get()));
  }

  /// A cursor that reads a table of its own: integers n and texts t.
  CursorHandle makeReader(const std::vector<Row>& rows) {
    CursorHandle cursor = makeCursor();
    cursor->addColumn("n", zvbTypeInteger);
    cursor->addColumn("t", zvbTypeString);
    EXPECT_TRUE(cursor->create()) << cursor->errorMessage().asCstr();
    for (const Row& cells : rows) {
      append(*cursor, cells);
    }
    EXPECT_TRUE(cursor->endAppend()) << cursor->errorMessage().asCstr();
    return cursor;
  }

  static void append(ZvWorkTableCursor& cursor, const Row& cells) {
    EXPECT_TRUE(cursor.newRow());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      cursor.setValue(static_cast<int>(i), variant(cells[i]));
    }
    EXPECT_TRUE(cursor.appendRow()) << cursor.errorMessage().asCstr();
  }

  /// The rest of the rows; a last line "failed: ..." when reading ended otherwise than at the end.
  template <typename Cursor>
  static Lines readAll(Cursor& cursor) {
    Lines rows;
    int step = cursor.next();
    for (; step == zvbCursorRow; step = cursor.next()) {
      std::string line;
      for (int i = 0; i < cursor.columnCount(); ++i) {
        line += (i == 0 ? "" : "|") + shown(cursor.value(i));
      }
      rows.push_back(line);
    }
    if (step != zvbCursorEnd) {
      rows.push_back(std::string("failed: ") + cursor.errorMessage().asCstr());
    }
    return rows;
  }

  template <typename Cursor>
  static void expectMessage(int id, Cursor& cursor) {
    EXPECT_EQ(id, messageId(cursor.errorMessage())) << cursor.errorMessage().asCstr();
  }
};

const std::vector<Row> twoRows = {row({std::int64_t{1}, std::string("one")}),
                                  row({std::int64_t{2}, {}})};
const Lines twoLines = {"1|one", "2|null"};

// ---- The typed cursor

TEST_F(CursorTest, WritesAndReadsRowsAndDeletesItsTable) {
  CursorHandle cursor = makeReader(twoRows);
  EXPECT_TRUE(cursor->isValid());
  EXPECT_EQ(2, cursor->columnCount());
  EXPECT_STREQ("t", cursor->columnName(1).asCstr());
  EXPECT_EQ(zvbTypeInteger, cursor->columnType(0));
  EXPECT_EQ(twoLines, readAll(*cursor));
  EXPECT_EQ(zvbCursorEnd, cursor->next());
  EXPECT_TRUE(cursor->rewind());
  EXPECT_EQ(twoLines, readAll(*cursor));
  std::int64_t rows = 0;
  EXPECT_TRUE(cursor->rowCount(&rows));
  EXPECT_EQ(2, rows);
  EXPECT_EQ(3U, directory.names().size());
  cursor.reset();
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(CursorTest, BeginsEveryRowWithNulls) {
  const CursorHandle cursor = makeCursor();
  cursor->addColumn("n", zvbTypeInteger);
  ASSERT_TRUE(cursor->create());
  cursor->setValue(0, variant(std::int64_t{7}));  // makes the row
  EXPECT_TRUE(cursor->appendRow());
  EXPECT_TRUE(cursor->newRow());
  EXPECT_TRUE(cursor->newRow());
  EXPECT_TRUE(cursor->appendRow());
  EXPECT_TRUE(cursor->endAppend());
  EXPECT_FALSE(cursor->appendRow());
  expectMessage(1768, *cursor);
  EXPECT_EQ((Lines{"7", "null"}), readAll(*cursor));
}

TEST_F(CursorTest, AnswersWithoutATableARowOrAColumn) {
  const CursorHandle cursor = makeCursor();
  std::int64_t rows = 5;
  EXPECT_FALSE(cursor->rewind());
  expectMessage(1797, *cursor);
  EXPECT_FALSE(cursor->newRow() || cursor->appendRow() || cursor->endAppend());
  EXPECT_FALSE(cursor->rowCount(&rows));
  EXPECT_EQ(0, rows);
  EXPECT_EQ(zvbCursorFailed, cursor->next());
  EXPECT_EQ(0, cursor->columnCount());
  EXPECT_TRUE(cursor->value(0).isNull());
  EXPECT_EQ(nullptr, cursor->workTable(true));
  cursor->setValue(0, ZvbDatavar());
  EXPECT_FALSE(cursor->create());
  EXPECT_STREQ("Cannot create zero columns", cursor->errorMessage().asCstr());
  EXPECT_TRUE(directory.names().empty());

  cursor->addColumn("a", zvbTypeInteger);
  ASSERT_TRUE(cursor->create());
  EXPECT_EQ(zvbCursorFailed, cursor->next());
  expectMessage(1793, *cursor);
  for (const int index : {-1, 1}) {
    EXPECT_STREQ("", cursor->columnName(index).asCstr());
    EXPECT_EQ(0, cursor->columnType(index));
    cursor->setValue(index, ZvbDatavar());
    EXPECT_TRUE(cursor->value(index).isNull());
    expectMessage(1420, *cursor);
  }
  EXPECT_TRUE(cursor->value(0).isNull());
  expectMessage(1797, *cursor);
  append(*cursor, row({std::int64_t{1}}));  // none of this has cost the table
  EXPECT_TRUE(cursor->endAppend()) << cursor->errorMessage().asCstr();
  EXPECT_EQ(Lines{"1"}, readAll(*cursor));

  const CursorHandle lonely(zvwtCreateCursor(nullptr));
  lonely->addColumn("a", zvbTypeInteger);
  EXPECT_FALSE(lonely->create());
  expectMessage(1797, *lonely);
}

TEST_F(CursorTest, ReopensARangeAndASelectionAsTheyWere) {
  const std::string name =
      makeTable({{"a", zvbTypeInteger}, {"b", zvbTypeInteger}},
                {row({std::int64_t{0}, std::int64_t{10}}), row({std::int64_t{1}, std::int64_t{11}}),
                 row({std::int64_t{2}, std::int64_t{12}})});
  const CursorHandle cursor = makeCursor();
  cursor->setRemoveOnClose(false);
  const std::string uri = "zvwt:" + name + "?rows=1,2&col=x,b&col=k,7,2";
  ASSERT_TRUE(cursor->setWorkTable(openUri(uri).release()));
  for (int pass = 0; pass < 3; ++pass) {
    EXPECT_EQ((Lines{"11|7", "12|7"}), readAll(*cursor));
    EXPECT_TRUE(cursor->rewind());
  }
  EXPECT_TRUE(cursor->create());  // of the columns of the attached table
  EXPECT_STREQ("x", cursor->columnName(0).asCstr());
  EXPECT_EQ(Lines({"0|10", "1|11", "2|12"}), readTable(name));
}

TEST_F(CursorTest, KeepsOnlyWhatItIsToldToKeep) {
  std::string kept;
  {
    const CursorHandle cursor = makeReader(twoRows);
    const TableHandle table(cursor->workTable(true));
    kept = table->getName().asCstr();
    EXPECT_FALSE(cursor->rewind());
    EXPECT_EQ(nullptr, cursor->workTable(false));
    EXPECT_TRUE(cursor->create());  // another one
    cursor->addColumn("N", zvbTypeInteger);
    EXPECT_FALSE(cursor->create());  // and the other one stays
    expectMessage(1666, *cursor);
    EXPECT_EQ(2, cursor->columnCount());
    EXPECT_TRUE(cursor->setWorkTable(cursor->workTable(false)));
    EXPECT_TRUE(cursor->create());
    EXPECT_TRUE(cursor->setWorkTable(nullptr));
    EXPECT_FALSE(cursor->create());
  }
  EXPECT_EQ(twoLines, readTable(kept));
  EXPECT_EQ(3U, directory.names().size());
  CursorHandle cursor = makeCursor();
  cursor->setRemoveOnClose(false);
  EXPECT_TRUE(cursor->setWorkTable(open(kept).release()));
  cursor.reset();
  EXPECT_EQ(3U, directory.names().size());
  cursor = makeCursor();
  EXPECT_TRUE(cursor->setWorkTable(open(kept).release()));
  cursor.reset();
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(CursorTest, CountsRowsIn32Bits) {
  const std::string name = makeCountingTable(1);
  constexpr std::int64_t many = (std::int64_t{1} << 32) + 5;
  Bytes bytes(directory.file(name));
  constexpr std::size_t nameSizes = 23 + 24;  // of the element's files, at the end
  bytes.set(24, many).set(bytes.size() - nameSizes - sizeof many, many).save();
  const CursorHandle cursor = makeCursor();
  ASSERT_TRUE(cursor->setWorkTable(open(name).release()));
  std::int64_t rows = 0;
  EXPECT_FALSE(cursor->rowCount(&rows));
  EXPECT_EQ(5, rows);
  const zvwt::ZvwfCursor functions(zvwtCreateStringZVWFCursor(manager.get()));
  EXPECT_TRUE(functions->setWorkTable(cursor->workTable(true)));
  ZvwfHandle* handle = functions->zvwfHandle();
  EXPECT_EQ(-1, handle->functions->rowCount(handle));
}

TEST_F(CursorTest, AttachesATableInPlaceOfItself) {
  CursorHandle cursor = makeReader(twoRows);
  const std::string name = cursor->workTable(false)->getName().asCstr();
  EXPECT_TRUE(cursor->setWorkTable(open(name).release()));
  EXPECT_TRUE(cursor->rewind());
  EXPECT_EQ(twoLines, readAll(*cursor));

  // Written by others, it is none the worse for a call that does not fit.
  TableHandle written = create({{"n", zvbTypeInteger}});
  EXPECT_TRUE(cursor->setWorkTable(written.release()));
  EXPECT_EQ(1U, directory.names().size());
  EXPECT_EQ(zvbCursorFailed, cursor->next());
  expectMessage(1793, *cursor);
  append(*cursor, row({std::int64_t{5}}));
  EXPECT_TRUE(cursor->endAppend()) << cursor->errorMessage().asCstr();
  EXPECT_EQ(Lines{"5"}, readAll(*cursor));
}

// ---- Failures

TEST_F(CursorTest, SaysThatTheDiskIsFullRatherThanThatTheTableIsMissing) {
  CursorHandle cursor = makeCursor();
  cursor->addColumn("t", zvbTypeString);
  ASSERT_TRUE(cursor->create());
  append(*cursor, row({std::string(5000, 'x')}));
  const SizeLimit limit(3000);
  EXPECT_FALSE(cursor->endAppend());
  expectMessage(1045, *cursor);
  EXPECT_TRUE(directory.names().empty());

  ASSERT_TRUE(cursor->create());
  append(*cursor, row({std::string("fits")}));
  cursor->setValue(0, variant(std::string(600000, 'x')));
  EXPECT_FALSE(cursor->appendRow());
  EXPECT_FALSE(cursor->endAppend());
  expectMessage(1044, *cursor);
  cursor.reset();
  EXPECT_TRUE(directory.names().empty());
}

int reportedFailures = 0;

TEST_F(CursorTest, ReportsATableThatCannotBeDeleted) {
  reportedFailures = 0;
  zvbSetAssertHandler([](const char* text, const char* sourceFile, int /*line*/) {
    ++reportedFailures;
    EXPECT_STREQ("wtcursor_impl", sourceFile);
    EXPECT_EQ(1353, std::atoi(text));
  });
  const CursorHandle source = makeReader(twoRows);
  CursorHandle cursor = makeReader(twoRows);
  const std::string name = cursor->workTable(false)->getName().asCstr();
  std::filesystem::remove(directory.file(name));
  EXPECT_FALSE(cursor->copyFrom(source.get()));
  expectMessage(1353, *cursor);
  EXPECT_EQ(1, reportedFailures);
  EXPECT_TRUE(cursor->copyFrom(source.get()));
  EXPECT_FALSE(cursor->appendRow());  // an earlier failure hides none
  std::filesystem::remove(directory.file(cursor->workTable(false)->getName().asCstr()));
  EXPECT_FALSE(cursor->rewind());
  expectMessage(1353, *cursor);
  EXPECT_EQ(nullptr, cursor->workTable(false));
  expectMessage(1353, *cursor);
  cursor.reset();
  EXPECT_EQ(2, reportedFailures);

  zvbSetAssertHandler(nullptr);
  testing::internal::CaptureStderr();
  zvbAssertFailure("table lost", "file.cpp", 7);
  EXPECT_EQ("file.cpp:7: table lost\n", testing::internal::GetCapturedStderr());
}

TEST_F(CursorTest, DeletesATableThatCannotBeReopened) {
  CursorHandle cursor = makeReader(twoRows);
  const std::string name = cursor->workTable(false)->getName().asCstr();
  const std::string aside = directory.file("aside");
  std::filesystem::rename(directory.file(name), aside);
  EXPECT_FALSE(cursor->rewind());
  expectMessage(1353, *cursor);
  EXPECT_EQ(nullptr, cursor->workTable(false));
  std::filesystem::rename(aside, directory.file(name));
  cursor.reset();
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(CursorTest, SurvivesShortMemory) {
  const CursorHandle reader = makeReader(twoRows);
  {
    const ShortMemory shortMemory;
    EXPECT_EQ(nullptr, zvwtCreateCursor(manager.get()));
    EXPECT_EQ(nullptr, zvwtCreateStringCursor(manager.get()));
    EXPECT_EQ(nullptr, zvwtCreateStringZVWFCursor(manager.get()));
  }
  {
    const ShortMemory shortMemory(0, 1);
    EXPECT_EQ(zvbCursorFailed, reader->next());
  }
  expectMessage(1642, *reader);
  EXPECT_EQ(twoLines, readAll(*reader));
  {
    const ShortMemory shortMemory(0, 1);
    EXPECT_FALSE(reader->newRow());
  }
  expectMessage(1642, *reader);

  ASSERT_TRUE(reader->create());
  const ZvbDatavar one = variant(std::int64_t{1});
  {
    const ShortMemory shortMemory(0, 1);
    reader->setValue(0, one);
  }
  reader->setValue(1, one);
  EXPECT_FALSE(reader->appendRow());  // a row without its first value
  expectMessage(1642, *reader);
  append(*reader, row({std::int64_t{1}}));
}

// ---- Copying

TEST_F(CursorTest, TellsWhatEndedACopy) {
  const CursorHandle source = makeCursor();
  ASSERT_TRUE(source->setWorkTable(open(makeCountingTable(3)).release()));
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      Bytes(directory.file(file)).set<unsigned char>(9, 7).save();
    }
  }
  const CursorHandle target = makeCursor();
  EXPECT_FALSE(copyCursor(source.get(), target.get(), &error));
  EXPECT_EQ(1301, messageId(error)) << error.asCstr();
  EXPECT_FALSE(makeCursor()->copyFrom(source.get()));
}

TEST_F(CursorTest, CopiesAnyCursor) {
  const CursorHandle source = makeReader(twoRows);
  EXPECT_EQ(zvbCursorRow, source->next());
  const CursorHandle target = makeReader({row({std::int64_t{9}, {}})});
  for (int pass = 0; pass < 2; ++pass) {
    ASSERT_TRUE(target->copyFrom(source.get())) << target->errorMessage().asCstr();
    EXPECT_EQ(twoLines, readAll(*target));
    EXPECT_EQ(zvbTypeInteger, target->columnType(0));
  }
  EXPECT_FALSE(target->copyFrom(target.get()));
  expectMessage(1798, *target);
  EXPECT_FALSE(target->copyFrom(nullptr));
  EXPECT_FALSE(copyCursor(target.get(), target.get(), &error));
  EXPECT_TRUE(target->rewind());
  EXPECT_EQ(twoLines, readAll(*target));
  EXPECT_FALSE(target->copyFrom(makeCursor().get()));
  expectMessage(1797, *target);
  const CursorHandle bare = makeCursor();
  ASSERT_TRUE(bare->setWorkTable(open(makeTable({}, {})).release()));
  EXPECT_FALSE(makeCursor()->copyFrom(bare.get()));
  EXPECT_FALSE(copyCursor(bare.get(), makeCursor().get(), &error));
  EXPECT_STREQ("Cannot create zero columns", error.asCstr());

  const StringCursorHandle texts = makeStringCursor();
  const TableHandle table = open(makeTable({{"d", zvbTypeDate}, {"n", zvbTypeInteger}},
                                           {row({std::string("2024-02-29"), {}})}));
  const zvwt::Statistics statistics(table->getStatistics());
  EXPECT_EQ(zvbCursorRow, statistics->next());
  EXPECT_STREQ("", statistics->value(2).asCstr());
  ASSERT_TRUE(texts->copyFrom(statistics.get())) << texts->errorMessage().asCstr();
  EXPECT_EQ(
      (Lines{"AccessKey|", "Columns|2", "ElementSize|0", "Elements|1", "Rows|1", "Version|1.0"}),
      readAll(*texts));
  EXPECT_FALSE(texts->copyFrom(texts.get()));
  const StringCursorHandle more = makeStringCursor();
  ASSERT_TRUE(more->copyFrom(texts.get()));
  EXPECT_STREQ("Statistic", more->columnName(0).asCstr());
}

// ---- Any sequence of calls

struct ModelTable {
  Lines columns;  // all of integers
  Lines rows;     // as readAll shows them
  bool isWriting = false;
  std::size_t position = 0;
};

/// What a cursor must answer, told by a table that is a list of rows.
struct Model {
  Lines pending;
  std::optional<ModelTable> table;
  bool removesOnClose = true;
  std::size_t kept = 0;  // tables that stay on disk

  void letGo() {
    kept += table.has_value() && !removesOnClose ? 1 : 0;
    table.reset();
  }
  bool canCreate() const {
    return !pending.empty() &&
           std::set<std::string>(pending.begin(), pending.end()).size() == pending.size();
  }
  void create() {
    letGo();
    table = ModelTable{.columns = pending, .rows = {}, .isWriting = true, .position = 0};
  }
  void attach(const ModelTable& attached) {
    pending = attached.columns;
    table = attached;
    table->isWriting = false;
    table->position = 0;
  }
};

class RandomCalls {
 public:
  RandomCalls(unsigned seed, ZvWorkTableManager* manager, ZvWorkTableCursor* source)
      : random_(seed), manager_(manager), cursor_(zvwtCreateCursor(manager)), source_(source) {}

  /// Makes calls, each answered as the model says, and releases the cursor; the number of tables
  /// that must be left.
  std::size_t run(int calls) {
    for (int i = 0; i < calls && !testing::Test::HasFailure(); ++i) {
      call();
    }
    cursor_.reset();
    model_.letGo();
    return model_.kept;
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  void call() {
    switch (below(13)) {
      case 0:
      case 1:
        return addColumn();
      case 2:
        EXPECT_EQ(model_.canCreate(), cursor_->create());
        return model_.canCreate() ? model_.create() : void();
      case 3:
      case 4:
      case 5:
        return appendRow();
      case 6:
        return rewind();
      case 7:
      case 8:
        return next();
      case 9:
        return detach();
      case 10:
        return attach();
      case 11:
        model_.removesOnClose = below(3) != 0;
        return cursor_->setRemoveOnClose(model_.removesOnClose);
      default:
        return below(4) == 0 ? copy() : describe();
    }
  }

  void addColumn() {
    const std::string name(1, static_cast<char>('a' + below(8)));
    cursor_->addColumn(name.c_str(), zvbTypeInteger);
    model_.pending.push_back(name);
  }

  void appendRow() {
    const bool canWrite = model_.table.has_value() && model_.table->isWriting;
    std::string line;
    EXPECT_EQ(model_.table.has_value(), cursor_->newRow());
    for (std::size_t i = 0; canWrite && i < model_.table->columns.size(); ++i) {
      const bool isNull = below(3) == 0;
      const auto value = static_cast<std::int64_t>(below(100));
      if (!isNull) {
        cursor_->setValue(static_cast<int>(i), variant(value));
      }
      line += (i == 0 ? "" : "|") + (isNull ? "null" : std::to_string(value));
    }
    EXPECT_EQ(canWrite, cursor_->appendRow());
    if (canWrite) {
      model_.table->rows.push_back(line);
    }
  }

  void rewind() {
    EXPECT_EQ(model_.table.has_value(), below(2) == 0 ? cursor_->rewind() : cursor_->endAppend());
    if (model_.table.has_value()) {
      model_.table->isWriting = false;
      model_.table->position = 0;
    }
  }

  void next() {
    if (!model_.table.has_value() || model_.table->isWriting) {
      EXPECT_EQ(zvbCursorFailed, cursor_->next());
      EXPECT_FALSE(cursor_->errorMessage().isEmpty());
      return;
    }
    if (model_.table->position == model_.table->rows.size()) {
      EXPECT_EQ(zvbCursorEnd, cursor_->next());
      return;
    }
    EXPECT_EQ(zvbCursorRow, cursor_->next());
    std::string line;
    for (int i = 0; i < cursor_->columnCount(); ++i) {
      line += (i == 0 ? "" : "|") + shown(cursor_->value(i));
    }
    EXPECT_EQ(model_.table->rows[model_.table->position++], line);
  }

  /// Takes the table away, closes it and keeps it.
  void detach() {
    const TableHandle table(cursor_->workTable(true));
    EXPECT_EQ(model_.table.has_value(), table != nullptr);
    if (table != nullptr) {
      EXPECT_TRUE(table->close());
      detached_ = {table->getName().asCstr(), *model_.table};
      ++model_.kept;
      model_.table.reset();
    }
  }

  /// Attaches a table taken away before, the attached one again, or none.
  void attach() {
    ZvWorkTableFile* same = cursor_->workTable(false);
    if (same != nullptr && below(3) == 0) {
      EXPECT_TRUE(cursor_->setWorkTable(same));
      model_.pending = model_.table->columns;
      return;
    }
    ZvbString error;
    const auto [name, table] = std::exchange(detached_, {});
    TableHandle opened(name.empty() ? nullptr : manager_->openTable(name.c_str(), false, &error));
    EXPECT_EQ(name.empty(), opened == nullptr);
    EXPECT_TRUE(cursor_->setWorkTable(opened.release()));
    model_.letGo();
    model_.pending.clear();
    if (!name.empty()) {
      --model_.kept;
      model_.attach(table);
    }
  }

  void copy() {
    EXPECT_TRUE(cursor_->copyFrom(source_)) << cursor_->errorMessage().asCstr();
    model_.letGo();
    model_.attach({.columns = {"n", "t"}, .rows = twoLines, .isWriting = false, .position = 0});
  }

  void describe() {
    const bool has = model_.table.has_value();
    const int index = static_cast<int>(below(4)) - 1;
    const bool known =
        has && index >= 0 && static_cast<std::size_t>(index) < model_.table->columns.size();
    EXPECT_EQ(known ? model_.table->columns[static_cast<std::size_t>(index)] : "",
              cursor_->columnName(index).asCstr());
    EXPECT_EQ(known, cursor_->columnType(index) != 0);
    EXPECT_EQ(has ? model_.table->columns.size() : 0,
              static_cast<std::size_t>(cursor_->columnCount()));
    std::int64_t rows = 0;
    EXPECT_EQ(has, cursor_->rowCount(&rows));
    EXPECT_EQ(has ? model_.table->rows.size() : 0, static_cast<std::size_t>(rows));
    cursor_->setValue(index, ZvbDatavar());
    (void)cursor_->value(index);
  }

  std::mt19937 random_;
  ZvWorkTableManager* manager_;
  CursorHandle cursor_;
  ZvWorkTableCursor* source_;
  Model model_;
  std::pair<std::string, ModelTable> detached_;  // the last one that was taken away
};

TEST_F(CursorTest, LeavesNothingBehindAfterAnySequenceOfCalls) {
  const CursorHandle source = makeReader(twoRows);
  for (unsigned seed = 0; seed < 2000 && !HasFailure(); ++seed) {
    const std::size_t kept = RandomCalls(seed, manager.get(), source.get()).run(40);
    std::size_t catalogues = 0;
    for (const std::string& name : directory.names()) {
      catalogues += name.starts_with("zvwt_") ? 1 : 0;
    }
    EXPECT_EQ(kept + 1, catalogues) << "seed " << seed;
    for (const std::string& name : directory.names()) {
      if (name.starts_with("zvwt_") && name != source->workTable(false)->getName().asCstr()) {
        EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
      }
    }
    EXPECT_EQ(3U, directory.names().size()) << "seed " << seed;
  }
}

// ---- Texts

TEST_F(CursorTest, ReadsAndWritesTexts) {
  const StringCursorHandle cursor = makeStringCursor();
  cursor->addColumn("a");
  ASSERT_TRUE(cursor->create());
  for (const ZvbString& text : {ZvbString("12"), ZvbString(""), ZvbString(nullptr)}) {
    EXPECT_TRUE(cursor->newRow());
    cursor->setValue(0, text);
    EXPECT_TRUE(cursor->appendRow());
  }
  ASSERT_TRUE(cursor->endAppend());
  EXPECT_EQ((Lines{"12", "", "null"}), readAll(*cursor));
  zvbType type{};
  int ignored = 0;
  ZvbString name;
  EXPECT_TRUE(cursor->workTable(false)->getColumnDefinition(0, &name, &type, &ignored, &ignored));
  EXPECT_EQ(zvbTypeString, type);

  const std::string dates =
      makeTable({{"d", zvbTypeDate}, {"n", zvbTypeInteger}},
                {row({std::string("2024-02-29 13:45:10.250"), std::int64_t{1}}), row({{}, {}})});
  EXPECT_TRUE(cursor->setWorkTable(open(dates).release()));
  EXPECT_EQ((Lines{"2024-02-29 13:45:10.250|1", "null|null"}), readAll(*cursor));
  TableHandle detached(cursor->workTable(true));
  const zvwt::ZvwfCursor exact(zvwtCreateStringZVWFCursor(manager.get()));
  EXPECT_TRUE(exact->setWorkTable(detached.release()));
  EXPECT_TRUE(exact->rewind());
  EXPECT_EQ((Lines{"2024-02-29T13:45:10.250|1", "null|null"}), readAll(*exact));
}

/// The place of a virtual operation in its table, as compilers for Linux keep it in a pointer.
template <typename Operation>
std::size_t slotOf(Operation operation) {
  std::uintptr_t slot = 0;
  std::memcpy(&slot, &operation, sizeof slot);
  return (slot - 1) / sizeof(void*);
}

TEST(CursorInterfaces, KeepTheirOrder) {
  EXPECT_EQ(4U, slotOf(&ZvWorkTableCursor::value));
  EXPECT_EQ(9U, slotOf(&ZvWorkTableCursor::rewind));
  EXPECT_EQ(16U, slotOf(&ZvWorkTableCursor::create));
  EXPECT_EQ(19U, slotOf(&ZvWorkTableCursor::setRemoveOnClose));
  EXPECT_EQ(15U, slotOf(&ZvWorkTableStringCursor::create));
  EXPECT_EQ(18U, slotOf(&ZvWorkTableStringCursor::setRemoveOnClose));
  EXPECT_EQ(19U, slotOf(&ZvWorkTableStringZVWFCursor::zvwfHandle));
  const auto entryOf = [](std::size_t offset) { return offset / sizeof(void*); };
  EXPECT_EQ(0U, entryOf(offsetof(ZvwfFunctions, addColumn)));
  EXPECT_EQ(4U, entryOf(offsetof(ZvwfFunctions, columnName)));
  EXPECT_EQ(8U, entryOf(offsetof(ZvwfFunctions, value)));
  EXPECT_EQ(10U, entryOf(offsetof(ZvwfFunctions, next)));
  EXPECT_EQ(12U, entryOf(offsetof(ZvwfFunctions, setValue)));
  EXPECT_EQ(13U, entryOf(offsetof(ZvwfFunctions, rewind)));
}

TEST_F(CursorTest, ServesCThroughFunctions) {
  ZvwfHandle* handle = zvwtCreateStringZVWFCursor(manager.get())->zvwfHandle();
  const ZvwfFunctions& call = *handle->functions;
  const char* text = nullptr;
  EXPECT_EQ(-1, call.next(handle));
  EXPECT_EQ(1, call.create(handle));
  EXPECT_STREQ("Cannot create zero columns", call.errorMessage(handle));
  EXPECT_EQ(0, call.addColumn(handle, "a") + call.addColumn(handle, "b") + call.create(handle));
  EXPECT_EQ(0, call.newRow(handle) + call.setValue(handle, 0, "12") +
                   call.setValue(handle, 1, nullptr) + call.appendRow(handle));
  EXPECT_EQ(0, call.endAppend(handle));
  EXPECT_EQ(1, call.appendRow(handle));
  EXPECT_EQ(2, call.columnCount(handle));
  EXPECT_EQ(1, call.rowCount(handle));
  EXPECT_EQ(0, call.next(handle));
  EXPECT_EQ(0, call.columnName(handle, 1, &text));
  EXPECT_STREQ("b", text);
  EXPECT_EQ(0, call.value(handle, 0, &text));
  EXPECT_STREQ("12", text);
  EXPECT_EQ(0, call.value(handle, 1, &text) + call.columnName(handle, 2, &text));
  EXPECT_STREQ("", text);
  EXPECT_EQ(1420, std::atoi(call.errorMessage(handle)));
  EXPECT_EQ(1, call.next(handle));
  EXPECT_EQ(0, call.rewind(handle) + call.next(handle));
  call.release(handle);
  EXPECT_TRUE(directory.names().empty());
}

}  // namespace
