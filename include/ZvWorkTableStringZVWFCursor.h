/// A string cursor that can also be used from C, through a table of functions.
#pragma once

#include "ZvWorkTableStringCursor.h"
#include "base/zvb_export.h"
#include "zvwf.h"

/// Differs from ZvWorkTableStringCursor in the text of dates: the exact form,
/// `2024-02-29T13:45:10.250`.
class ZVB_API ZvWorkTableStringZVWFCursor : public ZvWorkTableStringCursor {
 public:
  /// What the functions of zvwf.h take; the cursor owns it, and it ends with the cursor.
  [[nodiscard]] virtual ZvwfHandle* zvwfHandle() = 0;

  /// As release().
  virtual ~ZvWorkTableStringZVWFCursor() = default;
};
