/// Unique identifiers.
#pragma once

#include "base/ZvbString.h"
#include "base/zvb_export.h"

/// A new random UUID (version 4) in its 36-character lower-case form; an empty string when the
/// system has no random bytes to give. May be called from any thread.
[[nodiscard]] ZVB_API ZvbString zvbGetUUID() noexcept;
