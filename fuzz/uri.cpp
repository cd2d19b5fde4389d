/// Any text as a table's URI: what can be read can be built again in its one form, says the same,
/// and opens a table in the way it tells.

#include <algorithm>

#include "Input.h"
#include "RowTexts.h"
#include "WorkFolder.h"

namespace {

constexpr std::int64_t tableRows = 5;

std::string text(const ZvbString& string) { return string.asCstr(); }

/// The URI's parts in the one form, with another table name when one is given.
std::string built(const ZvURI& uri, const ZvbString& name) {
  RowRange range;
  const bool hasRange = uri.getRowRange(&range.firstRow, &range.rowCount);
  const zvwt::TableUri made(
      hasRange ? getWorkTableURIFromComponents(name, range.firstRow, range.rowCount)
               : getWorkTableURIFromComponents(name));
  FUZZ_CHECK(made != nullptr, text(name));
  for (std::int32_t i = 0; i < uri.getColumnCount(); ++i) {
    ZvbString column;
    ZvbString second;
    std::int32_t type = 0;
    ZvbString error;
    FUZZ_CHECK(uri.getColumn(i, &column, &second, &type), std::to_string(i));
    FUZZ_CHECK(made->appendColumn(column, second, type, &error), text(error));
  }
  return text(made->toString());
}

/// Every part of a URI, for comparing.
std::vector<std::string> parts(const ZvURI& uri) {
  std::vector<std::string> all = {text(uri.getPath())};
  RowRange range;
  if (uri.getRowRange(&range.firstRow, &range.rowCount)) {
    all.push_back(std::to_string(range.firstRow) + "," + std::to_string(range.rowCount));
  }
  for (std::int32_t i = 0; i < uri.getColumnCount(); ++i) {
    ZvbString name;
    ZvbString second;
    std::int32_t type = 0;
    FUZZ_CHECK(uri.getColumn(i, &name, &second, &type), std::to_string(i));
    all.insert(all.end(), {text(name), text(second), std::to_string(type)});
  }
  return all;
}

/// A small table that all URIs are tried on.
class SampleTable {
 public:
  SampleTable() : manager_(zvwtCreateManager("uri", folder_.path().c_str(), &error_)) {
    FUZZ_CHECK(manager_ != nullptr, text(error_));
    const zvwt::Table table(manager_->createTable(3, 40, &error_));  // in several elements
    FUZZ_CHECK(table != nullptr, text(error_));
    bool good = table->defineColumn(0, "id", zvbTypeInteger, 0) &&
                table->defineColumn(1, "city", zvbTypeString, 20) &&
                table->defineColumn(2, "born", zvbTypeDate, 0);
    ZvbDatavar row[3];
    for (std::int64_t i = 0; i < tableRows; ++i) {
      row[0].assign(i);
      row[1].assign("Lisbon");
      row[2].assign("2024-02-29");
      good = good && table->writeRow(row);
    }
    FUZZ_CHECK(good && table->close(), text(table->getErrorMessage()));
    name_ = table->getName();
  }

  [[nodiscard]] const ZvbString& name() const { return name_; }

  /// Null when it cannot be opened, which has a reason then.
  zvwt::Table open(const std::string& uri, bool backwards) {
    error_.assign("");
    zvwt::Table table(manager_->openTable(uri.c_str(), backwards, &error_));
    FUZZ_CHECK(table != nullptr || !error_.isEmpty(), uri);
    return table;
  }

 private:
  WorkFolder folder_;
  ZvbString error_;
  zvwt::Manager manager_;
  ZvbString name_;
};

/// The number of rows that a URI's range leaves, -1 when it is none.
std::int64_t expectedRows(const ZvURI& uri, bool backwards) {
  RowRange range;
  if (!uri.getRowRange(&range.firstRow, &range.rowCount)) {
    return tableRows;
  }
  if (range.firstRow < 0 || range.rowCount < -1) {
    return -1;
  }
  const std::int64_t left = std::max<std::int64_t>(tableRows - range.firstRow, 0);
  return backwards || range.rowCount == -1 ? left : std::min(left, range.rowCount);
}

/// The URI that a reader gives opens the same rows again.
void checkReopening(SampleTable& sample, ZvWorkTableFile& table, bool backwards,
                    const std::vector<std::string>& rows) {
  const std::string uri = text(table.getURI(false));
  const zvwt::Table again = sample.open(uri, backwards);
  FUZZ_CHECK(again != nullptr, uri);
  FUZZ_CHECK(readAllRows(*again) == rows, uri);
  FUZZ_CHECK(text(again->getURI(false)) == uri, uri + "\n" + text(again->getURI(false)));
}

void checkOpening(const ZvURI& uri, bool backwards) {
  static SampleTable sample;
  const std::string opening = built(uri, sample.name());
  const std::int64_t expected = expectedRows(uri, backwards);
  const zvwt::Table table = sample.open(opening, backwards);
  FUZZ_CHECK((table != nullptr) == (expected >= 0), opening);
  if (table == nullptr) {
    return;
  }
  FUZZ_CHECK(table->getColumnCount() == uri.getColumnCount(), opening);
  const std::vector<std::string> rows = readAllRows(*table);
  FUZZ_CHECK(rows.size() == static_cast<std::size_t>(expected), opening);
  checkReopening(sample, *table, backwards, rows);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  ZvbString given;
  given.assign(reinterpret_cast<const char*>(bytes), size);
  const zvwt::Uri uri(getURIFromURIString(given));
  if (uri == nullptr || uri->getScheme().compare("zvwt", false) != 0 || uri->getPath().isEmpty()) {
    return 0;
  }
  const std::string canonical = built(*uri, uri->getPath());
  const zvwt::Uri again(getURIFromURIString(canonical.c_str()));
  FUZZ_CHECK(again != nullptr, canonical);
  FUZZ_CHECK(parts(*uri) == parts(*again), canonical);
  FUZZ_CHECK(built(*again, again->getPath()) == canonical, canonical);
  checkOpening(*uri, false);
  checkOpening(*uri, true);
  return 0;
}
