/// What is no file, or not one's own, where a table expects its files; names that lead elsewhere;
/// directories that refuse. Each operation gives the reason, and nothing outside is touched.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string_view>

#include "fio/np_fio.h"
#include "support/Bytes.h"
#include "support/OddKinds.h"
#include "support/OrdinaryUser.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Contents = std::map<std::string, std::string>;
/// For each operation the number of its failure; 0: it passes; findings: it is a check with some.
using Answers = std::map<std::string, int>;
constexpr int findings = -1;

constexpr int tooDamaged = 1301;
constexpr int notOpened = 1353;
constexpr int notDeleted = 1747;
constexpr int notPlain = 1784;

/// The tables' directory lies in another one, in which there is a table that could be reached by
/// those who let themselves be led.
class OddFiles : public TableTest {
 protected:
  OddFiles()
      : TableTest(memoryDirectory()), tables(directory.path()), outside(makeCountingTable(2)) {
    manager = makeManager(tables.path());
    good = makeCountingTable(1);
    outsideBefore_ = contentsOf(directory.path());
  }
  ~OddFiles() override { EXPECT_EQ(outsideBefore_, contentsOf(directory.path())); }

  /// The names of a table's files that has one element.
  struct Files {
    std::string catalogue, data, index;
  };
  Files filesOf(const std::string& name, const TemporaryDirectory& place) {
    const std::string content = TemporaryDirectory::read(place.file(name));
    return {name, content.substr(content.size() - 24 - 23, 22),
            content.substr(content.size() - 24, 23)};
  }
  Files makeFiles() { return filesOf(makeCountingTable(3), tables); }

  static Contents contentsOf(const std::string& path) {
    Contents contents;
    for (const auto& entry : fs::directory_iterator(path)) {
      const bool isFile = entry.is_regular_file() && !entry.is_symlink();
      contents[entry.path().filename().string()] =
          isFile ? TemporaryDirectory::read(entry.path().string()) : "no file";
    }
    return contents;
  }

  int idOf(bool passed) {
    EXPECT_TRUE(passed || error.asView().size() > 10) << error.asCstr();
    return passed ? 0 : messageId(error);
  }
  int read(const TableHandle& table) {
    const auto rows = readOpened(table);
    constexpr std::string_view failure = "failed: ";
    return !rows.empty() && rows.back().starts_with(failure)
               ? std::atoi(rows.back().c_str() + failure.size())
               : 0;
  }
  int check(const std::string& name) {
    std::int64_t count = 0;
    const int id =
        idOf(zvwtCheckTable(manager.get(), name.c_str(), nullptr, nullptr, &count, &error));
    return count > 0 ? findings : id;
  }

  Answers use(const std::string& name);
  void expectOnly(int id, const std::string& name, const std::string& what);

  TemporaryDirectory tables;
  std::string outside;
  std::string good;  // has one row

 private:
  Contents outsideBefore_;
};

std::string uriOf(const std::string& name) {
  std::string uri = "zvwt:";
  for (const char character : name) {
    constexpr const char* digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    uri += {'%', digits[byte / 16], digits[byte % 16]};
  }
  return uri + "?col=number";
}

Answers OddFiles::use(const std::string& name) {
  const std::size_t handles = openFiles().size();
  const int number = 0;
  int parts = 1;
  RowRange range;
  ZvwtTableSizes sizes;
  Answers answers;
  answers["open"] = read(open(name));
  answers["open backwards"] = read(open(name, nullptr, true));
  answers["open numbers"] =
      read(TableHandle(manager->openTable(name.c_str(), 1, &number, nullptr, false, &error)));
  answers["open URI"] = read(openUri(uriOf(name)));
  answers["partition"] = idOf(manager->partitionTable(uriOf(name).c_str(), &parts, &range, &error));
  answers["sizes"] = idOf(zvwtGetTableSizes(manager.get(), name.c_str(), &sizes, &error));
  answers["check"] = check(name);
  TableHandle copied(manager->copyTable(0, "", uriOf(name).c_str(), &error));
  answers["copy"] = idOf(copied != nullptr);
  if (copied != nullptr) {
    EXPECT_TRUE(copied->close());
    EXPECT_TRUE(manager->deleteTable(copied->getName(), &error)) << error.asCstr();
  }
  answers["append from"] = idOf(manager->appendTable(good.c_str(), uriOf(name).c_str(), &error));
  answers["append to"] = idOf(manager->appendTable(name.c_str(), good.c_str(), &error));
  answers["delete"] = idOf(manager->deleteTable(name.c_str(), &error));
  EXPECT_EQ(handles, openFiles().size());
  return answers;
}

