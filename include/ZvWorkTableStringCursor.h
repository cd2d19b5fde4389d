/// A cursor over a work table whose values are texts: ZvWorkTableCursor.h without types.
///
/// It creates columns of strings. Of a table with other columns that was attached, values are
/// converted to texts when they are read, dates in the form for people (`2024-02-29 13:45:10.250`),
/// and texts are converted to the columns' types when a row is appended; one that cannot be is
/// stored as a null. What is said of ZvWorkTableCursor holds here too.
#pragma once

#include "ZvWorkTableFile.h"
#include "base/ZvbStringCursor.h"
#include "base/zvb_export.h"

class ZVB_API ZvWorkTableStringCursor : public ZvbStringCursorCreater {
 public:
  [[nodiscard]] virtual ZvWorkTableFile* workTable(bool detach) = 0;
  [[nodiscard]] virtual bool setWorkTable(ZvWorkTableFile* table) = 0;
  virtual void setRemoveOnClose(bool remove) = 0;

 protected:
  ~ZvWorkTableStringCursor() = default;
};
