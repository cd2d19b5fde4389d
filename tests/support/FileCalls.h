/// The calls by which the file layer reads and writes, counted and limited.
#pragma once

#include <cstdint>

/// A limit on the size of the files that this process writes, which stands for a full disk: while
/// it lives no file grows beyond `bytes`.
class SizeLimit {
 public:
  explicit SizeLimit(std::int64_t bytes);
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit();

 private:
  std::int64_t former_;
};

struct ReadCount {
  std::int64_t calls;
  std::int64_t bytes;
};

/// What this process has read so far; negative where the system does not count.
[[nodiscard]] ReadCount countReads();