/// All operations fail with this number, and change nothing.
void OddFiles::expectOnly(int id, const std::string& name, const std::string& what) {
  const Contents before = contentsOf(tables.path());
  for (const auto& [operation, answer] : use(name)) {
    EXPECT_EQ(id, answer) << what << ": " << operation << ": " << error.asCstr();
  }
  EXPECT_EQ(before, contentsOf(tables.path())) << what;
}

// ---- What is no file

TEST_F(OddFiles, AreNoTables) {
  for (const OddKind& kind : oddKinds(directory.file(outside))) {
    ASSERT_TRUE(kind.make(tables.file("zvwt_odd"))) << kind.name;
    expectOnly(notOpened, "zvwt_odd", kind.name);
    EXPECT_NE(nullptr, std::strstr(error.asCstr(), "not a regular file")) << error.asCstr();
    fs::remove(tables.file("zvwt_odd"));
  }
  manager = makeManager("/dev");
  for (const char* device : {"null", "zero", "full", "tty", "shm"}) {
    EXPECT_EQ(nullptr, open(device));
    EXPECT_EQ(notOpened, messageId(error)) << error.asCstr();
  }
}

TEST_F(OddFiles, AreNoElements) {
  const Answers expected = {{"open", notOpened},
                            {"open backwards", notOpened},
                            {"open numbers", notOpened},
                            {"open URI", notOpened},
                            {"partition", 0},
                            {"sizes", notOpened},
                            {"check", findings},
                            {"copy", 1782},
                            {"append from", 1782},
                            {"append to", notOpened},
                            {"delete", notOpened}};
  const Files others = filesOf(outside, directory);
  for (const bool isIndex : {false, true}) {
    for (const OddKind& kind : oddKinds(directory.file(isIndex ? others.index : others.data))) {
      const Files files = makeFiles();
      const std::string& odd = isIndex ? files.index : files.data;
      fs::remove(tables.file(odd));
      ASSERT_TRUE(kind.make(tables.file(odd))) << kind.name;
      EXPECT_EQ(expected, use(files.catalogue)) << kind.name << ' ' << isIndex;
      EXPECT_EQ("no file", contentsOf(tables.path())[odd]) << kind.name;
      EXPECT_EQ(4U, tables.names().size()) << kind.name;  // no more of the table is left
      fs::remove(tables.file(odd));
    }
  }
}

// ---- Names

std::vector<std::string> namesThatLeadElsewhere(const std::string& target) {
  return {"../" + target,
          "./" + target,
          "..",
          ".",
          "",
          "/etc/passwd",
          "a/../../" + target,
          "..\\" + target,
          "C:\\" + target,
          "C:" + target,
          "\\\\host\\" + target,
          target + ":x",
          target + ".",
          target + " ",
          "con",
          "NUL.txt",
          "lpt1",
          "a\nb",
          "a\x1B[2J",
          "\t",
          std::string(259, 'x'),
          std::string(5000, 'x')};
}

TEST_F(OddFiles, AreNotReachedByTablesNames) {
  for (const std::string& name : namesThatLeadElsewhere(outside)) {
    expectOnly(notPlain, name, name);
  }
  for (const std::string& name : {"\xFF\xFE\x80"s, "a b"s, "*"s, "%2e%2e%2f" + outside, "~"s,
                                  std::string(100, '\x7F'), "zvwt_"s}) {
    expectOnly(notOpened, name, name);
  }
  for (const std::string& uri : {"zvwt:" + good + "%00", "zvwt:" + good + "%00%2F.."}) {
    EXPECT_EQ(nullptr, openUri(uri));
    EXPECT_GT(messageId(error), 0);
  }
}

/// Writes a catalogue that names other files, of any length.
void rename(const std::string& path, const std::string& data, const std::string& index) {
  constexpr std::size_t headSize = 16;
  Bytes bytes(path);
  const std::size_t head = bytes.size() - headSize - 23 - 24;
  bytes.cut(head + headSize)
      .set(head + 4, static_cast<std::uint16_t>(data.size() + 1))
      .set(head + 6, static_cast<std::uint16_t>(index.size() + 1))
      .insert(head + headSize, data + '\0' + index + '\0')
      .save();
}

