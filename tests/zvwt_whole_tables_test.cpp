/// Whole tables through the manager: copied, appended, partitioned, and keys that keep threads
/// apart.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "support/Bytes.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

using Lines = std::vector<std::string>;
using Ranges = std::vector<std::pair<std::int64_t, std::int64_t>>;

class WholeTables : public TableTest {
 protected:
  std::string makeWords(const std::vector<std::string>& words, std::int64_t maxElementSize = 0) {
    std::vector<Row> rows;
    for (const std::string& word : words) {
      rows.push_back(row({static_cast<std::int64_t>(word.size()), word}));
    }
    return makeTable({{"size", zvbTypeInteger}, {"word", zvbTypeString, 9}}, rows, maxElementSize);
  }

  bool append(const std::string& target, const std::string& source) {
    return manager->appendTable(target.c_str(), source.c_str(), &error);
  }

  Ranges partition(const std::string& name, int parts) {
    std::vector<RowRange> ranges(static_cast<std::size_t>(std::max(parts, 1)));
    int count = parts;
    EXPECT_TRUE(manager->partitionTable(name.c_str(), &count, ranges.data(), &error));
    Ranges found;
    for (int i = 0; i < count; ++i) {
      const RowRange& range = ranges[static_cast<std::size_t>(i)];
      found.emplace_back(range.firstRow, range.rowCount);
    }
    return found;
  }

  void expectFailure(int id, const std::vector<std::string>& arguments) {
    EXPECT_EQ(id, messageId(error)) << error.asCstr();
    for (const std::string& argument : arguments) {
      EXPECT_NE(nullptr, std::strstr(error.asCstr(), argument.c_str())) << error.asCstr();
    }
  }
};

TEST_F(WholeTables, AppendAddsTheRowsOfAnotherTableOrOfTheSame) {
  const std::string target = makeWords({"one", "two"}, 15);
  const std::string source = makeWords({"three"});
  EXPECT_TRUE(append(target, source)) << error.asCstr();
  EXPECT_TRUE(append(target, makeWords({})));
  EXPECT_EQ((Lines{"3|one", "3|two", "5|three"}), readTable(target));
  EXPECT_TRUE(append(target, target)) << error.asCstr();
  EXPECT_EQ((Lines{"3|one", "3|two", "5|three", "3|one", "3|two", "5|three"}), readTable(target));
  EXPECT_EQ(Lines{"5|three"}, readTable(source));
}

TEST_F(WholeTables, AppendComparesTheColumnsBeforeItMovesARow) {
  const std::string target = makeWords({"one"});
  const std::string fewer = makeCountingTable(2);
  const std::string renamed =
      makeTable({{"SIZE", zvbTypeInteger}, {"wort", zvbTypeString}}, {row({{}, {}})});
  const std::string retyped =
      makeTable({{"size", zvbTypeReal}, {"word", zvbTypeString}}, {row({{}, {}})});
  EXPECT_FALSE(append(target, fewer));
  expectFailure(1769, {fewer, target, "has 1 columns", "has 2"});
  EXPECT_FALSE(append(target, renamed));
  expectFailure(1770, {renamed, target, "number 1", "\"wort\"", "\"word\""});
  EXPECT_FALSE(append(target, retyped));
  expectFailure(1771, {retyped, target, "number 0", "real", "integer"});
  EXPECT_FALSE(append(target, "zvwt_none"));
  expectFailure(1353, {"zvwt_none"});
  EXPECT_EQ(Lines{"3|one"}, readTable(target));
}

TEST_F(WholeTables, NothingIsAppendedToATableThatIsBeingRead) {
  const std::string target = makeCountingTable(1);
  const TableHandle reader = open(target);
  EXPECT_FALSE(static_cast<ZVWTFileImpl&>(*reader).appendFrom("zvwt_none"));
  EXPECT_EQ(1768, messageId(reader->getErrorMessage()));
  EXPECT_EQ(Lines{"0"}, readAll(*reader));
}

