/// The functions of zvwt_c.h: managers and cursors for callers that do not use classes.

#include "zvwt_c.h"

#include <cstring>
#include <new>

#include "wtcursor_impl/ZvWorkTableStringZVWFCursorImpl.h"
#include "wtelem/messages.h"
#include "zvwt.h"

namespace {

using Cursor = ZvWorkTableStringZVWFCursorImpl;

static_assert(int{ZVWT_BOOLEAN} == int{zvbTypeBoolean} &&
              int{ZVWT_INTEGER} == int{zvbTypeInteger} && int{ZVWT_REAL} == int{zvbTypeReal} &&
              int{ZVWT_STRING} == int{zvbTypeString} && int{ZVWT_DATE} == int{zvbTypeDate});

ZvWorkTableCursorImpl& engineOf(const ZvwfHandle* cursor) noexcept {
  return Cursor::of(cursor).engine();
}

void giveReason(const ZvbString& reason, char* error, std::size_t errorSize) noexcept {
  if (error == nullptr || errorSize == 0) {
    return;
  }
  const std::string_view text = reason.asView();
  const std::size_t size = zvbCutAtCharacter(text.data(), text.size(), errorSize - 1);
  std::memcpy(error, text.data(), size);
  error[size] = '\0';
}

}  // namespace

ZvWorkTableManager* zvwtNewManager(const char* name, const char* directoryList, char* error,
                                   std::size_t errorSize) {
  ZvbString reason;
  ZvWorkTableManager* manager = zvwtCreateManager(name, directoryList, &reason);
  if (manager == nullptr && reason.isEmpty()) {
    reason = WT_MESSAGE(outOfMemory, "(work table manager)");
  }
  giveReason(reason, error, errorSize);
  return manager;
}

void zvwtReleaseManager(ZvWorkTableManager* manager) {
  if (manager != nullptr) {
    manager->release();
  }
}

int zvwtDeleteTable(ZvWorkTableManager* manager, const char* name, char* error,
                    std::size_t errorSize) {
  ZvbString reason;
  const bool deleted = manager->deleteTable(name, &reason);
  giveReason(reason, error, errorSize);
  return deleted ? 0 : 1;
}

ZvwfHandle* zvwtNewCursor(ZvWorkTableManager* manager) {
  ZvWorkTableStringZVWFCursor* cursor = zvwtCreateStringZVWFCursor(manager);
  return cursor == nullptr ? nullptr : cursor->zvwfHandle();
}

void zvwtAddColumn(ZvwfHandle* cursor, const char* name, int type) {
  const bool isType = type >= ZVWT_BOOLEAN && type <= ZVWT_DATE;
  engineOf(cursor).addColumn(name, isType ? static_cast<zvbType>(type) : zvbTypeString);
}

int zvwtOpenTable(ZvwfHandle* cursor, const char* nameOrUri, int readBackwards) {
  return engineOf(cursor).open(nameOrUri, readBackwards != 0) ? 0 : 1;
}

void zvwtKeepTable(ZvwfHandle* cursor) { engineOf(cursor).keepTable(); }

const char* zvwtTableName(ZvwfHandle* cursor) {
  ZvWorkTableFile* table = engineOf(cursor).workTable(false);
  return Cursor::of(cursor).lend(table == nullptr ? ZvbString() : table->getName());
}

int zvwtColumnType(ZvwfHandle* cursor, int index) {
  return static_cast<int>(engineOf(cursor).columnType(index));
}

std::int64_t zvwtRowCount(ZvwfHandle* cursor) {
  ZvWorkTableFile* table = engineOf(cursor).workTable(false);
  return table == nullptr ? -1 : table->getRowCount();
}

int zvwtReadRows(ZvwfHandle* cursor, int maxRows, const char** texts) {
  return engineOf(cursor).readTexts(maxRows, texts);
}

int zvwtAppendRows(ZvwfHandle* cursor, int rowCount, const char* const* texts) {
  return engineOf(cursor).appendTexts(rowCount, texts);
}
