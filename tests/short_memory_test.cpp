/// Every allocation of the managers' operations fails once: each failure says what could not be
/// had, and takes nothing with it.

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "lock/zv_lock.h"
#include "support/ShortMemory.h"
#include "support/TableFixture.h"

namespace {

using Reasons = std::set<std::string>;

class ShortMemoryTest : public TableTest {
 protected:
  /// So that the lock library has grown its own tables before anything is counted.
  static void SetUpTestSuite() {
    for (int i = 0; i < 1000; ++i) {
      zvLockDestroy(zvLockCreate(0, 0));
    }
  }

  /// Runs an operation with its first allocation failing, then with its second, and so on, until
  /// there are no more. The texts of its failures.
  Reasons reasonsOf(const std::function<bool()>& operation) {
    Reasons reasons;
    for (int allocation = 0;; ++allocation) {
      error.setNull();
      bool done = false;
      bool met = false;
      {
        const ShortMemory shortMemory(allocation);
        done = operation();
        met = shortMemory.met();
      }
      if (!met) {
        EXPECT_TRUE(done) << error.asCstr();
        return reasons;
      }
      if (!done) {
        EXPECT_FALSE(error.isEmpty()) << "allocation " << allocation;
        reasons.insert(error.asCstr());
      }
    }
  }

  bool isOpened(ZvWorkTableFile* opened) { return TableHandle(opened) != nullptr; }

  static void expectNamed(const Reasons& reasons, const std::vector<const char*>& names) {
    for (const char* name : names) {
      bool found = false;
      for (const std::string& reason : reasons) {
        found = found || reason.find(name) != std::string::npos;
      }
      EXPECT_TRUE(found) << name << " in " << testing::PrintToString(reasons);
    }
  }
};

TEST_F(ShortMemoryTest, OfTheOpeners) {
  const std::string table = makeTable({{"a", zvbTypeInteger}, {"b", zvbTypeString}},
                                      {row({std::int64_t{1}, std::string("x")})});
  const ZvbString name(table.c_str());
  const ZvbString uri(("zvwt:" + table + "?col=x,b&col=b&col=b&col=k,42,2&col=none").c_str());
  const ZvbString names[] = {"b", "b", "none"};
  const int numbers[] = {1, 0};
  const std::vector<const char*> ofAll = {"(work table file instance)",
                                          "(column definition array)"};
  const Reasons ofUri = reasonsOf([&] { return isOpened(manager->openTable(uri, false, &error)); });
  expectNamed(ofUri, ofAll);
  expectNamed(ofUri,
              {"(selected column array)", "(selected column targets)", "(renamed column mapping)",
               "(selected column mapping)", "(dynamic column value)"});
  const Reasons ofNames = reasonsOf(
      [&] { return isOpened(manager->openTable(name, 3, names, nullptr, false, &error)); });
  expectNamed(ofNames, ofAll);
  expectNamed(ofNames,
              {"(column mapping array)", "(selected column)", "(selected column mapping)"});
  const Reasons ofNumbers = reasonsOf(
      [&] { return isOpened(manager->openTable(name, 2, numbers, nullptr, false, &error)); });
  expectNamed(ofNumbers, ofAll);
  expectNamed(ofNumbers, {"(column mapping array)", "(targets array)"});
  EXPECT_EQ((std::vector<std::string>{"1|x"}), readTable(table));
}

TEST_F(ShortMemoryTest, OfKeysCopiesAndAppends) {
  const std::string source = makeCountingTable(3);
  const ZvbString sourceName(source.c_str());
  const ZvbString key("key");
  expectNamed(reasonsOf([&] {
                const bool taken = manager->enqueue(key, &error);
                manager->dequeue(key);
                return taken;
              }),
              {"29: ", "(enqueue work table element)", "(enqueue work table lock)"});

  expectNamed(reasonsOf([&] {
                const TableHandle copy(manager->copyTable(0, "another", sourceName, &error));
                if (copy != nullptr && !copy->close()) {
                  error = copy->getErrorMessage();
                  return false;
                }
                return copy != nullptr && manager->deleteTable(copy->getName(), &error);
              }),
              {"1781: ", "(work table lock)", "(work table file instance)", "(column value array)",
               "(data element instance)"});

  const std::string target = makeCountingTable(3);
  const ZvbString targetName(target.c_str());
  std::size_t rows = 3;
  expectNamed(reasonsOf([&] {
                const bool appended = manager->appendTable(targetName, sourceName, &error);
                rows += appended ? 3 : 0;
                return appended;
              }),
              {"1780: ", "(work table instance)", "(enqueue work table lock)",
               "(work table file instance)", "(column value array)"});
  EXPECT_EQ(rows, readTable(target).size());
  EXPECT_EQ(3U, readTable(source).size());
  EXPECT_TRUE(manager->enqueue(targetName, &error));  // nobody holds it any more
  manager->dequeue(targetName);
}

}  // namespace
