/// The Windows half; OddKinds_posix.cpp is its twin.
#include <filesystem>

#include "support/OddKinds.h"

/// Links need a privilege that few users have.
std::vector<OddKind> oddKinds(const std::string& /*same*/) {
  return {{"directory",
           [](const std::string& path) { return std::filesystem::create_directory(path); }}};
}
