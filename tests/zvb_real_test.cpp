#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ZvbReal.h"

namespace {

constexpr std::int64_t int64Most = std::numeric_limits<std::int64_t>::max();

ZvbReal parse(std::string_view text) {
  bool failed = false;
  const ZvbReal real = ZvbReal::fromText(text, &failed);
  EXPECT_FALSE(failed) << text;
  return real;
}

std::string textOf(const ZvbReal& real) {
  char text[ZvbReal::textCapacity];
  return {text, real.toText(text)};
}

/// A decimal as its digits around the point, long enough for every number of the tests below.
struct Twin {
  static constexpr std::size_t half = 60;

  std::string text;
  bool isNegative;
  std::string digits = std::string(2 * half, '0');  // the point is in the middle

  explicit Twin(std::mt19937& random) {
    std::string coefficient(1 + random() % ZvbReal::maximumDigits, '0');
    for (char& digit : coefficient) {
      digit = random() % 3 == 0 ? '0' : static_cast<char>('0' + random() % 10);
    }
    const int exponent = static_cast<int>(random() % 41) - 38;
    const bool hasSign = random() % 2 == 0;
    text = (hasSign ? "-" : "") + coefficient + "e" + std::to_string(exponent);
    digits.replace(half - coefficient.size() - static_cast<std::size_t>(exponent),
                   coefficient.size(), coefficient);
    isNegative = hasSign && digits.find_first_not_of('0') != std::string::npos;
  }
  [[nodiscard]] std::string whole() const {
    const std::size_t first = std::min(digits.find_first_not_of('0'), half - 1);
    return (isNegative ? "-" : "") + digits.substr(first, half - first);
  }
  [[nodiscard]] std::string plain() const {
    const std::size_t end = std::max(digits.find_last_not_of('0') + 1, half);
    return whole() + (end == half ? "" : "." + digits.substr(half, end - half));
  }
  [[nodiscard]] int compare(const Twin& other) const {
    if (isNegative != other.isNegative) {
      return isNegative ? -1 : 1;
    }
    return digits.compare(other.digits) * (isNegative ? -1 : 1);
  }
};

int sign(int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

TEST(ZvbRealTest, AgreesWithDigitStrings) {
  std::mt19937 random(2);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same run every time
  Twin last(random);
  for (int round = 0; round < 20000; ++round) {
    const Twin twin(random);
    const ZvbReal real = parse(twin.text);
    const std::string text = textOf(real);
    ASSERT_EQ(textOf(parse(text)), text);
    ASSERT_EQ(real.compare(parse(text)), 0);
    if (text.find('e') == std::string::npos) {
      ASSERT_EQ(text, twin.plain());
    }
    ASSERT_EQ(sign(real.compare(parse(last.text))), sign(twin.compare(last)));
    bool failed = false;
    ASSERT_EQ(real.asDouble(&failed), std::strtod(twin.text.c_str(), nullptr));
    const std::int64_t whole = real.asInt64(&failed);
    errno = 0;
    const std::int64_t expected = std::strtoll(twin.whole().c_str(), nullptr, 10);
    ASSERT_EQ(failed, errno == ERANGE) << twin.text;
    ASSERT_EQ(whole, failed ? 0 : expected);
    last = twin;
  }
}

TEST(ZvbRealTest, EveryDoubleComesBack) {
  std::mt19937_64 random(3);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same run every time
  bool failed = false;
  for (int round = 0; round < 20000; ++round) {
    const auto number = std::bit_cast<double>(random());
    const bool isFinite = number - number == 0;
    failed = false;
    const ZvbReal real = ZvbReal::fromDouble(number, &failed);
    ASSERT_EQ(failed, !isFinite);
    ASSERT_EQ(real.isNull(), !isFinite);
    if (isFinite) {
      ASSERT_EQ(real.asDouble(&failed), number);
      ASSERT_EQ(parse(textOf(real)).asDouble(&failed), number);
      ASSERT_FALSE(failed);
    }
  }
  EXPECT_EQ(textOf(ZvbReal::fromDouble(0.1, &failed)), "0.1");
  EXPECT_EQ(textOf(ZvbReal::fromDouble(-0.0, &failed)), "0");
  EXPECT_EQ(textOf(ZvbReal::fromDouble(1e22, &failed)), "1" + std::string(22, '0'));
}

TEST(ZvbRealTest, IntegersAtTheirLimits) {
  const std::pair<const char*, std::int64_t> whole[] = {{"9223372036854775807.999", int64Most},
                                                        {"-9223372036854775808", -int64Most - 1},
                                                        {"-0.999", 0},
                                                        {"1e-2147483648", 0}};
  for (const auto& [text, number] : whole) {
    bool failed = false;
    EXPECT_EQ(parse(text).asInt64(&failed), number);
    EXPECT_FALSE(failed) << text;
    EXPECT_EQ(textOf(ZvbReal::fromInt64(number)), std::to_string(number));
  }
  for (const char* text : {"9223372036854775808", "-9223372036854775809", "1e19", "1e2147483647"}) {
    bool failed = false;
    EXPECT_EQ(parse(text).asInt64(&failed), 0);
    EXPECT_TRUE(failed) << text;
  }
}

TEST(ZvbRealTest, ExponentsNearTheirLimits) {
  std::vector<ZvbReal> ascending(1);  // a null first
  const std::string most = std::string(ZvbReal::maximumDigits, '9') + "e2147483647";
  const std::string least = "-" + most;
  for (const char* text : {least.c_str(), "-1e2147483647", "-1e-2147483648", "0", "1e-2147483648",
                           "10e-2147483648", "1e-2000000000", "1e2000000000", most.c_str()}) {
    ascending.push_back(parse(text));
  }
  for (const ZvbReal& left : ascending) {
    for (const ZvbReal& right : ascending) {
      EXPECT_EQ(sign(left.compare(right)), sign(static_cast<int>(&left - &right)));
    }
    if (!left.isNull()) {
      EXPECT_EQ(parse(textOf(left)).compare(left), 0);
    }
  }
  bool failed = false;
  EXPECT_EQ(parse("1e-2000000000").asDouble(&failed), 0);
  EXPECT_EQ(parse("1.7976931348623157e308").asDouble(&failed), std::numeric_limits<double>::max());
  EXPECT_FALSE(failed);
  EXPECT_EQ(parse("-1.8e308").asDouble(&failed), 0);
  EXPECT_TRUE(failed);
}

TEST(ZvbRealTest, PlainNotationTakesFortyPlaces) {
  const std::string zeros(38, '0');
  EXPECT_EQ(textOf(parse("1e39")), "10" + zeros);
  EXPECT_EQ(textOf(parse("1.2e40")), "1.2e40");
  EXPECT_EQ(textOf(parse("-1e-39")), "-0." + zeros + "1");
  EXPECT_EQ(textOf(parse("15e-61")), "1.5e-60");
}

TEST(ZvbRealTest, TextsThatAreNumbersAndTextsThatAreNot) {
  for (const char* text : {" 12.5\t", "+12.5", "012.500", "125e-1", "0.00125E+4\r\n"}) {
    EXPECT_EQ(textOf(parse(text)), "12.5");
  }
  EXPECT_EQ(textOf(parse(std::string(100, '0') + "1" + std::string(100, '0'))), "1e100");
  EXPECT_EQ(textOf(parse("0e99999999999999999999999")), "0");
  for (const char* text : {"", " ", "-", ".", "1.", ".1", "1e", "1e+", "1 2", "0x1", "1,5", "--1",
                           "inf", "nan", "1e2147483648", "0.1e-2147483648",
                           "1e18446744073709551616", "11111111111111111111111111111111111111.1"}) {
    bool failed = false;
    EXPECT_TRUE(ZvbReal::fromText(text, &failed).isNull()) << text;
    EXPECT_TRUE(failed) << text;
  }
}

TEST(ZvbRealTest, PackedForm) {
  std::uint64_t words[3];
  EXPECT_EQ(textOf(ZvbReal::fromFD({0xFEFFFFFF00000040, 0x3930000000000000, 0}, true)), "-123.45");
  EXPECT_EQ(textOf(ZvbReal::fromFD({0, 12300, 0}, false)), "12300");

  const ZvbReal largest = parse(std::string(38, '9'));
  largest.asFD(&words);
  EXPECT_EQ(ZvbReal::fromFD(words, false).compare(largest), 0);
  ++words[1];
  EXPECT_TRUE(ZvbReal::fromFD(words, false).isNull());
  for (unsigned bit = 32; bit < 64; ++bit) {
    const ZvbReal real = ZvbReal::fromFD({std::uint64_t{1} << bit, 1, 0}, false);
    EXPECT_EQ(real.isNull(), bit != 62) << bit;
  }
  const ZvbReal negativeZero = ZvbReal::fromFD({std::uint64_t{1} << 62, 0, 0}, false);
  EXPECT_TRUE(negativeZero.isZero() && !negativeZero.isNegative());
}

}  // namespace
