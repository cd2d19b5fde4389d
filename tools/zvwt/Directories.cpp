#include "Directories.h"

#include <algorithm>

#include "fio/np_dir.h"

namespace zvwttool {

std::vector<std::string> splitDirectories(const std::string& list) {
  std::vector<std::string> directories;
  std::size_t begin = 0;
  while (begin <= list.size()) {
    const std::size_t end = std::min(list.find(np_dir_listsep, begin), list.size());
    directories.push_back(end == begin ? "." : list.substr(begin, end - begin));
    begin = end + 1;
  }
  return directories;
}

std::string joinDirectories(const std::vector<std::string>& directories) {
  std::string list;
  for (const std::string& directory : directories) {
    if (!list.empty()) {
      list += np_dir_listsep;
    }
    list += directory;
  }
  return list;
}

}  // namespace zvwttool
