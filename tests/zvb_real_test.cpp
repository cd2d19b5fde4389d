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

  bool isNegative = false;
  std::string digits = std::string(2 * half, '0');  // the point is in the middle

  Twin(bool negative, const std::string& coefficient, int exponent) : isNegative(negative) {
    for (std::size_t at = 0; at < coefficient.size(); ++at) {
      digits[half + at - coefficient.size() - static_cast<std::size_t>(exponent)] = coefficient[at];
    }
    isNegative = negative && digits.find_first_not_of('0') != std::string::npos;
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

class RandomDecimals {
 public:
  struct Decimal {
    Twin twin;
    std::string text;
  };
  Decimal next() {
    std::string coefficient(1 + random_() % ZvbReal::maximumDigits, '0');
    for (char& digit : coefficient) {
      digit = random_() % 3 == 0 ? '0' : static_cast<char>('0' + random_() % 10);
    }
    const int exponent = static_cast<int>(random_() % 41) - 38;
    const bool isNegative = random_() % 2 == 0;
    return {Twin(isNegative, coefficient, exponent),
            (isNegative ? "-" : "") + coefficient + "e" + std::to_string(exponent)};
  }

 private:
  std::mt19937 random_{2};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same run every time
};

int sign(int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

TEST(ZvbRealTest, AgreesWithDigitStrings) {
  RandomDecimals decimals;
  RandomDecimals::Decimal last = decimals.next();
  for (int round = 0; round < 20000; ++round) {
    const RandomDecimals::Decimal decimal = decimals.next();
    const ZvbReal real = parse(decimal.text);
    const std::string text = textOf(real);
    ASSERT_EQ(textOf(parse(text)), text);
    ASSERT_EQ(real.compare(parse(text)), 0);
    if (text.find('e') == std::string::npos) {
      ASSERT_EQ(text, decimal.twin.plain());
    }
    ASSERT_EQ(sign(real.compare(parse(last.text))), sign(decimal.twin.compare(last.twin)));
    bool failed = false;
    ASSERT_EQ(real.asDouble(&failed), std::strtod(decimal.text.c_str(), nullptr));
    const std::int64_t whole = real.asInt64(&failed);
    errno = 0;
    const std::int64_t expected = std::strtoll(decimal.twin.whole().c_str(), nullptr, 10);
    ASSERT_EQ(failed, errno == ERANGE) << decimal.text;
    ASSERT_EQ(whole, failed ? 0 : expected);
    last = decimal;
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
  for (const char* text : {"9223372036854775807", "-9223372036854775808", "0", "-100"}) {
    bool failed = false;
    const std::int64_t number = parse(text).asInt64(&failed);
    EXPECT_FALSE(failed);
    EXPECT_EQ(std::to_string(number), text);
    EXPECT_EQ(textOf(ZvbReal::fromInt64(number)), text);
  }
  for (const char* text : {"9223372036854775808", "-9223372036854775809", "1e19", "1e2147483647"}) {
    bool failed = false;
    EXPECT_EQ(parse(text).asInt64(&failed), 0);
    EXPECT_TRUE(failed) << text;
  }
  bool failed = false;
  EXPECT_EQ(parse("9223372036854775807.999").asInt64(&failed), int64Most);
  EXPECT_EQ(parse("-0.999").asInt64(&failed), 0);
  EXPECT_EQ(parse("1e-2147483648").asInt64(&failed), 0);
  EXPECT_FALSE(failed);
  EXPECT_EQ(ZvbReal().asInt64(&failed), 0);
  EXPECT_TRUE(failed);
}

TEST(ZvbRealTest, ExponentsNearTheirLimits) {
  const std::string digits(ZvbReal::maximumDigits, '9');
  const ZvbReal ascending[] = {ZvbReal(),
                               parse("-" + digits + "e2147483647"),
                               parse("-1e2147483647"),
                               parse("-1e-2147483648"),
                               parse("0"),
                               parse("1e-2147483648"),
                               parse("10e-2147483648"),
                               parse("1e-2000000000"),
                               parse("1e2000000000"),
                               parse(digits + "e2147483647")};
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
  EXPECT_EQ(textOf(parse("-12.50")), "-12.5");
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
  const std::string tooManyDigits = std::string(38, '1') + ".1";
  const std::string_view others[] = {tooManyDigits,
                                     "",
                                     " ",
                                     "-",
                                     ".",
                                     "1.",
                                     ".1",
                                     "1e",
                                     "1e+",
                                     "1 2",
                                     "0x1",
                                     "1,5",
                                     "--1",
                                     "inf",
                                     "nan",
                                     "1e2147483648",
                                     "0.1e-2147483648",
                                     "1e18446744073709551616"};
  for (const std::string_view text : others) {
    bool failed = false;
    EXPECT_TRUE(ZvbReal::fromText(text, &failed).isNull()) << text;
    EXPECT_TRUE(failed) << text;
  }
}

TEST(ZvbRealTest, PackedForm) {
  std::uint64_t words[3];
  parse("-12.5").asFD(&words);
  EXPECT_EQ(words[0], 0x40000000FFFFFFFFU);
  EXPECT_EQ(words[1], 125U);
  EXPECT_EQ(words[2], 0U);
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
