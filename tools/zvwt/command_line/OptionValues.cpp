#include "command_line/OptionValues.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <optional>

#include "tables/ColumnNames.h"

namespace zvwttool {
namespace {

template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, status] = std::from_chars(text.data(), end, number);
  if (status != std::errc() || stop != end) {
    return std::nullopt;
  }
  return number;
}

/// Whether a text means a number, however large.
bool isWholeNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Splits NAME=VALUE at its last equals sign: names may contain some.
std::pair<std::string, std::string> splitAssignment(const std::string& option,
                                                    const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0) {
    throw CLI::ValidationError(option, "\"" + text + "\" is not of the form COLUMN=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

/// Cuts a text at the separators that no backslash stands before.
std::vector<std::string_view> splitAt(char separator, std::string_view text) {
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == separator) {
      parts.push_back(text.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  parts.push_back(text.substr(begin));
  return parts;
}

std::string withoutBackslashes(std::string_view text) {
  constexpr std::string_view special = ",:\\";
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escapes = text[i] == '\\' && i + 1 < text.size() &&
                         special.find(text[i + 1]) != std::string_view::npos;
    i += escapes ? 1 : 0;
    plain += text[i];
  }
  return plain;
}

bool applyModifier(std::string_view word, SortKey* key) {
  if (word == "desc" || word == "asc") {
    key->isDescending = word == "desc";
  } else if (word == "nulls-last") {
    key->putsNullsLast = true;
  } else if (word == "nocase") {
    key->ignoresCase = true;
  } else {
    return false;
  }
  return true;
}

SortKey readSortKey(std::string_view text) {
  SortKey key;
  std::vector<std::string_view> parts = splitAt(':', text);
  const std::string_view whole = text;
  for (; parts.size() > 1 && applyModifier(parts.back(), &key); parts.pop_back()) {
    text.remove_suffix(parts.back().size() + 1);
  }
  key.modifiers = whole.substr(text.size());
  key.column = withoutBackslashes(text);
  return key;
}

/// How many seconds the unit at the end of an age has; 0 for no unit.
std::int64_t secondsOfUnit(char letter) {
  switch (letter) {
    case 's':
      return 1;
    case 'm':
      return 60;
    case 'h':
      return 3600;
    case 'd':
      return 86400;
    default:
      return 0;
  }
}

/// 10 for the K at the end of a size, and so on; 0 for no letter.
int sizeShift(char letter) {
  switch (letter) {
    case 'K':
      return 10;
    case 'M':
      return 20;
    case 'G':
      return 30;
    default:
      return 0;
  }
}

}  // namespace

GivenType readGivenType(const std::string& text) {
  static const std::map<std::string, zvbType> types = {{"bool", zvbTypeBoolean},
                                                       {"int", zvbTypeInteger},
                                                       {"real", zvbTypeReal},
                                                       {"string", zvbTypeString},
                                                       {"date", zvbTypeDate}};
  const auto [column, word] = splitAssignment("--type", text);
  const auto type = types.find(word);
  if (type == types.end()) {
    throw CLI::ValidationError("--type",
                               "\"" + word + "\" is none of bool, int, real, string, date");
  }
  return {column, type->second};
}

GivenWidth readGivenWidth(const std::string& text) {
  const auto [column, number] = splitAssignment("--width", text);
  const std::int64_t bytes = readCount("--width", number, 1, std::numeric_limits<int>::max());
  return {column, static_cast<int>(bytes)};
}

char readDelimiter(const std::string& text) {
  constexpr std::string_view others = "\"\r\n";
  const std::string character = text == "tab" || text == "\\t" ? "\t" : text;
  const bool isAscii = character.size() == 1 && static_cast<unsigned char>(character[0]) < 0x80;
  if (!isAscii || others.find(character[0]) != std::string_view::npos) {
    throw CLI::ValidationError("--delimiter", "\"" + text +
                                                  "\" is not one character of ASCII, or is a quote "
                                                  "or a line break");
  }
  return character[0];
}

RowRange readRowRange(const std::string& text) {
  const std::size_t comma = std::min(text.find(','), text.size());
  const std::string_view view = text;
  const auto first = readNumber<std::int64_t>(view.substr(0, comma));
  const auto count = readNumber<std::int64_t>(view.substr(std::min(comma + 1, view.size())));
  if (first.value_or(-1) < 0 || count.value_or(-2) < -1 ||
      *count > std::numeric_limits<std::int64_t>::max() - *first) {
    throw CLI::ValidationError(
        "--rows", "\"" + text + "\" is not FIRST,COUNT with FIRST from 0 and COUNT from -1 on");
  }
  return {*first, *count};
}

std::vector<SortKey> readSortKeys(const std::string& option,
                                  const std::vector<std::string>& texts) {
  std::vector<SortKey> keys;
  for (const std::string& text : texts) {
    for (const std::string_view part : splitAt(',', text)) {
      SortKey key = readSortKey(part);
      const bool isRepeated = std::any_of(keys.begin(), keys.end(), [&key](const SortKey& other) {
        return sameName(other.column.c_str(), key.column.c_str());
      });
      if (key.column.empty() || isRepeated) {
        throw CLI::ValidationError(
            option, "\"" + text + "\" " +
                        (isRepeated ? "names a column again" : "lacks the name of a column"));
      }
      keys.push_back(std::move(key));
    }
  }
  return keys;
}

std::int64_t readSize(const std::string& option, const std::string& text, std::int64_t least) {
  const int shift = text.empty() ? 0 : sizeShift(text.back());
  const std::string_view digits =
      std::string_view(text).substr(0, text.size() - (shift > 0 ? 1 : 0));
  const std::int64_t number = readNumber<std::int64_t>(digits).value_or(-1);
  const std::int64_t most = std::numeric_limits<std::int64_t>::max() >> shift;
  if (isWholeNumber(digits) && (number < 0 || number > most)) {
    throw CLI::ValidationError(option, '"' + text + "\" is more bytes than can be counted");
  }
  if (number < 0 || (number << shift) < least) {
    throw CLI::ValidationError(option, "\"" + text + "\" is no number of bytes from " +
                                           std::to_string(least) +
                                           " on, as it is or in K, M or G of 1024");
  }
  return number << shift;
}

std::int64_t readAge(const std::string& option, const std::string& text) {
  const std::int64_t unit = text.empty() ? 0 : secondsOfUnit(text.back());
  const std::string_view digits =
      std::string_view(text).substr(0, text.size() - (unit > 0 ? 1 : 0));
  const std::int64_t seconds = unit > 0 ? unit : 1;
  const std::int64_t number = readNumber<std::int64_t>(digits).value_or(-1);
  if (number < 0 || number > std::numeric_limits<std::int32_t>::max() / seconds) {
    throw CLI::ValidationError(option,
                               "\"" + text + "\" is no age from 0 on, such as 30s, 15m, 2h or 1d");
  }
  return number * seconds;
}

std::int64_t readCount(const std::string& option, const std::string& text, std::int64_t least,
                       std::int64_t most) {
  const std::optional<std::int64_t> number = readNumber<std::int64_t>(text);
  if (isWholeNumber(text) && (!number.has_value() || *number > most)) {
    throw CLI::ValidationError(option, '"' + text + "\" is more than " + std::to_string(most));
  }
  if (number.value_or(-1) < least) {
    throw CLI::ValidationError(
        option, '"' + text + "\" is no number from " + std::to_string(least) + " on");
  }
  return *number;
}

}  // namespace zvwttool