TEST_F(WholeTables, AFailedReadOfTheSourceIsNamedAndKeepsWhatCameBefore) {
  const std::string target = makeWords({"old"});
  const std::string source = makeWords({"new", "cut"});
  for (const std::string& file : directory.names()) {
    Bytes bytes(directory.file(file));
    if (file.starts_with("zvwte_") && bytes.content().find("cut") != std::string::npos) {
      bytes.cut(bytes.size() - 2).save();
    }
  }
  EXPECT_FALSE(append(target, source));
  expectFailure(1782, {"Append", source, target, "1301"});
  EXPECT_EQ((Lines{"3|old", "3|new"}), readTable(target));
  EXPECT_EQ(nullptr, manager->copyTable(0, "", source.c_str(), &error));
  expectFailure(1782, {"Copy", source});
}

TEST_F(WholeTables, CopyTakesColumnsAndRows) {
  const std::string source = makeWords({"one", "three"});
  error.assign("stale");
  for (const char* owner : {"", "test", "another"}) {
    const TableHandle copy(manager->copyTable(20, owner, source.c_str(), &error));
    ASSERT_NE(nullptr, copy) << error.asCstr();
    EXPECT_TRUE(write(*copy, row({std::int64_t{1}, std::string("x")})));
    EXPECT_TRUE(copy->close());
    ZvbString name;
    zvbType type{};
    int width = 0;
    int maxLength = 0;
    EXPECT_TRUE(copy->getColumnDefinition(1, &name, &type, &width, &maxLength));
    EXPECT_STREQ("word", name.asCstr());
    EXPECT_EQ(9, width);
    EXPECT_EQ(6, maxLength);
    EXPECT_EQ((Lines{"3|one", "5|three", "1|x"}), readTable(copy->getName().asCstr()));
  }
  EXPECT_EQ(nullptr, manager->copyTable(0, manager.get(), "zvwt_none", &error));
  expectFailure(1353, {"zvwt_none"});
}

TEST_F(WholeTables, CopyIntoATableReopensItForReading) {
  const std::string source = makeWords({"one", "three"});
  const TableHandle target = create({{"a", zvbTypeDate}, {"b", zvbTypeDate}});
  const std::string name = target->getName().asCstr();
  ASSERT_TRUE(manager->copyIntoTable(target.get(), manager.get(), source.c_str(), &error))
      << error.asCstr();
  EXPECT_EQ((Lines{"3|one", "5|three"}), readAll(*target));
  EXPECT_EQ(name, target->getName().asCstr());
  EXPECT_FALSE(manager->copyIntoTable(target.get(), manager.get(), source.c_str(), &error));
  EXPECT_EQ(1768, messageId(error));
  const TableHandle narrow = create({{"a", zvbTypeDate}});
  EXPECT_FALSE(manager->copyIntoTable(narrow.get(), manager.get(), source.c_str(), &error));
  expectFailure(1769, {source});
}

TEST_F(WholeTables, ASourceIsWhatItsUriSelects) {
  const std::string source = makeWords({"one", "three", "seven"});
  const std::string uri =
      "zvwt:" + source + "?rows=1,2&col=text,word&col=k,%E2%82%AC%C3%A4,4&col=SIZE";
  const TableHandle copy(manager->copyTable(0, manager.get(), uri.c_str(), &error));
  ASSERT_NE(nullptr, copy) << error.asCstr();
  const std::string target = copy->getName().asCstr();
  EXPECT_TRUE(copy->close());
  const Lines rows = {"three|\u20AC\u00E4|5", "seven|\u20AC\u00E4|5"};
  EXPECT_EQ(rows, readTable(target));
  EXPECT_STREQ(("zvwt:" + target + "?col=text&col=k&col=size").c_str(),
               openUri(target)->getURI(false).asCstr());

  EXPECT_FALSE(append(target, source));
  expectFailure(1769, {source, target, "has 2 columns", "has 3"});
  EXPECT_FALSE(append(target, "zvwt:" + source + "?col=text,word&col=size&col=k,x,4"));
  expectFailure(1770, {source, target, "number 1", "\"size\"", "\"k\""});
  EXPECT_FALSE(append(target, "zvwt:" + source + "?col=text,word&col=k,1,2&col=size"));
  expectFailure(1771, {source, target, "number 1", "integer", "string"});
  EXPECT_FALSE(append(target, "ftp:" + source));
  expectFailure(1790, {"\"ftp\""});
  EXPECT_EQ(rows, readTable(target));
  EXPECT_TRUE(append(target, "zvwt:" + source + "?rows=0,1&col=TEXT,word&col=k&col=size"));
  EXPECT_EQ((Lines{rows[0], rows[1], "one|null|3"}), readTable(target));
}

