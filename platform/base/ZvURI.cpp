#include "base/ZvURI.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

#include "base/zvb_percent.h"

namespace {

constexpr std::string_view rowsKey = "rows=";
constexpr std::string_view columnKey = "col=";

struct Column {
  ZvbString name;
  ZvbString second;
  std::int32_t type = 0;
};

/// Cuts the part before the first `separator`, or all of it, off the front of *text.
std::string_view takeUntil(char separator, std::string_view* text) noexcept {
  const std::size_t end = std::min(text->find(separator), text->size());
  const std::string_view part = text->substr(0, end);
  text->remove_prefix(std::min(end + 1, text->size()));
  return part;
}

/// Goes through parameters between `&` until one is not accepted; false then.
template <typename Accept>
bool forEach(std::string_view parameters, const Accept& accept) noexcept {
  for (bool more = true; more;) {
    more = parameters.find('&') != std::string_view::npos;
    if (!accept(takeUntil('&', &parameters))) {
      return false;
    }
  }
  return true;
}

/// True when the whole text is a decimal number that fits.
template <typename Number>
bool readNumber(std::string_view text, Number* number) noexcept {
  const char* end = text.data() + text.size();
  const auto [stop, status] = std::from_chars(text.data(), end, *number);
  return status == std::errc() && stop == end;
}

constexpr bool isLetter(char byte) noexcept {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

constexpr bool isSchemeByte(char byte) noexcept {
  return isLetter(byte) || (byte >= '0' && byte <= '9') || byte == '+' || byte == '-' ||
         byte == '.';
}

bool isScheme(std::string_view text) noexcept {
  return text.size() >= 2 && isLetter(text[0]) &&
         std::all_of(text.begin(), text.end(), isSchemeByte);
}

/// What the text's scheme would be; empty when the text is no URI.
std::string_view schemeOf(std::string_view text) noexcept {
  const std::string_view start = text.substr(0, std::min(text.find(':'), text.size()));
  return start.size() < text.size() && isScheme(start) ? start : std::string_view();
}

class ReadURI final : public ZvURI {
 public:
  void release() noexcept override { delete this; }

  [[nodiscard]] ZvbString getScheme() const noexcept override { return scheme_; }

  [[nodiscard]] bool getColumn(std::int32_t index, ZvbString* name, ZvbString* second,
                               std::int32_t* type) const noexcept override {
    if (index < 0 || index >= columnCount_) {
      return false;
    }
    const Column& column = columns_[static_cast<std::size_t>(index)];
    *name = column.name;
    *second = column.second;
    *type = column.type;
    return true;
  }

  [[nodiscard]] std::int32_t getColumnCount() const noexcept override { return columnCount_; }

  [[nodiscard]] ZvbString getPath() const noexcept override { return path_; }

  [[nodiscard]] bool getRowRange(std::int64_t* firstRow,
                                 std::int64_t* rowCount) const noexcept override {
    if (hasRange_) {
      *firstRow = firstRow_;
      *rowCount = rowCount_;
    }
    return hasRange_;
  }

  /// Reads a text that has a scheme. False when it is malformed or memory is short.
  [[nodiscard]] bool read(std::string_view text) noexcept {
    const std::string_view scheme = schemeOf(text);
    scheme_.assign(scheme.data(), scheme.size());
    text.remove_prefix(scheme.size() + 1);
    if (scheme_.compare("zvwt", false) != 0) {
      path_.assign(text.data(), text.size());
      memoryShort_ = path_.memoryShort() || scheme_.memoryShort();
      return !memoryShort_;
    }
    const std::size_t question = text.find('?');
    return readPath(text.substr(0, question)) &&
           (question == std::string_view::npos || readParameters(text.substr(question + 1)));
  }
  [[nodiscard]] bool memoryShort() const noexcept { return memoryShort_; }

 private:
  [[nodiscard]] bool decode(std::string_view text, ZvbString* decoded) noexcept {
    const bool done = zvbDecodePercent(text, decoded);
    memoryShort_ = memoryShort_ || decoded->memoryShort();
    return done;
  }

  /// A parameter without its `?` before it would otherwise become part of the name.
  [[nodiscard]] bool readPath(std::string_view text) noexcept {
    return text.find('&') == std::string_view::npos && decode(text, &path_);
  }

  [[nodiscard]] bool readParameters(std::string_view text) noexcept {
    std::uint32_t columns = 0;
    const bool allKnown = forEach(text, [&columns](std::string_view parameter) {
      columns += parameter.starts_with(columnKey) ? 1 : 0;
      return parameter.starts_with(columnKey) || parameter.starts_with(rowsKey);
    });
    if (!allKnown) {
      return false;
    }
    columns_.reset(new (std::nothrow) Column[std::max<std::uint32_t>(columns, 1)]);
    memoryShort_ = columns_ == nullptr;
    return columns_ != nullptr && forEach(text, [this](std::string_view parameter) {
             return parameter.starts_with(rowsKey) ? readRange(parameter.substr(rowsKey.size()))
                                                   : readColumn(parameter.substr(columnKey.size()));
           });
  }

  [[nodiscard]] bool readRange(std::string_view text) noexcept {
    const bool isFirst = !hasRange_;
    hasRange_ = true;
    return isFirst && readNumber(takeUntil(',', &text), &firstRow_) && readNumber(text, &rowCount_);
  }

  [[nodiscard]] bool readColumn(std::string_view text) noexcept {
    const auto commas = std::count(text.begin(), text.end(), ',');
    Column& column = columns_[static_cast<std::size_t>(columnCount_)];
    ++columnCount_;
    return decode(takeUntil(',', &text), &column.name) &&
           decode(takeUntil(',', &text), &column.second) &&
           (commas < 2 || readNumber(text, &column.type));
  }

  ZvbString scheme_;
  ZvbString path_;
  std::unique_ptr<Column[]> columns_;
  std::int32_t columnCount_ = 0;
  bool memoryShort_ = false;
  bool hasRange_ = false;
  std::int64_t firstRow_ = 0;
  std::int64_t rowCount_ = -1;
};

}  // namespace

ZvURI* getURIFromURIString(const ZvbString& text) noexcept {
  bool ignored = false;
  return getURIFromURIString(text, &ignored);
}

ZvURI* getURIFromURIString(const ZvbString& text, bool* memoryShort) noexcept {
  *memoryShort = false;
  if (schemeOf(text.asView()).empty()) {
    return nullptr;
  }
  std::unique_ptr<ReadURI> uri(new (std::nothrow) ReadURI);
  if (uri != nullptr && uri->read(text.asView())) {
    return uri.release();
  }
  *memoryShort = uri == nullptr || uri->memoryShort();
  return nullptr;
}
