/// Lists of directories.
#pragma once

#include "base/zvb_export.h"

/// The separator between the directories of a list: ';' on Windows, ':' elsewhere.
ZVB_API extern const char np_dir_listsep;
