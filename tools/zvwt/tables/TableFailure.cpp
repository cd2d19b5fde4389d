#include "tables/TableFailure.h"

#include <filesystem>
#include <string_view>
#include <vector>

#include "ZvwtHandles.h"
#include "base/ZvURI.h"
#include "tables/Directories.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

constexpr int nameNotPlain = 1784;
constexpr int workFileDamaged = 1812;  // which is none of a table's

bool isTableDamage(const Failure& failure) {
  return failure.code() == ExitCode::damaged && causeOf(failure.what()) != workFileDamaged;
}

/// A reason behind the name of its table, unless it tells that itself, and without a full stop.
std::string about(const std::string& table, std::string reason) {
  if (reason.ends_with('.')) {
    reason.pop_back();
  }
  for (const char before : {'"', '/'}) {
    if (reason.find(before + table + '"') != std::string::npos) {
      return reason;
    }
  }
  return table + ": " + reason;
}

Failure nameFailure(const std::string& name) {
  const zvwt::Uri uri(getURIFromURIString(name.c_str()));
  if (uri != nullptr) {
    return {ExitCode::usage,
            quotedName(name) + " is a URI: give the table's name, " + uri->getPath().asCstr()};
  }
  const bool hasDirectory = name.find_first_of("/\\") != std::string::npos;
  return {ExitCode::usage,
          quotedName(name) + " is no table's name" +
              (hasDirectory ? ": give it without its directory; --dir names that" : "")};
}

/// What looks like a table in the directories.
std::vector<std::string> tableNames(const std::vector<std::string>& directories) {
  constexpr std::string_view prefix = "zvwt_";
  std::vector<std::string> names;
  for (const std::string& directory : directories) {
    std::error_code error;
    std::filesystem::directory_iterator entries(pathOfText(directory), error);
    while (!error && entries != std::filesystem::directory_iterator()) {
      std::string name = textOfPath(entries->path().filename());
      if (name.starts_with(prefix)) {
        names.push_back(std::move(name));
      }
      entries.increment(error);
    }
  }
  return names;
}

bool isMissing(const std::string& table, const Failure& failure) {
  const std::string_view text = failure.what();
  return failure.code() != ExitCode::inputOutput &&
         text.find(table + "\" cannot be opened") != std::string_view::npos;
}

}  // namespace

std::string adviceToCheck(const std::string& table) {
  return "; zvwt check " + table + " tells where";
}

Failure openingFailure(ZvWorkTableManager& manager, const std::string& table,
                       const ZvbString& reason, const std::string& advice) {
  const Failure failure = libraryFailure(reason);
  if (causeOf(failure.what()) == nameNotPlain) {
    return nameFailure(table);
  }
  const std::string text = about(table, failure.what());
  if (isMissing(table, failure)) {
    const std::string suggestion =
        didYouMean(table, tableNames(splitDirectories(manager.getDirectoryList().asCstr())));
    return {ExitCode::notFound,
            text + (suggestion.empty() ? "; zvwt list tells what there is" : suggestion)};
  }
  return {failure.code(), isTableDamage(failure) ? text + advice : text};
}

Failure readingFailure(const std::string& table, const ZvbString& reason) {
  Failure failure = libraryFailure(reason);
  if (!isTableDamage(failure)) {
    return failure;
  }
  return {failure.code(), about(table, failure.what()) + adviceToCheck(table)};
}

}  // namespace zvwttool