TEST_F(WholeTables, ATableThatIsOpenElsewhereCanBeDeleted) {
  const std::string name = makeCountingTable(10, 20);  // 3 rows an element
  const TableHandle reader = open(name);
  ZvbDatavar value;
  bool end = false;
  ASSERT_TRUE(reader->readRow(&value, &end));
  EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
  EXPECT_TRUE(directory.names().empty() || runsUnderWine());
  const Lines rest = readAll(*reader);
  ASSERT_EQ(3U, rest.size());
  EXPECT_EQ((Lines{"1", "2"}), (Lines{rest[0], rest[1]}));
  EXPECT_TRUE(rest[2].starts_with("failed: 1353:")) << rest[2];
}

// ---- Partitions

TEST_F(WholeTables, PartitionsAreEvenOrFollowTheElements) {
  const std::string one = makeCountingTable(10);
  EXPECT_EQ((Ranges{{0, 4}, {4, 3}, {7, 3}}), partition(one, 3));
  EXPECT_EQ(Ranges{}, partition(one, 0));
  EXPECT_EQ(Ranges{}, partition(one, -3));
  EXPECT_EQ(10U, partition(one, 20).size());
  EXPECT_EQ(Ranges{}, partition(makeCountingTable(0), 5));

  const std::string two = makeCountingTable(12, 60);  // elements of 7 and 5 rows
  EXPECT_EQ((Ranges{{0, 12}}), partition(two, 1));
  EXPECT_EQ((Ranges{{0, 7}, {7, 5}}), partition(two, 2));
  EXPECT_EQ((Ranges{{0, 7}, {7, 5}}), partition(two, 3));
  EXPECT_EQ((Ranges{{0, 4}, {4, 3}, {7, 3}, {10, 2}}), partition(two, 4));
  int parts = 2;
  RowRange ranges[2];
  EXPECT_FALSE(manager->partitionTable("zvwt_none", &parts, ranges, &error));
  EXPECT_EQ(1353, messageId(error));
}

TEST_F(WholeTables, PartitionsReadAsExactlyTheTablesRows) {
  for (const std::int64_t maxElementSize : {0, 30, 100}) {
    const std::string name = makeCountingTable(37, maxElementSize);
    const Lines all = readTable(name);
    for (int parts = 1; parts <= 40; ++parts) {
      Lines together;
      for (const auto& [first, count] : partition(name, parts)) {
        const RowRange range{first, count};
        const Lines part = readTable(name, &range);
        EXPECT_EQ(static_cast<std::size_t>(count), part.size());
        together.insert(together.end(), part.begin(), part.end());
      }
      ASSERT_EQ(all, together) << maxElementSize << " " << parts;
    }
  }
}

// ---- Keys

TEST_F(WholeTables, AKeyHasOneHolderUntilAnyThreadGivesItBack) {
  ASSERT_TRUE(manager->enqueue("key", &error));
  ASSERT_TRUE(manager->enqueue("KEY", &error));  // another key
  manager->dequeue("unknown");
  std::atomic<bool> held{false};
  std::thread waiter([&] {
    ZvbString ownError;
    EXPECT_TRUE(manager->enqueue("key", &ownError));
    held = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(held);
  manager->dequeue("key");
  waiter.join();
  EXPECT_TRUE(held);
  manager->dequeue("key");  // taken by a thread that is gone
  EXPECT_TRUE(manager->enqueue("key", &error));
  // Still held when the manager goes.
}

}  // namespace
