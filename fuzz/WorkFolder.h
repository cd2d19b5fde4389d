/// The directory in memory in which a fuzz target has its tables.
///
/// It lies in the folder that ZVWT_FUZZ_FOLDER names, else in /dev/shm, else in the temporary
/// directory, and goes when the process ends on its own. What surrounds it is watched: a neighbour
/// with a name such as an element's lies beside it.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

class WorkFolder {
 public:
  WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder();

  /// The tables' directory.
  [[nodiscard]] std::string path() const { return tables_.string(); }
  void write(const std::string& name, std::string_view content) const;
  /// The names of all that is in the tables' directory.
  [[nodiscard]] std::set<std::string> names() const;
  /// Removes all that is in the tables' directory.
  void clear() const;
  /// True while nothing beside the tables' directory was made, removed or changed.
  [[nodiscard]] bool surroundingsAreWhole() const;

 private:
  std::filesystem::path root_;
  std::filesystem::path tables_;
  std::filesystem::path neighbour_;
};
