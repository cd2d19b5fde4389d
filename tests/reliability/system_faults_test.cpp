/// Each system call of each operation fails, in each way that it can fail, once and from then on:
/// the operation passes all the same or says why not, takes nothing from anybody, and passes when
/// the trouble is over.

#include "fio/np_fio.h"
#include "reliability/Operations.h"
#include "reliability/Sweep.h"
#include "reliability/SystemFaults.h"
#include "support/SlowRun.h"
#include "support/ThisSystem.h"

namespace {

constexpr unsigned transfers = call::read | call::write;

/// In what ways calls fail. What is hidden is the file layer's own business.
const Fault faults[] = {
    {"input/output error", call::all & ~(call::close | call::limit), code::inputOutput,
     npFioInputOutput},
    {"disk full", call::open | call::write | call::truncate | call::reserve, code::diskFull,
     npFioDiskFull},
    {"quota used up", call::open | call::write | call::reserve, code::quotaUsedUp, npFioDiskFull},
    {"file too large", call::write | call::truncate, code::fileTooLarge, npFioDiskFull},
    {"too many files", call::open, code::tooManyFiles, npFioTooManyFiles},
    {"out of memory", call::open | transfers | call::size | call::describe | call::lock,
     code::outOfMemory, npFioNoMemory},
    {"access denied", call::open | call::describe | call::unlink, code::accessDenied,
     npFioAccessDenied},
    {"read-only medium", call::open | call::write | call::truncate | call::unlink,
     code::readOnlyMedium, npFioReadOnlyMedium},
    {"file vanished", call::describe | call::unlink, code::notFound, npFioNotFound},
    {"in use", call::lock, code::inUse, npFioInUse},
    {"unheard of", call::open | transfers | call::lock, code::unheardOf, npFioSystem},
    {"write without effect", call::write, code::inputOutput, npFioInputOutput,
     Fault::Effect::transfersNone},
    {"nothing to read", call::read, 0, npFioInputOutput, Fault::Effect::transfersNone},
    {"failed close", call::close, code::inputOutput, 0, Fault::Effect::fails, true, true},
    {"unsupported", call::reserve | call::fileSystem | call::advise | call::limit,
     code::unsupported, 0, Fault::Effect::fails, true, true},
    {"interruption",
     call::open | call::close | transfers | call::truncate | call::lock | call::reserve,
     code::interrupted, 0, Fault::Effect::fails, false, true},
    {"partial transfer", transfers, 0, 0, Fault::Effect::transfersLess, true, true},
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// Messages without room for a cause: a position that cannot be set, and rows or a catalogue that
/// cannot be written or read. Their texts say what it may be.
bool namesPossibleCauses(const std::string& text) {
  bool isOne = false;
  for (const char* id : {"336: ", "1044: ", "1301: ", "1773: "}) {
    isOne = isOne || text.starts_with(id) || contains(text, std::string(" ") + id);
  }
  return isOne && contains(text, "failing");
}

bool namesCause(const std::string& text, int status) {
  const char* description = np_fio_errdesc(status);
  return description != nullptr ? contains(text, description)
                                : contains(text, "unknown error") ||
                                      contains(text, "status " + std::to_string(status));
}

/// What nobody has a status for gets one from its number.
int statusOf(const Fault& fault) {
  return fault.status == npFioSystem ? npFioSystem + fault.code : fault.status;
}

class SystemFaultSweep : public Sweep {
 public:
  using Sweep::Sweep;

  /// The number of points.
  std::int64_t run() {
    for (const Fault& fault : faults) {
      if (fault.code == code::none || isLeftOut()) {
        continue;
      }
      for (const bool lasts : {false, true}) {
        if (!lasts || fault.lasts) {
          forEachPoint([&](std::int64_t call) { return failsAt(fault, call, lasts); });
        }
      }
    }
    return visited();
  }

 private:
  /// Under Wine each operation meets some faults, and each fault some operations.
  static bool isLeftOut() {
    static int count = 0;
    constexpr int all = 5;
    return isEmulated && isWindows && ++count % all != 0;
  }

  /// False when the operation makes fewer calls.
  bool failsAt(const Fault& fault, std::int64_t call, bool lasts) {
    bool met = false;
    Disturbance disturbance;
    std::string file;
    const bool passed = world().attempt(operation(), [&](const std::function<bool()>& run) {
      const SystemFaults failing(fault, call, lasts);
      const bool done = run();
      met = failing.met() != 0;
      const unsigned deleting = lasts ? call::unlink | call::open : call::unlink;
      // Rows that were refused are cut off by the close, unless that meets the same.
      const unsigned writing = call::write | call::truncate | call::size;
      const unsigned cutting = call::truncate | call::size | call::describe | call::read;
      disturbance = {.lasts = lasts,
                     .deleting = (failing.met() & deleting) != 0,
                     .closing = failing.metCatalogue() ? (failing.met() & writing) != 0
                                                       : lasts && (failing.met() & cutting) != 0};
      file = failing.file();
      return done;
    });
    SCOPED_TRACE(std::string(operation().name) + ", " + fault.name + (lasts ? " from" : " at") +
                 " call " + std::to_string(call) + ", " + file + ": " + world().error.asCstr());
    if (!passed) {
      EXPECT_TRUE(met && !fault.isHidden);
      expectReason(fault);
    }
    settle(passed, disturbance);
    return met;
  }

  void expectReason(const Fault& fault) {
    const std::string text = world().error.asCstr();
    EXPECT_GT(messageId(world().error), 0);
    EXPECT_TRUE(namesCause(text, statusOf(fault)) || namesPossibleCauses(text) ||
                (fault.code == code::outOfMemory && contains(text, "Memory is short")));
  }
};

TEST(SystemFaults, EachCallFailsOnceAndFromThenOn) {
  sweepAllOperations<SystemFaultSweep>("system calls failed");
}

}  // namespace
