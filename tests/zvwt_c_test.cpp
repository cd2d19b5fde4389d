/// The functions for C and the languages that call it: managers, and cursors of typed columns that
/// are read and written many rows at once.

#include "zvwt_c.h"

#include <gtest/gtest.h>

#include <optional>

#include "base/ZvbDatavar.h"
#include "support/Bytes.h"
#include "support/FileCalls.h"
#include "support/ShortMemory.h"
#include "support/TableFixture.h"

namespace {

using Lines = std::vector<std::string>;

struct ReleaseHandle {
  void operator()(ZvwfHandle* cursor) const { cursor->functions->release(cursor); }
};
using Handle = std::unique_ptr<ZvwfHandle, ReleaseHandle>;

class FunctionsForC : public TableTest {
 protected:
  Handle newCursor() { return Handle(zvwtNewCursor(manager.get())); }

  /// A cursor that writes a new table with one column of each of the types given: a, b, c...
  Handle newTable(const std::vector<int>& types) {
    Handle cursor = newCursor();
    std::string name = "a";
    for (const int type : types) {
      zvwtAddColumn(cursor.get(), name.c_str(), type);
      ++name[0];
    }
    EXPECT_EQ(0, cursor->functions->create(cursor.get())) << reasonOf(cursor);
    return cursor;
  }

  static int append(const Handle& cursor, const std::vector<const char*>& texts) {
    const int columns = cursor->functions->columnCount(cursor.get());
    return zvwtAppendRows(cursor.get(), static_cast<int>(texts.size()) / columns, texts.data());
  }

  static std::string reasonOf(const Handle& cursor) {
    return cursor->functions->errorMessage(cursor.get());
  }
  static void expectReason(int id, const Handle& cursor) {
    EXPECT_EQ(id, std::atoi(reasonOf(cursor).c_str())) << reasonOf(cursor);
  }

  Handle opened(const std::string& nameOrUri, bool backwards = false) {
    Handle cursor = newCursor();
    EXPECT_EQ(0, zvwtOpenTable(cursor.get(), nameOrUri.c_str(), backwards ? 1 : 0))
        << reasonOf(cursor);
    return cursor;
  }

  /// The rest of the rows, read up to `maxRows` at once; "failed" for a call that has failed, after
  /// which reading goes on.
  static Lines readAll(const Handle& cursor, int maxRows = 100) {
    const int columns = cursor->functions->columnCount(cursor.get());
    std::vector<const char*> texts(static_cast<std::size_t>(columns * maxRows));
    Lines lines;
    int rows = 0;
    while ((rows = zvwtReadRows(cursor.get(), maxRows, texts.data())) != 0) {
      if (rows < 0) {
        lines.emplace_back("failed");
      }
      for (int place = 0; place < rows * columns; ++place) {
        const char* text = texts[static_cast<std::size_t>(place)];
        const std::string shown = text == nullptr ? "null" : text;
        if (place % columns == 0) {
          lines.push_back(shown);
        } else {
          lines.back() += "|" + shown;
        }
      }
    }
    return lines;
  }

  static void finish(const Handle& cursor) {
    EXPECT_EQ(0, cursor->functions->endAppend(cursor.get())) << reasonOf(cursor);
    zvwtKeepTable(cursor.get());
  }

