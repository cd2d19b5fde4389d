/// The bytes of a CSV text, which can be read more than once.
#pragma once

#include <cstdint>
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
  /// of the directories that takes it.
  CsvInput(const std::string& file, const std::vector<std::string>& copyDirectories);

  /// Begins again at the first byte.
  void rewind();
  /// Reads up to `size` bytes; fewer at the end of the text.
  [[nodiscard]] std::size_t read(char* buffer, std::size_t size);

  /// Bytes of the whole text, -1 when nobody knows; and those that were read since the beginning.
  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] std::int64_t bytesRead() const { return bytesRead_; }

  /// How messages call it.
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const noexcept;
  };
  using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

  void replaceByCopy(const std::vector<std::string>& directories);
  void copyTo(std::FILE* copy);
  [[noreturn]] void fail(int errorNumber, std::string_view circumstance = "") const;

  std::string name_;
  FileHandle file_;
  std::int64_t size_ = -1;
  std::int64_t bytesRead_ = 0;
  std::fpos_t start_{};  // of the text in file_: standard input may have been read from before
};

}  // namespace zvwttool
