#include <algorithm>

#include "commands/Commands.h"
#include "process/Diagnostics.h"
#include "tables/Directories.h"
#include "tables/TableFailure.h"

namespace zvwttool {
namespace {

/// The elements that no catalogue names are what killed processes leave.
std::string adviceToClean(ZvWorkTableManager& manager, const std::string& table) {
  const std::vector<std::string> directories =
      splitDirectories(manager.getDirectoryList().asCstr());
  const std::string path = pathOfTable(table, directories);
  return path.empty() ? "; zvwt clean removes what is left of the table"
                      : "; its catalogue is " + path +
                            ": once that file is gone, zvwt clean removes the elements";
}

}  // namespace

ExitCode runDelete(ZvWorkTableManager& manager, const DeleteOptions& options) {
  ExitCode result = ExitCode::success;
  for (const std::string& table : options.tables) {
    ZvbString text;
    if (!manager.deleteTable(table.c_str(), &text)) {
      const Failure failure = openingFailure(manager, table, text, adviceToClean(manager, table));
      say(failure.what());
      result = std::max(result, failure.code());
    }
  }
  return result;
}

}  // namespace zvwttool
