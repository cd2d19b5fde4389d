#include "formats/CsvForm.h"

#include "process/Failure.h"
#include "text/DisplayText.h"

namespace zvwttool {

void requireUsable(const CsvForm& form) {
  const std::string special = std::string("\"\r\n") + form.delimiter;
  if (form.null.find_first_of(special) != std::string::npos ||
      form.null.starts_with(byteOrderMark)) {
    throw Failure(ExitCode::usage, "--null: a field cannot be " + quotedName(form.null) +
                                       " without quotes, and in quotes it is a text");
  }
}

}  // namespace zvwttool
