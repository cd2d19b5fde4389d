/// Paths and the texts of the statuses: what the file layer does without a file.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "fio/np_fio_system.h"

namespace {

constexpr bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

constexpr char lowerCase(char character) noexcept {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

bool equalsIgnoringCase(std::string_view text, std::string_view lower) noexcept {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char left, char right) { return lowerCase(left) == right; });
}

/// The digits that follow COM and LPT in a device name: 1 to 9, and 1 to 3 as superscripts.
bool isPortNumber(std::string_view text) noexcept {
  return (text.size() == 1 && isDigit(text[0]) && text[0] != '0') || text == "\xC2\xB9" ||
         text == "\xC2\xB2" || text == "\xC2\xB3";
}

/// Windows sees the device whatever extension follows its name, and whatever blanks come between.
bool isDeviceName(std::string_view name) noexcept {
  std::string_view stem = name.substr(0, name.find('.'));
  stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
  constexpr std::array<std::string_view, 6> devices = {"con", "prn",    "aux",
                                                       "nul", "conin$", "conout$"};
  constexpr std::array<std::string_view, 2> ports = {"com", "lpt"};
  return std::any_of(devices.begin(), devices.end(),
                     [&](auto device) { return equalsIgnoringCase(stem, device); }) ||
         std::any_of(ports.begin(), ports.end(), [&](auto port) {
           return equalsIgnoringCase(stem.substr(0, port.size()), port) &&
                  isPortNumber(stem.substr(port.size()));
         });
}

/// The rules of all systems hold on each, so that a name made on one is as safe on another.
bool isPlainName(std::string_view name) noexcept {
  if (name.empty() || name.back() == '.' || name.back() == ' ') {  // also "." and ".."
    return false;
  }
  const bool hasSpecial = std::any_of(name.begin(), name.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == '/' || character == '\\' ||
           character == ':';
  });
  return !hasSpecial && !isDeviceName(name);
}

bool isSeparator(char character) noexcept {
  return std::string_view(fioSystem::separators).find(character) != std::string_view::npos;
}

/// Separators at the end say nothing, except in a root: "/" or that of a drive, "C:/".
std::string_view withoutEndSeparators(std::string_view directory) noexcept {
  while (directory.size() > 1 && isSeparator(directory.back()) &&
         directory[directory.size() - 2] != ':') {
    directory.remove_suffix(1);
  }
  return directory;
}

bool fits(std::size_t length, int size) noexcept {
  return size > 0 && length < static_cast<std::size_t>(size);
}

char* copyText(char* target, std::string_view text) noexcept {
  return std::copy(text.begin(), text.end(), target);
}

}  // namespace

int np_fio_pparse(const char* path, char* directory, int directorySize, char* name,
                  int nameSize) noexcept {
  if (path == nullptr || directory == nullptr || name == nullptr) {
    return npFioBadArgument;
  }
  const std::string_view whole = path;
  const std::size_t nameStart = whole.find_last_of(fioSystem::separators) + 1;  // 0 without one
  const std::string_view directoryPart = withoutEndSeparators(whole.substr(0, nameStart));
  const std::string_view namePart = whole.substr(nameStart);
  if (!fits(directoryPart.size(), directorySize) || !fits(namePart.size(), nameSize)) {
    return npFioPathTooLong;
  }
  *copyText(directory, directoryPart) = '\0';
  *copyText(name, namePart) = '\0';
  return npFioSuccess;
}

int np_fio_pcat(const char* directory, const char* name, char* path, int pathSize) noexcept {
  if (directory == nullptr || name == nullptr || path == nullptr) {
    return npFioBadArgument;
  }
  if (!isPlainName(name)) {
    return npFioNotPlainName;
  }
  const std::string_view start = directory;
  const bool needsSeparator = !start.empty() && !isSeparator(start.back());
  if (!fits(start.size() + needsSeparator + std::strlen(name), pathSize)) {
    return npFioPathTooLong;
  }
  char* end = copyText(path, start);
  if (needsSeparator) {
    *end++ = fioSystem::separators[0];
  }
  *copyText(end, name) = '\0';
  return npFioSuccess;
}

const char* np_fio_errdesc(int status) noexcept {
  static constexpr std::array<const char*, 14> descriptions = {
      "success",
      "input/output error",
      "bad argument or file handle",
      "file or directory not found",
      "access denied",
      "file exists already",
      "disk full or file size limit reached",
      "too many open files",
      "path too long",
      "not a regular file",
      "file in use by another writer",
      "not a plain file name",
      "out of memory",
      "read-only medium",
  };
  const bool isKnown = status >= 0 && static_cast<std::size_t>(status) < descriptions.size();
  return isKnown ? descriptions[static_cast<std::size_t>(status)] : nullptr;
}
