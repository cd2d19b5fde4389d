/// The message catalogue: every failure text of the libraries, by number.
///
/// A message says what failed, on what, and what can be done; it begins with its number. The kinds
/// of its arguments are part of the catalogue, so zvbMessage() refuses a wrong call when it is
/// compiled. Thread rule: may be called from any thread.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "base/ZvbString.h"

/// One message. In `text`, %1 to %9 stand for the arguments. `kinds` has one letter an argument:
/// t a text (const char*), i a 32-bit integer, l a 64-bit one.
struct ZvbMessageEntry {
  int id;
  const char* kinds;
  const char* text;
};

inline constexpr ZvbMessageEntry zvbMessageCatalogue[] = {
    {29, "t", "Memory is short: %1 could not be allocated. Free memory and try again."},
    {336, "",
     "The position in a data element file could not be set: the file is damaged, or the disk is "
     "failing."},
    {453, "t", "The position in the file could not be set: %1."},
    {1044, "", "A file could not be written: the disk is full, failing, or a limit was reached."},
    {1045, "t", "What was written could not be brought to the file: %1."},
    {1301, "t",
     "Reading \"%1\" failed: the file is damaged or shorter than it says, or the disk is failing."},
    {1352, "ti", "The file \"%1\" cannot be opened: system status %2."},
    {1353, "tt", "The file \"%1\" cannot be opened: %2."},
    {1417, "tit",
     "No directory accepts a new file; the last one tried was \"%1\": status %2, %3. Check that "
     "the directories exist, can be written to and have space."},
    {1420, "", "There is no column of that number."},
    {1642, "", "Memory is short: a row of the cursor could not be allocated."},
    {1666, "t", "Another column has the name \"%1\" already."},
    {1747, "t", "A file could not be deleted: %1."},
    {1768, "", "Rows cannot be written: the work table is not open for writing."},
    {1769, "ttii",
     "The rows of the work table \"%1\" do not fit the work table \"%2\": it has %3 columns, the "
     "other one has %4."},
    {1770, "ttitt",
     "The rows of the work table \"%1\" do not fit the work table \"%2\": their columns number %3 "
     "are named \"%4\" and \"%5\"."},
    {1771, "ttitt",
     "The rows of the work table \"%1\" do not fit the work table \"%2\": their columns number %3 "
     "have the types %4 and %5."},
    {1773, "", "The file is no work table, as its header is too short, or the disk is failing."},
    {1780, "t", "The work table to append to could not be reserved: %1"},
    {1781, "t", "The manager of the work table to copy could not be made: %1"},
    {1782, "tttt", "%1: the work table \"%2\" could not be read while \"%3\" was written: %4"},
    {1783, "tit", "The path of a new file (%1) cannot be split: status %2, %3."},
    {1784, "tit",
     "A directory and a file name (%1) cannot be joined: status %2, %3. A table's name is a plain "
     "file name, and a malformed URI is taken for a name."},
    {1785, "iiii",
     "The work table has format version %1.%2; this library reads versions up to %3.%4 and later "
     "minor versions of the same major one."},
    {1786, "", "The file is damaged: a record is longer or shorter than it can be."},
    {1787, "", "The file is damaged, as its access key is cut off, or the disk is failing."},
    {1788, "l", "A range of rows cannot begin with row %1: rows are counted from 0."},
    {1789, "l", "A range of rows cannot have %1 rows: give 0 or more, or -1 for all."},
    {1790, "t",
     "The scheme \"%1\" is none of work tables: give the name of a table or a URI that begins with "
     "\"zvwt:\"."},
    {1791, "i", "There is no column number %1: columns are counted from 0."},
    {1792, "i", "Column number %1 is selected twice."},
    {1793, "", "Rows cannot be read: the work table is not open for reading."},
    {1794, "", "The row lies beyond the end of its data element."},
    {1797, "t", "The cursor has no %1."},
    {1798, "", "A cursor cannot be copied from itself."},
    {1799, "ttt",
     "The row is not appended: the text \"%1\" is no %2, as the values of the column \"%3\" are."},
    {1800, "i",
     "The number of rows cannot be %1: give 1 or more to read rows, 0 or more to append them."},
    {1801, "tlt", "The sort setting \"%1\" cannot be %2: give %3."},
    {1802, "ili",
     "Sort key number %1 cannot be column number %2: the records have %3 columns, counted from 0."},
    {1803, "il",
     "Sort key number %1 has the unknown value %2: give 0, or 1 to ignore case, 2 to put nulls "
     "last, 3 for both."},
    {1804, "i", "A sort cannot have %1 keys: give 1 or more."},
    {1805, "i", "There is no sort key number %1: keys are counted from 0."},
    {1806, "l", "A sorter cannot be made with the unknown options %1."},
    {1807, "t", "%1 is not possible at this point of a sort."},
    {1808, "tit",
     "No directory accepts a work file for sorting; the last one tried was \"%1\": status %2, %3. "
     "Check that the directories exist, can be written to and have space."},
    {1809, "t", "A work file for sorting could not be written: %1."},
    {1810, "l",
     "The work files of a sort would pass their limit of %1 bytes: raise it, or give the sort more "
     "memory."},
    {1811, "t", "A work file for sorting could not be read: %1."},
    {1812, "", "A work file for sorting is damaged: a block is not as it was written."},
    {1813, "", "The sort was cancelled."},
    {1814, "l",
     "The records do not fit the memory of the sort, %1 bytes, and it may use no work files."},
    {1815, "i", "Records to be sorted cannot have %1 columns: give 0 or more."},
    {1816, "ii", "There is no column number %1 to define: the records to be sorted have %2."},
};

/// The text of a message with its arguments in place: texts as const char* (null prints as "unknown
/// error"), numbers as int or std::int64_t, as the catalogue says. `sourceFile`, `line` and
/// `component` name the place that raises it, for a debugger; they are not part of the text. An
/// unknown number gives a text that says so.
[[nodiscard]] ZvbString zvb_get_message(const char* sourceFile, int line, const char* component,
                                        int messageId, ...) noexcept;

template <typename Argument>
constexpr char zvbMessageKind() noexcept {
  if constexpr (std::is_convertible_v<Argument, const char*>) {
    return 't';
  } else if constexpr (std::is_same_v<Argument, int>) {
    return 'i';
  } else {
    static_assert(std::is_same_v<Argument, std::int64_t>, "a text, an int or a std::int64_t");
    return 'l';
  }
}

template <typename... Arguments>
constexpr bool zvbMessageTakes(int id) noexcept {
  const char kinds[] = {zvbMessageKind<Arguments>()..., '\0'};
  for (const ZvbMessageEntry& entry : zvbMessageCatalogue) {
    if (entry.id == id) {
      return std::string_view(kinds) == entry.kinds;
    }
  }
  return false;
}

/// zvb_get_message, with the number and the arguments checked against the catalogue.
template <int id, typename... Arguments>
[[nodiscard]] ZvbString zvbMessage(const char* sourceFile, int line, const char* component,
                                   Arguments... arguments) noexcept {
  static_assert(zvbMessageTakes<Arguments...>(id), "the catalogue has other arguments");
  return zvb_get_message(sourceFile, line, component, id, arguments...);
}
