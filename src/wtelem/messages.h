/// The messages that this library raises, by name, and the one way to raise them.
#pragma once

#include "base/zvb_message.h"

namespace message {

inline constexpr const char* component = "Work table library";

inline constexpr int outOfMemory = 29;  // what, in parentheses
inline constexpr int elementSeekFailed = 336;
inline constexpr int seekFailed = 453;  // what, in parentheses
inline constexpr int shortWrite = 1044;
inline constexpr int flushFailed = 1045;       // description
inline constexpr int shortRead = 1301;         // what
inline constexpr int openFailedStatus = 1352;  // path, status
inline constexpr int openFailed = 1353;        // path, description
inline constexpr int noDirectoryTakes = 1417;  // last directory, status, description
inline constexpr int noSuchColumn = 1420;
inline constexpr int noMemoryForRow = 1642;
inline constexpr int duplicateColumnName = 1666;  // name
inline constexpr int deleteFailed = 1747;         // description
inline constexpr int notOpenForWriting = 1768;
// Source table, target table, then the two column counts.
inline constexpr int otherColumnCount = 1769;
// Source table, target table, column number, then the two names or types.
inline constexpr int otherColumnName = 1770;
inline constexpr int otherColumnType = 1771;
inline constexpr int headerTooShort = 1773;
inline constexpr int targetNotEnqueued = 1780;     // why
inline constexpr int sourceManagerNotMade = 1781;  // why
inline constexpr int sourceNotRead = 1782;         // verb, source table, target table, why
inline constexpr int pathNotSplit = 1783;          // which file, status, description
inline constexpr int pathNotJoined = 1784;         // which file, status, description
inline constexpr int versionTooHigh = 1785;        // major, minor, highest major, its minor
inline constexpr int surplusNotSkipped = 1786;
inline constexpr int accessKeyTooShort = 1787;
inline constexpr int negativeFirstRow = 1788;     // first row
inline constexpr int negativeRowCount = 1789;     // row count
inline constexpr int otherScheme = 1790;          // scheme
inline constexpr int noSuchColumnNumber = 1791;   // column number
inline constexpr int columnSelectedTwice = 1792;  // column number
inline constexpr int notOpenForReading = 1793;
inline constexpr int rowBeyondElement = 1794;
inline constexpr int cursorLacks = 1797;  // what
inline constexpr int copiedFromItself = 1798;
inline constexpr int valueOfOtherType = 1799;  // text, type, column name
inline constexpr int wrongRowCount = 1800;     // row count

}  // namespace message

/// The text of a message, by its name in namespace message, with its arguments.
#define WT_MESSAGE(name, ...) \
  zvbMessage<message::name>(__FILE__, __LINE__, message::component __VA_OPT__(, ) __VA_ARGS__)
