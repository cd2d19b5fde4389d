/// What every fuzz target works with: a reader of the input's bytes, and a check that ends the run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

/// Takes an input apart from its front. Behind the end all is 0 and empty.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t size) noexcept
      : rest_(reinterpret_cast<const char*>(bytes), size) {}

  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }

  /// The bytes of a number, the lowest one first.
  template <typename Number>
  Number take() noexcept {
    Number number{};
    const std::string_view bytes = takeBytes(sizeof number);
    std::memcpy(&number, bytes.data(), bytes.size());
    return number;
  }
  /// One byte, as a number below `end`.
  unsigned takeBelow(unsigned end) noexcept { return take<std::uint8_t>() % end; }
  bool takeFlag() noexcept { return takeBelow(2) != 0; }
  std::string_view takeBytes(std::size_t size) noexcept {
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(bytes.size());
    return bytes;
  }
  /// A length in one byte, then as many bytes: no zero byte among them.
  std::string takeText() noexcept {
    std::string text(takeBytes(take<std::uint8_t>()));
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text;
  }
  std::string_view takeRest() noexcept { return takeBytes(rest_.size()); }

 private:
  std::string_view rest_;
};

/// Tells what does not hold, and ends the process so that the fuzzer keeps the input.
[[noreturn]] inline void endRun(const char* what, int line, const std::string& detail) {
  std::fprintf(stderr, "line %d: does not hold: %s\n%s\n", line, what, detail.c_str());
  std::abort();
}

/// `detail` is a text, made only when the condition does not hold.
#define FUZZ_CHECK(condition, detail)         \
  do {                                        \
    if (!(condition)) {                       \
      endRun(#condition, __LINE__, (detail)); \
    }                                         \
  } while (false)
