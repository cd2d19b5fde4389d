#include "base/zvb_windows.h"

#include <windows.h>

bool zvbToWide(const char* text, wchar_t* wide, int size) noexcept {
  return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, wide, size) != 0;
}

bool zvbFromWide(const wchar_t* wide, char* text, int size) noexcept {
  return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide, -1, text, size, nullptr,
                             nullptr) != 0;
}
