/// A directory of its own for one test, removed with all that is in it.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

/// Where files are written fastest: in memory, if the system has a place for that.
inline std::filesystem::path memoryDirectory() {
  const std::filesystem::path memory = "/dev/shm";
  return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : path_(parent / ("zvtest_" + std::to_string(std::random_device()()) + "_" +
                        std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(path_);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] std::string path() const { return path_.string(); }
  /// The path of a file in the directory, whether there is one or not.
  [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

  /// The names of all that is in the directory, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  /// Writes a file and returns its path.
  [[nodiscard]] std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return file(name);
  }
  [[nodiscard]] static std::string read(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string content(std::filesystem::file_size(path), '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
  }

 private:
  std::filesystem::path path_;
};
