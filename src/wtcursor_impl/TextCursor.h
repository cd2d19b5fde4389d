/// What the two string cursors share: a cursor whose values are texts, over the typed one.
/// Thread rule: one thread at a time.
#pragma once

#include "base/zvb_cursor.h"
#include "wtcursor_impl/ZvWorkTableCursorImpl.h"

template <typename Interface>
class TextCursor : public Interface {
 public:
  explicit TextCursor(ZvWorkTableManager* manager) noexcept : engine_(manager) {}
  TextCursor(const TextCursor&) = delete;
  TextCursor& operator=(const TextCursor&) = delete;

  bool isValid() noexcept override { return engine_.isValid(); }
  ZvbString columnName(int index) noexcept override { return engine_.columnName(index); }
  int columnCount() noexcept override { return engine_.columnCount(); }
  ZvbString value(int index) noexcept override {
    const ZvbDatavar* value = engine_.findValue(index);
    return value != nullptr ? value->asString() : ZvbDatavar().asString();
  }
  ZvbString errorMessage() noexcept override { return engine_.errorMessage(); }
  bool rowCount(std::int64_t* count) noexcept override { return engine_.rowCount(count); }
  int next() noexcept override { return engine_.next(); }
  bool rewind() noexcept override { return engine_.rewind(); }
  bool newRow() noexcept override { return engine_.newRow(); }
  void setValue(int index, const ZvbString& text) noexcept override {
    ZvbDatavar value;
    value.assign(text);
    engine_.setValue(index, value);
  }
  bool appendRow() noexcept override { return engine_.appendRow(); }
  bool endAppend() noexcept override { return engine_.endAppend(); }
  bool copyFrom(ZvbStringCursor* source) noexcept override {
    return engine_.copyAfterClose<ZvbStringCursor>(
        source, this, [&](ZvbString* error) { return copyCursor(source, this, error); });
  }
  void addColumn(const ZvbString& name) noexcept override {
    engine_.addColumn(name, zvbTypeString);
  }
  bool create() noexcept override { return engine_.create(); }
  ZvWorkTableFile* workTable(bool detach) noexcept override { return engine_.workTable(detach); }
  bool setWorkTable(ZvWorkTableFile* table) noexcept override {
    return engine_.setWorkTable(table);
  }
  void setRemoveOnClose(bool remove) noexcept override { engine_.setRemoveOnClose(remove); }

 protected:
  [[nodiscard]] ZvWorkTableCursorImpl& engine() noexcept { return engine_; }

 private:
  ZvWorkTableCursorImpl engine_;
};
