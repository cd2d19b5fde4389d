#include "process/Failure.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>
#include <system_error>

namespace zvwttool {
namespace {

/// The number that a message of the library begins with; 0 for any other text.
int numberOf(std::string_view message) {
  int number = 0;
  const auto [end, status] =
      std::from_chars(message.data(), message.data() + message.size(), number);
  const bool isNumbered = status == std::errc() &&
                          std::string_view(end, message.data() + message.size()).starts_with(": ");
  return isNumbered ? number : 0;
}

bool isOneOf(std::initializer_list<int> numbers, int number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// The name, without its directory, of the file that could not be opened.
std::string_view unopenedFile(std::string_view message) {
  const std::string_view path = message.substr(0, message.rfind("\" cannot be opened: "));
  return path.substr(path.find_last_of("/\\\"") + 1);
}

/// A file that cannot be opened is not there, or the system does not let it be: by the words and
/// the status that the library has for the former. A table whose rows are not there is damaged.
ExitCode codeOfOpening(std::string_view message) {
  const bool isMissing =
      message.ends_with("file or directory not found.") || message.ends_with("system status 3.");
  const std::string_view file = unopenedFile(message);
  if (isMissing && (file.starts_with("zvwte_") || file.starts_with("zvwtei_"))) {
    return ExitCode::damaged;
  }
  return isMissing ? ExitCode::notFound : ExitCode::inputOutput;
}

/// The message that this one reports behind its own words; empty when there is none.
std::string_view reported(std::string_view message) {
  constexpr std::string_view separator = ": ";
  std::size_t at = message.rfind(separator);
  while (at != std::string_view::npos && at > 0) {
    const std::string_view rest = message.substr(at + separator.size());
    if (numberOf(rest) != 0) {
      return rest;
    }
    at = message.rfind(separator, at - 1);
  }
  return "";
}

ExitCode codeOf(std::string_view message) {
  const int number = causeOf(message);
  if (isOneOf({1352, 1353}, number)) {
    return codeOfOpening(message);
  }
  if (isOneOf({336, 1301, 1773, 1785, 1786, 1787, 1794, 1812}, number)) {
    return ExitCode::damaged;
  }
  if (isOneOf({29, 453, 1044, 1045, 1417, 1642, 1747, 1783, 1808, 1809, 1810, 1811, 1814},
              number)) {
    return ExitCode::inputOutput;
  }
  return ExitCode::usage;
}

}  // namespace

int causeOf(std::string_view message) {
  const int number = numberOf(message);
  return isOneOf({1780, 1781, 1782}, number) ? causeOf(reported(message)) : number;
}

Failure libraryFailure(const ZvbString& message, const std::string& about) {
  if (message.memoryShort() || message.isEmpty()) {
    return {ExitCode::inputOutput, about + "out of memory"};
  }
  return {codeOf(message.asView()), about + message.asCstr()};
}

Failure systemFailure(int errorNumber, const std::string& about) {
  return {errorNumber == ENOENT ? ExitCode::notFound : ExitCode::inputOutput,
          about + std::generic_category().message(errorNumber)};
}

}  // namespace zvwttool
