/// Why a command ends before its end.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "base/ZvbString.h"
#include "process/ExitCode.h"

namespace zvwttool {

/// What is begun is removed on the way of this exception; whoever catches it says the text.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

  [[nodiscard]] ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

/// What the library gives as the reason of a failure, with the code that fits its number. `about`
/// stands before it where the message does not say which table it is.
[[nodiscard]] Failure libraryFailure(const ZvbString& message, const std::string& about = "");

/// The number of a message of the library, or of the one that it reports as its reason; 0 for any
/// other text.
[[nodiscard]] int causeOf(std::string_view message);

/// What the system gives as the reason of a failure by an errno value.
[[nodiscard]] Failure systemFailure(int errorNumber, const std::string& about);

}  // namespace zvwttool
