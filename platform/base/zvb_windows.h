/// Texts on their way into Windows and back: UTF-8 here, UTF-16 there. Only the Windows halves of
/// the platform use it. On failure GetLastError() tells which one it was.
#pragma once

/// Writes `text` in UTF-16 with its terminator. False when it is not UTF-8 or needs more than
/// `size` units.
[[nodiscard]] bool zvbToWide(const char* text, wchar_t* wide, int size) noexcept;
/// Writes `wide` in UTF-8 with its terminator. False when it is not UTF-16 or needs more than
/// `size` bytes.
[[nodiscard]] bool zvbFromWide(const wchar_t* wide, char* text, int size) noexcept;
