#include <algorithm>
#include <chrono>
#include <exception>

#include "commands/Commands.h"
#include "formats/JsonWriter.h"
#include "formats/OutputLook.h"
#include "formats/TextGrid.h"
#include "process/Diagnostics.h"
#include "process/Failure.h"
#include "process/OutputBuffer.h"
#include "process/System.h"
#include "text/Age.h"
#include "text/Counted.h"

namespace zvwttool {
namespace {

using Kind = TextGrid::Kind;

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

std::int64_t secondsSince(std::int64_t time) {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  const std::int64_t age = (duration_cast<nanoseconds>(now).count() - time) / 1'000'000'000;
  return std::max<std::int64_t>(age, 0);  // clocks differ
}

void printOrphans(const std::vector<Orphan>& orphans, OutputBuffer* output) {
  TextGrid grid({Kind::text, Kind::text, Kind::number, Kind::number}, cellWidthLimit);
  grid.addHeadings({"file", "owner", "age", "bytes"});
  for (const Orphan& orphan : orphans) {
    grid.addCell(orphan.path);
    grid.addCell(ownerName(orphan.owner));
    grid.addCell(shownAge(secondsSince(orphan.modifiedTime)));
    grid.addCell(std::to_string(orphan.size));
  }
  grid.print(output, lookOfOutput().withStyles);
}

void writeOrphans(const std::vector<Orphan>& orphans, bool removed, OutputBuffer* output) {
  JsonWriter json(output);
  json.beginArray();
  for (const Orphan& orphan : orphans) {
    json.beginObject();
    json.member("file", orphan.path);
    json.member("owner", ownerName(orphan.owner));
    json.member("age", secondsSince(orphan.modifiedTime));
    json.member("bytes", orphan.size);
    json.name("removed");
    json.literal(removed ? "true" : "false");
    json.endObject();
  }
  json.endArray();
}

void sayTotal(const std::vector<Orphan>& orphans, bool removed) {
  std::int64_t bytes = 0;
  for (const Orphan& orphan : orphans) {
    bytes += orphan.size;
  }
  say(counted(static_cast<std::int64_t>(orphans.size()), "file") + ", " + counted(bytes, "byte") +
      ", " + (removed ? "removed" : "not removed: a dry run"));
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
  if (options.asJson) {
    writeOrphans(outcome.orphans, !options.isDryRun, &output);
  } else if (!outcome.orphans.empty()) {
    printOrphans(outcome.orphans, &output);
  }
  output.finish();
  if (!outcome.orphans.empty()) {
    sayTotal(outcome.orphans, !options.isDryRun);
  }
  for (const std::string& problem : outcome.problems) {
    say(problem);
  }
  if (!cleaned) {
    throw libraryFailure(error);
  }
  return outcome.problems.empty() ? ExitCode::success : ExitCode::findings;
}

}  // namespace zvwttool
