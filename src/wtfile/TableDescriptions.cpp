/// What a table says of itself: its statistics, and its rows as an XML document.

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <string_view>

#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"
#include "wtstats/ZVWTStatistics.h"

// ---- Statistics

ZvbStringCursor* ZVWTFileImpl::getStatistics() noexcept {
  std::unique_ptr<ZVWTStatistics> statistics(new (std::nothrow) ZVWTStatistics);
  const bool complete =
      statistics != nullptr && statistics->add("AccessKey", accessKey_) &&
      statistics->add("Columns", selection_.count()) &&
      statistics->add("ElementSize", state_.maxElementSize) &&
      statistics->add("Elements", elementCount_) && statistics->add("Rows", rowCount_) &&
      statistics->add("Version", zvbStringFormat("%d.%d", version_ / 100, version_ % 100));
  if (!complete) {
    (void)fail(WT_MESSAGE(outOfMemory, "(work table statistics container)"));
    return nullptr;
  }
  return statistics.release();
}

// ---- XML

namespace {

// The published names of the Spring Framework's and the W3C's namespaces and schemas.
constexpr const char* documentHead =
    "<?xml version='1.0' encoding='UTF-8'?>"
    "<beans xmlns='http://www.springframework.org/schema/beans'"
    " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
    " xmlns:aop='http://www.springframework.org/schema/aop'"
    " xsi:schemaLocation='http://www.springframework.org/schema/beans"
    " http://www.springframework.org/schema/beans/spring-beans-3.0.xsd"
    " http://www.springframework.org/schema/aop"
    " http://www.springframework.org/schema/aop/spring-aop-3.0.xsd'>"
    "<bean id='Table' factory-bean='TableFactoryBean' factory-method='createInstance'>"
    "<constructor-arg index='0'><value>";
constexpr const char* columnsHead = "</value></constructor-arg><constructor-arg index='1'><list>";
constexpr const char* rowsHead = "</list></constructor-arg><constructor-arg index='2'><list>";
constexpr const char* documentTail = "</list></constructor-arg></bean></beans>";

/// Appends to the document until memory is short.
class Document {
 public:
  explicit Document(ZvbString* text) noexcept : text_(text) {}

  void addHead(const ZvbString& tableName, std::span<const ColumnDefinition> columns) noexcept {
    add(documentHead);
    add(tableName);
    add(columnsHead);
    for (const ColumnDefinition& column : columns) {
      addValue(column.name);
    }
    add(rowsHead);
  }
  void addRow(std::span<const ZvbDatavar> values) noexcept {
    add("<list>");
    for (const ZvbDatavar& value : values) {
      addEscapedValue(value.asString());
    }
    add("</list>");
  }
  void addTail() noexcept { add(documentTail); }

  [[nodiscard]] bool failed() const noexcept { return failed_; }

 private:
  template <typename Text>
  void add(const Text& text) noexcept {
    if (!failed_) {
      text_->append(text, &failed_);
    }
  }

  /// The text between value tags, as it is or with the characters that end or open tags escaped.
  void addValue(const ZvbString& text) noexcept {
    add("<value>");
    add(text);
    add("</value>");
  }
  void addEscapedValue(const ZvbString& text) noexcept {
    const bool isPlain = text.asView().find_first_of("&'<") == std::string_view::npos;
    addValue(isPlain ? text
                     : text.replace("&", "&amp;", 0, -1)
                           .replace("'", "&apos;", 0, -1)
                           .replace("<", "&lt;", 0, -1));
  }

  ZvbString* text_;
  bool failed_ = false;
};

}  // namespace

bool ZVWTFileImpl::asXml(int firstRow, int maxRows, ZvbString* out, bool* endOfTable) noexcept {
  if (endOfTable != nullptr) {
    *endOfTable = false;
  }
  out->truncate(0);
  if (maxRows < 0) {
    maxRows = static_cast<std::int32_t>(static_cast<std::uint32_t>(rowCount_) -
                                        static_cast<std::uint32_t>(firstRow));
  }
  // Room for a selection that is wider than the table; what it does not fill stays null.
  const auto valueCount =
      static_cast<std::size_t>(std::max(state_.columnCount, selection_.count()));
  const std::unique_ptr<ZvbDatavar[]> values(new (std::nothrow) ZvbDatavar[valueCount]);
  if (values == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(column value array)"));
  }
  const auto columnCount = static_cast<std::size_t>(state_.columnCount);
  Document document(out);
  document.addHead(name_, {state_.columns.get(), columnCount});
  bool ended = false;
  bool& end = endOfTable != nullptr ? *endOfTable : ended;
  int row = 0;
  for (; row < maxRows && !document.failed() && readRow(values.get(), &end); ++row) {
    document.addRow({values.get(), columnCount});
  }
  const bool rowsMissing = endOfTable == nullptr && row < maxRows;
  if (!rowsMissing) {
    document.addTail();
  }
  return (!rowsMissing && !document.failed()) || fail(WT_MESSAGE(outOfMemory, "(table as XML)"));
}
