#include "process/SignalHandler.h"

#include <atomic>

#include "process/System.h"

namespace zvwttool {
namespace {

std::atomic<const char*> lastWords = nullptr;

extern "C" void sayLastWords(int signal) {
  if (const char* const text = lastWords; text != nullptr) {
    writeErrors("zvwt: ");
    writeErrors(text);
    writeErrors("\n");
  }
  endBySignal(signal);
}

}  // namespace

SignalHandler::SignalHandler(Handler handler) {
  for (std::size_t i = 0; i < signals.size(); ++i) {
    handlersBefore_[i] = std::signal(signals[i], handler);
    if (handlersBefore_[i] == SIG_IGN) {
      (void)std::signal(signals[i], SIG_IGN);
    }
  }
}

SignalHandler::~SignalHandler() {
  for (std::size_t i = 0; i < signals.size(); ++i) {
    (void)std::signal(signals[i], handlersBefore_[i]);
  }
}

LastWords::LastWords(const char* text) : handler_(sayLastWords) { lastWords = text; }

}  // namespace zvwttool