/// All fails but what reads no rows. Nothing goes, except what is left of the table when it is
/// deleted.
TEST_F(OddFiles, AreNotReachedByElementsNames) {
  const Files files = makeFiles();
  const Contents whole = contentsOf(tables.path());
  fs::create_directory(tables.file("zvwte_"));
  fs::create_directory(tables.file("zvwtei_"));
  const auto expectRefused = [&](const std::string& data, const std::string& index) {
    for (const std::string& file : {files.catalogue, files.data, files.index}) {
      (void)tables.write(file, whole.at(file));
    }
    rename(tables.file(files.catalogue), data, index);
    for (const auto& [operation, answer] : use(files.catalogue)) {
      EXPECT_TRUE(answer != 0 || operation == "partition") << operation << ' ' << data;
    }
    Contents now = contentsOf(tables.path());
    now.insert({{files.catalogue, ""}, {files.data, ""}, {files.index, ""}});
    EXPECT_EQ(whole.size() + 2, now.size()) << data << ' ' << index;
    EXPECT_EQ(1U, readTable(good).size());
  };
  const Files others = filesOf(outside, directory);
  for (const std::string& target : {others.data, others.index}) {
    for (const std::string& name : namesThatLeadElsewhere(target)) {
      for (const char* prefix : {"", "zvwte_", "zvwte_/"}) {
        expectRefused(prefix + name, files.index);
      }
      for (const char* prefix : {"", "zvwtei_", "zvwtei_/"}) {
        expectRefused(files.data, prefix + name);
      }
    }
  }
  expectRefused(good, files.index);
  expectRefused(files.catalogue, files.index);
  expectRefused(files.index, files.data);
  expectRefused("zvwte_\xFF\xFE", files.index);
}

/// Nothing tells whose elements they are: the rows can be read, and go with the table. But an
/// append never cuts one element for the other.
TEST_F(OddFiles, ThatSeveralTablesOrElementsNameAreReadByEach) {
  const Files files = makeFiles();
  const std::string whole = TemporaryDirectory::read(tables.file(files.catalogue));
  (void)tables.write("zvwt_other", whole);
  EXPECT_EQ(0, check("zvwt_other"));
  EXPECT_EQ(readTable(files.catalogue), readTable("zvwt_other"));
  EXPECT_TRUE(manager->deleteTable("zvwt_other", &error)) << error.asCstr();
  EXPECT_EQ(notOpened, read(open(files.catalogue)));
  EXPECT_FALSE(manager->deleteTable(files.catalogue.c_str(), &error));
  EXPECT_EQ(notOpened, messageId(error));

  const Files again = makeFiles();
  Bytes catalogue(tables.file(again.catalogue));
  const std::size_t element = catalogue.size() - 16 - 23 - 24;
  catalogue.insert(catalogue.size(), catalogue.content().substr(element))
      .set<std::uint32_t>(12, 2)
      .set<std::int64_t>(24, 4)
      .set<std::int64_t>(element + 16 + 23 + 24 + 8, 1)
      .save();
  const Answers expected = {{"open", 0},          {"open backwards", 0},
                            {"open numbers", 0},  {"open URI", 0},
                            {"partition", 0},     {"sizes", 0},
                            {"check", findings},  {"copy", 0},
                            {"append from", 0},   {"append to", notOpened},
                            {"delete", notOpened}};
  EXPECT_EQ((std::vector<std::string>{"0", "1", "2", "0"}), readTable(again.catalogue));
  EXPECT_EQ(expected, use(again.catalogue));
  EXPECT_EQ(3U, tables.names().size());
}

TEST_F(OddFiles, WithRowsThatTakeNoBytesAreRefused) {
  const std::string name = makeTable({}, {row({})});
  constexpr auto many = std::int64_t{1} << 60;
  Bytes(tables.file(name)).set(24, many).set<std::uint16_t>(33 + 6, 0).set(33 + 8, many).save();
  Answers answers = use(name);
  EXPECT_EQ(findings, answers["check"]);
  answers.erase("check");
  for (const auto& [operation, answer] : answers) {
    EXPECT_EQ(tooDamaged, answer) << operation;
  }
}

// ---- Directories

