#include <pwd.h>

#include "FileOwner.h"

namespace zvwttool {

std::string ownerName(std::uint32_t owner) {
  const passwd* user = getpwuid(owner);  // NOLINT(concurrency-mt-unsafe): the tool has one thread
  return user != nullptr ? user->pw_name : std::to_string(owner);
}

}  // namespace zvwttool
