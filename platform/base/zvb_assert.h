/// Failures that no result can tell of, such as those of a destructor.
#pragma once

#include "base/zvb_export.h"

/// Is told the text of a failure and the place in the source that reports it; all of them are valid
/// during the call only. May be called on any thread.
using ZvbAssertHandler = void (*)(const char* text, const char* sourceFile, int line);

/// Has failures reported to `handler`, or again to standard error when it is null; the handler so
/// far, null at first. Any thread may call.
ZVB_API ZvbAssertHandler zvbSetAssertHandler(ZvbAssertHandler handler) noexcept;

/// Reports a failure and returns. Any thread may call.
ZVB_API void zvbAssertFailure(const char* text, const char* sourceFile, int line) noexcept;
