/// How much a test that could go on for ever does.
#pragma once

#include <algorithm>
#include <cstdlib>

/// 1, or what the environment variable ZVWT_TEST_EFFORT says: a factor for times, counts and seeds.
inline int testEffort() {
  const char* text = std::getenv("ZVWT_TEST_EFFORT");  // NOLINT(concurrency-mt-unsafe)
  return text != nullptr ? std::max(1, std::atoi(text)) : 1;
}
