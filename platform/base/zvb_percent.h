/// Percent-encoding of texts in URIs. Internal to the base library; may be called from any thread.
#pragma once

#include <string_view>

#include "base/ZvbString.h"

/// Appends `text` to *target with every byte but letters, digits and `-._~` as `%` and two
/// hexadecimal digits. Sets *failed when memory is short, and leaves it alone otherwise.
void zvbAppendEncoded(std::string_view text, ZvbString* target, bool* failed) noexcept;

/// Puts `text` with its escapes resolved into *decoded. False when an escape is malformed or stands
/// for a zero byte, and when memory is short, as *decoded then tells.
[[nodiscard]] bool zvbDecodePercent(std::string_view text, ZvbString* decoded) noexcept;
