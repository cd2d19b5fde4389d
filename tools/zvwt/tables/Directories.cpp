#include "tables/Directories.h"

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

std::string pathOfTable(const std::string& table, const std::vector<std::string>& directories) {
  for (const std::string& directory : directories) {
    const std::filesystem::path path = pathOfText(directory) / pathOfText(table);
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) {
      return textOfPath(path);
    }
  }
  return "";
}

std::filesystem::path pathOfText(const std::string& text) {
  return std::u8string(text.begin(), text.end());
}

std::string textOfPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace zvwttool
