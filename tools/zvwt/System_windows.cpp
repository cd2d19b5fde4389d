/// The Windows half; System_posix.cpp is its twin.
#include <windows.h>
// Needs the types of the header above.
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <shellapi.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <random>

#include "System.h"

namespace zvwttool {
namespace {

std::wstring toWide(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
  return wide;
}

std::string fromWide(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.resize(text.find('\0'));
  return text;
}

std::FILE* openIn(const std::string& directory) {
  std::random_device random;
  const std::wstring path =
      toWide(directory + "\\zvwti_" + std::to_string(random()) + "_" + std::to_string(random()));
  const int descriptor = _wsopen(
      path.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_TEMPORARY | _O_SHORT_LIVED | _O_BINARY,
      _SH_DENYRW, _S_IREAD | _S_IWRITE);
  return descriptor >= 0 ? _fdopen(descriptor, "w+b") : nullptr;
}

}  // namespace

void prepareStreams() noexcept {
  for (std::FILE* stream : {stdin, stdout}) {
    (void)_setmode(_fileno(stream), _O_BINARY);
  }
  // Counts for consoles only; files and pipes get the bytes as they are.
  (void)SetConsoleOutputCP(CP_UTF8);
}

std::vector<std::string> commandLineArguments(int /*count*/, char** /*arguments*/) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; wide != nullptr && i < count; ++i) {
    arguments.push_back(fromWide(wide[i]));
  }
  LocalFree(wide);
  return arguments;
}

bool standardErrorIsTerminal() noexcept { return _isatty(_fileno(stderr)) != 0; }

/// The library gives the last part of the owner's identifier, which names nobody by itself.
std::string ownerName(std::uint32_t owner) { return std::to_string(owner); }

std::FILE* openForReading(const std::string& path) { return _wfopen(toWide(path).c_str(), L"rb"); }

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
