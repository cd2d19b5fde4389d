/// Exclusive locks that any thread may release.
///
/// A lock is known by a 64-bit id that is never used again while the process lives, so a stale id
/// is harmless. Waiters get the lock in the order in which they came. Thread rule: all functions
/// may be called from any thread; a thread that takes a lock it already holds waits for itself.
#pragma once

#include <cstdint>

/// 0 is no lock.
using zvLockHandle = std::uint64_t;

/// A new, free lock, or 0 when memory is short. The arguments are reserved and given as 0.
[[nodiscard]] zvLockHandle zvLockCreate(int reserved1, int reserved2) noexcept;

/// Takes the lock, waiting as long as another holder has it. True when it was obtained, false when
/// there is no such lock, or when it was destroyed while the caller waited. The other arguments are
/// reserved and given as 1.
bool zvLockGet(zvLockHandle lock, int reserved1, int reserved2) noexcept;

/// Frees the lock and gives it to the longest waiter, if any. A lock that is free stays so.
void zvLockRelease(zvLockHandle lock) noexcept;

/// Destroys a lock that nobody holds. Another thread may still be returning from its release.
void zvLockDestroy(zvLockHandle lock) noexcept;
