#include "process/InterruptGuard.h"

#include "process/Failure.h"
#include "process/System.h"

namespace zvwttool {
namespace {

volatile std::sig_atomic_t receivedSignal = 0;

extern "C" void rememberSignal(int signal) { receivedSignal = signal; }

}  // namespace

InterruptGuard::InterruptGuard() : handler_(rememberSignal) {}

bool InterruptGuard::interrupted() { return receivedSignal != 0; }

void InterruptGuard::check() {
  if (interrupted()) {
    throw Failure(ExitCode::inputOutput, "interrupted; what had been begun is removed");
  }
}

void InterruptGuard::obey() {
  if (interrupted()) {
    endBySignal(receivedSignal);
  }
}

}  // namespace zvwttool
