#include "WorkFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace {

constexpr std::string_view neighbourContent = "not a table's";

std::filesystem::path makeRoot() {
  const char* named = std::getenv("ZVWT_FUZZ_FOLDER");
  const std::filesystem::path memory = "/dev/shm";
  const std::filesystem::path parent = named != nullptr ? std::filesystem::path(named)
                                       : std::filesystem::is_directory(memory)
                                           ? memory
                                           : std::filesystem::temp_directory_path();
  std::string path = (parent / "zvwt-fuzz-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) {
    std::abort();
  }
  return path;
}

std::set<std::string> namesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

}  // namespace

WorkFolder::WorkFolder()
    : root_(makeRoot()), tables_(root_ / "tables"), neighbour_(root_ / "zvwte_neighbour") {
  std::filesystem::create_directory(tables_);
  std::ofstream(neighbour_, std::ios::binary) << neighbourContent;
}

WorkFolder::~WorkFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

void WorkFolder::write(const std::string& name, std::string_view content) const {
  std::ofstream(tables_ / name, std::ios::binary) << content;
}

std::set<std::string> WorkFolder::names() const { return namesIn(tables_); }

void WorkFolder::clear() const {
  for (const std::string& name : names()) {
    std::filesystem::remove(tables_ / name);
  }
}

bool WorkFolder::surroundingsAreWhole() const {
  std::ifstream stream(neighbour_, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(stream), {}};
  return content == neighbourContent && namesIn(root_).size() == 2;
}
