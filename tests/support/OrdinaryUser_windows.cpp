#include "support/OrdinaryUser.h"

#include <gtest/gtest.h>

bool isRoot() { return false; }

bool giveToOrdinaryUser(const std::string& /*path*/) { return true; }

bool passesForOrdinaryUser(const std::function<void()>& test) {
  test();
  return !testing::Test::HasFailure();
}
