#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/ZvbDatavar.h"
#include "support/ShortMemory.h"

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t int64Most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t int64Least = std::numeric_limits<std::int64_t>::min();
constexpr const char* longText =
    "a text that is longer than what a variant holds inside, so that it lies on the heap";

template <typename Value>
ZvbDatavar make(const Value& value) {
  ZvbDatavar var;
  var.assign(value);
  return var;
}

ZvbReal real(std::string_view text) {
  bool failed = false;
  return ZvbReal::fromText(text, &failed);
}

std::string textOf(const ZvbReal& number) {
  char text[ZvbReal::textCapacity];
  return {text, number.toText(text)};
}

/// A value and what it converts to; nothing where the conversion fails.
struct Row {
  ZvbDatavar value;
  std::optional<bool> boolean;
  std::optional<std::int64_t> integer;
  std::optional<std::string> real;
  std::optional<double> binary;
  std::optional<double> days;
  std::optional<std::string> text;
};

std::vector<Row> conversions() {
  constexpr auto none = std::nullopt;
  return {
      {ZvbDatavar(), none, none, none, none, none, none},
      {make(true), true, 1, "1", none, none, "true"},
      {make(false), false, 0, "0", none, none, "false"},
      {make(42), true, 42, "42", 42.0, 42.0, "42"},
      {make(int64Least), true, int64Least, "-9223372036854775808", -0x1p63, -0x1p63,
       "-9223372036854775808"},
      {make(-2.75), true, -2, "-2.75", -2.75, -2.75, "-2.75"},
      {make(0.0), false, 0, "0", 0.0, 0.0, "0"},
      {make(0x1p63), true, none, "9223372036854776000", 0x1p63, 0x1p63, "9223372036854776000"},
      {make(infinity), true, none, none, infinity, infinity, none},
      {make(real("12.99")), true, 12, "12.99", 12.99, 12.99, "12.99"},
      {make(real("0.0")), false, 0, "0", 0.0, 0.0, "0"},
      {make(real("1e400")), true, none, "1e400", none, none, "1e400"},
      {make(ZvbDate::fromDays(1.5)), none, none, none, 1.5, 1.5, "1970-01-02T12:00:00.000"},
      {make(ZvbDate::fromDays(1e9)), none, none, none, 1e9, 1e9, none},
      {make(""), none, none, none, none, none, ""},
      {make(" yes\n"), true, none, none, none, none, " yes\n"},
      {make("FALSE"), false, none, none, none, none, "FALSE"},
      {make("1"), true, 1, "1", 1.0, none, "1"},
      {make(" -12.9e1 "), none, -129, "-129", -129.0, none, " -12.9e1 "},
      {make("9223372036854775807.5"), none, int64Most, "9223372036854775807.5", 0x1p63, none,
       "9223372036854775807.5"},
      {make("9223372036854775808"), none, none, "9223372036854775808", 0x1p63, none,
       "9223372036854775808"},
      {make("1e400"), none, none, "1e400", none, none, "1e400"},
      {make("+0.05e1"), none, 0, "0.5", 0.5, none, "+0.05e1"},
      {make("-0.05e-400"), none, 0, "-5e-402", 0.0, none, "-0.05e-400"},
      {make("0.05e402"), none, none, "5e400", none, none, "0.05e402"},
      {make("1970-01-02 12:00"), none, none, none, 1.5, 1.5, "1970-01-02 12:00"},
      {make("12 apples"), none, none, none, none, none, "12 apples"},
      {make(longText), none, none, none, none, none, longText},
  };
}

template <typename Value>
std::optional<Value> unlessFailed(bool failed, const Value& value) {
  return failed ? std::nullopt : std::optional<Value>(value);
}

std::optional<bool> asBool(const ZvbDatavar& var) {
  bool failed = false;
  const bool value = var.asBool(&failed);
  return unlessFailed(failed, value);
}

std::optional<std::int64_t> asInt64(const ZvbDatavar& var) {
  bool failed = false;
  const std::int64_t value = var.asInt64(&failed);
  return unlessFailed(failed, value);
}

std::optional<std::string> asReal(const ZvbDatavar& var) {
  bool failed = false;
  const std::string value = textOf(var.asReal(&failed));
  EXPECT_EQ(failed, value.empty());
  return unlessFailed(failed, value);
}

std::optional<double> asDouble(const ZvbDatavar& var) {
  bool failed = false;
  const double value = var.asDouble(&failed);
  return unlessFailed(failed, value);
}

std::optional<double> asDays(const ZvbDatavar& var) {
  return unlessFailed(var.asDate().isNull(), var.asDate().days());
}

std::optional<std::string> asText(const ZvbDatavar& var) {
  return unlessFailed(var.asString().isNull(), std::string(var.asString().asView()));
}

void expectEqual(const ZvbDatavar& var, const Row& row) {
  EXPECT_EQ(asBool(var), row.boolean);
  EXPECT_EQ(asInt64(var), row.integer);
  EXPECT_EQ(asReal(var), row.real);
  EXPECT_EQ(asDouble(var), row.binary);
  EXPECT_EQ(asDays(var), row.days);
  EXPECT_EQ(asText(var), row.text);
}

TEST(ZvbDatavarTest, ConvertsToEveryTypeAndCopiesDoToo) {
  ZvbDatavar kept = make(longText);
  for (const Row& row : conversions()) {
    SCOPED_TRACE(row.value.asString().asCstr());
    expectEqual(row.value, row);
    const ZvbDatavar copy = row.value;
    expectEqual(copy, row);
    kept = row.value;
    expectEqual(kept, row);
    EXPECT_EQ(kept.type(), row.value.type());
  }
  EXPECT_EQ(asBool(make(std::nan(""))), std::nullopt);
  EXPECT_EQ(asInt64(make(std::nan(""))), std::nullopt);
}

