#include "base/ZvWorkTableURI.h"

#include <memory>
#include <new>
#include <utility>

#include "base/zvb_message.h"
#include "base/zvb_percent.h"

namespace {

/// Puts pieces of a URI together and remembers when memory was short for one.
class Pieces {
 public:
  explicit Pieces(const char* start) noexcept : text_(start) {}

  Pieces& add(const char* piece) noexcept {
    bool failed = false;
    text_.append(piece, &failed);
    failed_ = failed_ || failed;
    return *this;
  }
  Pieces& addEncoded(const ZvbString& piece) noexcept {
    zvbAppendEncoded(piece.asView(), &text_, &failed_);
    require(piece);
    return *this;
  }
  Pieces& addNumber(std::int64_t number) noexcept {
    ZvbString digits;
    digits.assign(number);
    return add(digits.asCstr());
  }

  /// Fails when memory was short for a text that there may be nothing to add of.
  void require(const ZvbString& text) noexcept { failed_ = failed_ || text.memoryShort(); }

  [[nodiscard]] const ZvbString& text() const noexcept { return text_; }
  [[nodiscard]] bool failed() const noexcept { return failed_; }

 private:
  ZvbString text_;
  bool failed_ = false;
};

/// Keeps the text alone, which is complete after every step.
class BuiltURI final : public ZvWorkTableURI {
 public:
  void release() noexcept override { delete this; }

  [[nodiscard]] ZvbString toString() const noexcept override { return text_; }

  [[nodiscard]] bool setTable(const ZvbString& name) noexcept {
    return !name.isEmpty() && append(Pieces("zvwt:").addEncoded(name));
  }

  [[nodiscard]] bool setRange(std::int64_t firstRow, std::int64_t rowCount) noexcept {
    return appendParameter(Pieces("rows=").addNumber(firstRow).add(",").addNumber(rowCount));
  }

  [[nodiscard]] bool appendColumn(const ZvbString& name, const ZvbString& second, std::int32_t type,
                                  ZvbString* error) noexcept override {
    Pieces column("col=");
    column.addEncoded(name);
    column.require(second);
    if (!second.isEmpty() || type != 0) {
      column.add(",").addEncoded(second);
    }
    if (type != 0) {
      column.add(",").addNumber(type);
    }
    if (!appendParameter(column)) {
      *error = zvbMessage<29>(__FILE__, __LINE__, "Base library", "(URI column)");
      return false;
    }
    return true;
  }

 private:
  [[nodiscard]] bool appendParameter(const Pieces& parameter) noexcept {
    Pieces separated(hasParameters_ ? "&" : "?");
    if (parameter.failed() || !append(separated.add(parameter.text().asCstr()))) {
      return false;
    }
    hasParameters_ = true;
    return true;
  }

  /// All or nothing.
  [[nodiscard]] bool append(const Pieces& pieces) noexcept {
    bool failed = pieces.failed();
    if (!failed) {
      text_.append(pieces.text(), &failed);
    }
    return !failed;
  }

  ZvbString text_;
  bool hasParameters_ = false;
};

using Built = std::unique_ptr<BuiltURI>;

Built build(const ZvbString& tableName) noexcept {
  Built uri(new (std::nothrow) BuiltURI);
  return uri != nullptr && uri->setTable(tableName) ? std::move(uri) : nullptr;
}

}  // namespace

ZvWorkTableURI* getWorkTableURIFromComponents(const ZvbString& tableName) noexcept {
  return build(tableName).release();
}

ZvWorkTableURI* getWorkTableURIFromComponents(const ZvbString& tableName, std::int64_t firstRow,
                                              std::int64_t rowCount) noexcept {
  Built uri = build(tableName);
  return uri != nullptr && uri->setRange(firstRow, rowCount) ? uri.release() : nullptr;
}
