#include "commands/Commands.h"
#include "process/SignalHandler.h"
#include "tables/Source.h"
#include "tables/TableFailure.h"

namespace zvwttool {

ExitCode runAppend(ZvWorkTableManager& manager, const AppendOptions& options) {
  const Source source(manager, options.source);
  source.requireColumns();
  source.remarkMissingColumns();
  // The library adds all rows at once, in the end, and there is no stopping it before that.
  const LastWords words("interrupted; the table has either all of the new rows or none of them");
  ZvbString text;
  if (!manager.appendTable(options.target.c_str(), source.uri(), &text)) {
    const bool isOfSource = text.asView().starts_with("1782: ");  // which it names
    const std::string table = isOfSource ? source.table().asCstr() : options.target;
    throw openingFailure(manager, table, text, adviceToCheck(table));
  }
  return ExitCode::success;
}

}  // namespace zvwttool
