#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "NamelessFile.h"

namespace zvwttool {
namespace {

std::FILE* openIn(const std::string& directory) {
  std::string path = directory + "/zvwti_XXXXXX";
  const int descriptor = mkstemp(path.data());
  if (descriptor < 0) {
    return nullptr;
  }
  std::FILE* file = unlink(path.c_str()) == 0 ? fdopen(descriptor, "w+b") : nullptr;
  if (file == nullptr) {
    const int reason = errno;
    close(descriptor);
    errno = reason;
  }
  return file;
}

}  // namespace

std::FILE* openNamelessFile(const std::vector<std::string>& directories, int* errorNumber) {
  for (const std::string& directory : directories) {
    if (std::FILE* file = openIn(directory); file != nullptr) {
      return file;
    }
    *errorNumber = errno;
  }
  return nullptr;
}

}  // namespace zvwttool
