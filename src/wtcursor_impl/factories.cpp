/// The functions that make cursors.

#include <new>

#include "wtcursor_impl/ZvWorkTableStringCursorImpl.h"
#include "wtcursor_impl/ZvWorkTableStringZVWFCursorImpl.h"
#include "zvwt.h"

ZvWorkTableCursor* zvwtCreateCursor(ZvWorkTableManager* manager) noexcept {
  return new (std::nothrow) ZvWorkTableCursorImpl(manager);
}

ZvWorkTableStringCursor* zvwtCreateStringCursor(ZvWorkTableManager* manager) noexcept {
  return new (std::nothrow) ZvWorkTableStringCursorImpl(manager);
}

ZvWorkTableStringZVWFCursor* zvwtCreateStringZVWFCursor(ZvWorkTableManager* manager) noexcept {
  return new (std::nothrow) ZvWorkTableStringZVWFCursorImpl(manager);
}
