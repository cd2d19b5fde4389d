/// Named exclusive keys: one holder at a time, the others wait in the order in which they came.
///
/// Thread rule: all operations may be called from any thread; any thread may give a key back. The
/// registry lock is held for short list operations only, never while waiting for a key.
#pragma once

#include <memory>

#include "base/ZvbString.h"
#include "lock/zv_lock.h"

class KeyRegistry {
 public:
  /// `registryLock` guards the list; the caller owns it and keeps it longer than the registry.
  void guardBy(zvLockHandle registryLock) noexcept { registryLock_ = registryLock; }

  KeyRegistry() noexcept = default;
  KeyRegistry(const KeyRegistry&) = delete;
  KeyRegistry& operator=(const KeyRegistry&) = delete;
  /// Forgets keys that are still held. A thread that waits for one is let go without it.
  ~KeyRegistry();

  /// Takes the key, waiting while another holder has it. False with a text in *error when memory is
  /// short, or when the registry went while the caller waited.
  [[nodiscard]] bool enqueue(const ZvbString& key, ZvbString* error) noexcept;
  /// Gives the key back; one that nobody holds is ignored.
  void dequeue(const ZvbString& key) noexcept;

 private:
  /// One key that is held or waited for.
  struct Element {
    std::unique_ptr<Element> next;
    ZvbString key;
    zvLockHandle lock = 0;  // held by the key's holder
    int holders = 0;        // the holder and all who wait
  };
  using Link = std::unique_ptr<Element>;

  Link* find(const ZvbString& key) noexcept;
  bool add(const ZvbString& key, ZvbString* error) noexcept;

  zvLockHandle registryLock_ = 0;
  Link first_;
};
