/// Any bytes as numbers, dates, texts and variants: what reads also reads back, orders agree with
/// each other, and texts that are cut, searched and put together keep their bytes.

#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "Input.h"
#include "base/ZvbDatavar.h"
#include "base/zvb_bytes.h"

namespace {

using Words = std::uint64_t[3];

std::string text(const ZvbString& string) { return string.asCstr(); }

std::string text(const ZvbReal& real) {
  char buffer[ZvbReal::textCapacity];
  const std::size_t size = real.toText(buffer);
  FUZZ_CHECK(size < sizeof buffer && (size == 0) == real.isNull(), std::to_string(size));
  return {buffer, size};
}

int sign(int order) { return (order > 0) - (order < 0); }

/// A text in a block of exactly its size, so that a look beyond it is found.
std::vector<char> exactly(std::string_view bytes) { return {bytes.begin(), bytes.end()}; }

// ---- Numbers

bool samePacked(const ZvbReal& left, const ZvbReal& right) {
  Words leftWords;
  Words rightWords;
  left.asFD(&leftWords);
  right.asFD(&rightWords);
  return std::equal(leftWords, leftWords + 3, rightWords);
}

void checkPacking(const ZvbReal& real) {
  Words words;
  real.asFD(&words);
  const Words swapped = {zvbReverseBytes(words[0]), zvbReverseBytes(words[1]),
                         zvbReverseBytes(words[2])};
  FUZZ_CHECK(samePacked(ZvbReal::fromFD(words, false), real), text(real));
  FUZZ_CHECK(samePacked(ZvbReal::fromFD(swapped, true), real), text(real));
}

void checkConversions(const ZvbReal& real) {
  bool failed = false;
  const std::int64_t integer = real.asInt64(&failed);
  if (!failed) {
    const ZvbReal cut = ZvbReal::fromInt64(integer);
    FUZZ_CHECK(text(cut) == std::to_string(integer), text(real));
    FUZZ_CHECK(real.isNegative() ? cut.compare(real) >= 0 : cut.compare(real) <= 0, text(real));
  }
  failed = false;
  const double number = real.asDouble(&failed);
  if (!failed) {
    const ZvbReal shortest = ZvbReal::fromDouble(number, &failed);
    FUZZ_CHECK(!failed && shortest.asDouble(&failed) == number && !failed, text(real));
  }
}

/// Numbers near the ends of the exponent have no text that reads back.
bool hasUsualExponent(const ZvbReal& real) {
  Words words;
  real.asFD(&words);
  const auto exponent = std::int64_t{static_cast<std::int32_t>(words[0])};
  constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max() - 100;
  return exponent > -largest && exponent < largest;
}

void checkReal(const ZvbReal& real) {
  checkPacking(real);
  const std::string written = text(real);
  if (real.isNull()) {
    return;
  }
  checkConversions(real);
  if (hasUsualExponent(real)) {
    bool failed = false;
    const ZvbReal again = ZvbReal::fromText(written, &failed);
    FUZZ_CHECK(!failed && again.compare(real) == 0 && text(again) == written, written);
  }
}

void checkOrder(const ZvbReal& left, const ZvbReal& right) {
  FUZZ_CHECK(left.compare(left) == 0, text(left));
  const int order = sign(left.compare(right));
  FUZZ_CHECK(order == -sign(right.compare(left)), text(left) + " " + text(right));
  if (left.isNull() || right.isNull()) {
    return;
  }
  std::array<unsigned char, ZvbReal::orderedSize> leftBytes;
  std::array<unsigned char, ZvbReal::orderedSize> rightBytes;
  const std::size_t leftSize = left.toOrderedBytes(leftBytes.data());
  const std::size_t rightSize = right.toOrderedBytes(rightBytes.data());
  FUZZ_CHECK(leftSize == ZvbReal::orderedSizeOf(leftBytes[0]), text(left));
  const int ordered =
      std::memcmp(leftBytes.data(), rightBytes.data(), std::min(leftSize, rightSize));
  FUZZ_CHECK(sign(ordered) == order, text(left) + " " + text(right));
}

ZvbReal readReal(std::string_view bytes) {
  const std::vector<char> exact = exactly(bytes);
  bool failed = false;
  const ZvbReal real = ZvbReal::fromText({exact.data(), exact.size()}, &failed);
  FUZZ_CHECK(failed == real.isNull(), std::string(bytes));
  return real;
}

void checkRealTexts(Input input) {
  const std::string first = input.takeText();
  const ZvbReal left = readReal(first);
  const ZvbReal right = readReal(input.takeRest());
  checkReal(left);
  checkReal(right);
  checkOrder(left, right);
}

ZvbReal takePacked(Input* input) {
  const auto head = input->take<std::uint64_t>();
  const Words words = {head, input->take<std::uint64_t>(), input->take<std::uint64_t>()};
  return ZvbReal::fromFD(words, input->takeFlag());
}

void checkPackedReals(Input input) {
  const ZvbReal left = takePacked(&input);
  const ZvbReal right = takePacked(&input);
  checkReal(left);
  checkReal(right);
  checkOrder(left, right);
}

// ---- Dates

/// Both texts of a date read back, to the millisecond that they show.
void checkDate(const ZvbDate& date) {
  constexpr double millisecond = 1.0 / 86400000;
  for (const bool forPeople : {false, true}) {
    const std::string written = text(date.asString(forPeople));
    if (written.empty()) {
      continue;
    }
    bool failed = false;
    const ZvbDate again = ZvbDate::fromText(written, &failed);
    FUZZ_CHECK(!failed && std::abs(again.days() - date.days()) < millisecond, written);
    FUZZ_CHECK(text(again.asString(forPeople)) == written, written);
  }
}

void checkDateText(Input input) {
  constexpr double lastDay = 2932896;
  const std::vector<char> exact = exactly(input.takeRest());
  const std::string_view given(exact.data(), exact.size());
  bool failed = false;
  const ZvbDate date = ZvbDate::fromText(given, &failed);
  FUZZ_CHECK(failed == date.isNull(), std::string(given));
  // The last half millisecond of the calendar rounds to a day without a text.
  FUZZ_CHECK(failed || !date.asString(false).isNull() || date.days() > lastDay, std::string(given));
  checkDate(date);
}

void checkDays(Input input) { checkDate(ZvbDate::fromDays(input.take<double>())); }

// ---- Variants

ZvbDatavar takeVariant(Input* input) {
  ZvbDatavar value;
  switch (input->takeBelow(8)) {
    case 0:
      value.assign(input->takeFlag());
      break;
    case 1:
      value.assign(input->take<std::int64_t>());
      break;
    case 2:
      value.assign(input->take<double>());
      break;
    case 3:
      value.assign(takePacked(input));
      break;
    case 4:
      value.assign(ZvbDate::fromDays(input->take<double>()));
      break;
    case 5: {
      const auto type = static_cast<zvbType>(input->takeBelow(8));
      const bool swap = input->takeFlag();
      const std::vector<char> raw = exactly(input->takeRest());
      value.assign(type, raw.data(), static_cast<unsigned>(raw.size()), swap);
      break;
    }
    default:
      value.assign(input->takeText().c_str());
  }
  return value;
}

/// A value's text makes the same value again.
void checkReadsBack(const ZvbDatavar& value) {
  const ZvbString written = value.asString();
  if (written.isNull()) {
    return;
  }
  ZvbDatavar again;
  again.assign(written);
  const bool isWide = value.type() == zvbTypeReal && !value.holdsDouble();
  bool failed = false;
  if (isWide && !hasUsualExponent(value.asReal(&failed))) {
    return;
  }
  FUZZ_CHECK(again.setType(value.type()), text(written));
  FUZZ_CHECK(text(again.asString()) == text(written), text(written));
}

/// Converting in place says what the conversions say.
void checkConversion(const ZvbDatavar& value, zvbType type) {
  ZvbDatavar converted = value;
  const bool good = converted.setType(type);
  const std::string written = text(value.asString());
  FUZZ_CHECK(converted.type() == type, written);
  FUZZ_CHECK(value.isNull() ? good && converted.isNull() : good || converted.isNull(), written);
  bool failed = false;
  if (type == zvbTypeInteger && !value.isNull()) {
    const std::int64_t integer = value.asInt64(&failed);
    FUZZ_CHECK(failed != good && (failed || converted.asInt64(&failed) == integer), written);
  }
  if (type == zvbTypeBoolean && !value.isNull()) {
    const bool boolean = value.asBool(&failed);
    FUZZ_CHECK(failed != good && (failed || converted.asBool(&failed) == boolean), written);
  }
  (void)value.asDouble(&failed);
  checkReadsBack(converted);
}

void checkVariant(Input input) {
  const ZvbDatavar value = takeVariant(&input);
  checkReadsBack(value);
  for (unsigned type = zvbTypeBoolean; type <= zvbTypeDate; ++type) {
    checkConversion(value, static_cast<zvbType>(type));
  }
}

// ---- Texts

void checkCuts(const ZvbString& string, unsigned at) {
  const std::string whole = text(string);
  const ZvbString start = string.mid(0, static_cast<int>(at));
  FUZZ_CHECK(text(start) + text(string.mid(at, -1)) == whole, whole);
  FUZZ_CHECK(start.length() == std::min(at, string.length()), whole);
  ZvbString cut = string;
  cut.truncate(at);
  FUZZ_CHECK(text(cut) == text(start), whole);

  const std::vector<char> exact = exactly(whole);
  const std::size_t size = zvbCutAtCharacter(exact.data(), exact.size(), at);
  FUZZ_CHECK(size <= at && size <= whole.size(), whole);
  FUZZ_CHECK(size + 3 >= std::min<std::size_t>(at, whole.size()), whole);
  const ZvbString front(whole.substr(0, size).c_str());
  const ZvbString back(whole.substr(size).c_str());
  FUZZ_CHECK(front.length() + back.length() == string.length(), whole);
}

/// The number of occurrences that do not overlap, each of which is looked at.
std::size_t countFound(const ZvbString& string, const ZvbString& what) {
  std::size_t count = 0;
  int at = string.find(what, 0);
  while (at >= 0) {
    const auto place = static_cast<unsigned>(at);
    const auto length = static_cast<int>(what.length());
    FUZZ_CHECK(text(string.mid(place, length)) == text(what), text(string));
    ++count;
    at = string.find(what, at + length);
  }
  return count;
}

void checkReplacing(const ZvbString& string, const ZvbString& what, const ZvbString& with) {
  FUZZ_CHECK(text(string.replace(what, what, 0, -1)) == text(string), text(string));
  FUZZ_CHECK(text(string.replace(what, with, 0, 0)) == text(string), text(string));
  if (what.isEmpty()) {
    FUZZ_CHECK(string.find(what, 0) == 0, text(string));
    return;
  }
  const std::size_t count = countFound(string, what);
  const std::string replaced = text(string.replace(what, with, 0, -1));
  const std::size_t expected =
      text(string).size() - count * text(what).size() + count * text(with).size();
  FUZZ_CHECK(replaced.size() == expected, text(string) + "\n" + replaced);
}

/// The folded bytes of a text, in a block that has no more room than is asked for.
std::vector<char> folded(const ZvbString& string) {
  const std::vector<char> exact = exactly(string.asView());
  std::vector<char> bytes(2 * exact.size());
  bytes.resize(zvbFoldText({exact.data(), exact.size()}, bytes.data()));
  return bytes;
}

void checkTextOrder(const ZvbString& left, const ZvbString& right) {
  for (const bool exact : {false, true}) {
    const int order = sign(left.compare(right, exact));
    FUZZ_CHECK(order == -sign(right.compare(left, exact)), text(left) + "\n" + text(right));
    FUZZ_CHECK(!exact || order == sign(text(left).compare(text(right))), text(left));
  }
  const std::vector<char> leftBytes = folded(left);
  const std::vector<char> rightBytes = folded(right);
  const std::string_view leftView(leftBytes.data(), leftBytes.size());
  FUZZ_CHECK(sign(left.compare(right, false)) ==
                 sign(leftView.compare({rightBytes.data(), rightBytes.size()})),
             text(left) + "\n" + text(right));
}

void checkTexts(Input input) {
  const unsigned at = input.take<std::uint8_t>();
  const ZvbString what(input.takeText().c_str());
  const ZvbString with(input.takeText().c_str());
  ZvbString string;
  string.assign("");
  const std::string_view rest = input.takeRest();
  if (!rest.empty()) {
    string.assign(rest.data(), rest.size());
  }
  checkCuts(string, at);
  checkReplacing(string, what, with);
  checkTextOrder(string, what);
  checkTextOrder(what, with);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using Check = void (*)(Input);
  constexpr Check checks[] = {checkRealTexts, checkPackedReals, checkDateText,
                              checkDays,      checkVariant,     checkTexts};
  Input input(bytes, size);
  checks[input.takeBelow(std::size(checks))](input);
  return 0;
}
