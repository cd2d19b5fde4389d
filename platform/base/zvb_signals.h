/// Keeping the host's signals away from threads of the library's own.
#pragma once

#include <cstdint>

/// Holds back all signals from the calling thread while it lives. A thread that is started
/// meanwhile never gets any: the host's handlers run on the host's threads. May be used on any
/// thread.
class ZvbSignalsHeld {
 public:
  ZvbSignalsHeld() noexcept;
  ZvbSignalsHeld(const ZvbSignalsHeld&) = delete;
  ZvbSignalsHeld& operator=(const ZvbSignalsHeld&) = delete;
  ~ZvbSignalsHeld();

 private:
  std::uint64_t saved_[16];  // the system's set of signals
};
