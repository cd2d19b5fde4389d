/// The Windows half of holding signals back: there is nothing to hold, since the system runs a
/// host's handlers on threads of their own.
#include "base/zvb_signals.h"

ZvbSignalsHeld::ZvbSignalsHeld() noexcept : saved_{} {}

ZvbSignalsHeld::~ZvbSignalsHeld() = default;