TEST_F(OddFiles, InAListOfDirectoriesArePassedOver) {
  const fs::path formerPath = fs::current_path();
  fs::current_path(tables.path());
  fs::create_directory("second");
  if (!isWindows) {
    fs::create_symlink("second", "link");
    fs::create_symlink("nowhere", "dangling");
  }
  const std::vector<std::string> before = tables.names();
  const std::string separator(1, np_dir_listsep);
  for (const std::string& list :
       {"missing" + separator + good + separator + "dangling" + separator + "second",
        "second" + separator + "second" + separator + "missing",
        (isWindows ? "second" : "link") + separator + separator + "missing", separator + "second",
        separator + separator}) {
    manager = makeManager(list);
    const std::string target = makeCountingTable(3, 1);
    EXPECT_TRUE(manager->appendTable(target.c_str(), target.c_str(), &error)) << error.asCstr();
    EXPECT_EQ(6U, readTable(target, nullptr, true).size()) << list;
    EXPECT_TRUE(manager->deleteTable(target.c_str(), &error)) << list << error.asCstr();
    EXPECT_TRUE(fs::is_empty("second")) << list;
    EXPECT_EQ(before.size(), tables.names().size()) << list;
  }
  for (const std::string& list : {"missing"s, good, good + separator + "dangling", "/proc/self"s}) {
    manager = makeManager(list);
    EXPECT_EQ(nullptr, manager->createTable(1, 0, &error)) << list;
    EXPECT_EQ(1417, messageId(error)) << error.asCstr();
    EXPECT_EQ(nullptr, open(good));
    EXPECT_EQ(notOpened, messageId(error)) << error.asCstr();
  }
  fs::current_path(formerPath);
}

/// Directories, and files in them, that belong to someone else, if this runs as root, or that are
/// the user's own and shut.
TEST_F(OddFiles, InDirectoriesThatRefuseAreReadAtMost) {
  if (isWindows) {
    GTEST_SKIP() << "what a user may do is not told by permission bits";
  }
  using fs::perms;
  const auto make = [this](const std::string& name, perms allowed) {
    const TemporaryDirectory& parent = tables;
    fs::create_directory(parent.file(name));
    manager = makeManager(parent.file(name));
    const std::string table = makeCountingTable(3);
    for (const auto& entry : fs::directory_iterator(parent.file(name))) {
      fs::permissions(entry.path(), perms::owner_read | perms::group_read | perms::others_read);
    }
    fs::permissions(parent.file(name), allowed);
    return table;
  };
  const perms readable =
      perms::owner_read | perms::owner_exec | perms::others_read | perms::others_exec;
  fs::create_directory(tables.file("own"));
  fs::permissions(tables.file("own"), perms::all);
  std::map<std::string, std::string> refusing = {{"readonly", make("readonly", readable)}};
  if (isRoot()) {
    refusing["sticky"] = make("sticky", perms::all | perms::sticky_bit);
  }
  const std::string hidden = make("shut", perms::none);
  const auto expectDenied = [&](bool passed, int id) {
    EXPECT_FALSE(passed);
    EXPECT_EQ(id, messageId(error)) << error.asCstr();
    EXPECT_NE(nullptr, std::strstr(error.asCstr(), "access denied")) << error.asCstr();
  };
  const bool passed = passesForOrdinaryUser([&] {
    for (const auto& [place, table] : refusing) {
      manager = makeManager(tables.file(place) + np_dir_listsep + tables.file("own"));
      Answers answers = use(table);
      EXPECT_EQ(notOpened, std::exchange(answers["append to"], 0));
      EXPECT_EQ(notDeleted, std::exchange(answers["delete"], 0));
      for (const auto& [operation, answer] : answers) {
        EXPECT_TRUE(answer == 0 || operation == "append from") << operation << answer;
      }
      EXPECT_EQ(3U, readTable(table).size());
      expectDenied(manager->deleteTable(table.c_str(), &error), notDeleted);
    }
    for (const char* place : {"readonly", "shut"}) {
      manager = makeManager(tables.file(place));
      expectDenied(manager->createTable(1, 0, &error) != nullptr, 1417);
    }
    expectDenied(open(hidden) != nullptr, notOpened);
  });
  EXPECT_TRUE(passed);
  for (const auto& [place, table] : refusing) {
    EXPECT_EQ(3U, contentsOf(tables.file(place)).size());
  }
  EXPECT_TRUE(fs::is_empty(tables.file("own")));
  fs::permissions(tables.file("shut"), perms::all);
}

}  // namespace
