#include <chrono>
#include <exception>

#include "Commands.h"
#include "Diagnostics.h"
#include "OutputBuffer.h"
#include "System.h"
#include "TextGrid.h"

namespace zvwttool {
namespace {

using Align = TextGrid::Align;

constexpr std::size_t cellWidthLimit = 260;  // as long as a file's path can be

struct Orphan {
  std::string path;
  std::uint32_t owner;
  std::int64_t modifiedTime;
  std::int64_t size;
};

/// What a cleaning tells of.
struct Outcome {
  std::vector<Orphan> orphans;
  std::vector<std::string> problems;
  std::exception_ptr failure;  // of taking it
};

/// A ZvwtOrphanTaker, which must not throw.
bool take(const ZvwtOrphan* orphan, void* context) {
  auto* outcome = static_cast<Outcome*>(context);
  try {
    if (orphan->problem != nullptr) {
      outcome->problems.push_back(std::string(orphan->path) + ": " + orphan->problem);
    } else {
      outcome->orphans.push_back({orphan->path, orphan->owner, orphan->modifiedTime, orphan->size});
    }
    return true;
  } catch (...) {
    outcome->failure = std::current_exception();
    return false;
  }
}

/// The two largest units of an age, such as 2d 5h.
std::string shownAge(std::int64_t seconds) {
  struct Unit {
    std::int64_t seconds;
    const char* name;
  };
  constexpr Unit units[] = {{86400, "d"}, {3600, "h"}, {60, "m"}, {1, "s"}};
  const Unit* unit = units;
  while (unit->seconds > 1 && seconds < unit->seconds) {
    ++unit;
  }
  std::string text = std::to_string(seconds / unit->seconds) + unit->name;
  if (unit->seconds > 1) {
    const std::int64_t rest = seconds % unit->seconds / unit[1].seconds;
    text += ' ' + std::to_string(rest) + unit[1].name;
  }
  return text;
}

std::int64_t secondsSince(std::int64_t time) {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  return (duration_cast<nanoseconds>(now).count() - time) / 1'000'000'000;
}

void printOrphans(const std::vector<Orphan>& orphans, OutputBuffer* output) {
  TextGrid grid({Align::left, Align::left, Align::right, Align::right}, cellWidthLimit);
  for (const std::string_view heading : {"file", "owner", "age", "bytes"}) {
    grid.addCell(heading);
  }
  grid.addRule();
  for (const Orphan& orphan : orphans) {
    grid.addCell(orphan.path);
    grid.addCell(ownerName(orphan.owner));
    grid.addCell(shownAge(secondsSince(orphan.modifiedTime)));
    grid.addCell(std::to_string(orphan.size));
  }
  grid.print(output);
}

void sayTotal(const std::vector<Orphan>& orphans, bool removed) {
  std::int64_t bytes = 0;
  for (const Orphan& orphan : orphans) {
    bytes += orphan.size;
  }
  say(std::to_string(orphans.size()) + (orphans.size() == 1 ? " file, " : " files, ") +
      std::to_string(bytes) + " bytes, " + (removed ? "removed" : "not removed: a dry run"));
}

}  // namespace

ExitCode runClean(ZvWorkTableManager& manager, const CleanOptions& options) {
  Outcome outcome;
  ZvbString error;
  const bool cleaned =
      zvwtCleanDirectories(&manager, options.leastAge, !options.isDryRun, take, &outcome, &error);
  if (outcome.failure != nullptr) {
    std::rethrow_exception(outcome.failure);
  }
  OutputBuffer output;
  if (!outcome.orphans.empty()) {
    printOrphans(outcome.orphans, &output);
  }
  const ExitCode written = output.finish();
  if (!outcome.orphans.empty()) {
    sayTotal(outcome.orphans, !options.isDryRun);
  }
  for (const std::string& problem : outcome.problems) {
    say(problem);
  }
  if (!cleaned) {
    return fail(error.asCstr());
  }
  return outcome.problems.empty() ? written : ExitCode::failure;
}

}  // namespace zvwttool
