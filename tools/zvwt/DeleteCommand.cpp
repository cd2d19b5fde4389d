#include "Commands.h"
#include "Diagnostics.h"
#include "Handles.h"

namespace zvwttool {

ExitCode runDelete(ZvWorkTableManager& manager, const DeleteOptions& options) {
  ExitCode result = ExitCode::success;
  for (const std::string& table : options.tables) {
    ZvbString text;
    if (!manager.deleteTable(table.c_str(), &text)) {
      result = fail(table + ": " + text.asCstr());
    }
  }
  return result;
}

}  // namespace zvwttool