  /// A table of rows that are texts of the sizes given; its name.
  std::string makeTexts(const std::vector<std::size_t>& sizes) {
    std::vector<Row> rows;
    for (const std::size_t size : sizes) {
      rows.push_back(row({std::string(size, 'x')}));
    }
    return makeTable({{"t", zvbTypeString}}, rows);
  }
};

TEST_F(FunctionsForC, MakeManagersAndTellReasons) {
  const std::string name = makeCountingTable(1);
  char reason[300] = "before";
  ZvWorkTableManager* made = zvwtNewManager("c", directory.path().c_str(), reason, sizeof reason);
  ASSERT_NE(nullptr, made);
  EXPECT_STREQ("", reason);
  EXPECT_EQ(1, zvwtDeleteTable(made, "zvwt_größe", reason, sizeof reason));
  const std::string whole = reason;
  EXPECT_TRUE(whole.starts_with("1353: ")) << whole;
  const std::size_t inCharacter = whole.find("\xC3") + 1;
  EXPECT_EQ(1, zvwtDeleteTable(made, "zvwt_größe", reason, inCharacter + 1));
  EXPECT_EQ(whole.substr(0, inCharacter - 1), reason);
  EXPECT_EQ(1, zvwtDeleteTable(made, "zvwt_größe", nullptr, 0));
  EXPECT_EQ(0, zvwtDeleteTable(made, name.c_str(), reason, sizeof reason));
  EXPECT_STREQ("", reason);
  EXPECT_TRUE(directory.names().empty());
  zvwtReleaseManager(made);
  zvwtReleaseManager(nullptr);

  const ShortMemory shortMemory;
  EXPECT_EQ(nullptr, zvwtNewManager("c", "", reason, sizeof reason));
  EXPECT_EQ(29, std::atoi(reason));
}

TEST_F(FunctionsForC, WriteEveryTypeAndKeepTheTableWhenTold) {
  std::string name;
  {
    const Handle cursor =
        newTable({ZVWT_BOOLEAN, ZVWT_INTEGER, ZVWT_REAL, ZVWT_STRING, ZVWT_DATE, 77});
    EXPECT_EQ(ZVWT_STRING, zvwtColumnType(cursor.get(), 5));  // as it is read
    EXPECT_EQ(2, append(cursor, {"YES", "-9223372036854775808", "1e-3", "", "2024-02-29 13:45", "x",
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr}));
    EXPECT_EQ(2, zvwtRowCount(cursor.get()));
    finish(cursor);
    name = zvwtTableName(cursor.get());
    EXPECT_EQ(ZVWT_BOOLEAN, zvwtColumnType(cursor.get(), 0));
    EXPECT_EQ(ZVWT_DATE, zvwtColumnType(cursor.get(), 4));
    EXPECT_EQ(ZVWT_STRING, zvwtColumnType(cursor.get(), 5));
    EXPECT_EQ(0, zvwtColumnType(cursor.get(), 6));
    expectReason(1420, cursor);
  }
  const Handle cursor = opened(name);
  const Lines rows = {"true|-9223372036854775808|0.001||2024-02-29T13:45:00.000|x",
                      "null|null|null|null|null|null"};
  EXPECT_EQ(rows, readAll(cursor));
  EXPECT_EQ(0, cursor->functions->rewind(cursor.get()));
  EXPECT_EQ(rows, readAll(cursor, 1));
}

TEST_F(FunctionsForC, LeaveNothingOfATableThatIsGivenUp) {
  EXPECT_EQ(1, append(newTable({ZVWT_INTEGER}), {"1"}));
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(FunctionsForC, KeepTheTablesThatTheyHaveAndNoneThatFollow) {
  const std::string read = makeCountingTable(1);
  std::string kept;
  {
    const Handle cursor = newCursor();
    zvwtKeepTable(cursor.get());  // none yet
    EXPECT_EQ(0, zvwtOpenTable(cursor.get(), read.c_str(), 0));
    EXPECT_EQ(0, cursor->functions->create(cursor.get()));
    finish(cursor);
    kept = zvwtTableName(cursor.get());
    EXPECT_EQ(0, cursor->functions->create(cursor.get()));
    EXPECT_EQ(1, append(cursor, {"7"}));
    EXPECT_EQ(0, cursor->functions->endAppend(cursor.get()));
    EXPECT_EQ(7U, directory.names().size());
  }
  EXPECT_EQ(4U, directory.names().size());  // an empty table has a catalogue only
  EXPECT_EQ((Lines{"0"}), readAll(opened(read)));
  EXPECT_EQ(Lines(), readAll(opened(kept)));
}

TEST_F(FunctionsForC, OpenBackwardsRangesAndColumnsAndKeepWhatTheyOpen) {
  const std::string name = makeCountingTable(4);
  const Handle cursor = opened(name, true);
  EXPECT_EQ((Lines{"3", "2", "1", "0"}), readAll(cursor, 3));
  EXPECT_EQ(0, zvwtOpenTable(cursor.get(), ("zvwt:" + name + "?rows=1,2&col=x,number").c_str(), 0));
  const char* column = nullptr;
  EXPECT_EQ(0, cursor->functions->columnName(cursor.get(), 0, &column));
  EXPECT_STREQ("x", column);
  EXPECT_EQ((Lines{"1", "2"}), readAll(cursor));
  EXPECT_EQ(4, zvwtRowCount(cursor.get()));
  EXPECT_EQ(1, zvwtOpenTable(cursor.get(), "zvwt_missing", 0));
  expectReason(1353, cursor);
  EXPECT_EQ(name, zvwtTableName(cursor.get()));
  EXPECT_EQ(0, zvwtOpenTable(cursor.get(), ("zvwt:" + name + "?rows=0,3&col=number").c_str(), 1));
  EXPECT_EQ(4U, readAll(cursor).size());
  EXPECT_EQ(1, append(newTable({ZVWT_INTEGER}), {"7"}));
  EXPECT_EQ(3U, directory.names().size());

  // Rows without columns are counted, not stored.
  EXPECT_EQ(0, zvwtOpenTable(cursor.get(), ("zvwt:" + name).c_str(), 0));
  EXPECT_EQ(4, zvwtReadRows(cursor.get(), 10, nullptr));
  EXPECT_EQ(0, zvwtReadRows(cursor.get(), 10, nullptr));
}

TEST_F(FunctionsForC, ReadAsManyRowsAtOnceAsMakeSense) {
  const std::string name = makeCountingTable(10000);
  const Handle cursor = opened(name);
  std::vector<const char*> texts(20000);
  for (const int none : {0, -1}) {
    EXPECT_EQ(-1, zvwtReadRows(cursor.get(), none, texts.data()));
    expectReason(1800, cursor);
  }
  EXPECT_EQ(0, cursor->functions->next(cursor.get()));
  std::int64_t expected = 1;
  int rows = 0;
  while ((rows = zvwtReadRows(cursor.get(), 20000, texts.data())) > 0) {
    EXPECT_LT(rows, 10000);
    for (int i = 0; i < rows; ++i) {
      ASSERT_EQ(std::to_string(expected++), texts[static_cast<std::size_t>(i)]);
    }
  }
  EXPECT_EQ(10000, expected);
  const char* text = nullptr;
  EXPECT_EQ(0, cursor->functions->value(cursor.get(), 0, &text));
  EXPECT_STREQ("0", text);  // of the row that next has read

  EXPECT_EQ(0, cursor->functions->rewind(cursor.get()));
  EXPECT_EQ(3, zvwtReadRows(cursor.get(), 3, texts.data()));
  EXPECT_EQ(0, cursor->functions->next(cursor.get()));
  EXPECT_EQ(0, cursor->functions->value(cursor.get(), 0, &text));
  EXPECT_STREQ("3", text);
  EXPECT_STREQ("2", texts[2]);
  EXPECT_LT(1000, zvwtReadRows(cursor.get(), 20000, texts.data()));  // not as few as before
}

TEST_F(FunctionsForC, HoldFewLongTextsAtOnce) {
  std::vector<std::size_t> sizes(4000, 10);
  for (std::size_t i = 0; i < sizes.size(); i += 40) {
    sizes[i] = 200000;
  }
  const Handle cursor = opened(makeTexts(sizes));
  std::vector<const char*> texts(4000);
  std::size_t seen = 0;
  const PeakMemory peak;
  int rows = 0;
  while ((rows = zvwtReadRows(cursor.get(), 4000, texts.data())) > 0) {
    for (int i = 0; i < rows; ++i) {
      ASSERT_EQ(sizes[seen++], std::strlen(texts[static_cast<std::size_t>(i)]));
    }
  }
  EXPECT_EQ(sizes.size(), seen);
  EXPECT_LT(peak.bytes(), 4 << 20);  // of 20 MB
}

TEST_F(FunctionsForC, RefuseWhatTheyWouldLose) {
  const Handle cursor = newTable({ZVWT_INTEGER, ZVWT_DATE});
  EXPECT_EQ(1, append(cursor, {"1", nullptr, "2", "when ripe", "3", nullptr}));
  EXPECT_EQ(
      "1799: The row is not appended: the text \"when ripe\" is no date, as the values of the "
      "column \"b\" are.",
      reasonOf(cursor));
  const std::string wide(100, '9');
  for (const char* bad : {wide.c_str(), "", "9223372036854775808"}) {
    EXPECT_EQ(0, append(cursor, {bad, nullptr})) << bad;
    expectReason(1799, cursor);
    EXPECT_LT(reasonOf(cursor).size(), 160U);
  }
  EXPECT_EQ(0, append(cursor, {"4", "9999-12-31 23:59:59.9995"}));  // has no text
  expectReason(1799, cursor);
  EXPECT_EQ(0, zvwtAppendRows(cursor.get(), -1, nullptr));
  expectReason(1800, cursor);
  EXPECT_EQ(1, append(cursor, {"4", "9999-12-31 23:59:59.9994"}));
  finish(cursor);
  EXPECT_EQ((Lines{"1|null", "4|9999-12-31T23:59:59.999"}), readAll(cursor));
  EXPECT_EQ(0, append(cursor, {"5", nullptr}));
  expectReason(1768, cursor);
}

TEST_F(FunctionsForC, TellThatTheDiskIsFull) {
  const Handle cursor = newTable({ZVWT_STRING});
  const std::string text(600000, 'x');
  {
    const SizeLimit limit(3000);
    EXPECT_EQ(0, append(cursor, {text.c_str()}));
    expectReason(1044, cursor);
  }
  EXPECT_EQ(1, cursor->functions->endAppend(cursor.get()));
  expectReason(1044, cursor);
}

TEST_F(FunctionsForC, AnswerWithoutATable) {
  const Handle cursor = newCursor();
  const char* text = nullptr;
  EXPECT_EQ(-1, zvwtReadRows(cursor.get(), 1, &text));
  expectReason(1797, cursor);
  EXPECT_EQ(0, zvwtAppendRows(cursor.get(), 1, &text));
  EXPECT_STREQ("", zvwtTableName(cursor.get()));
  EXPECT_EQ(-1, zvwtRowCount(cursor.get()));
  EXPECT_EQ(0, zvwtColumnType(cursor.get(), 0));
  zvwtKeepTable(cursor.get());
  const Handle writer = newTable({ZVWT_STRING});
  EXPECT_EQ(-1, zvwtReadRows(writer.get(), 1, &text));
  expectReason(1793, writer);
}

TEST_F(FunctionsForC, TellOfADamagedRowBehindThoseBeforeIt) {
  const std::string name = makeCountingTable(3);
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      Bytes(directory.file(file)).set<unsigned char>(9, 7).save();  // the tag of row 1
    }
  }
  for (const int maxRows : {1, 2, 3, 100}) {
    const Handle cursor = opened(name);
    EXPECT_EQ((Lines{"0", "failed", "2"}), readAll(cursor, maxRows));
    expectReason(1301, cursor);
  }
  const Handle cursor = opened(name);
  const char* texts[3];
  EXPECT_EQ(1, zvwtReadRows(cursor.get(), 3, texts));
  EXPECT_EQ(-1, cursor->functions->next(cursor.get()));  // is told once, whatever reads next
  EXPECT_EQ(0, cursor->functions->next(cursor.get()));
  EXPECT_EQ(1, cursor->functions->next(cursor.get()));
}

