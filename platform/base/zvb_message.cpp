#include "base/zvb_message.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <iterator>
#include <system_error>

namespace {

constexpr int maximumArguments = 9;

/// The arguments of one message, each as text.
class Arguments {
 public:
  void read(const char* kinds, std::va_list list) noexcept {
    for (int i = 0; kinds[i] != '\0' && i < maximumArguments; ++i) {
      if (kinds[i] == 't') {
        const char* text = va_arg(list, const char*);
        texts_[i] = text == nullptr ? "unknown error" : text;
      } else {
        const std::int64_t number =
            kinds[i] == 'i' ? va_arg(list, int) : va_arg(list, std::int64_t);
        texts_[i] = formatNumber(number, digits_[i]);
      }
    }
  }

  [[nodiscard]] const char* text(int index) const noexcept { return texts_[index]; }

 private:
  using Digits = char[24];

  static const char* formatNumber(std::int64_t number, Digits& digits) noexcept {
    *std::to_chars(digits, digits + sizeof digits - 1, number).ptr = '\0';
    return digits;
  }

  const char* texts_[maximumArguments] = {"", "", "", "", "", "", "", "", ""};
  Digits digits_[maximumArguments] = {};
};

const ZvbMessageEntry* findEntry(int id) noexcept {
  const auto* const end = std::end(zvbMessageCatalogue);
  const auto* const found =
      std::find_if(std::begin(zvbMessageCatalogue), end,
                   [id](const ZvbMessageEntry& entry) { return entry.id == id; });
  return found == end ? nullptr : found;
}

bool isPlaceholder(const char* text) noexcept {
  return text[0] == '%' && text[1] >= '1' && text[1] <= '9';
}

/// Appends `text` with its placeholders filled.
void appendFilled(ZvbString& message, const char* text, const Arguments& arguments) noexcept {
  bool failed = false;
  while (*text != '\0' && !failed) {
    if (isPlaceholder(text)) {
      message.append(arguments.text(text[1] - '1'), &failed);
      text += 2;
      continue;
    }
    const char* end = text + 1;
    while (*end != '\0' && !isPlaceholder(end)) {
      ++end;
    }
    ZvbString piece;
    piece.assign(text, static_cast<std::size_t>(end - text));
    message.append(piece, &failed);
    text = end;
  }
}

}  // namespace

ZvbString zvb_get_message(const char* /*sourceFile*/, int /*line*/, const char* /*component*/,
                          int messageId, ...) noexcept {
  ZvbString message;
  message.assign(messageId);
  bool failed = false;
  message.append(": ", &failed);
  const ZvbMessageEntry* entry = findEntry(messageId);
  if (entry == nullptr) {
    message.append("a message of this number is not in the catalogue", &failed);
    return message;
  }
  Arguments arguments;
  std::va_list list;
  va_start(list, messageId);
  arguments.read(entry->kinds, list);
  va_end(list);
  appendFilled(message, entry->text, arguments);
  return message;
}
