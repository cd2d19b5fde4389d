#include "Commands.h"
#include "Diagnostics.h"
#include "Failure.h"

namespace zvwttool {

ExitCode runDelete(ZvWorkTableManager& manager, const DeleteOptions& options) {
  ExitCode result = ExitCode::success;
  for (const std::string& table : options.tables) {
    ZvbString text;
    if (!manager.deleteTable(table.c_str(), &text)) {
      const Failure failure = libraryFailure(text, table + ": ");
      say(failure.what());
      result = failure.code();
    }
  }
  return result;
}

}  // namespace zvwttool