TEST_F(FunctionsForC, SurviveShortMemory) {
  const std::string name = makeTexts({100, 200, 5});
  int refused = 0;
  for (int allocation = 0; allocation < 40; ++allocation) {
    Lines rows;
    std::optional<Handle> cursor;
    const char* texts[3];
    int read = -1;
    int appended = 0;
    {
      const ShortMemory shortMemory(allocation, 1);
      cursor.emplace(newCursor());
      if (*cursor != nullptr && zvwtOpenTable(cursor->get(), name.c_str(), 0) == 0) {
        read = zvwtReadRows(cursor->get(), 3, texts);
      }
      refused += shortMemory.met() ? 1 : 0;
    }
    if (read > 0) {
      EXPECT_EQ(100U, std::strlen(texts[0]));
    }
    cursor.reset();
    cursor.emplace(newTable({ZVWT_STRING}));
    const std::string text(1000, 'x');
    {
      const ShortMemory shortMemory(allocation, 1);
      const char* const both[] = {text.c_str(), nullptr};
      appended = zvwtAppendRows(cursor->get(), 2, both);
      if (shortMemory.met()) {
        EXPECT_LT(appended, 3);
      }
    }
    EXPECT_EQ(appended, zvwtRowCount(cursor->get()));
  }
  EXPECT_GT(refused, 5);
  EXPECT_EQ(3U, directory.names().size());  // the table that was read is kept
}

}  // namespace
