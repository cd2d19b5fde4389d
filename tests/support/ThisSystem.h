/// On what kind of machine the tests run, for the few that have to ask.
#pragma once

#ifdef _WIN32
inline constexpr bool isWindows = true;
#else
inline constexpr bool isWindows = false;
#endif

/// The environment variable from which the system takes its temporary directory.
inline constexpr const char* temporaryVariable = isWindows ? "TMP" : "TMPDIR";
