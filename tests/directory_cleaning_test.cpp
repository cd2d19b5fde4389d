/// What is reclaimed of killed processes, and what never is.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "support/Bytes.h"
#include "support/OddKinds.h"
#include "support/OrdinaryUser.h"
#include "support/ShortMemory.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

using Names = std::vector<std::string>;

constexpr const char* tail = "0123456789abcdef";  // of the names of files made here

class DirectoryCleaningTest : public TableTest {
 protected:
  /// The names of the files told of, sorted; those with a problem have a question mark behind them.
  Names clean(std::int64_t leastAge = 0, bool remove = true) {
    Names found;
    const auto take = [](const ZvwtOrphan* orphan, void* context) {
      const std::string path = orphan->path;
      static_cast<Names*>(context)->push_back(path.substr(path.find_last_of("/\\") + 1) +
                                              (orphan->problem != nullptr ? "?" : ""));
      return true;
    };
    EXPECT_TRUE(zvwtCleanDirectories(manager.get(), leastAge, remove, take, &found, &error))
        << error.asCstr();
    std::sort(found.begin(), found.end());
    return found;
  }

  /// A file as a killed process leaves it.
  std::string leave(const std::string& prefix, const std::string& content = "x") const {
    (void)directory.write(prefix + tail, content);
    return prefix + tail;
  }

  void setAge(const std::string& name, std::int64_t seconds) const {
    std::filesystem::last_write_time(
        directory.file(name),
        std::filesystem::file_time_type::clock::now() - std::chrono::seconds(seconds));
  }

  TableHandle openForWriting(int rows) {
    TableHandle table = create({{"number", zvbTypeInteger}}, 1);  // an element for each row
    for (std::int64_t i = 0; i < rows; ++i) {
      EXPECT_TRUE(write(*table, row({i})));
    }
    return table;
  }
};

TEST_F(DirectoryCleaningTest, RemovesWhatNobodyHasAndNothingElse) {
  const std::string table = makeCountingTable(5, 1);
  const TableHandle living = openForWriting(3);
  const Names kept = directory.names();
  const Names left = {leave("zvwork_"), leave("zvwt_", ""), leave("zvwte_"), leave("zvwtei_")};
  (void)directory.write("precious.txt", "mine");
  for (const char* foreign :
       {"zvwt_", "zvwte_0123456789abcde", "zvwte_0123456789abcdefg", "zvwte_0123456789ABCDEF",
        "xzvwte_0123456789abcdef", "zvwti_0123456789abcdef"}) {
    (void)directory.write(foreign, "foreign");
  }
  for (const char* prefix : {"zvwte_aaaaaaaaaaaaaaa", "zvwt_bbbbbbbbbbbbbbb"}) {
    char last = 'a';
    for (const OddKind& kind : oddKinds(directory.file("precious.txt"))) {
      ASSERT_TRUE(kind.make(directory.file(std::string(prefix) + last++))) << kind.name;
    }
  }
  const std::size_t foreign = directory.names().size() - kept.size() - left.size();

  // While a table is being written, what was made after it may be one of its elements.
  EXPECT_EQ(clean(), (Names{left[0], left[1]}));
  EXPECT_TRUE(living->close());
  EXPECT_EQ(clean(0, false), (Names{left[2], left[3]}));
  EXPECT_EQ(clean(), (Names{left[2], left[3]}));
  EXPECT_EQ(clean(), Names());
  EXPECT_EQ(directory.names().size(), kept.size() + foreign);
  EXPECT_EQ(readTable(table).size(), 5U);
  EXPECT_EQ(readTable(living->getName().asCstr()).size(), 3U);
  EXPECT_EQ(TemporaryDirectory::read(directory.file("precious.txt")), "mine");
}

