/// What a sort tells the program that waits for it, and how that program stops it.
#pragma once

#include <cstdint>

enum ZvDatafileSortPhase : std::int32_t {
  zvDatafileSortAdding = 0,      ///< records come in, and runs of them are sorted
  zvDatafileSortMerging = 1,     ///< all records are in; the last runs are sorted, some merged
  zvDatafileSortDelivering = 2,  ///< records go out in order
};

struct ZvDatafileSortProgress {
  ZvDatafileSortPhase phase;
  std::int64_t recordsAdded;
  std::int64_t recordsDelivered;
  std::int64_t spilledBytes;   ///< written to work files so far, by all passes together
  std::int64_t workFileBytes;  ///< that the work files take now
  std::int64_t blocksSpilled;  ///< in which those bytes were written
  std::int64_t runsSpilled;    ///< sorted runs that have left memory for a work file
  std::int64_t runsMerged;     ///< runs in work files that were merged into longer ones there
};

/// Called on the thread that adds or takes records, fifty times a second at most and once more when
/// the last record has been delivered. Return false to cancel the sort: the operation under way
/// then fails and says so, and so does every later one. Must not throw, and must not use the table
/// or the sorter that is being sorted.
using ZvDatafileSortCallback = bool (*)(const ZvDatafileSortProgress* progress, void* context);
