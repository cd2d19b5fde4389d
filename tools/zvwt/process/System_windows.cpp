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
#include <cstdlib>
#include <random>

#include "process/System.h"

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

}  // namespace

void prepareStreams() noexcept {
  for (std::FILE* stream : {stdin, stdout}) {
    (void)_setmode(_fileno(stream), _O_BINARY);
  }
  // Counts for consoles only; files and pipes get the bytes as they are. The console goes on with
  // the code page that it had.
  static const UINT earlier = GetConsoleOutputCP();
  if (earlier != 0 && SetConsoleOutputCP(CP_UTF8) != 0) {
    (void)std::atexit([] { (void)SetConsoleOutputCP(earlier); });
  }
}

// The runtime's own end by a signal has the exit code 3, which means something else here.
void endBySignal(int /*signal*/) noexcept { ExitProcess(static_cast<UINT>(STATUS_CONTROL_C_EXIT)); }

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

int terminalWidth(OutputStream stream) noexcept {
  constexpr int usualWidth = 80;
  const bool isOutput = stream == OutputStream::output;
  if (_isatty(_fileno(isOutput ? stdout : stderr)) == 0) {
    return 0;
  }
  const HANDLE console = GetStdHandle(isOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (GetConsoleScreenBufferInfo(console, &info) == 0) {
    return usualWidth;
  }
  return info.srWindow.Right - info.srWindow.Left + 1;
}

bool enableStyles() noexcept {
  const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void writeErrors(std::string_view text) noexcept {
  (void)_write(_fileno(stderr), text.data(), static_cast<unsigned>(text.size()));
}

/// The library gives the last part of the owner's identifier, which names nobody by itself.
std::string ownerName(std::uint32_t owner) { return std::to_string(owner); }

std::FILE* openForReading(const std::string& path) { return _wfopen(toWide(path).c_str(), L"rb"); }

std::int64_t bytesAhead(std::FILE* file) noexcept {
  struct _stat64 found {};
  const std::int64_t place = _ftelli64(file);
  const bool isKnown =
      place >= 0 && _fstat64(_fileno(file), &found) == 0 && (found.st_mode & _S_IFMT) == _S_IFREG;
  return isKnown ? found.st_size - place : -1;
}

std::FILE* openNamelessFile(const std::string& directory) {
  std::random_device random;
  const std::wstring path =
      toWide(directory + "\\zvwti_" + std::to_string(random()) + "_" + std::to_string(random()));
  const int descriptor = _wsopen(
      path.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_TEMPORARY | _O_SHORT_LIVED | _O_BINARY,
      _SH_DENYRW, _S_IREAD | _S_IWRITE);
  std::FILE* const file = descriptor >= 0 ? _fdopen(descriptor, "w+b") : nullptr;
  if (file == nullptr && descriptor >= 0) {
    const int reason = errno;
    (void)_close(descriptor);
    errno = reason;
  }
  return file;
}

}  // namespace zvwttool
