#include "base/ZvbDate.h"

#include <array>
#include <cstring>

#include "base/zvb_scan.h"

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int64_t millisecondsPerDay = secondsPerDay * 1000;
constexpr std::int64_t nanosecondsPerDay = millisecondsPerDay * 1'000'000;

struct Civil {
  std::int64_t year;
  std::int64_t month;
  std::int64_t day;
};

// The two conversions count in years that begin on March 1, so that a leap day comes last, and in
// eras of 400 such years, after which the calendar repeats. Eras begin at 0000-03-01.
constexpr std::int32_t daysPerEra = 146097;
constexpr std::int64_t epochOffset = 719468;  // 1970-01-01, in days since 0000-03-01

constexpr std::int64_t floorDivide(std::int64_t number, std::int64_t divisor) noexcept {
  return (number >= 0 ? number : number - divisor + 1) / divisor;
}

constexpr std::int64_t daysFromCivil(Civil date) noexcept {
  const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
  const std::int64_t era = floorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t monthFromMarch = (date.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * daysPerEra + dayOfEra - epochOffset;
}

/// Of a day of the years 1 to 9999, which 32 bits hold and divide fastest.
constexpr Civil civilFromDays(std::int64_t days) noexcept {
  const auto sinceStart = static_cast<std::uint32_t>(days + epochOffset);
  const std::uint32_t era = sinceStart / daysPerEra;
  const std::uint32_t dayOfEra = sinceStart % daysPerEra;
  const std::uint32_t leapDays = dayOfEra / 1460 - dayOfEra / 36524 + dayOfEra / 146096;
  const std::uint32_t yearOfEra = (dayOfEra - leapDays) / 365;
  const std::uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::uint32_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::uint32_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
  const std::uint32_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, day};
}

constexpr std::int64_t firstDay = daysFromCivil({1, 1, 1});
constexpr std::int64_t lastDay = daysFromCivil({9999, 12, 31});

bool exists(const Civil& date) noexcept {
  constexpr std::int64_t daysOfMonth[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (date.year < 1 || date.month < 1 || date.month > 12 || date.day < 1) {
    return false;
  }
  const bool isLeapYear = date.year % 4 == 0 && (date.year % 100 != 0 || date.year % 400 == 0);
  return date.day <= daysOfMonth[date.month - 1] + (isLeapYear && date.month == 2 ? 1 : 0);
}

/// Reads a text from left to right; each take leaves the text as it was when it gives false.
class Reader {
 public:
  explicit Reader(std::string_view text) noexcept : rest_(text) {}

  bool take(char byte) noexcept {
    const bool isThere = rest_.starts_with(byte);
    rest_.remove_prefix(isThere ? 1 : 0);
    return isThere;
  }
  /// Exactly `count` digits.
  bool takeNumber(std::size_t count, std::int64_t* number) noexcept {
    if (rest_.size() < count) {
      return false;
    }
    std::int64_t value = 0;
    for (const char digit : rest_.substr(0, count)) {
      if (!zvbIsDigit(digit)) {
        return false;
      }
      value = value * 10 + (digit - '0');
    }
    *number = value;
    rest_.remove_prefix(count);
    return true;
  }
  /// The digits of a fraction, at least one of them, in units of 10^-9; digits after the ninth are
  /// finer than a date and count for nothing.
  bool takeBillionths(std::int64_t* number) noexcept {
    std::int64_t unit = 1'000'000'000;
    std::int64_t value = 0;
    std::size_t size = 0;
    for (; size < rest_.size() && zvbIsDigit(rest_[size]); ++size) {
      unit /= 10;
      value += (rest_[size] - '0') * unit;
    }
    *number = value;
    rest_.remove_prefix(size);
    return size != 0;
  }
  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }

 private:
  std::string_view rest_;
};

bool takeDay(Reader* reader, Civil* date) noexcept {
  return reader->takeNumber(4, &date->year) && reader->take('-') &&
         reader->takeNumber(2, &date->month) && reader->take('-') &&
         reader->takeNumber(2, &date->day) && exists(*date);
}

