/// The cursor behind ZvWorkTableStringCursor: dates are given in the form for people.
#pragma once

#include "ZvWorkTableStringCursor.h"
#include "wtcursor_impl/TextCursor.h"

class ZvWorkTableStringCursorImpl final : public TextCursor<ZvWorkTableStringCursor> {
 public:
  using TextCursor::TextCursor;
  virtual ~ZvWorkTableStringCursorImpl() = default;

  void release() noexcept override { delete this; }

  ZvbString value(int index) noexcept override {
    const ZvbDatavar* value = engine().findValue(index);
    const bool isDate = value != nullptr && value->type() == zvbTypeDate;
    return isDate ? value->asDate().asString(true) : TextCursor::value(index);
  }
};
