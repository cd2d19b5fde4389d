#include "lock/zv_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// Long enough for threads that are about to wait to do so.
void letOthersWait() { std::this_thread::sleep_for(30ms); }

/// Starts a thread whose action begins with waiting; returns when it waits.
template <typename Action>
std::jthread startWaiting(Action action) {
  std::atomic<bool> isStarted = false;
  std::jthread thread([&isStarted, action] {
    isStarted = true;
    action();
  });
  while (!isStarted) {
    std::this_thread::yield();
  }
  letOthersWait();
  return thread;
}

TEST(Lock, IsHandedOnInTheOrderOfComing) {
  constexpr int waiters = 5;
  const zvLockHandle lock = zvLockCreate(0, 0);
  ASSERT_TRUE(zvLockGet(lock, 1, 1));
  std::vector<int> order;  // guarded by the lock
  std::vector<std::jthread> threads;
  threads.reserve(waiters);
  for (int number = 0; number < waiters; ++number) {
    threads.push_back(startWaiting([&order, lock, number] {
      EXPECT_TRUE(zvLockGet(lock, 1, 1));
      order.push_back(number);
      zvLockRelease(lock);
    }));
  }
  EXPECT_TRUE(order.empty());
  zvLockRelease(lock);
  threads.clear();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
  zvLockDestroy(lock);
}

TEST(Lock, CanBeReleasedByAnotherThread) {
  const zvLockHandle lock = zvLockCreate(0, 0);
  ASSERT_TRUE(zvLockGet(lock, 1, 1));
  std::atomic<bool> isReleased = false;
  std::jthread releasing([&] {
    letOthersWait();
    isReleased = true;
    zvLockRelease(lock);
  });
  EXPECT_TRUE(zvLockGet(lock, 1, 1));
  EXPECT_TRUE(isReleased);
  zvLockDestroy(lock);
}

TEST(Lock, ExcludesAllOthers) {
  const zvLockHandle lock = zvLockCreate(0, 0);
  constexpr int rounds = 20'000;
  int counter = 0;  // guarded by the lock
  std::vector<std::jthread> threads(4);
  for (std::jthread& thread : threads) {
    thread = std::jthread([&] {
      for (int round = 0; round < rounds; ++round) {
        zvLockGet(lock, 1, 1);
        ++counter;
        zvLockRelease(lock);
      }
    });
  }
  threads.clear();
  EXPECT_EQ(counter, 4 * rounds);
  zvLockDestroy(lock);
}

/// As when the last user of a thing destroys it together with its lock.
TEST(Lock, CanBeDestroyedWhileItsReleaseReturns) {
  for (int round = 0; round < 2000; ++round) {
    const zvLockHandle lock = zvLockCreate(0, 0);
    zvLockGet(lock, 1, 1);
    std::jthread releasing([lock] { zvLockRelease(lock); });
    EXPECT_TRUE(zvLockGet(lock, 1, 1));
    zvLockDestroy(lock);
  }
}

TEST(Lock, IsUnknownOnceDestroyed) {
  const zvLockHandle lock = zvLockCreate(0, 0);
  ASSERT_TRUE(zvLockGet(lock, 1, 1));
  std::jthread waiting = startWaiting([lock] { EXPECT_FALSE(zvLockGet(lock, 1, 1)); });
  zvLockDestroy(lock);
  waiting.join();
  const zvLockHandle next = zvLockCreate(0, 0);
  EXPECT_NE(next, lock);
  EXPECT_TRUE(zvLockGet(next, 1, 1));
  for (const zvLockHandle unknown : {zvLockHandle{0}, lock, next + 1}) {
    EXPECT_FALSE(zvLockGet(unknown, 1, 1));
    zvLockRelease(unknown);
    zvLockDestroy(unknown);
  }
  zvLockDestroy(next);
}

}  // namespace
