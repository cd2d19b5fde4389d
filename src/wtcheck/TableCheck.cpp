#include "wtcheck/TableCheck.h"

#include "wtcheck/CatalogueCheck.h"

void checkTable(const TempDirectories& directories, const char* name,
                CheckReport* report) noexcept {
  CheckedFile file(*report);
  if (!file.open(directories, name, SearchOrder::toTheEnd)) {
    report->fail(file.openingFailure("header"));
    return;
  }
  CatalogueCheck(directories, file, *report).run();
}
