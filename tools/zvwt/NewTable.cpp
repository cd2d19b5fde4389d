#include "NewTable.h"

#include "Diagnostics.h"
#include "InterruptGuard.h"
#include "OutputBuffer.h"
#include "SortKeys.h"

namespace zvwttool {

bool NewTable::create(int columnCount, std::int64_t maxElementSize, std::size_t sortKeyCount) {
  ZvbString text;
  table_.reset(
      manager_->createTable(columnCount, static_cast<int>(sortKeyCount), maxElementSize, &text));
  return checkManager(table_ != nullptr, text);
}

bool NewTable::copy(const ZvbString& uri, std::int64_t maxElementSize) {
  ZvbString text;
  table_.reset(manager_->copyTable(maxElementSize, manager_, uri, &text));
  return checkManager(table_ != nullptr, text) && close();
}

bool NewTable::copySorted(const ZvbString& uri, std::int64_t maxElementSize, const SortPlan& plan,
                          std::int64_t rowCount) {
  ZvbString text;
  TableHandle source(manager_->openTable(uri, false, &text));
  if (!checkManager(source != nullptr, text) ||
      !create(source->getColumnCount(), maxElementSize, plan.keys.size()) ||
      !describeSort(plan, *source, rowCount)) {
    return false;
  }
  source.reset();
  isClosed_ = checkManager(manager_->copyIntoTable(table_.get(), manager_, uri, &text), text);
  removeStatus();
  return isClosed_;
}

bool NewTable::append(const ZvbString& uri) {
  ZvbString text;
  return checkManager(manager_->appendTable(table_->getName(), uri, &text), text);
}

bool NewTable::defineColumn(int index, const std::string& name, zvbType type, int width) {
  return check(table_->defineColumn(index, name.c_str(), type, width));
}

bool NewTable::sortBy(const SortPlan& plan) { return describeSort(plan, *table_, -1); }

bool NewTable::describeSort(const SortPlan& plan, ZvWorkTableFile& columns, std::int64_t rowCount) {
  return setSortKeys(plan, columns, table_.get(), &error_) &&
         progress_.follow(manager_, rowCount, &error_);
}

bool NewTable::writeRow(const ZvbDatavar* values) { return check(table_->writeRow(values)); }

bool NewTable::close() {
  isClosed_ = check(table_->close());
  removeStatus();
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

bool NewTable::check(bool done) { return done || checkManager(false, table_->getErrorMessage()); }

bool NewTable::checkManager(bool done, const ZvbString& text) {
  if (!done) {
    error_ = progress_.isCancelled() ? interruption : text.asView();
  }
  return done;
}

// The library removes a table that has failed before it was closed; one that is sound, and unwanted
// for a reason of the tool's own, has to be complete before it can be deleted. Not so one whose
// rows are still to be sorted: the sort is cancelled, which is a failure to the library.
NewTable::~NewTable() {
  if (table_ == nullptr || isKept_) {
    return;
  }
  progress_.cancel();
  const bool isOnDisk = isClosed_ || (table_->getErrorMessage().isEmpty() && close());
  const ZvbString name = table_->getName();
  table_.reset();
  ZvbString text;
  if (isOnDisk && !manager_->deleteTable(name, &text)) {
    say(std::string("the unfinished table stays behind: ") + text.asCstr());
  }
}

}  // namespace zvwttool
