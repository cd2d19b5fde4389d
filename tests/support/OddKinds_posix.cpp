/// The POSIX half; OddKinds_windows.cpp is its twin.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>

#include "support/OddKinds.h"

namespace {

bool makeSocket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int socketFile = socket(AF_UNIX, SOCK_STREAM, 0);
  const bool made =
      bind(socketFile, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  return close(socketFile) == 0 && made;
}

std::function<bool(const std::string&)> linkTo(const std::string& target) {
  return [=](const std::string& path) { return symlink(target.c_str(), path.c_str()) == 0; };
}

}  // namespace

std::vector<OddKind> oddKinds(const std::string& same) {
  return {{"link to a good one", linkTo(same)},
          {"dangling link", linkTo("nowhere")},
          {"link to zeros", linkTo("/dev/zero")},
          {"link to nothing", linkTo("/dev/null")},
          {"link to a directory", linkTo("/")},
          {"pipe", [](const std::string& path) { return mkfifo(path.c_str(), 0600) == 0; }},
          {"socket", makeSocket},
          {"directory",
           [](const std::string& path) { return std::filesystem::create_directory(path); }}};
}
