#include "wtcheck/CheckReport.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

void CheckReport::add(const char* file, std::int64_t offset, const char* rule, ...) noexcept {
  if (isOver_) {
    return;
  }
  char text[320];  // longer than any rule with its numbers
  std::va_list arguments;
  va_start(arguments, rule);
  (void)std::vsnprintf(text, sizeof text, rule, arguments);
  va_end(arguments);
  ++findings_;
  const ZvwtFinding finding = {.file = file, .offset = offset, .rule = text};
  const bool goesOn = taker_ == nullptr || taker_(&finding, context_);
  isOver_ = !goesOn || findings_ == findingLimit;
}

void CheckReport::fail(ZvbString text) noexcept {
  error_ = std::move(text);
  failed_ = true;
  isOver_ = true;
}
