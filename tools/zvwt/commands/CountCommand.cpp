#include "commands/Commands.h"
#include "process/OutputBuffer.h"
#include "process/Progress.h"
#include "tables/TableRows.h"

namespace zvwttool {
namespace {

std::int64_t countWanted(ZvWorkTableManager& manager, const ReadOptions& options) {
  TableRows rows(manager, options);
  const std::int64_t all = rows.remaining();
  Progress progress("counting", ProgressUnit::rows, all);
  std::int64_t count = 0;
  while (rows.next()) {
    count += rows.isWanted() ? 1 : 0;
    progress.update(all - rows.remaining());
  }
  return count;
}

}  // namespace

ExitCode runCount(ZvWorkTableManager& manager, const ReadOptions& options) {
  const std::int64_t count = options.conditions.empty()
                                 ? Source(manager, options.source).rows().rowCount
                                 : countWanted(manager, options);
  OutputBuffer output;
  output.append(std::to_string(count) + '\n');
  output.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
