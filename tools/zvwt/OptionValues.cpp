#include "OptionValues.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <optional>

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

/// Splits NAME=VALUE at its last equals sign: names may contain some.
std::pair<std::string, std::string> splitAssignment(const std::string& option,
                                                    const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0) {
    throw CLI::ValidationError(option, "\"" + text + "\" is not of the form COLUMN=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
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
  const std::optional<int> bytes = readNumber<int>(number);
  if (bytes.value_or(0) < 1) {
    throw CLI::ValidationError("--width", "\"" + number + "\" is no number of bytes from 1 on");
  }
  return {column, *bytes};
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

CLI::Validator countFrom(std::int64_t least) {
  return {[least](const std::string& text) {
            const bool fits = readNumber<std::int64_t>(text).value_or(least - 1) >= least;
            return fits ? std::string()
                        : "\"" + text + "\" is no number from " + std::to_string(least) + " on";
          },
          ""};
}

}  // namespace zvwttool
