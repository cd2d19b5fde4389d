/// What a check finds, and the reason why it could not be made to its end.
///
/// Thread rule: used by the thread that makes the check.
#pragma once

#include <cstdint>

#include "zvwt.h"

class CheckReport {
 public:
  static constexpr std::int64_t findingLimit = 100;

  /// `taker` may be null.
  CheckReport(ZvwtFindingTaker taker, void* context) noexcept : taker_(taker), context_(context) {}

  /// Hands over and counts a finding; its rule is formatted as printf does. Nothing once the check
  /// is over.
  [[gnu::format(printf, 4, 5)]] void add(const char* file, std::int64_t offset, const char* rule,
                                         ...) noexcept;
  /// Ends the check without a result.
  void fail(ZvbString text) noexcept;

  /// True when nothing more is wanted: after a failure, after the last finding that is taken.
  [[nodiscard]] bool isOver() const noexcept { return isOver_; }
  [[nodiscard]] bool failed() const noexcept { return failed_; }
  [[nodiscard]] const ZvbString& error() const noexcept { return error_; }
  [[nodiscard]] std::int64_t findings() const noexcept { return findings_; }

 private:
  ZvwtFindingTaker taker_;
  void* context_;
  std::int64_t findings_ = 0;
  ZvbString error_;
  bool failed_ = false;
  bool isOver_ = false;
};
