#include "wtmgr/KeyRegistry.h"

#include <new>
#include <utility>

#include "wtelem/messages.h"

namespace {

constexpr const char* lockName = "(enqueue work table lock)";

/// Holds a lock as long as this lives.
class Holding {
 public:
  explicit Holding(zvLockHandle lock) noexcept : lock_(lock) { zvLockGet(lock, 1, 1); }
  Holding(const Holding&) = delete;
  Holding& operator=(const Holding&) = delete;
  ~Holding() { zvLockRelease(lock_); }

 private:
  zvLockHandle lock_;
};

}  // namespace

KeyRegistry::~KeyRegistry() {
  while (first_ != nullptr) {
    zvLockDestroy(first_->lock);
    first_ = std::move(first_->next);
  }
}

KeyRegistry::Link* KeyRegistry::find(const ZvbString& key) noexcept {
  Link* link = &first_;
  while (*link != nullptr && (*link)->key.compare(key, true) != 0) {
    link = &(*link)->next;
  }
  return link;
}

bool KeyRegistry::enqueue(const ZvbString& key, ZvbString* error) noexcept {
  zvLockHandle lock = 0;
  {
    const Holding registry(registryLock_);
    const Link& element = *find(key);
    if (element == nullptr) {
      return add(key, error);
    }
    ++element->holders;
    lock = element->lock;
  }
  if (!zvLockGet(lock, 1, 1)) {
    *error = WT_MESSAGE(outOfMemory, lockName);
    return false;
  }
  return true;
}

/// Makes the element of a key that nobody holds, and takes its lock, which cannot wait.
bool KeyRegistry::add(const ZvbString& key, ZvbString* error) noexcept {
  Link element(new (std::nothrow) Element);
  if (element != nullptr) {
    element->key = key;
  }
  if (element == nullptr || element->key.memoryShort()) {
    *error = WT_MESSAGE(outOfMemory, "(enqueue work table element)");
    return false;
  }
  element->lock = zvLockCreate(0, 0);
  if (element->lock == 0) {
    *error = WT_MESSAGE(outOfMemory, lockName);
    return false;
  }
  zvLockGet(element->lock, 1, 1);
  element->holders = 1;
  element->next = std::move(first_);
  first_ = std::move(element);
  return true;
}

void KeyRegistry::dequeue(const ZvbString& key) noexcept {
  zvLockHandle lock = 0;
  Link last;  // the element, when nobody is left who wants it
  {
    const Holding registry(registryLock_);
    Link* link = find(key);
    if (*link == nullptr) {
      return;
    }
    lock = (*link)->lock;
    if (--(*link)->holders == 0) {
      last = std::move(*link);
      *link = std::move(last->next);
    }
  }
  // Whoever waits for the key may now take and destroy its element: only the copies are used.
  zvLockRelease(lock);
  if (last != nullptr) {
    zvLockDestroy(lock);
  }
}
