/// Any bytes as the files of a table: checked, opened in every way, read, described, copied,
/// appended to and deleted, with a reason for everything that fails and no file where none belongs.
///
/// An input is the size of the catalogue and that of the element data (2 bytes each), the
/// catalogue, the data, and the index. The catalogue finds the two latter under the names of two
/// elements: "zvwte_" and "zvwtei_" with 16 times "a", and with 16 times "b".

#include "Input.h"
#include "RowTexts.h"
#include "WorkFolder.h"

namespace {

constexpr const char* tableName = "zvwt_t";
/// A catalogue may promise more rows than anybody waits for.
constexpr std::size_t mostRows = 100;
constexpr std::int64_t appendedRows = 20;

using Names = std::set<std::string>;
using Rows = std::vector<std::string>;

class DamagedTable {
 public:
  explicit DamagedTable(const WorkFolder& folder)
      : folder_(folder), manager_(zvwtCreateManager("damaged", folder.path().c_str(), &error_)) {
    FUZZ_CHECK(manager_ != nullptr, error_.asCstr());
  }

  /// Writes the files of the input.
  void write(Input input) {
    const auto catalogueSize = input.take<std::uint16_t>();
    const auto dataSize = input.take<std::uint16_t>();
    writeFile(tableName, input.takeBytes(catalogueSize));
    const std::string_view data = input.takeBytes(dataSize);
    const std::string_view index = input.takeRest();
    for (const std::string& element : {std::string(16, 'a'), std::string(16, 'b')}) {
      writeFile("zvwte_" + element, data);
      writeFile("zvwtei_" + element, index);
    }
  }

  /// Readers find no fault where the check finds none.
  void checkChecking() {
    std::int64_t findings = 0;
    error_.assign("");
    if (!zvwtCheckTable(manager_.get(), tableName, takeFinding, this, &findings, &error_)) {
      FUZZ_CHECK(hasReason(), "check");
      return;
    }
    FUZZ_CHECK(findings == found_, std::to_string(findings));
    if (findings == 0) {
      expectReadable();
    }
  }

  void checkReading() {
    for (const bool backwards : {false, true}) {
      readAllOf(openRange({}, backwards));
      readAllOf(openRange({1, 3}, backwards));
      readAllOf(openSomeNames(backwards));
      readAllOf(openSomeNumbers(backwards));
      const std::string uri = std::string("zvwt:") + tableName;
      readAllOf(openText(uri + "?rows=1,-1&col=id&col=x,city&col=none&col=k,42,2", backwards));
      readAllOf(openText(uri + "?rows=2,2", backwards));
      readAllOf(openText(tableName, backwards));
    }
  }

  void checkDescriptions() {
    const zvwt::Table table = openRange({}, false);
    if (table == nullptr) {
      return;
    }
    checkPartition(table->getRowCount());
    const zvwt::Statistics statistics(table->getStatistics());
    FUZZ_CHECK(statistics != nullptr, table->getErrorMessage().asCstr());
    ZvbString xml;
    bool atEnd = false;
    FUZZ_CHECK(table->asXml(0, mostRows, &xml, &atEnd), table->getErrorMessage().asCstr());
    ZvwtTableSizes sizes;
    const bool measured = zvwtGetTableSizes(manager_.get(), tableName, &sizes, &error_);
    FUZZ_CHECK(measured ? sizes.rowCount == table->getRowCount() : hasReason(), error_.asCstr());
  }

  /// Copies and appends the table's first rows, which are as many as its reader finds.
  void checkWriting() {
    const zvwt::Table table = openRange({0, appendedRows}, false);
    if (table == nullptr) {
      return;
    }
    bool whole = false;
    const std::size_t count = readRows(*table, mostRows, &whole).size();
    const ZvbString source = table->getURI(false);
    checkCopy(source, count, whole);
    const std::int64_t before = table->getRowCount();
    if (manager_->appendTable(tableName, source, &error_)) {
      FUZZ_CHECK(whole, "rows were appended that cannot be read");
      checkAppended(before, count);
    } else {
      FUZZ_CHECK(hasReason(), "append");
    }
  }

  /// Leaves nothing behind that the input has not brought along.
  void remove() {
    const bool removed = manager_->deleteTable(tableName, &error_);
    FUZZ_CHECK(removed || hasReason(), "delete");
    const Names left = folder_.names();
    FUZZ_CHECK(!removed || !left.contains(tableName), "deleted, and there");
    for (const std::string& name : left) {
      FUZZ_CHECK(written_.contains(name), name + " is left: " + error_.asCstr());
    }
    FUZZ_CHECK(folder_.surroundingsAreWhole(), "files elsewhere");
  }

 private:
  void writeFile(const std::string& name, std::string_view content) {
    folder_.write(name, content);
    written_.insert(name);
  }

  [[nodiscard]] bool hasReason() const { return !error_.isEmpty(); }

  static bool takeFinding(const ZvwtFinding* finding, void* context) {
    const std::string detail = std::string(finding->file) + ": " + finding->rule;
    FUZZ_CHECK(finding->offset >= 0 && finding->rule[0] != '\0', detail);
    ++static_cast<DamagedTable*>(context)->found_;
    return true;
  }

