/// Every allocation of the managers' operations fails once, alone and with the one behind it: an
/// operation does all that it should, or says that it failed and leaves the tables as they were.

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

  using Operation = std::function<bool()>;

  /// Runs an operation with its first allocation failing, then with its second, and so on, until
  /// there are no more; checks what it has done whenever it succeeds. The texts of its failures.
  Reasons reasonsOf(const Operation& operation, const std::function<void()>& check) {
    Reasons reasons;
    for (const int count : {1, 2}) {
      bool met = true;
      for (int allocation = 0; met; ++allocation) {
        error.setNull();
        bool done = false;
        {
          const ShortMemory shortMemory(allocation, count);
          done = operation();
          met = shortMemory.met();
        }
        EXPECT_TRUE(done || met) << error.asCstr();
        if (done) {
          check();
        } else {
          // Creating a manager is the one failure without a text of its own.
          EXPECT_FALSE(error.isEmpty()) << "allocation " << allocation;
          reasons.insert(error.asCstr());
        }
      }
    }
    return reasons;
  }

  /// The reasons why an opening fails; when it does not, it delivers `rows`.
  Reasons reasonsOfOpening(const std::function<ZvWorkTableFile*()>& opening,
                           const std::vector<std::string>& rows, const std::string& uri) {
    TableHandle opened;
    return reasonsOf(
        [&] {
          opened.reset(opening());
          return opened != nullptr;
        },
        [&] {
          EXPECT_EQ(rows, readAll(*opened));
          for (int allocation = 0; allocation < 40; ++allocation) {
            ZvbString described;
            {
              const ShortMemory shortMemory(allocation, 2);
              described = opened->getURI(false);
            }
            EXPECT_TRUE(described.isEmpty() || uri == described.asCstr()) << described.asCstr();
          }
        });
  }

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
  const std::string b(60, 'b');  // so long that it needs memory
  const std::string table = makeTable({{"a", zvbTypeInteger}, {b.c_str(), zvbTypeString}},
                                      {row({std::int64_t{1}, std::string("x")})});
  const ZvbString name(table.c_str());
  const std::string start = "zvwt:" + table;
  const std::string uriText = start + "?col=x," + b + "&col=" + b + ',' + b + 'c' + "&col=" + b +
                              "&col=" + b + "&col=k,42,2&col=t," + b + ",4&col=none";
  const ZvbString uri(uriText.c_str());
  const ZvbString renamed((start + "?col=a," + b + "&col=" + b).c_str());
  const ZvbString names[] = {b.c_str(), b.c_str(), "none"};
  const int numbers[] = {1, 0};
  const std::vector<const char*> ofAll = {"(work table file instance)",
                                          "(column definition array)"};
  const Reasons ofUri =
      reasonsOfOpening([&] { return manager->openTable(uri, false, &error); },
                       {"x|" + b + "c|x|x|42|" + b + "|null"},
                       start + "?col=x," + b + "&col=" + b + ',' + b + "c,4&col=" + b +
                           "&col=" + b + "&col=k,42,2&col=t," + b + ",4&col=none,,4");
  expectNamed(ofUri, ofAll);
  expectNamed(ofUri,
              {"(selected column array)", "(selected column targets)", "(renamed column mapping)",
               "(selected column mapping)", "(dynamic column value)"});
  (void)reasonsOfOpening([&] { return manager->openTable(renamed, false, &error); }, {"x|x"},
                         renamed.asCstr());
  const Reasons ofNames =
      reasonsOfOpening([&] { return manager->openTable(name, 3, names, nullptr, false, &error); },
                       {"x|x|null"}, start + "?col=" + b + "&col=" + b + "&col=none,,4");
  expectNamed(ofNames, ofAll);
  expectNamed(ofNames,
              {"(column mapping array)", "(selected column)", "(selected column mapping)"});
  const Reasons ofNumbers =
      reasonsOfOpening([&] { return manager->openTable(name, 2, numbers, nullptr, false, &error); },
                       {"x|1"}, start + "?col=" + b + "&col=a");
  expectNamed(ofNumbers, ofAll);
  expectNamed(ofNumbers, {"(column mapping array)", "(targets array)"});
}

TEST_F(ShortMemoryTest, OfKeysCopiesAndAppends) {
  const std::string source = makeCountingTable(3);
  const ZvbString sourceName(source.c_str());
  const ZvbString key("key");
  expectNamed(reasonsOf(
                  [&] {
                    const bool taken = manager->enqueue(key, &error);
                    manager->dequeue(key);
                    return taken;
                  },
                  [] {}),
              {"29: ", "(enqueue work table element)", "(enqueue work table lock)"});

  expectNamed(reasonsOf(
                  [&] {
                    const TableHandle copy(manager->copyTable(0, "another", sourceName, &error));
                    if (copy != nullptr && !copy->close()) {
                      error = copy->getErrorMessage();
                      return false;
                    }
                    return copy != nullptr && manager->deleteTable(copy->getName(), &error);
                  },
                  [] {}),
              {"1781: ", "(work table lock)", "(work table file instance)", "(column value array)",
               "(data element instance)"});

  const std::string target = makeCountingTable(3);
  const ZvbString targetName(target.c_str());
  std::size_t rows = 3;
  expectNamed(reasonsOf([&] { return manager->appendTable(targetName, sourceName, &error); },
                        [&] { rows += 3; }),
              {"1780: ", "(work table instance)", "(enqueue work table lock)",
               "(work table file instance)", "(column value array)"});
  EXPECT_EQ(rows, readTable(target).size());
  EXPECT_EQ(3U, readTable(source).size());
  EXPECT_TRUE(manager->enqueue(targetName, &error));  // nobody holds it any more
  manager->dequeue(targetName);
}

}  // namespace