/// Elements of a table that is being written are closed as soon as they are full.
TEST_F(DirectoryCleaningTest, WaitsForWritersWhateverTheTimesOfFilesSay) {
  if (runsUnderWine()) {
    GTEST_SKIP() << "no times of creation are kept";
  }
  const std::string older = leave("zvwte_");
  std::this_thread::sleep_for(std::chrono::milliseconds(30));  // file systems have coarse clocks
  const TableHandle created = openForWriting(3);
  const std::string name = makeCountingTable(2, 1);
  TempDirectories directories;
  ASSERT_TRUE(directories.split(directory.path().c_str(), np_dir_listsep));
  ZVWTFileImpl appended(directories, nullptr);
  ASSERT_TRUE(appended.open(name.c_str(), false, nullptr, false));
  ASSERT_TRUE(write(appended, row({std::int64_t{2}})));
  for (const std::string& file : directory.names()) {
    setAge(file, 100'000);
  }
  EXPECT_EQ(clean(1), Names());  // nor what is only a moment older than they are
  EXPECT_EQ(clean(), Names{older});
  EXPECT_TRUE(created->close());
  EXPECT_TRUE(appended.close());
  EXPECT_EQ(clean(), Names());
  EXPECT_EQ(readTable(created->getName().asCstr()).size(), 3U);
  EXPECT_EQ(readTable(name).size(), 3U);
}

TEST_F(DirectoryCleaningTest, TakesOnlyWhatIsOldEnough) {
  const Names left = {leave("zvwork_"), leave("zvwt_", std::string(64, '\0')), leave("zvwte_")};
  for (const std::string& name : left) {
    setAge(name, 3590);
  }
  EXPECT_EQ(clean(3600), Names());
  setAge(left[2], 3610);
  EXPECT_EQ(clean(3600), Names{left[2]});
  setAge(left[1], -3600);
  EXPECT_EQ(clean(), Names{left[0]});
}

TEST_F(DirectoryCleaningTest, KeepsWhatADamagedCatalogueMayName) {
  const std::string damaged = makeCountingTable(3, 1);
  const std::string orphan = leave("zvwtei_");
  const Bytes whole(directory.file(damaged));
  const auto removedWith = [&](const Bytes& bytes) {
    bytes.save();
    const Names removed = clean(0, false);
    whole.save();
    return removed;
  };
  const Names kept = {damaged + "?"};
  for (std::size_t size = 1; size < whole.size(); ++size) {
    EXPECT_EQ(removedWith(Bytes(whole).cut(size)), kept) << size;
  }
  EXPECT_EQ(removedWith(Bytes(whole).set<std::int16_t>(2, 200)), kept);
  EXPECT_EQ(removedWith(Bytes(whole).set<std::uint32_t>(8, 0xFFFFFFFF)), kept);
  EXPECT_EQ(removedWith(Bytes(whole).set<std::uint32_t>(12, 0xFFFFFFFF)), kept);
  EXPECT_EQ(removedWith(Bytes(whole).set<std::uint16_t>(32 + 1, 15)), kept);
  constexpr std::size_t element = 32 + 1 + 16 + sizeof "number";
  EXPECT_EQ(removedWith(Bytes(whole).set<std::uint16_t>(element + 4, 22)), kept);
  EXPECT_EQ(removedWith(Bytes(whole).set(element + 16, 'Z')), kept);       // of the prefix
  EXPECT_EQ(removedWith(Bytes(whole).set(element + 16 + 22, 'x')), kept);  // for the zero byte
  // Names beyond what a long catalogue counts are a killed append's.
  const Bytes fewer = Bytes(whole).set<std::uint32_t>(12, 2);
  EXPECT_EQ(removedWith(fewer), kept);
  EXPECT_EQ(removedWith(Bytes(fewer).insert(whole.size(), std::string(4096, 'x'))).size(), 3U);
  EXPECT_EQ(clean(), Names{orphan});
  EXPECT_EQ(readTable(damaged).size(), 3U);
}

TEST_F(DirectoryCleaningTest, LooksForNamesInAllDirectories) {
  const TemporaryDirectory other;
  const std::string both =
      directory.path() + np_dir_listsep + other.path() + np_dir_listsep + directory.path();
  manager = makeManager(both);
  const std::string name = makeCountingTable(3, 1);
  for (const std::string& file : directory.names()) {
    if (file != name) {
      std::filesystem::rename(directory.file(file), other.file(file));
    }
  }
  const std::string orphan = leave("zvwte_");
  EXPECT_EQ(clean(), Names{orphan});
  EXPECT_EQ(readTable(name).size(), 3U);

  manager = makeManager(both + ":" + other.file("none"));
  EXPECT_FALSE(zvwtCleanDirectories(manager.get(), 0, true, nullptr, nullptr, &error));
  EXPECT_EQ(messageId(error), 1353);
}

TEST_F(DirectoryCleaningTest, KeepsWhatCopiesOfATableHave) {
  const std::string name = makeCountingTable(3, 1);
  const TemporaryDirectory copy;
  for (const std::string& file : directory.names()) {
    std::filesystem::copy(directory.file(file), copy.file(file));
  }
  manager = makeManager(copy.path());
  EXPECT_TRUE(manager->appendTable(name.c_str(), makeCountingTable(1).c_str(), &error));
  const std::string orphan = leave("zvwte_");
  std::filesystem::copy(directory.file(orphan), copy.file(orphan));
  manager = makeManager(directory.path() + np_dir_listsep + copy.path());
  EXPECT_EQ(clean(), (Names{orphan, orphan}));
  manager = makeManager(copy.path());
  EXPECT_EQ(readTable(name).size(), 4U);
}

TEST_F(DirectoryCleaningTest, LeavesWhatItsUserMayNotWrite) {
  if (isWindows) {
    GTEST_SKIP() << "what a user may do is not told by permission bits";
  }
  using std::filesystem::perms;
  const std::string table = makeCountingTable(3, 1);
  const std::string orphan = leave("zvwte_");
  Names files = {directory.path()};
  for (const std::string& name : directory.names()) {
    files.push_back(directory.file(name));
  }
  for (const std::string& file : files) {
    ASSERT_TRUE(giveToOrdinaryUser(file)) << file;
  }
  const bool passed = passesForOrdinaryUser([&] {
    std::filesystem::permissions(directory.file(table), perms::none);
    EXPECT_EQ(clean(), Names());
    std::filesystem::permissions(directory.file(table), perms::owner_read | perms::owner_write);
    std::filesystem::permissions(directory.path(), perms::owner_read | perms::owner_exec);
    EXPECT_EQ(clean(), Names{orphan + "?"});
    std::filesystem::permissions(directory.path(), perms::owner_all);
    EXPECT_EQ(clean(), Names{orphan});
  });
  EXPECT_TRUE(passed);
}

TEST_F(DirectoryCleaningTest, RemovesNoElementsWithoutMemoryAndEndsWhenToldTo) {
  for (const char* prefix : {"zvwork_", "zvwt_", "zvwte_", "zvwtei_"}) {
    (void)leave(prefix, "");
  }
  const auto countProblems = [](const ZvwtOrphan* orphan, void* count) {
    *static_cast<int*>(count) += orphan->problem != nullptr;
    return true;
  };
  int allocation = 0;
  for (bool met = true; met; ++allocation) {
    int problems = 0;
    const ShortMemory shortMemory(allocation, 1);
    const bool cleaned =
        zvwtCleanDirectories(manager.get(), 0, false, countProblems, &problems, &error);
    met = shortMemory.met();
    EXPECT_EQ(cleaned && problems == 0, !met) << allocation;
  }
  EXPECT_GT(allocation, 4);
  const auto refuse = [](const ZvwtOrphan*, void* count) {
    return ++*static_cast<int*>(count) < 0;
  };
  int count = 0;
  EXPECT_TRUE(zvwtCleanDirectories(manager.get(), 0, true, refuse, &count, &error));
  EXPECT_EQ(count, 1);
  EXPECT_EQ(directory.names().size(), 3U);
}

}  // namespace