bool takeTime(Reader* reader, std::int64_t* nanoseconds) noexcept {
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  std::int64_t billionths = 0;
  if (!reader->takeNumber(2, &hour) || !reader->take(':') || !reader->takeNumber(2, &minute)) {
    return false;
  }
  if (reader->take(':')) {
    if (!reader->takeNumber(2, &second) ||
        (reader->take('.') && !reader->takeBillionths(&billionths))) {
      return false;
    }
  }
  *nanoseconds = ((hour * 60 + minute) * 60 + second) * 1'000'000'000 + billionths;
  return hour < 24 && minute < 60 && second < 60;
}

/// "00" to "99", one after another.
constexpr auto pairsOfDigits = [] {
  std::array<char, 200> pairs = {};
  for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

/// A number below 100 in two digits.
char* putPair(char* at, std::uint32_t number) noexcept {
  std::memcpy(at, &pairsOfDigits[std::size_t{2} * number], 2);
  return at + 2;
}

char* putDay(char* at, std::int64_t day) noexcept {
  const Civil date = civilFromDays(day);
  at = putPair(at, static_cast<std::uint32_t>(date.year) / 100);
  at = putPair(at, static_cast<std::uint32_t>(date.year) % 100);
  *at++ = '-';
  at = putPair(at, static_cast<std::uint32_t>(date.month));
  *at++ = '-';
  return putPair(at, static_cast<std::uint32_t>(date.day));
}

char* putTime(char* at, std::uint32_t milliseconds) noexcept {
  at = putPair(at, milliseconds / 3'600'000);
  *at++ = ':';
  at = putPair(at, milliseconds / 60'000 % 60);
  *at++ = ':';
  at = putPair(at, milliseconds / 1000 % 60);
  *at++ = '.';
  at = putPair(at, milliseconds % 1000 / 10);
  *at++ = static_cast<char>('0' + milliseconds % 10);
  return at;
}

/// The nearest integer of a number that is not negative.
std::int64_t roundToNearest(double number) noexcept {
  const auto whole = static_cast<std::int64_t>(number);
  return whole + (number - static_cast<double>(whole) >= 0.5 ? 1 : 0);
}

}  // namespace

ZvbDate ZvbDate::fromText(std::string_view text, bool* failed) noexcept {
  Reader reader(zvbTrim(text));
  Civil date = {};
  std::int64_t nanoseconds = 0;
  bool isDate = takeDay(&reader, &date);
  if (isDate && (reader.take('T') || reader.take(' '))) {
    isDate = takeTime(&reader, &nanoseconds);
  }
  if (!isDate || !reader.atEnd()) {
    *failed = true;
    return {};
  }
  return fromDays(static_cast<double>(daysFromCivil(date)) +
                  static_cast<double>(nanoseconds) / static_cast<double>(nanosecondsPerDay));
}

ZvbString ZvbDate::asString(bool forPeople) const noexcept {
  char text[textCapacity];
  const std::size_t size = toText(text, forPeople);
  ZvbString result;
  result.assignBytes(size == 0 ? nullptr : text, size);
  return result;
}

std::size_t ZvbDate::toText(char (&text)[textCapacity], bool forPeople) const noexcept {
  // The day before the first one may still round up to it; NaN compares false.
  if (!(days_ >= static_cast<double>(firstDay - 1) && days_ < static_cast<double>(lastDay + 1))) {
    return 0;
  }
  auto day = static_cast<std::int64_t>(days_);
  day -= static_cast<double>(day) > days_ ? 1 : 0;
  std::int64_t milliseconds =
      roundToNearest((days_ - static_cast<double>(day)) * static_cast<double>(millisecondsPerDay));
  if (milliseconds == millisecondsPerDay) {
    milliseconds = 0;
    ++day;
  }
  if (day < firstDay || day > lastDay) {
    return 0;
  }
  char* end = putDay(text, day);
  if (!forPeople || milliseconds != 0) {
    *end++ = forPeople ? ' ' : 'T';
    end = putTime(end, static_cast<std::uint32_t>(milliseconds));
  }
  return static_cast<std::size_t>(end - text);
}
