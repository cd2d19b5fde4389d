/// The messages that sorters and their manager raise, by name, and the one way to raise them.
#pragma once

#include "base/zvb_message.h"

namespace datafileMessage {

inline constexpr const char* component = "Datafile library";

inline constexpr int outOfMemory = 29;         // what, in parentheses
inline constexpr int settingRefused = 1801;    // setting, value, what it takes
inline constexpr int keyColumnRefused = 1802;  // key, column, number of columns
inline constexpr int keyValueRefused = 1803;   // key, value
inline constexpr int keyCountRefused = 1804;   // number of keys
inline constexpr int noSuchKey = 1805;         // key
inline constexpr int optionsRefused = 1806;    // options
inline constexpr int notPossibleNow = 1807;    // operation
inline constexpr int noDirectoryTakes = 1808;  // last directory, status, description
inline constexpr int workWriteFailed = 1809;   // description
inline constexpr int workLimitPassed = 1810;   // limit
inline constexpr int workReadFailed = 1811;    // description
inline constexpr int workFileDamaged = 1812;
inline constexpr int cancelled = 1813;
inline constexpr int memoryUsedUp = 1814;        // bytes
inline constexpr int columnCountRefused = 1815;  // number of columns
inline constexpr int noSuchColumn = 1816;        // column, number of columns

}  // namespace datafileMessage

/// The text of a message, by its name in namespace datafileMessage, with its arguments.
#define DATAFILE_MESSAGE(name, ...)                     \
  zvbMessage<datafileMessage::name>(__FILE__, __LINE__, \
                                    datafileMessage::component __VA_OPT__(, ) __VA_ARGS__)
