#include "wtcursor_impl/ZvWorkTableStringZVWFCursorImpl.h"

#include <utility>

namespace {

using Cursor = ZvWorkTableStringZVWFCursorImpl;

Cursor& cursorOf(const ZvwfHandle* handle) noexcept { return Cursor::of(handle); }

int statusOf(bool done) noexcept { return done ? 0 : 1; }

int addColumn(ZvwfHandle* handle, const char* name) noexcept {
  cursorOf(handle).addColumn(ZvbString(name, false));
  return 0;
}

int create(ZvwfHandle* handle) noexcept { return statusOf(cursorOf(handle).create()); }

int endAppend(ZvwfHandle* handle) noexcept { return statusOf(cursorOf(handle).endAppend()); }

int appendRow(ZvwfHandle* handle) noexcept { return statusOf(cursorOf(handle).appendRow()); }

int columnName(ZvwfHandle* handle, int index, const char** name) noexcept {
  Cursor& cursor = cursorOf(handle);
  *name = cursor.lend(cursor.columnName(index));
  return 0;
}

const char* errorMessage(ZvwfHandle* handle) noexcept {
  Cursor& cursor = cursorOf(handle);
  return cursor.lend(cursor.errorMessage());
}

int columnCount(ZvwfHandle* handle) noexcept { return cursorOf(handle).columnCount(); }

int rowCount(ZvwfHandle* handle) noexcept {
  std::int64_t count = 0;
  return cursorOf(handle).rowCount(&count) ? static_cast<int>(count) : -1;
}

int value(ZvwfHandle* handle, int index, const char** text) noexcept {
  Cursor& cursor = cursorOf(handle);
  *text = cursor.lend(cursor.value(index));
  return 0;
}

int newRow(ZvwfHandle* handle) noexcept { return statusOf(cursorOf(handle).newRow()); }

int next(ZvwfHandle* handle) noexcept {
  const int step = cursorOf(handle).next();
  if (step == zvbCursorRow) {
    return 0;
  }
  return step == zvbCursorEnd ? 1 : -1;
}

void release(ZvwfHandle* handle) noexcept { cursorOf(handle).release(); }

int setValue(ZvwfHandle* handle, int index, const char* text) noexcept {
  cursorOf(handle).setValue(index, ZvbString(text, false));
  return 0;
}

int rewind(ZvwfHandle* handle) noexcept { return statusOf(cursorOf(handle).rewind()); }

constexpr ZvwfFunctions functions = {
    .addColumn = addColumn,
    .create = create,
    .endAppend = endAppend,
    .appendRow = appendRow,
    .columnName = columnName,
    .errorMessage = errorMessage,
    .columnCount = columnCount,
    .rowCount = rowCount,
    .value = value,
    .newRow = newRow,
    .next = next,
    .release = release,
    .setValue = setValue,
    .rewind = rewind,
};

}  // namespace

ZvWorkTableStringZVWFCursorImpl::ZvWorkTableStringZVWFCursorImpl(
    ZvWorkTableManager* manager) noexcept
    : TextCursor(manager), handle_{.functions = &functions, .cursor = this} {}

const char* ZvWorkTableStringZVWFCursorImpl::lend(ZvbString text) noexcept {
  lent_ = std::move(text);
  return lent_.asCstr();
}
