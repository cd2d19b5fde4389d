/// Rows of texts behind one interface: ZvbDatavarCursor.h with texts for values and without types.
///
/// What is said there holds here too; a null value is a null text.
#pragma once

#include <cstdint>

#include "base/ZvbDatavarCursor.h"
#include "base/ZvbString.h"
#include "base/zvb_export.h"

/// Reading.
class ZVB_API ZvbStringCursor {
 public:
  [[nodiscard]] virtual bool isValid() = 0;
  [[nodiscard]] virtual ZvbString columnName(int index) = 0;
  [[nodiscard]] virtual int columnCount() = 0;
  [[nodiscard]] virtual ZvbString value(int index) = 0;
  [[nodiscard]] virtual ZvbString errorMessage() = 0;
  virtual bool rowCount(std::int64_t* count) = 0;
  [[nodiscard]] virtual int next() = 0;
  virtual void release() = 0;
  [[nodiscard]] virtual bool rewind() = 0;

 protected:
  ~ZvbStringCursor() = default;
};

/// Appending rows.
class ZVB_API ZvbStringCursorAppender : public ZvbStringCursor {
 public:
  [[nodiscard]] virtual bool newRow() = 0;
  virtual void setValue(int index, const ZvbString& text) = 0;
  [[nodiscard]] virtual bool appendRow() = 0;
  [[nodiscard]] virtual bool endAppend() = 0;

 protected:
  ~ZvbStringCursorAppender() = default;
};

/// Creating.
class ZVB_API ZvbStringCursorCreater : public ZvbStringCursorAppender {
 public:
  [[nodiscard]] virtual bool copyFrom(ZvbStringCursor* source) = 0;
  virtual void addColumn(const ZvbString& name) = 0;
  [[nodiscard]] virtual bool create() = 0;

 protected:
  ~ZvbStringCursorCreater() = default;
};
