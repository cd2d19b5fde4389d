/// Values as cells of a grid, and in JSON.
#pragma once

#include "formats/JsonWriter.h"
#include "formats/TextGrid.h"
#include "tables/FieldValue.h"

namespace zvwttool {

[[nodiscard]] TextGrid::Kind kindOf(zvbType type);

/// Adds a value's text; a null is told from a text of the same look.
void addValueCell(const ZvbDatavar& value, ValueText* valueText, TextGrid* grid);

/// Numbers and truth values are such in JSON, too. What has no text becomes null.
void writeJsonValue(const ZvbDatavar& value, ValueText* valueText, JsonWriter* json);

}  // namespace zvwttool
