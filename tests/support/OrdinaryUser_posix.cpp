/// The POSIX half; OrdinaryUser_windows.cpp is its twin.
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/OrdinaryUser.h"

namespace {

constexpr uid_t ordinaryUser = 65534;  // nobody

bool becomeOrdinaryUser() {
  return !isRoot() ||
         (setgroups(0, nullptr) == 0 && setgid(ordinaryUser) == 0 && setuid(ordinaryUser) == 0);
}

}  // namespace

bool isRoot() { return geteuid() == 0; }

bool giveToOrdinaryUser(const std::string& path) {
  return !isRoot() || chown(path.c_str(), ordinaryUser, ordinaryUser) == 0;
}

/// In a child process, since there is no way back.
bool passesForOrdinaryUser(const std::function<void()>& test) {
  const pid_t child = fork();
  if (child == 0) {
    EXPECT_TRUE(becomeOrdinaryUser());
    test();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0;
}
