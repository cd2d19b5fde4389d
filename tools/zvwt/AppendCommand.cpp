#include "Commands.h"
#include "Failure.h"
#include "SignalHandler.h"
#include "Source.h"

namespace zvwttool {

ExitCode runAppend(ZvWorkTableManager& manager, const AppendOptions& options) {
  const Source source(manager, options.source);
  source.requireColumns();
  source.remarkMissingColumns();
  // The library adds all rows at once, in the end, and there is no stopping it before that.
  const LastWords words("interrupted; the table has either all of the new rows or none of them");
  ZvbString text;
  if (!manager.appendTable(options.target.c_str(), source.uri(), &text)) {
    throw libraryFailure(text);
  }
  return ExitCode::success;
}

}  // namespace zvwttool
