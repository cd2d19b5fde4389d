#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "base/ZvbDate.h"

namespace {

constexpr double firstDay = -719162;
constexpr double lastDay = 2932896;

/// Counts days one by one.
class Calendar {
 public:
  [[nodiscard]] std::string text() const {
    char text[48];
    const int size = std::snprintf(text, sizeof text, "%04d-%02d-%02d", year_, month_, day_);
    return {text, static_cast<std::size_t>(size)};
  }
  [[nodiscard]] bool isOver() const { return year_ > 9999; }
  void next() {
    if (++day_ > daysOfMonth()) {
      day_ = 1;
      ++month_;
    }
    if (month_ > 12) {
      month_ = 1;
      ++year_;
    }
  }

 private:
  [[nodiscard]] int daysOfMonth() const {
    if (month_ == 2) {
      return year_ % 400 == 0 || (year_ % 4 == 0 && year_ % 100 != 0) ? 29 : 28;
    }
    return month_ == 4 || month_ == 6 || month_ == 9 || month_ == 11 ? 30 : 31;
  }

  int year_ = 1;
  int month_ = 1;
  int day_ = 1;
};

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
  auto day = static_cast<std::int64_t>(firstDay);
  std::int64_t milliseconds = 0;
  for (Calendar calendar; !calendar.isOver(); calendar.next(), ++day) {
    const auto days = static_cast<double>(day);
    const std::string dayText = calendar.text();
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
  ASSERT_EQ(static_cast<double>(day), lastDay + 1);
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

TEST(ZvbDateTest, OtherTextsAreRefused) {
  for (const std::string_view text : {"",
                                      "2024",
                                      "2024-2-29",
                                      "24-02-29",
                                      "02024-02-29",
                                      "2023-02-29",
                                      "1900-02-29",
                                      "2024-04-31",
                                      "2024-00-01",
                                      "2024-13-01",
                                      "2024-01-00",
                                      "0000-01-01",
                                      "-001-01-01",
                                      "2024-02-29T",
                                      "2024-02-29T24:00",
                                      "2024-02-29T12:60",
                                      "2024-02-29T12:00:60",
                                      "2024-02-29T12:00:00.",
                                      "2024-02-29T12:00.5",
                                      "2024-02-29T12",
                                      "2024-02-29T1:00",
                                      "2024-02-29t12:00",
                                      "2024-02-29  12:00",
                                      "2024-02-29T12:00Z",
                                      "2024/02/29",
                                      "20240229"}) {
    bool failed = false;
    EXPECT_TRUE(ZvbDate::fromText(text, &failed).isNull()) << text;
    EXPECT_TRUE(failed) << text;
  }
}

}  // namespace
