#include "NewTable.h"

#include "Diagnostics.h"

namespace zvwttool {

bool NewTable::create(int columnCount, std::int64_t maxElementSize) {
  ZvbString text;
  table_.reset(manager_->createTable(columnCount, maxElementSize, &text));
  error_ = text.asCstr();
  return table_ != nullptr;
}

bool NewTable::defineColumn(int index, const std::string& name, zvbType type, int width) {
  return check(table_->defineColumn(index, name.c_str(), type, width));
}

bool NewTable::writeRow(const ZvbDatavar* values) { return check(table_->writeRow(values)); }

bool NewTable::close() {
  isClosed_ = true;
  return check(table_->close());
}

bool NewTable::check(bool done) {
  if (!done) {
    error_ = table_->getErrorMessage().asCstr();
  }
  return done;
}

// The library removes a table that has failed when it is released; one that is sound, and unwanted
// for a reason of the tool's own, has to be complete before it can be deleted.
NewTable::~NewTable() {
  if (table_ == nullptr || isKept_) {
    return;
  }
  const bool isSound = error_.empty() && (isClosed_ || close());
  const ZvbString name = table_->getName();
  table_.reset();
  ZvbString text;
  if (isSound && !manager_->deleteTable(name, &text)) {
    say(std::string("the unfinished table stays behind: ") + text.asCstr());
  }
}

}  // namespace zvwttool
