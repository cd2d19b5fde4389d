/// All that can be read from a table, in every way, as lines that do not depend on its name.
#pragma once

#include <string>

#include "ZvwtHandles.h"

void printTable(ZvWorkTableManager& manager, const std::string& name);
