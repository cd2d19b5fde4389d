/// Data on its way to standard output, in large pieces.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ExitCode.h"

namespace zvwttool {

/// After a failed write everything further is dropped: ask failed() now and then, and finish() at
/// the end.
class OutputBuffer {
 public:
  OutputBuffer();

  void append(std::string_view text) {
    if (text.size() > buffer_.size() - used_) {
      makeRoom(text);
      return;
    }
    text.copy(buffer_.data() + used_, text.size());
    used_ += text.size();
  }
  void append(char byte) { append(std::string_view(&byte, 1)); }
  void append(std::size_t count, char byte);

  [[nodiscard]] bool failed() const { return errorNumber_ != 0; }
  /// Writes out what is left. A reader that closed the pipe has seen enough: that is a failure, but
  /// nothing to speak of.
  [[nodiscard]] ExitCode finish();

 private:
  void makeRoom(std::string_view text);
  void write(std::string_view text);
  void flush();

  std::vector<char> buffer_;
  std::size_t used_ = 0;
  int errorNumber_ = 0;
};

}  // namespace zvwttool
