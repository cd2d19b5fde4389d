/// UTF-8 as the system takes it.
#pragma once

#include <windows.h>

#include <string>

inline std::wstring toWide(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
  wide.resize(static_cast<std::size_t>(units));
  return wide;
}
