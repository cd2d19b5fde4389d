#include "NewTable.h"

#include "Diagnostics.h"
#include "InterruptGuard.h"
#include "OutputBuffer.h"

namespace zvwttool {

bool NewTable::create(int columnCount, std::int64_t maxElementSize) {
  ZvbString text;
  table_.reset(manager_->createTable(columnCount, maxElementSize, &text));
  return checkManager(table_ != nullptr, text);
}

bool NewTable::copy(const ZvbString& uri, std::int64_t maxElementSize) {
  ZvbString text;
  table_.reset(manager_->copyTable(maxElementSize, manager_, uri, &text));
  return checkManager(table_ != nullptr, text) && close();
}

bool NewTable::append(const ZvbString& uri) {
  ZvbString text;
  return checkManager(manager_->appendTable(table_->getName(), uri, &text), text);
}

bool NewTable::defineColumn(int index, const std::string& name, zvbType type, int width) {
  return check(table_->defineColumn(index, name.c_str(), type, width));
}

bool NewTable::writeRow(const ZvbDatavar* values) { return check(table_->writeRow(values)); }

bool NewTable::close() {
  isClosed_ = check(table_->close());
  return isClosed_;
}

ExitCode NewTable::finish() {
  if (InterruptGuard::interrupted()) {
    return fail(interruption);
  }
  OutputBuffer output;
  output.append(table_->getName().asView());
  output.append('\n');
  const ExitCode printed = output.finish();
  isKept_ = printed == ExitCode::success;
  return printed;
}

bool NewTable::check(bool done) {
  if (!done) {
    error_ = table_->getErrorMessage().asCstr();
  }
  return done;
}

bool NewTable::checkManager(bool done, const ZvbString& text) {
  if (!done) {
    error_ = text.asCstr();
  }
  return done;
}

// The library removes a table that has failed before it was closed; one that is sound, and unwanted
// for a reason of the tool's own, has to be complete before it can be deleted.
NewTable::~NewTable() {
  if (table_ == nullptr || isKept_) {
    return;
  }
  const bool isOnDisk = isClosed_ || (error_.empty() && close());
  const ZvbString name = table_->getName();
  table_.reset();
  ZvbString text;
  if (isOnDisk && !manager_->deleteTable(name, &text)) {
    say(std::string("the unfinished table stays behind: ") + text.asCstr());
  }
}

}  // namespace zvwttool
