#include "base/ZvbDatavar.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "base/zvb_bytes.h"
#include "base/zvb_scan.h"

namespace {

zvbType knownType(zvbType type) noexcept {
  return type >= zvbTypeBoolean && type <= zvbTypeDate ? type : zvbTypeString;
}

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) noexcept {
  if (text.size() != lowerCase.size()) {
    return false;
  }
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isCapital = text[at] >= 'A' && text[at] <= 'Z';
    if ((isCapital ? text[at] - 'A' + 'a' : text[at]) != lowerCase[at]) {
      return false;
    }
  }
  return true;
}

bool textToBool(std::string_view text, bool* failed) noexcept {
  text = zvbTrim(text);
  for (const std::string_view word : {"true", "yes", "1"}) {
    if (equalsIgnoringCase(text, word)) {
      return true;
    }
  }
  for (const std::string_view word : {"false", "no", "0"}) {
    if (equalsIgnoringCase(text, word)) {
      return false;
    }
  }
  *failed = true;
  return false;
}

std::int64_t textToInt64(std::string_view text, bool* failed) noexcept {
  text = zvbTrim(text);
  std::int64_t integer = 0;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), integer);
  if (result.ec == std::errc() && result.ptr == text.data() + text.size()) {
    return integer;
  }
  bool noReal = false;
  const ZvbReal real = ZvbReal::fromText(text, &noReal);
  if (noReal) {
    *failed = true;
    return 0;
  }
  return real.asInt64(failed);
}

double textToDouble(std::string_view text, bool* failed) noexcept {
  text = zvbTrim(text);
  double number = 0;
  return zvbScanDouble(text, &number) ? number : ZvbDate::fromText(text, failed).days();
}

std::int64_t doubleToInt64(double number, bool* failed) noexcept {
  constexpr double limit = 9223372036854775808.0;  // 2^63; NaN compares false
  if (!(number >= -limit && number < limit)) {
    *failed = true;
    return 0;
  }
  return static_cast<std::int64_t>(number);
}

template <std::size_t capacity>
std::size_t put(char (&text)[capacity], std::string_view word) noexcept {
  std::memcpy(text, word.data(), word.size());
  return word.size();
}

}  // namespace

void ZvbDatavar::assignOther(zvbType type, const void* data, unsigned size, bool swap) noexcept {
  type = knownType(type);
  if (type == zvbTypeString) {
    assign(static_cast<const char*>(data), std::size_t{size});
    return;
  }
  std::uint64_t word = 0;
  const unsigned expected = type == zvbTypeBoolean ? 1 : sizeof word;
  hold(Held::null, type);
  if (data == nullptr || size != expected || type == zvbTypeReal) {
    return;
  }
  if (type == zvbTypeBoolean) {
    assign(*static_cast<const unsigned char*>(data) != 0);
    return;
  }
  std::memcpy(&word, data, sizeof word);
  word = swap ? zvbReverseBytes(word) : word;
  if (type == zvbTypeInteger) {
    assign(static_cast<std::int64_t>(word));
  } else {
    assign(ZvbDate::fromDays(std::bit_cast<double>(word)));
  }
}

bool ZvbDatavar::convertToBool(bool* failed) const noexcept {
  switch (held_) {
    case Held::boolean:
      return number_.boolean;
    case Held::integer:
      return number_.integer != 0;
    case Held::real:
      return !packedReal().isZero();
    case Held::binary:
      *failed = *failed || std::isnan(number_.binary);
      return number_.binary != 0;
    case Held::text:
      return textToBool(text_.view(), failed);
    case Held::date:
    case Held::null:
      break;
  }
  *failed = true;
  return false;
}

std::int64_t ZvbDatavar::convertToInt64(bool* failed) const noexcept {
  switch (held_) {
    case Held::boolean:
      return number_.boolean ? 1 : 0;
    case Held::integer:
      return number_.integer;
    case Held::real:
      return packedReal().asInt64(failed);
    case Held::binary:
      return doubleToInt64(number_.binary, failed);
    case Held::text:
      return textToInt64(text_.view(), failed);
    case Held::date:
    case Held::null:
      break;
  }
  *failed = true;
  return 0;
}

double ZvbDatavar::convertToDouble(bool* failed) const noexcept {
  switch (held_) {
    case Held::integer:
      return static_cast<double>(number_.integer);
    case Held::real:
      return packedReal().asDouble(failed);
    case Held::binary:
    case Held::date:
      return number_.binary;
    case Held::text:
      return textToDouble(text_.view(), failed);
    case Held::boolean:
    case Held::null:
      break;
  }
  *failed = true;
  return 0;
}

ZvbReal ZvbDatavar::convertToReal(bool* failed) const noexcept {
  switch (held_) {
    case Held::boolean:
      return ZvbReal::fromInt64(number_.boolean ? 1 : 0);
    case Held::integer:
      return ZvbReal::fromInt64(number_.integer);
    case Held::real:
      return packedReal();
    case Held::binary:
      return ZvbReal::fromDouble(number_.binary, failed);
    case Held::text:
      return ZvbReal::fromText(text_.view(), failed);
    case Held::date:
    case Held::null:
      break;
  }
  *failed = true;
  return {};
}

ZvbDate ZvbDatavar::convertToDate() const noexcept {
  bool failed = false;
  if (held_ == Held::text) {
    return ZvbDate::fromText(text_.view(), &failed);
  }
  const double days = convertToDouble(&failed);
  return failed ? ZvbDate() : ZvbDate::fromDays(days);
}

std::size_t ZvbDatavar::writeText(char (&text)[ZvbReal::textCapacity]) const noexcept {
  bool failed = false;
  switch (held_) {
    case Held::boolean:
      return put(text, number_.boolean ? "true" : "false");
    case Held::integer:
      return static_cast<std::size_t>(std::to_chars(text, text + sizeof text, number_.integer).ptr -
                                      text);
    case Held::real:
      return packedReal().toText(text);
    case Held::binary:
      return ZvbReal::fromDouble(number_.binary, &failed).toText(text);
    case Held::date: {
      char date[ZvbDate::textCapacity];
      const std::size_t size = ZvbDate::fromDays(number_.binary).toText(date, false);
      return put(text, {date, size});
    }
    case Held::text:
    case Held::null:
      break;
  }
  return 0;
}

ZvbString ZvbDatavar::asString() const noexcept {
  ZvbString result;
  if (held_ == Held::text) {
    result.assign(text_);
    return result;
  }
  char text[ZvbReal::textCapacity];
  const std::size_t size = writeText(text);
  result.assignBytes(size == 0 ? nullptr : text, size);
  return result;
}

bool ZvbDatavar::convertTo(zvbType type) noexcept {
  type = knownType(type);
  if (type == type_ || held_ == Held::null) {
    type_ = type;
    return true;
  }
  bool failed = false;
  switch (type) {
    case zvbTypeBoolean: {
      const bool value = asBool(&failed);
      assign(value);
      break;
    }
    case zvbTypeInteger: {
      const std::int64_t value = asInt64(&failed);
      assign(value);
      break;
    }
    case zvbTypeReal:
      assign(asReal(&failed));
      break;
    case zvbTypeDate:
      assign(asDate());
      break;
    case zvbTypeString: {
      char text[ZvbReal::textCapacity];
      const std::size_t size = writeText(text);
      assignText(size == 0 ? nullptr : text, size);
      break;
    }
  }
  if (failed) {
    held_ = Held::null;
  }
  return held_ != Held::null;
}
