#include "tables/TableColumns.h"

#include "process/Failure.h"

namespace zvwttool {

std::vector<TableColumn> columnsOf(ZvWorkTableFile& table) {
  std::vector<TableColumn> columns(static_cast<std::size_t>(table.getColumnCount()));
  int index = 0;
  for (TableColumn& column : columns) {
    ZvbString name;
    if (!table.getColumnDefinition(index++, &name, &column.type, &column.width,
                                   &column.maxLength)) {
      throw libraryFailure(table.getErrorMessage());
    }
    column.name = name.asCstr();
  }
  return columns;
}

}  // namespace zvwttool
