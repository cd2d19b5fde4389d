/// What the benchmarks ask of the operating system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file that the operating system reads or writes at once, from its beginning to its end.
class RawFile {
 public:
  enum class Use { writeNew, read };

  /// Check isOpen().
  RawFile(const std::string& path, Use use);
  RawFile(const RawFile&) = delete;
  RawFile& operator=(const RawFile&) = delete;
  ~RawFile();

  [[nodiscard]] bool isOpen() const;
  [[nodiscard]] bool write(const void* bytes, std::size_t size);
  /// The number of bytes read; 0 at the end and after a failure.
  [[nodiscard]] std::size_t read(void* bytes, std::size_t size);

 private:
  std::intptr_t file_;
};

/// The bytes of memory that this process has resident now.
[[nodiscard]] std::int64_t residentBytes();

/// The most bytes of memory that this process has had resident.
[[nodiscard]] std::int64_t peakResidentBytes();
