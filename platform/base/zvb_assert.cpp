#include "base/zvb_assert.h"

#include <atomic>
#include <cstdio>

namespace {

std::atomic<ZvbAssertHandler> currentHandler{nullptr};

}  // namespace

ZvbAssertHandler zvbSetAssertHandler(ZvbAssertHandler handler) noexcept {
  return currentHandler.exchange(handler);
}

void zvbAssertFailure(const char* text, const char* sourceFile, int line) noexcept {
  const ZvbAssertHandler handler = currentHandler.load();
  if (handler != nullptr) {
    handler(text, sourceFile, line);
  } else {
    (void)std::fprintf(stderr, "%s:%d: %s\n", sourceFile, line, text);
  }
}
