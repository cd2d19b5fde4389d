/// Writes JSON in UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "process/OutputBuffer.h"

namespace zvwttool {

/// One document: begin and end nest as they do in it, and in an object every value has its name().
/// What is outermost has a line for each of its members; what lies in it is on one line. Allocates
/// nothing and throws nothing.
class JsonWriter {
 public:
  explicit JsonWriter(OutputBuffer* output) : output_(output) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  void name(std::string_view text);

  /// A text may be of any bytes: those that are no UTF-8 become U+FFFD.
  void text(std::string_view text);
  void number(std::int64_t number);
  /// A number or a word that is JSON as it is.
  void literal(std::string_view text);

  /// A value with its name; null for a number that is not there.
  void member(std::string_view name, std::string_view text);
  void member(std::string_view name, std::int64_t number);
  void member(std::string_view name, std::optional<std::int64_t> number);

 private:
  void begin(char bracket);
  void end(char bracket);
  void separate();

  OutputBuffer* output_;
  int depth_ = 0;
  bool isFirst_ = true;  // of the values in what was begun last
  bool isNamed_ = false;
};

}  // namespace zvwttool
