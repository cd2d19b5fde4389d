#include <cstdlib>

#include "base/zvb_environment.h"

std::optional<std::string> zvbEnvironmentVariable(const std::string& name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment can only be read in this way
  const char* const value = std::getenv(name.c_str());
  return value != nullptr && *value != '\0' ? std::optional<std::string>(value) : std::nullopt;
}
