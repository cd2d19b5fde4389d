/// The verbs that print URIs, one a line, and what they stand for.
#include <algorithm>

#include "commands/Commands.h"
#include "commands/UriExplanation.h"
#include "process/Failure.h"
#include "process/OutputBuffer.h"
#include "tables/Source.h"
#include "tables/TableFailure.h"

namespace zvwttool {
namespace {

void addLine(const ZvbString& uri, OutputBuffer* output) {
  output->append(uri.asView());
  output->append('\n');
}

}  // namespace

ExitCode runUri(ZvWorkTableManager& manager, const UriOptions& options) {
  const Source source(manager, options.source);
  OutputBuffer output;
  if (options.asJson) {
    explainInJson(manager, source, &output);
  } else if (Source::isUriAlone(options.source)) {
    explainForPeople(manager, source, options.isWide, &output);
  } else {
    addLine(source.uri(), &output);
    output.finish();
  }
  return ExitCode::success;
}

ExitCode runPartition(ZvWorkTableManager& manager, const PartitionOptions& options) {
  const Source source(manager, options.source);
  if (!source.isOfAllRows()) {
    throw Failure(ExitCode::usage,
                  "only all rows of a table can be partitioned: the URI must not have a range");
  }
  // As many parts as there are rows are the most that make a difference.
  const auto rows = std::max<std::int64_t>(source.rowsOfTable(), 1);
  int parts = static_cast<int>(std::min<std::int64_t>(options.parts, rows));
  std::vector<RowRange> ranges(static_cast<std::size_t>(parts));
  ZvbString text;
  if (!manager.partitionTable(source.uri(), &parts, ranges.data(), &text)) {
    throw readingFailure(source.table().asCstr(), text);
  }
  ranges.resize(static_cast<std::size_t>(parts));
  OutputBuffer output;
  for (const RowRange& range : ranges) {
    addLine(source.uri(range), &output);
  }
  output.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
