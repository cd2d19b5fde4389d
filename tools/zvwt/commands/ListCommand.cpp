#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <unordered_set>

#include "commands/Commands.h"
#include "formats/CellText.h"
#include "formats/JsonWriter.h"
#include "formats/OutputLook.h"
#include "process/Diagnostics.h"
#include "tables/Directories.h"
#include "tables/Handles.h"
#include "text/Age.h"

namespace zvwttool {
namespace {

using Kind = TextGrid::Kind;
using FileTime = std::filesystem::file_time_type;

/// What may be a table.
struct Candidate {
  std::string name;
  std::filesystem::path path;
  FileTime changed;
};

struct Entry {
  std::string name;
  std::string path;
  std::int64_t age = 0;  // seconds
  std::optional<std::int64_t> rows;
  std::optional<std::int64_t> columns;
  std::optional<std::int64_t> bytes;
  std::string state;    // a word instead of these numbers; empty for a sound table
  std::string problem;  // why
};

/// A prefix and 16 letters and digits, as the library names catalogues.
bool isCatalogueName(const std::string& name) {
  constexpr std::string_view prefix = "zvwt_";
  constexpr std::size_t size = prefix.size() + 16;
  return name.starts_with(prefix) && name.size() == size &&
         std::all_of(name.begin() + prefix.size(), name.end(), [](char character) {
           return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
         });
}

/// Of tables of one name the library finds that in the first directory.
class Search {
 public:
  void searchIn(const std::string& directory) {
    std::error_code error;
    std::filesystem::directory_iterator entries(pathOfText(directory), error);
    while (!error && entries != std::filesystem::directory_iterator()) {
      take(*entries);
      entries.increment(error);
    }
    if (error) {
      const bool isMissing = error == std::errc::no_such_file_or_directory;
      throw Failure(isMissing ? ExitCode::notFound : ExitCode::inputOutput,
                    directory + ": " + error.message());
    }
  }

  /// What was found, the newest first.
  std::vector<Candidate> takeFound() {
    std::sort(found_.begin(), found_.end(), [](const Candidate& left, const Candidate& right) {
      return left.changed != right.changed ? left.changed > right.changed : left.name < right.name;
    });
    return std::move(found_);
  }

 private:
  void take(const std::filesystem::directory_entry& entry) {
    std::string name = textOfPath(entry.path().filename());
    std::error_code error;
    if (!isCatalogueName(name) || !entry.is_regular_file(error)) {
      return;
    }
    const FileTime changed = entry.last_write_time(error);
    if (!error && names_.insert(name).second) {  // else it is gone, or another one hides it
      found_.push_back({std::move(name), entry.path(), changed});
    }
  }

  std::vector<Candidate> found_;
  std::unordered_set<std::string> names_;
};

/// A catalogue gets its first bytes, which are not all zero, last.
bool isBeingWritten(const std::filesystem::path& path) {
  std::array<char, 32> start{};
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    return false;
  }
  file.read(start.data(), start.size());
  const bool isWhole = file.gcount() == static_cast<std::streamsize>(start.size());
  return file.gcount() == 0 ||
         (isWhole && std::all_of(start.begin(), start.end(), [](char byte) { return byte == 0; }));
}

/// Adds what the library knows of the table.
void look(ZvWorkTableManager& manager, Entry* entry) {
  const ZvbString name = entry->name.c_str();
  ZvwtTableSizes sizes;
  ZvbString error;
  if (!zvwtGetTableSizes(&manager, name, &sizes, &error)) {
    throw libraryFailure(error);
  }
  entry->columns = openTable(manager, name)->getColumnCount();
  entry->rows = sizes.rowCount;
  entry->bytes = sizes.catalogueBytes + sizes.dataBytes + sizes.indexBytes;
}

std::int64_t secondsSince(FileTime time) {
  using namespace std::chrono;
  const auto age = duration_cast<seconds>(FileTime::clock::now() - time);
  return std::max<std::int64_t>(age.count(), 0);  // clocks differ
}

/// False when there is no table, or none yet.
bool describe(ZvWorkTableManager& manager, const Candidate& candidate, Entry* entry) {
  entry->name = candidate.name;
  entry->path = textOfPath(candidate.path);
  entry->age = secondsSince(candidate.changed);
  try {
    look(manager, entry);
  } catch (const Failure& failure) {
    std::error_code ignored;
    if (!std::filesystem::exists(candidate.path, ignored) || isBeingWritten(candidate.path)) {
      return false;
    }
    entry->state = failure.code() == ExitCode::inputOutput ? "unreadable" : "damaged";
    entry->problem = failure.what();
  }
  return true;
}

std::string shown(std::optional<std::int64_t> number) {
  return number.has_value() ? std::to_string(*number) : "";
}

void print(const std::vector<Entry>& entries, OutputBuffer* output) {
  TextGrid grid({Kind::word, Kind::number, Kind::number, Kind::number, Kind::number});
  grid.addHeadings({"table", "rows", "columns", "bytes", "age"});
  for (const Entry& entry : entries) {
    grid.addCell(entry.name);
    grid.addCell(entry.state.empty() ? shown(entry.rows) : entry.state);
    grid.addCell(shown(entry.columns));
    grid.addCell(shown(entry.bytes));
    grid.addCell(shownAge(entry.age));
  }
  grid.print(output, lookOfOutput().withStyles);
}

void write(const std::vector<Entry>& entries, OutputBuffer* output) {
  JsonWriter json(output);
  json.beginArray();
  for (const Entry& entry : entries) {
    json.beginObject();
    json.member("name", entry.name);
    json.member("path", entry.path);
    json.member("rows", entry.rows);
    json.member("columns", entry.columns);
    json.member("bytes", entry.bytes);
    json.member("age", entry.age);
    json.name("problem");
    if (entry.problem.empty()) {
      json.literal("null");
    } else {
      json.text(entry.problem);
    }
    json.endObject();
  }
  json.endArray();
}

std::vector<Entry> describeAll(ZvWorkTableManager& manager) {
  Search search;
  for (const std::string& directory : splitDirectories(manager.getDirectoryList().asCstr())) {
    search.searchIn(directory);
  }
  std::vector<Entry> entries;
  for (const Candidate& candidate : search.takeFound()) {
    Entry entry;
    if (describe(manager, candidate, &entry)) {
      entries.push_back(std::move(entry));
    }
  }
  return entries;
}

}  // namespace

ExitCode runList(ZvWorkTableManager& manager, const ListOptions& options) {
  const std::vector<Entry> entries = describeAll(manager);
  OutputBuffer output;
  if (options.asJson) {
    write(entries, &output);
  } else if (!entries.empty()) {
    print(entries, &output);
  } else {
    say("no tables");
  }
  output.finish();
  ExitCode result = ExitCode::success;
  for (const Entry& entry : entries) {
    if (!entry.problem.empty()) {
      say(entry.name + ": " + entry.problem);
      result = ExitCode::findings;
    }
  }
  return result;
}

}  // namespace zvwttool
