#include "InterruptGuard.h"

namespace zvwttool {
namespace {

volatile std::sig_atomic_t receivedSignal = 0;

extern "C" void rememberSignal(int signal) { receivedSignal = signal; }

}  // namespace

InterruptGuard::InterruptGuard() {
  receivedSignal = 0;
  for (std::size_t i = 0; i < signals.size(); ++i) {
    handlersBefore_[i] = std::signal(signals[i], rememberSignal);
    if (handlersBefore_[i] == SIG_IGN) {
      (void)std::signal(signals[i], SIG_IGN);
    }
  }
}

InterruptGuard::~InterruptGuard() {
  for (std::size_t i = 0; i < signals.size(); ++i) {
    (void)std::signal(signals[i], handlersBefore_[i]);
  }
  if (interrupted()) {
    (void)std::raise(receivedSignal);
  }
}

bool InterruptGuard::interrupted() { return receivedSignal != 0; }

}  // namespace zvwttool