TEST(ZvbDatavarTest, SetTypeConvertsInPlaceOrMakesANull) {
  for (const Row& row : conversions()) {
    for (const zvbType type :
         {zvbTypeBoolean, zvbTypeInteger, zvbTypeReal, zvbTypeString, zvbTypeDate}) {
      SCOPED_TRACE(std::string(row.value.asString().asCstr()) + " to " + zvbTypeToString(type));
      const bool converts = type == zvbTypeBoolean   ? row.boolean.has_value()
                            : type == zvbTypeInteger ? row.integer.has_value()
                            : type == zvbTypeReal    ? row.real.has_value()
                            : type == zvbTypeString  ? row.text.has_value()
                                                     : row.days.has_value();
      const bool keeps = row.value.isNull() || row.value.type() == type;
      ZvbDatavar var = row.value;
      EXPECT_EQ(var.setType(type), converts || keeps);
      EXPECT_EQ(var.type(), type);
      EXPECT_EQ(var.isNull(), row.value.isNull() || !(converts || keeps));
      if (converts && !row.value.isNull()) {
        EXPECT_EQ(type == zvbTypeBoolean ? asBool(var) : row.boolean, row.boolean);
        EXPECT_EQ(type == zvbTypeInteger ? asInt64(var) : row.integer, row.integer);
        EXPECT_EQ(type == zvbTypeReal ? asReal(var) : row.real, row.real);
        EXPECT_EQ(type == zvbTypeString ? asText(var) : row.text, row.text);
        EXPECT_EQ(type == zvbTypeDate ? asDays(var) : row.days, row.days);
      }
    }
  }
}

TEST(ZvbDatavarTest, DoublesSetToDateKeepTheirBits) {
  for (const double days : {0.1, -0.0, 5e-324, infinity}) {
    ZvbDatavar var = make(days);
    EXPECT_TRUE(var.setType(zvbTypeReal));
    EXPECT_TRUE(var.setType(zvbTypeDate));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(var.asDate().days()),
              std::bit_cast<std::uint64_t>(days));
  }
  ZvbDatavar var = make(std::nan(""));
  EXPECT_FALSE(var.setType(zvbTypeDate));
  EXPECT_TRUE(var.isNull());
  EXPECT_EQ(var.type(), zvbTypeDate);
  EXPECT_TRUE(var.setType(static_cast<zvbType>(99)));
  EXPECT_EQ(var.type(), zvbTypeString);
}

TEST(ZvbDatavarTest, RawBytes) {
  ZvbDatavar var;
  std::uint64_t words[3];
  real("-123.45").asFD(&words);
  var.assign(zvbTypeReal, words, sizeof words, false);
  EXPECT_EQ(asReal(var), "-123.45");
  words[1] = ~std::uint64_t{0};
  words[2] = words[1];
  var.assign(zvbTypeReal, words, sizeof words, false);
  EXPECT_TRUE(var.isNull());
  EXPECT_EQ(var.type(), zvbTypeReal);

  const unsigned char bytes[] = {0x3F, 0xF8, 0, 0, 0, 0, 0, 0};
  var.assign(zvbTypeDate, bytes, 8, std::endian::native == std::endian::little);
  EXPECT_EQ(asDays(var), 1.5);
  var.assign(zvbTypeInteger, bytes, 8, std::endian::native == std::endian::little);
  EXPECT_EQ(asInt64(var), 0x3FF8000000000000);
  var.assign(zvbTypeBoolean, bytes, 1, true);
  EXPECT_EQ(asBool(var), true);
  var.assign(zvbTypeString, "ab\0c", 4, true);
  EXPECT_EQ(asText(var), "ab");
  for (const zvbType type : {zvbTypeBoolean, zvbTypeInteger, zvbTypeReal, zvbTypeDate}) {
    var.assign(type, bytes, 7, false);
    EXPECT_TRUE(var.isNull());
    EXPECT_EQ(var.type(), type);
  }
}

TEST(ZvbDatavarTest, AssigningWhereThereIsRoomAllocatesNothing) {
  const ZvbDatavar source = make(longText);
  ZvbDatavar var = source;
  ZvbString string(longText);
  const std::int64_t before = countAllocations();
  for (int round = 0; round < 3; ++round) {
    var.assign("short");
    string.assign("short");
    var.assign(std::int64_t{1});
    var = source;
    var.assign(2.5);
    EXPECT_TRUE(var.setType(zvbTypeString));
    var.assign(longText);
    string.assign(longText, 60);
    string.assign(-123456789);
  }
  EXPECT_EQ(countAllocations(), before);
}

TEST(ZvbDatavarTest, ShortMemoryIsRemembered) {
  const ZvbDatavar source = make(longText);
  ZvbString string("kept");
  ZvbDatavar assigned;
  bool appendFailed = false;
  std::optional<ShortMemory> shortMemory(std::in_place);
  assigned.assign(longText);
  ZvbDatavar copied = source;
  string.assign(longText);
  const ZvbString result = source.asString();
  const ZvbString formatted = zvbStringFormat("%300d", 1);
  string.append(longText, &appendFailed);
  shortMemory.reset();

  EXPECT_TRUE(appendFailed);
  EXPECT_STREQ(string.asCstr(), "kept");
  EXPECT_TRUE(string.memoryShort() && result.memoryShort() && formatted.memoryShort());
  for (const ZvbDatavar& var : {assigned, copied, make(string), make(result)}) {
    EXPECT_TRUE(var.isNull() && var.memoryShort());
    EXPECT_EQ(var.type(), zvbTypeString);
  }
  copied.setNull();
  assigned.assign("x");
  EXPECT_FALSE(copied.memoryShort() || assigned.memoryShort());
}

}  // namespace
