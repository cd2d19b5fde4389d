#include "tables/NewTable.h"

#include <new>

#include "process/Diagnostics.h"
#include "process/InterruptGuard.h"
#include "process/OutputBuffer.h"
#include "process/Progress.h"
#include "tables/SortKeys.h"
#include "tables/TableFailure.h"

namespace zvwttool {

namespace {

void sayThatItStays(const ZvbString& reason) noexcept {
  try {
    say(std::string("the unfinished table stays behind: ") + reason.asCstr());
  } catch (const std::bad_alloc&) {
    sayPlainly("an unfinished table stays behind, and memory is short for the reason");
  }
}

}  // namespace

void NewTable::create(int columnCount, std::int64_t maxElementSize, std::size_t sortKeyCount) {
  ZvbString text;
  table_.reset(
      manager_->createTable(columnCount, static_cast<int>(sortKeyCount), maxElementSize, &text));
  requireOfManager(table_ != nullptr, text);
}

void NewTable::copy(const ZvbString& uri, std::int64_t maxElementSize) {
  ZvbString text;
  table_.reset(manager_->copyTable(maxElementSize, manager_, uri, &text));
  requireOfCopy(table_ != nullptr, text, uri);
  close();
}

void NewTable::copySorted(const ZvbString& uri, std::int64_t maxElementSize, const SortPlan& plan,
                          std::int64_t rowCount) {
  TableHandle source = openTable(*manager_, uri);
  create(source->getColumnCount(), maxElementSize, plan.keys.size());
  describeSort(plan, *source, rowCount);
  source.reset();
  ZvbString text;
  isClosed_ = manager_->copyIntoTable(table_.get(), manager_, uri, &text);
  removeStatus();
  requireOfCopy(isClosed_, text, uri);
}

void NewTable::copyWanted(TableRows* rows, std::int64_t maxElementSize, const SortPlan& plan) {
  create(static_cast<int>(rows->columns().size()), maxElementSize, plan.keys.size());
  int index = 0;
  for (const TableColumn& column : rows->columns()) {
    defineColumn(index++, column.name, column.type, column.width);
  }
  if (!plan.keys.empty()) {
    sortBy(plan);
  }
  writeWanted(rows);
  close();
}

void NewTable::writeWanted(TableRows* rows) {
  const std::int64_t all = rows->remaining();
  Progress progress("copying", ProgressUnit::rows, all);
  while (rows->next()) {
    InterruptGuard::check();
    if (rows->isWanted()) {
      writeRow(rows->values());
    }
    progress.update(all - rows->remaining());
  }
}

void NewTable::append(const ZvbString& uri) {
  ZvbString text;
  const bool appended = manager_->appendTable(table_->getName(), uri, &text);
  requireOfCopy(appended, text, uri);
}

void NewTable::defineColumn(int index, const std::string& name, zvbType type, int width) {
  require(table_->defineColumn(index, name.c_str(), type, width));
}

void NewTable::sortBy(const SortPlan& plan) { describeSort(plan, *table_, -1); }

void NewTable::describeSort(const SortPlan& plan, ZvWorkTableFile& columns, std::int64_t rowCount) {
  setSortKeys(plan, columns, table_.get());
  progress_.follow(manager_, rowCount);
}

void NewTable::writeRow(const ZvbDatavar* values) { require(table_->writeRow(values)); }

void NewTable::close() { require(closeQuietly()); }

bool NewTable::closeQuietly() {
  isClosed_ = table_->close();
  removeStatus();
  return isClosed_;
}

void NewTable::finish() {
  InterruptGuard::check();
  OutputBuffer output;
  output.append(table_->getName().asView());
  output.append('\n');
  output.finish();
  isKept_ = true;
}

void NewTable::require(bool done) const {
  if (!done) {
    requireOfManager(false, table_->getErrorMessage());
  }
}

// A sort that was cancelled fails because of the signal that cancelled it.
void NewTable::requireOfManager(bool done, const ZvbString& reason) const {
  if (done) {
    return;
  }
  if (progress_.isCancelled()) {
    InterruptGuard::check();
  }
  throw libraryFailure(reason);
}

void NewTable::requireOfCopy(bool done, const ZvbString& reason, const ZvbString& uri) const {
  if (!done && !progress_.isCancelled()) {
    const zvwt::Uri source(getURIFromURIString(uri));
    throw readingFailure(source != nullptr ? source->getPath().asCstr() : uri.asCstr(), reason);
  }
  requireOfManager(done, reason);
}

// The library removes a table that has failed before it was closed; one that is sound, and unwanted
// for a reason of the tool's own, has to be complete before it can be deleted. Not so one whose
// rows are still to be sorted: the sort is cancelled, which is a failure to the library.
NewTable::~NewTable() {
  if (table_ == nullptr || isKept_) {
    return;
  }
  progress_.cancel();
  const bool isOnDisk = isClosed_ || (table_->getErrorMessage().isEmpty() && closeQuietly());
  const ZvbString name = table_->getName();
  table_.reset();
  ZvbString text;
  if (isOnDisk && !manager_->deleteTable(name, &text)) {
    sayThatItStays(text);
  }
}

}  // namespace zvwttool
