#include "base/ZvbDate.h"

#include <cmath>

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
constexpr std::int64_t daysPerEra = 146097;
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

constexpr Civil civilFromDays(std::int64_t days) noexcept {
  const std::int64_t sinceStart = days + epochOffset;
  const std::int64_t era = floorDivide(sinceStart, daysPerEra);
  const std::int64_t dayOfEra = sinceStart - era * daysPerEra;
  const std::int64_t leapDays = dayOfEra / 1460 - dayOfEra / 36524 + dayOfEra / 146096;
  const std::int64_t yearOfEra = (dayOfEra - leapDays) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::int64_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
  const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
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

char* putNumber(char* at, int width, std::int64_t number) noexcept {
  for (int place = width - 1; place >= 0; --place, number /= 10) {
    at[place] = static_cast<char>('0' + number % 10);
  }
  return at + width;
}

char* putDay(char* at, std::int64_t day) noexcept {
  const Civil date = civilFromDays(day);
  at = putNumber(at, 4, date.year);
  *at++ = '-';
  at = putNumber(at, 2, date.month);
  *at++ = '-';
  return putNumber(at, 2, date.day);
}

char* putTime(char* at, std::int64_t milliseconds) noexcept {
  at = putNumber(at, 2, milliseconds / 3'600'000);
  *at++ = ':';
  at = putNumber(at, 2, milliseconds / 60'000 % 60);
  *at++ = ':';
  at = putNumber(at, 2, milliseconds / 1000 % 60);
  *at++ = '.';
  return putNumber(at, 3, milliseconds % 1000);
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
  result.assign(size == 0 ? nullptr : text, size);
  return result;
}

std::size_t ZvbDate::toText(char (&text)[textCapacity], bool forPeople) const noexcept {
  const double wholeDays = std::floor(days_);
  // The day before the first one may still round up to it; NaN compares false.
  if (!(wholeDays >= static_cast<double>(firstDay - 1) &&
        wholeDays <= static_cast<double>(lastDay))) {
    return 0;
  }
  auto day = static_cast<std::int64_t>(wholeDays);
  std::int64_t milliseconds =
      std::llround((days_ - wholeDays) * static_cast<double>(millisecondsPerDay));
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
    end = putTime(end, milliseconds);
  }
  return static_cast<std::size_t>(end - text);
}
