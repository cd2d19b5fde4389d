#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "base/ZvbDate.h"

namespace {

constexpr int firstDay = -719162;  // 0001-01-01
constexpr int lastDay = 2932896;   // 9999-12-31

std::string calendarText(std::int64_t days) {
  const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{days}}};
  char text[48];
  const int size = std::snprintf(text, sizeof text, "%04d-%02u-%02u", int{date.year()},
                                 unsigned{date.month()}, unsigned{date.day()});
  return {text, static_cast<std::size_t>(size)};
}

/// Kept off the heap, for the sake of the millions of texts below.
class ExactText {
 public:
  explicit ExactText(double days) : size_(ZvbDate::fromDays(days).toText(text_, false)) {}
  [[nodiscard]] std::string_view view() const { return {text_, size_}; }

 private:
  char text_[ZvbDate::textCapacity];
  std::size_t size_;
};

std::string exactText(double days) { return std::string(ExactText(days).view()); }

double parse(std::string_view text) {
  bool failed = false;
  const ZvbDate date = ZvbDate::fromText(text, &failed);
  EXPECT_FALSE(failed) << text;
  return date.days();
}

TEST(ZvbDateTest, EveryDayOfTheCalendarIsShownAndReadBack) {
  std::int64_t milliseconds = 0;
  for (std::int64_t day = firstDay; day <= lastDay; ++day) {
    const auto days = static_cast<double>(day);
    const std::string dayText = calendarText(day);
    const ExactText midnight(days);
    ASSERT_EQ(midnight.view().substr(0, 10), dayText);
    ASSERT_EQ(midnight.view().substr(10), "T00:00:00.000");
    milliseconds = (milliseconds + 49'999'991) % 86'400'000;
    const ExactText text(days + static_cast<double>(milliseconds) / 86'400'000);
    ASSERT_EQ(text.view().substr(0, 10), dayText);
    const double back = parse(text.view());
    ASSERT_EQ(ExactText(back).view(), text.view());
    ASSERT_EQ(std::llround((back - days) * 86'400'000), milliseconds);
  }
}

TEST(ZvbDateTest, MillisecondsRoundAndCarry) {
  constexpr double millisecond = 1.0 / 86'400'000;
  EXPECT_EQ(exactText(0.4 * millisecond), "1970-01-01T00:00:00.000");
  EXPECT_EQ(exactText(0.6 * millisecond), "1970-01-01T00:00:00.001");
  EXPECT_EQ(exactText(-0.6 * millisecond), "1969-12-31T23:59:59.999");
  EXPECT_EQ(exactText(-1e-300), "1970-01-01T00:00:00.000");
  EXPECT_EQ(exactText(365 - 0.4 * millisecond), "1971-01-01T00:00:00.000");
  EXPECT_EQ(exactText(firstDay - 0.4 * millisecond), "0001-01-01T00:00:00.000");
  EXPECT_EQ(exactText(firstDay - 0.6 * millisecond), "");
  EXPECT_EQ(exactText(lastDay + 1 - 0.6 * millisecond), "9999-12-31T23:59:59.999");
  EXPECT_EQ(exactText(lastDay + 1 - 0.4 * millisecond), "");
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double days : {1e7, 1e19, -1e300, infinity, -infinity}) {
    EXPECT_EQ(exactText(days), "");
  }
}

TEST(ZvbDateTest, TextsForPeople) {
  EXPECT_STREQ(ZvbDate::fromDays(19782).asString(true).asCstr(), "2024-02-29");
  const ZvbDate withTime = ZvbDate::fromDays(parse("2024-02-29 13:45:10.250"));
  EXPECT_STREQ(withTime.asString(true).asCstr(), "2024-02-29 13:45:10.250");
  EXPECT_STREQ(withTime.asString(false).asCstr(), "2024-02-29T13:45:10.250");
  EXPECT_TRUE(ZvbDate().isNull() && ZvbDate().asString(true).isNull());
}

TEST(ZvbDateTest, ShorterFormsRead) {
  EXPECT_EQ(parse(" 1970-01-02T06:00\n"), 1.25);
  EXPECT_EQ(parse("1970-01-01 18:00:00"), 0.75);
  EXPECT_EQ(parse("1970-01-02 "), 1);
  EXPECT_EQ(exactText(parse("2000-02-29T23:59:59.99940000000001")), "2000-02-29T23:59:59.999");
  EXPECT_EQ(exactText(parse("2000-02-29T00:00:00.5")), "2000-02-29T00:00:00.500");
}

void expectRefused(const std::string& text) {
  bool failed = false;
  EXPECT_TRUE(ZvbDate::fromText(text, &failed).isNull()) << text;
  EXPECT_TRUE(failed) << text;
}

TEST(ZvbDateTest, OtherTextsAreRefused) {
  for (const char* day : {"", "2024", "2024-2-29", "24-02-29", "02024-02-29", "2023-02-29",
                          "1900-02-29", "2024-04-31", "2024-00-01", "2024-13-01", "2024-01-00",
                          "0000-01-01", "-001-01-01", "2024/02/29", "20240229"}) {
    expectRefused(day);
  }
  for (const char* time : {"T", "T24:00", "T12:60", "T12:00:60", "T12:00:00.", "T12:00.5", "T12",
                           "T1:00", "t12:00", "  12:00", "T12:00Z"}) {
    expectRefused(std::string("2024-02-29") + time);
  }
}

}  // namespace