  void expectReadable() {
    const zvwt::Table table = openRange({}, false);
    FUZZ_CHECK(table != nullptr, error_.asCstr());
    bool atEnd = false;
    const Rows rows = readRows(*table, mostRows, &atEnd);
    FUZZ_CHECK(atEnd || rows.size() == mostRows, table->getErrorMessage().asCstr());
    FUZZ_CHECK(!atEnd || table->getRowCount() == static_cast<std::int64_t>(rows.size()), "count");
    const zvwt::Table backwards = openRange({}, true);
    if (backwards == nullptr || !atEnd) {
      return;  // an element without an index has no way back
    }
    const Rows turned = readRows(*backwards, mostRows, &atEnd);
    FUZZ_CHECK(!atEnd || std::equal(rows.begin(), rows.end(), turned.rbegin(), turned.rend()),
               "backwards");
  }

  zvwt::Table opened(ZvWorkTableFile* table) {
    FUZZ_CHECK(table != nullptr || hasReason(), "open");
    return zvwt::Table(table);
  }
  zvwt::Table openRange(const RowRange& range, bool backwards) {
    const ZvbString* noNames = nullptr;
    error_.assign("");
    return opened(manager_->openTable(tableName, -1, noNames, &range, backwards, &error_));
  }
  zvwt::Table openSomeNames(bool backwards) {
    const ZvbString names[] = {"CITY", "none", "id", "city"};
    error_.assign("");
    return opened(manager_->openTable(tableName, 4, names, nullptr, backwards, &error_));
  }
  zvwt::Table openSomeNumbers(bool backwards) {
    const int numbers[] = {1, 0};
    error_.assign("");
    return opened(manager_->openTable(tableName, 2, numbers, nullptr, backwards, &error_));
  }
  zvwt::Table openText(const std::string& text, bool backwards) {
    error_.assign("");
    return opened(manager_->openTable(text.c_str(), backwards, &error_));
  }

  static void readAllOf(const zvwt::Table& table) {
    if (table == nullptr) {
      return;
    }
    bool atEnd = false;
    const Rows rows = readRows(*table, mostRows, &atEnd);
    FUZZ_CHECK(atEnd || rows.size() == mostRows || !table->getErrorMessage().isEmpty(), "read");
    readRows(*table, 3, &atEnd);  // after the end, and after a failure
  }

  /// The parts hold every row once, in order.
  void checkPartition(std::int64_t rowCount) {
    constexpr int mostParts = 5;
    for (int wanted = 0; wanted <= mostParts; ++wanted) {
      RowRange ranges[mostParts + 1];
      int parts = wanted;
      FUZZ_CHECK(manager_->partitionTable(tableName, &parts, ranges, &error_), error_.asCstr());
      FUZZ_CHECK(parts <= wanted, std::to_string(parts));
      std::int64_t next = 0;
      for (int i = 0; i < parts; ++i) {
        FUZZ_CHECK(ranges[i].firstRow == next, std::to_string(i));
        next += ranges[i].rowCount;
      }
      FUZZ_CHECK(wanted == 0 || next == rowCount, std::to_string(wanted));
    }
  }

  void checkCopy(const ZvbString& source, std::size_t count, bool whole) {
    error_.assign("");
    zvwt::Table copy(manager_->copyTable(60, "", source, &error_));
    FUZZ_CHECK(copy != nullptr ? whole : hasReason(), "copy");
    if (copy == nullptr) {
      return;
    }
    FUZZ_CHECK(copy->close(), copy->getErrorMessage().asCstr());
    const ZvbString name = copy->getName();
    copy.reset(manager_->openTable(name, true, &error_));
    FUZZ_CHECK(copy != nullptr, error_.asCstr());
    FUZZ_CHECK(readAllRows(*copy).size() == count, name.asCstr());
    copy.reset();
    FUZZ_CHECK(manager_->deleteTable(name, &error_), error_.asCstr());
  }

  void checkAppended(std::int64_t before, std::size_t count) {
    const zvwt::Table whole = openRange({}, false);
    FUZZ_CHECK(whole != nullptr, error_.asCstr());
    FUZZ_CHECK(whole->getRowCount() == before + static_cast<std::int64_t>(count), "row count");
    const zvwt::Table appended = openRange({before, -1}, false);
    if (appended == nullptr) {
      return;  // an element without an index has no ranges
    }
    bool atEnd = false;
    const Rows rows = readRows(*appended, mostRows, &atEnd);
    FUZZ_CHECK(atEnd && rows.size() == count, appended->getErrorMessage().asCstr());
  }

  const WorkFolder& folder_;
  ZvbString error_;
  zvwt::Manager manager_;
  Names written_;
  std::int64_t found_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const WorkFolder folder;
  folder.clear();
  DamagedTable table(folder);
  table.write(Input(bytes, size));
  table.checkChecking();
  table.checkReading();
  table.checkDescriptions();
  table.checkWriting();
  table.remove();
  return 0;
}
