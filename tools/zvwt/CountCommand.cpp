#include "Commands.h"
#include "OutputBuffer.h"
#include "Source.h"

namespace zvwttool {

ExitCode runCount(ZvWorkTableManager& manager, const SourceOptions& options) {
  const Source source(manager, options);
  OutputBuffer output;
  output.append(std::to_string(source.rows().rowCount) + '\n');
  output.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
