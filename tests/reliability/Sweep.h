/// Runs an operation again and again, each time with something else that fails.
#pragma once

#include <algorithm>
#include <cstdio>

#include "reliability/Operations.h"
#include "support/TestEffort.h"

/// One point in so many is visited: sanitizers make everything slow, each in its measure, and so
/// do an emulated processor and a compiler that does not optimise.
#if defined(_WIN32) && defined(ZVWT_TEST_EMULATED)
inline constexpr int usualStride = 307;  // Wine takes its time for each file
#elif defined(__SANITIZE_THREAD__) || defined(ZVWT_TEST_EMULATED)
inline constexpr int usualStride = 53;
#elif defined(__SANITIZE_ADDRESS__)
inline constexpr int usualStride = 13;
#elif !defined(__OPTIMIZE__)
inline constexpr int usualStride = 7;
#else
inline constexpr int usualStride = 1;
#endif

class Sweep {
 public:
  explicit Sweep(const Operation& operation) : operation_(operation) {
    EXPECT_TRUE(world_.attempt(operation)) << world_.error.asCstr();
    expected_ = world_.results();
    settle(true, {});
  }

 protected:
  /// Visits points of one kind, which count from 0, until `visit` says that there are no more.
  template <typename Visit>
  void forEachPoint(const Visit& visit) {
    const std::int64_t stride = std::max(1, usualStride / testEffort());
    std::int64_t point = visited_ % stride;  // not always the same ones
    while (visit(point)) {
      point += stride;
      ++visited_;
    }
  }

  /// After a run: all has to be as it was or as it was to become, and once the trouble is over the
  /// operation passes.
  void settle(bool passed, const Disturbance& disturbance) {
    if (passed) {
      EXPECT_EQ(expected_, world_.results());
    }
    world_.expectWhole(operation_, passed, disturbance);
    if (!passed && world_.canRepeat(operation_)) {
      EXPECT_TRUE(world_.attempt(operation_)) << world_.error.asCstr();
      EXPECT_EQ(expected_, world_.results());
      world_.expectWhole(operation_, true, {});
    }
    world_.putBack(operation_, disturbance);
  }

  [[nodiscard]] const Operation& operation() const { return operation_; }
  [[nodiscard]] World& world() { return world_; }
  [[nodiscard]] std::int64_t visited() const { return visited_; }

 private:
  const Operation& operation_;
  World world_;
  Lines expected_;
  std::int64_t visited_ = 0;
};

/// Makes a sweep of that kind over each operation, and tells how many points there were.
template <typename SweepKind>
void sweepAllOperations(const char* what) {
  std::int64_t points = 0;
  for (const Operation& operation : allOperations()) {
    const std::int64_t found = SweepKind(operation).run();
    std::printf("%6lld  %s\n", static_cast<long long>(found), operation.name);
    points += found;
  }
  std::printf("%6lld  %s\n", static_cast<long long>(points), what);
  testing::Test::RecordProperty("points", std::to_string(points));
}
