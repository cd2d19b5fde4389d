/// What a data element needs to know of its table. The table owns it and outlives its elements.
#pragma once

#include <cstdint>
#include <memory>

#include "fio/TempDirectories.h"
#include "wtelem/ColumnDefinition.h"
#include "wtelem/StringReadBuffer.h"

struct TableState {
  const TempDirectories& directories;
  std::int32_t columnCount = 0;
  std::unique_ptr<ColumnDefinition[]> columns;
  std::int64_t maxElementSize = 0;  ///< bytes of element data; 0 or less is no limit
  bool openedForReading = false;
  std::int32_t firstDelivered = 0;  ///< number of the first column that is delivered
  bool readsWholeRows = false;      ///< every column is delivered once, at the place of its number
  bool readsBackwards = false;
  bool otherByteOrder = false;  ///< the files were written on a machine of the other byte order
  StringReadBuffer stringBuffer;
};
