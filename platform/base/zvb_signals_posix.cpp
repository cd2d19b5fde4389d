/// The POSIX half of holding signals back.
#include <csignal>
#include <cstring>

#include "base/zvb_signals.h"

ZvbSignalsHeld::ZvbSignalsHeld() noexcept {
  sigset_t all;
  sigset_t before;
  static_assert(sizeof before <= sizeof saved_);
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::memcpy(saved_, &before, sizeof before);
}

ZvbSignalsHeld::~ZvbSignalsHeld() {
  sigset_t before;
  std::memcpy(&before, saved_, sizeof before);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}
