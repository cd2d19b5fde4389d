/// Each allocation of each operation fails, once and from then on: the operation passes all the
/// same or says why not, takes nothing from anybody, and passes when there is memory again.

#include <limits>

#include "fio/np_fio.h"
#include "reliability/Operations.h"
#include "reliability/Sweep.h"
#include "support/ShortMemory.h"

namespace {

class MemoryFaultSweep : public Sweep {
 public:
  using Sweep::Sweep;

  /// The number of points.
  std::int64_t run() {
    for (const bool lasts : {false, true}) {
      forEachPoint([&](std::int64_t allocation) { return failsAt(allocation, lasts); });
    }
    return visited();
  }

 private:
  /// False when the operation makes fewer allocations.
  bool failsAt(std::int64_t allocation, bool lasts) {
    bool met = false;
    const bool passed = world().attempt(operation(), [&](const std::function<bool()>& run) {
      const ShortMemory failing(static_cast<int>(allocation),
                                lasts ? std::numeric_limits<int>::max() : 1, ShortFor::allThreads);
      const bool done = run();
      met = failing.met();
      return done;
    });
    SCOPED_TRACE(std::string(operation().name) + (lasts ? " from" : " at") + " allocation " +
                 std::to_string(allocation) + ": " + world().error.asCstr());
    EXPECT_TRUE(passed || met);
    if (!passed && !lasts && !world().saidByValue) {
      expectReason();
    }
    settle(passed, {.lasts = lasts});
    return met;
  }

  /// Memory, by a message of its own or as the cause of another one. A manager that could not be
  /// allocated, from which was to be copied, has no text.
  void expectReason() {
    const std::string text = world().error.asCstr();
    EXPECT_GT(messageId(world().error), 0);
    EXPECT_TRUE(text.find("Memory is short") != std::string::npos ||
                text.find(np_fio_errdesc(npFioNoMemory)) != std::string::npos ||
                (text.starts_with("1781: ") && text.ends_with(": ")));
  }
};

TEST(MemoryFaults, EachAllocationFailsOnceAndFromThenOn) {
  sweepAllOperations<MemoryFaultSweep>("allocations failed");
}

}  // namespace
