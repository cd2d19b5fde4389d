/// The cursor behind ZvWorkTableStringZVWFCursor, with its functions for C.
#pragma once

#include "ZvWorkTableStringZVWFCursor.h"
#include "wtcursor_impl/TextCursor.h"

class ZvWorkTableStringZVWFCursorImpl final : public TextCursor<ZvWorkTableStringZVWFCursor> {
 public:
  explicit ZvWorkTableStringZVWFCursorImpl(ZvWorkTableManager* manager) noexcept;

  [[nodiscard]] static ZvWorkTableStringZVWFCursorImpl& of(const ZvwfHandle* handle) noexcept {
    return *static_cast<ZvWorkTableStringZVWFCursorImpl*>(handle->cursor);
  }

  using TextCursor::engine;

  void release() noexcept override { delete this; }
  ZvwfHandle* zvwfHandle() noexcept override { return &handle_; }

  /// Keeps a text for a caller in C until the next one.
  [[nodiscard]] const char* lend(ZvbString text) noexcept;

 private:
  ZvwfHandle handle_;
  ZvbString lent_;
};
