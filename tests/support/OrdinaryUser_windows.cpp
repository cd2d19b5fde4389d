/// The Windows half; OrdinaryUser_posix.cpp is its twin.
#include <gtest/gtest.h>

#include "support/OrdinaryUser.h"

bool isRoot() { return false; }

bool giveToOrdinaryUser(const std::string& /*path*/) { return true; }

bool passesForOrdinaryUser(const std::function<void()>& test) {
  test();
  return !testing::Test::HasFailure();
}
