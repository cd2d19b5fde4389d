/// A limit on the size of the files that this process writes, which stands for a full disk. While
/// it lives no file grows beyond `bytes`. The signal that the system sends for an attempt keeps its
/// deadly default: the file layer must not provoke it.
#pragma once

#include <sys/resource.h>

class SizeLimit {
 public:
  explicit SizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit = {bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};
