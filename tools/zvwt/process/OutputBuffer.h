/// Data on its way to standard output, in large pieces.
#pragma once

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/TerminalText.h"

namespace zvwttool {

/// After a failed write everything further is dropped: ask failed() now and then, and finish() at
/// the end.
class OutputBuffer {
 public:
  OutputBuffer();
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;
  /// What was put in before a failure is written all the same.
  ~OutputBuffer() { flushAll(); }

  /// Writes what is put in as a terminal can take it, see TerminalText.h.
  void beForTerminal() { terminalText_.emplace(); }
  /// Whether that has changed what was written.
  [[nodiscard]] bool hasEscapes() const {
    return terminalText_.has_value() && terminalText_->hasEscapes();
  }

  void append(std::string_view text) {
    if (text.size() > buffer_.size() - used_) {
      makeRoom(text);
      return;
    }
    copy(text.data(), text.size(), buffer_.data() + used_);
    used_ += text.size();
  }
  void append(char byte) {
    if (used_ == buffer_.size()) {
      flush();
    }
    buffer_[used_++] = byte;
  }
  void append(std::size_t count, char byte);

  [[nodiscard]] bool failed() const { return errorNumber_ != 0; }
  /// Writes out what is left; a Failure when anything was not written. A reader that closed the
  /// pipe has seen enough: that is a failure without a text, as there is nothing to speak of.
  void finish();

 private:
  /// Most texts are short. Two copies of a known size that overlap cost less than a call.
  static void copy(const char* from, std::size_t size, char* to) {
    if (size > 16) {
      std::memcpy(to, from, size);
    } else if (size >= 8) {
      copyEnds<8>(from, size, to);
    } else if (size >= 4) {
      copyEnds<4>(from, size, to);
    } else {
      for (std::size_t i = 0; i < size; ++i) {
        to[i] = from[i];
      }
    }
  }
  template <std::size_t width>
  static void copyEnds(const char* from, std::size_t size, char* to) {
    std::memcpy(to, from, width);
    std::memcpy(to + size - width, from + size - width, width);
  }

  void makeRoom(std::string_view text);
  void write(std::string_view text);
  void writeBytes(std::string_view bytes);
  void flush();
  void flushAll();

  std::vector<char> buffer_;
  std::size_t used_ = 0;
  int errorNumber_ = 0;
  std::optional<TerminalText> terminalText_;
};

}  // namespace zvwttool
