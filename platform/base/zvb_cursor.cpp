#include "base/zvb_cursor.h"

#include "base/zvb_message.h"

namespace {

constexpr const char* component = "Base library";

/// Takes over the reason of what one of the cursors has failed at.
template <typename Cursor>
bool failAs(Cursor* cursor, ZvbString* error) noexcept {
  *error = cursor->errorMessage();
  return false;
}

void copyColumn(ZvbDatavarCursor* source, ZvbDatavarCursorCreater* target, int index) noexcept {
  target->addColumn(source->columnName(index), source->columnType(index));
}

void copyColumn(ZvbStringCursor* source, ZvbStringCursorCreater* target, int index) noexcept {
  target->addColumn(source->columnName(index));
}

/// Copies the row that the source stands on.
template <typename Source, typename Target>
bool copyRow(Source* source, Target* target, int columnCount) noexcept {
  if (!target->newRow()) {
    return false;
  }
  for (int i = 0; i < columnCount; ++i) {
    target->setValue(i, source->value(i));
  }
  return target->appendRow();
}

template <typename Source, typename Target>
bool copyAll(Source* source, Target* target, ZvbString* error) noexcept {
  if (source == static_cast<Source*>(target)) {
    *error = zvbMessage<1798>(__FILE__, __LINE__, component);
    return false;
  }
  if (!source->rewind()) {
    return failAs(source, error);
  }
  const int columnCount = source->columnCount();
  for (int i = 0; i < columnCount; ++i) {
    copyColumn(source, target, i);
  }
  if (!target->create()) {
    return failAs(target, error);
  }
  int step = source->next();
  for (; step == zvbCursorRow; step = source->next()) {
    if (!copyRow(source, target, columnCount)) {
      return failAs(target, error);
    }
  }
  if (step != zvbCursorEnd) {
    return failAs(source, error);
  }
  return target->endAppend() || failAs(target, error);
}

}  // namespace

bool copyCursor(ZvbDatavarCursor* source, ZvbDatavarCursorCreater* target,
                ZvbString* error) noexcept {
  return copyAll(source, target, error);
}

bool copyCursor(ZvbStringCursor* source, ZvbStringCursorCreater* target,
                ZvbString* error) noexcept {
  return copyAll(source, target, error);
}
