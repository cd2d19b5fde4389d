/// Managers: their directories, and the tables that they make, open and delete.

#include <gtest/gtest.h>

#include "fio/np_dir.h"
#include "support/EnvironmentVariable.h"
#include "support/TableFixture.h"
#include "support/ThisSystem.h"
#include "wtmgr/ZVWTManagerImpl.h"

namespace {

using Manager = TableTest;

std::vector<std::string> directoriesOf(const std::string& list) {
  ZvbString error;
  const ManagerHandle manager(zvwtCreateManager("m", list.c_str(), &error));
  EXPECT_NE(manager, nullptr);
  auto& inside = static_cast<ZVWTManagerImpl&>(*manager);
  std::vector<std::string> directories;
  for (int i = 0; i < inside.directoryCount(); ++i) {
    directories.emplace_back(inside.getDirectory(i).asCstr());
  }
  EXPECT_STREQ("", inside.getDirectory(-1).asCstr());
  EXPECT_STREQ("", inside.getDirectory(inside.directoryCount()).asCstr());
  return directories;
}

TEST_F(Manager, SplitsItsDirectoryList) {
  using Directories = std::vector<std::string>;
  const std::string s(1, np_dir_listsep);
  EXPECT_EQ((Directories{"a"}), directoriesOf("a"));
  EXPECT_EQ((Directories{"a", "b"}), directoriesOf("a" + s + "b"));
  EXPECT_EQ((Directories{"a"}), directoriesOf("a" + s));
  EXPECT_EQ((Directories{"", "a"}), directoriesOf(s + "a"));
  EXPECT_EQ((Directories{"a", "", "b"}), directoriesOf("a" + s + s + "b"));
  EXPECT_EQ((Directories{""}), directoriesOf(s));
}

TEST_F(Manager, TakesItsDirectoriesFromTheConfigurationElseFromTheSystem) {
  const EnvironmentVariable system(temporaryVariable, directory.path().c_str());
  EnvironmentVariable option("ZVB_BASE_TEMP", "/configured");
  EXPECT_STREQ("/configured", makeManager("")->getDirectoryList().asCstr());
  EXPECT_STREQ("/own", makeManager("/own")->getDirectoryList().asCstr());
  option.set(nullptr);
  EXPECT_EQ(directory.path(), makeManager("")->getDirectoryList().asCstr());
}

TEST_F(Manager, WithoutAnyDirectoryIsValidButFindsAndMakesNothing) {
  const EnvironmentVariable system(temporaryVariable, std::string(500, 'x').c_str());
  const EnvironmentVariable option("ZVB_BASE_TEMP", nullptr);
  const EnvironmentVariable config("ZVB_CONFIG", nullptr);
  manager = makeManager("");
  EXPECT_STREQ("", manager->getDirectoryList().asCstr());
  EXPECT_EQ(nullptr, manager->createTable(1, 0, &error));
  EXPECT_EQ(1417, messageId(error)) << error.asCstr();
  EXPECT_EQ(nullptr, open("zvwt_x"));
  EXPECT_EQ(1353, messageId(error));
  EXPECT_NE(nullptr, std::strstr(error.asCstr(), "\"zvwt_x\"")) << error.asCstr();
}

TEST_F(Manager, IsNotMadeOverAnErrorTextThatIsNotEmpty) {
  error.assign("left over");
  EXPECT_EQ(nullptr, zvwtCreateManager("m", "/tmp", &error));
  EXPECT_STREQ("left over", error.asCstr());
}

TEST_F(Manager, CreatesAndFindsTablesInTheFirstDirectoryThatServes) {
  const TemporaryDirectory second;
  const std::string missing = directory.file("missing");
  manager = makeManager(missing + np_dir_listsep + second.path());
  const std::string name = makeCountingTable(3);
  EXPECT_EQ(3U, second.names().size());
  EXPECT_EQ((std::vector<std::string>{"0", "1", "2"}), readTable(name));

  manager = makeManager(directory.path() + np_dir_listsep + second.path());
  EXPECT_EQ((std::vector<std::string>{"2", "1", "0"}), readTable(name, nullptr, true));
  EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
  EXPECT_TRUE(second.names().empty());
}

TEST_F(Manager, SaysWhyATableCannotBeOpened) {
  const TemporaryDirectory second;
  manager = makeManager(directory.path() + np_dir_listsep + second.path());
  EXPECT_EQ(nullptr, open("zvwt_none"));
  EXPECT_EQ(1353, messageId(error));
  EXPECT_NE(nullptr, std::strstr(error.asCstr(), second.file("zvwt_none").c_str()));
  for (const char* name : {"", "../x", "a/b", "C:x", "..", "zvwt:x?rows=1,2"}) {
    EXPECT_EQ(nullptr, open(name)) << name;
    EXPECT_EQ(1784, messageId(error)) << name << ": " << error.asCstr();
  }
  EXPECT_EQ(nullptr, manager->openTable(directory.path().c_str(), false, &error));
  EXPECT_EQ(1784, messageId(error));
}

TEST_F(Manager, DeletesAllOfATableAndNothingElse) {
  const std::string kept = makeCountingTable(4, 10);
  const std::size_t filesOfKept = directory.names().size();
  const std::string name = makeCountingTable(10, 10);
  EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
  EXPECT_EQ(filesOfKept, directory.names().size());
  EXPECT_EQ(4U, readTable(kept).size());
  EXPECT_FALSE(manager->deleteTable(name.c_str(), &error));
  EXPECT_EQ(1353, messageId(error));
}

TEST_F(Manager, DeletesWhatIsLeftOfATableThatLostAFile) {
  for (const char* lost : {"zvwte_", "zvwtei_"}) {
    const std::string name = makeCountingTable(3);
    for (const std::string& file : directory.names()) {
      if (file.starts_with(lost)) {
        std::filesystem::remove(directory.file(file));
      }
    }
    EXPECT_FALSE(manager->deleteTable(name.c_str(), &error));
    EXPECT_EQ(1353, messageId(error)) << error.asCstr();
    EXPECT_TRUE(directory.names().empty());
  }
}

TEST_F(Manager, TellsTheSizesOfATable) {
  const std::string name = makeCountingTable(10, 20);
  ZvwtTableSizes sizes;
  ASSERT_TRUE(zvwtGetTableSizes(manager.get(), name.c_str(), &sizes, &error)) << error.asCstr();
  EXPECT_EQ(4, sizes.elementCount);  // of 3 rows of 9 bytes, and one row more
  EXPECT_EQ(10, sizes.rowCount);
  EXPECT_EQ(20, sizes.maxElementSize);
  EXPECT_EQ(90, sizes.dataBytes);
  EXPECT_EQ(80, sizes.indexBytes);
  EXPECT_EQ(static_cast<std::int64_t>(std::filesystem::file_size(directory.file(name))),
            sizes.catalogueBytes);

  std::filesystem::remove(directory.file(directory.names()[1]));
  for (const char* table : {name.c_str(), "zvwt_none"}) {
    EXPECT_FALSE(zvwtGetTableSizes(manager.get(), table, &sizes, &error));
    EXPECT_EQ(1353, messageId(error)) << error.asCstr();
  }
}

}  // namespace
