/// The C library's own environment is a copy in the code page of the machine, made when the program
/// began. So the system is asked.
#include <windows.h>

#include <array>

#include "base/zvb_environment.h"
#include "base/zvb_windows.h"

std::optional<std::string> zvbEnvironmentVariable(const std::string& name) {
  constexpr DWORD longest = 32'767;        // units, as the system has it
  constexpr std::size_t bytesPerUnit = 3;  // at most; a character of 4 bytes takes two units
  std::array<wchar_t, 256> wideName;
  if (!zvbToWide(name.c_str(), wideName.data(), static_cast<int>(wideName.size()))) {
    return std::nullopt;
  }
  std::wstring wide(longest, L'\0');
  const DWORD length = GetEnvironmentVariableW(wideName.data(), wide.data(), longest);
  if (length == 0 || length >= longest) {
    return std::nullopt;
  }
  std::string value(length * bytesPerUnit + 1, '\0');
  if (!zvbFromWide(wide.data(), value.data(), static_cast<int>(value.size()))) {
    return std::nullopt;
  }
  value.resize(value.find('\0'));
  return value;
}
