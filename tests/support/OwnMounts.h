/// A process in namespaces of its own, where it may mount file systems that nobody else sees and
/// that are gone when it ends, however it ends.
#pragma once

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

namespace ownMounts {

constexpr const char* variable = "ZVWT_TEST_OWN_MOUNTS";

/// Whether this process has been started by runAgain.
// NOLINTNEXTLINE(concurrency-mt-unsafe): before any thread
inline bool areThere() { return std::getenv(variable) != nullptr; }

inline bool writeFile(const char* path, const std::string& text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  const bool written =
      file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(file);
  return written;
}

/// What the new process does. It has come into being beside other threads, so it allocates nothing.
inline void becomeProgram(const std::string& idMap, const std::string& groupMap, char** arguments,
                          char** environment) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const bool mapped = idMap.empty() || (writeFile("/proc/self/setgroups", "deny") &&
                                        writeFile("/proc/self/uid_map", idMap) &&
                                        writeFile("/proc/self/gid_map", groupMap));
  if (mapped && mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
    execve("/proc/self/exe", arguments, environment);
  }
  _exit(127);
}

/// Runs this program again in namespaces of its own and waits for it. False when that is not
/// allowed, or not possible: QEMU's emulation of a process knows no namespaces. Root needs none for
/// its users, and may then mount what is on a disk as well.
inline bool runAgain(char** arguments, int* exitCode) {
  const std::string mark = std::string(variable) + "=1";
  std::vector<char*> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    variables.push_back(*entry);
  }
  variables.push_back(const_cast<char*>(mark.c_str()));
  variables.push_back(nullptr);
  const std::string users = "0 " + std::to_string(geteuid()) + " 1";
  const std::string groups = "0 " + std::to_string(getegid()) + " 1";
  for (const int flags : {CLONE_NEWNS, CLONE_NEWNS | CLONE_NEWUSER}) {
    const bool mapsUsers = (flags & CLONE_NEWUSER) != 0;
    // Unlike unshare it can be called where a sanitizer has started a thread.
    const auto child = static_cast<pid_t>(syscall(SYS_clone, flags | SIGCHLD, 0, 0, 0, 0));
    if (child == 0) {
      becomeProgram(mapsUsers ? users : std::string(), groups, arguments, variables.data());
    }
    int status = 0;
    if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
        WEXITSTATUS(status) == 127) {
      continue;
    }
    if (child > 0) {
      *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      return true;
    }
  }
  return false;
}

}  // namespace ownMounts
