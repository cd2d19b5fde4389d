/// The verbs that print URIs, one a line.
#include <algorithm>

#include "Commands.h"
#include "Diagnostics.h"
#include "Handles.h"
#include "OutputBuffer.h"
#include "Source.h"

namespace zvwttool {
namespace {

void addLine(const ZvbString& uri, OutputBuffer* output) {
  output->append(uri.asView());
  output->append('\n');
}

}  // namespace

ExitCode runPrintUri(ZvWorkTableManager& manager, const SourceOptions& options) {
  Source source;
  std::string error;
  if (!source.find(manager, options, &error)) {
    return fail(error);
  }
  OutputBuffer output;
  addLine(source.uri(), &output);
  return output.finish();
}

ExitCode runPartition(ZvWorkTableManager& manager, const PartitionOptions& options) {
  Source source;
  std::string error;
  if (!source.find(manager, options.source, &error)) {
    return fail(error);
  }
  if (!source.isOfAllRows()) {
    return fail("only all rows of a table can be partitioned: the URI must not have a range");
  }
  // As many parts as there are rows are the most that make a difference.
  const auto rows = std::max<std::int64_t>(source.rowsOfTable(), 1);
  int parts = static_cast<int>(std::min<std::int64_t>(options.parts, rows));
  std::vector<RowRange> ranges(static_cast<std::size_t>(parts));
  ZvbString text;
  if (!manager.partitionTable(source.uri(), &parts, ranges.data(), &text)) {
    return fail(text.asCstr());
  }
  ranges.resize(static_cast<std::size_t>(parts));
  OutputBuffer output;
  for (const RowRange& range : ranges) {
    addLine(source.uri(range), &output);
  }
  return output.finish();
}

}  // namespace zvwttool
