/// The bytes of a CSV text, which can be read more than once.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zvwttool {

/// A file, or standard input. What cannot be read twice, such as a pipe, is first copied into a
/// nameless temporary file, so that texts of any size take the same little memory.
class CsvInput {
 public:
  /// `file` is a path, or "-" for standard input. The copy, where one is needed, lies in the first
  /// of the directories that takes it. False with the reason in *error.
  [[nodiscard]] bool open(const std::string& file, const std::vector<std::string>& copyDirectories,
                          std::string* error);
  /// Begins again at the first byte.
  [[nodiscard]] bool rewind(std::string* error);
  /// Reads up to `size` bytes. Fewer: the end of the text, or a failure with its reason in *error.
  [[nodiscard]] std::size_t read(char* buffer, std::size_t size, std::string* error);

  /// How messages call it.
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const noexcept;
  };
  using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

  [[nodiscard]] bool replaceByCopy(const std::vector<std::string>& directories, std::string* error);
  [[nodiscard]] bool copyTo(std::FILE* copy, std::string* error);
  [[nodiscard]] bool fail(int errorNumber, std::string_view circumstance, std::string* error) const;

  std::string name_;
  FileHandle file_;
  std::fpos_t start_{};  // of the text in file_: standard input may have been read from before
};

}  // namespace zvwttool
