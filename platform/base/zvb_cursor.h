/// Copying one cursor into another, whatever the two keep their rows in.
#pragma once

#include "base/ZvbDatavarCursor.h"
#include "base/ZvbStringCursor.h"
#include "base/zvb_export.h"

/// Gives the target, a cursor to which no columns were added yet, the source's columns and all its
/// rows, nulls as nulls, and ends appending, so that the target reads from the first row. The
/// source is rewound first and stands behind its last row afterwards. False with the reason in
/// *error: one of the two has failed, or they are one and the same, which is found before anything
/// is changed. The target then keeps what it was given. Thread rule: that of both cursors.
[[nodiscard]] ZVB_API bool copyCursor(ZvbDatavarCursor* source, ZvbDatavarCursorCreater* target,
                                      ZvbString* error) noexcept;
[[nodiscard]] ZVB_API bool copyCursor(ZvbStringCursor* source, ZvbStringCursorCreater* target,
                                      ZvbString* error) noexcept;
