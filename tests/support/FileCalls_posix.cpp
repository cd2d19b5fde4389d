/// The POSIX half; FileCalls_windows.cpp is its twin.
#include <sys/resource.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "support/FileCalls.h"

namespace {

rlimit currentLimit() {
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  return limit;
}

std::int64_t counted(const std::string& name) {
  std::ifstream stream("/proc/self/io");
  std::string key;
  std::int64_t value = -1;
  while (stream >> key >> value && key != name) {
  }
  return value;
}

}  // namespace

/// The signal that the system sends for an attempt keeps its deadly default: the file layer must
/// not provoke it.
SizeLimit::SizeLimit(std::int64_t bytes)
    : former_(static_cast<std::int64_t>(currentLimit().rlim_cur)) {
  const rlimit limit = {std::min(static_cast<rlim_t>(bytes), currentLimit().rlim_max),
                        currentLimit().rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
}

SizeLimit::~SizeLimit() {
  const rlimit limit = {static_cast<rlim_t>(former_), currentLimit().rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
}

ReadCount countReads() { return {counted("syscr:"), counted("rchar:")}; }
