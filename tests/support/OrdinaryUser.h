/// Tests for which permissions count, which they do not for root.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

constexpr uid_t ordinaryUser = 65534;  // nobody

/// Runs in a child process, as an ordinary user if this one is root; what fails is printed. True if
/// nothing has.
inline bool passesForOrdinaryUser(const std::function<void()>& test) {
  const pid_t child = fork();
  if (child == 0) {
    const bool became = geteuid() != 0 || (setgroups(0, nullptr) == 0 &&
                                           setgid(ordinaryUser) == 0 && setuid(ordinaryUser) == 0);
    EXPECT_TRUE(became);
    test();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0;
}
