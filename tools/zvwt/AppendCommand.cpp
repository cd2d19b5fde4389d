#include "Commands.h"
#include "Diagnostics.h"
#include "Source.h"

namespace zvwttool {

ExitCode runAppend(ZvWorkTableManager& manager, const AppendOptions& options) {
  Source source;
  std::string error;
  if (!source.find(manager, options.source, &error)) {
    return fail(error);
  }
  ZvbString text;
  const bool appended = manager.appendTable(options.target.c_str(), source.uri(), &text);
  return appended ? ExitCode::success : fail(text.asCstr());
}

}  // namespace zvwttool
