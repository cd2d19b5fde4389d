/// The bytes of single values, written and read.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "fio/np_fio.h"
#include "support/Bytes.h"
#include "support/TemporaryDirectory.h"
#include "wtelem/ValueCodec.h"

namespace {

using valueCodec::Result;

std::string hex(const std::string& bytes) {
  std::string digits;
  for (const char byte : bytes) {
    char pair[4];
    std::snprintf(pair, sizeof pair, " %02x", static_cast<unsigned char>(byte));
    digits += pair;
  }
  return digits.substr(digits.empty() ? 0 : 1);
}

/// A value of which the payload is numbers, as this machine writes it.
template <typename... Words>
std::string stored(char tag, Words... words) {
  return tag + inMemory(std::uint64_t{words}...);
}

/// The same as a machine of the other byte order writes it.
template <typename... Words>
std::string storedElsewhere(char tag, Words... words) {
  std::string bytes(1, tag);
  for (const std::uint64_t word : {std::uint64_t{words}...}) {
    const std::string own = inMemory(word);
    bytes.append(own.rbegin(), own.rend());
  }
  return bytes;
}

class ValueCodec : public testing::Test {
 protected:
  ValueCodec() {
    char path[npFioPathSize];
    EXPECT_EQ(0, np_fio_tmpfile(directory.path().c_str(), "codec_", path, sizeof path, &file));
    buffer.setLimit(std::numeric_limits<std::int32_t>::max());
  }
  ~ValueCodec() override { np_fio_close(file); }

  /// Makes the file hold just the encoded value.
  void encode(const ZvbDatavar& value) {
    EXPECT_EQ(0, np_fio_seek64(file, 0, npFioFromStart));
    std::int64_t size = 0;
    EXPECT_EQ(Result::done, valueCodec::encodeValue(&column, value, file, &size));
    EXPECT_EQ(0, np_fio_trunc(file));
    EXPECT_EQ(size, np_fio_seek64(file, 0, npFioFromEnd));
    written = size;
  }

  std::string bytes(int most = 64) {
    std::string all(static_cast<std::size_t>(most), '\0');
    EXPECT_EQ(0, np_fio_seek64(file, 0, npFioFromStart));
    all.resize(static_cast<std::size_t>(np_fio_getb(file, all.data(), most)));
    return hex(all);
  }

  template <typename Value>
  std::string bytesOf(zvbType type, const Value& value, int width = 0) {
    column.storageCode = storageCodeOf(type);
    column.width = width;
    ZvbDatavar variant;
    variant.assign(value);
    encode(variant);
    return bytes();
  }

  Result decode(ZvbDatavar* target, std::int64_t* offset, bool swap = false) {
    EXPECT_EQ(0, np_fio_seek64(file, 0, npFioFromStart));
    return valueCodec::decodeValue({.file = file, .swap = swap, .buffer = &buffer}, target, offset);
  }

  /// Replaces the file's content.
  void put(const std::string& content) {
    EXPECT_EQ(0, np_fio_seek64(file, 0, npFioFromStart));
    EXPECT_EQ(static_cast<int>(content.size()),
              np_fio_putb(file, content.data(), static_cast<int>(content.size())));
    EXPECT_EQ(0, np_fio_trunc(file));
  }

  TemporaryDirectory directory;
  np_fio_handle file = nullptr;
  StringReadBuffer buffer;
  ColumnDefinition column;
  std::int64_t written = 0;
};

TEST_F(ValueCodec, WritesTheDocumentedBytes) {
  EXPECT_EQ("01 01", bytesOf(zvbTypeBoolean, true));
  EXPECT_EQ("01 00", bytesOf(zvbTypeBoolean, "No"));
  EXPECT_EQ(hex(stored(2, 0x3FF8000000000000U)), bytesOf(zvbTypeDate, "1970-01-02T12:00"));
  EXPECT_EQ(hex(stored(3, 0xFFFFFFFFFFFFFFFEU)), bytesOf(zvbTypeInteger, -2));
  EXPECT_EQ(hex(stored(3, 0xFFFFFFFFFFFFFFFDU)), bytesOf(zvbTypeInteger, -3.9));
  EXPECT_EQ(hex(stored(4, 0x40000000FFFFFFFFU, 123U, 0U)), bytesOf(zvbTypeReal, "-12.30"));
  EXPECT_EQ("05 01 00", bytesOf(zvbTypeString, ""));
  EXPECT_EQ("05 04 61 c3 a9 00", bytesOf(zvbTypeString, "a\xC3\xA9"));
  EXPECT_EQ("05 05 74 72 75 65 00", bytesOf(static_cast<zvbType>(77), true));
}

TEST_F(ValueCodec, WritesNullsForNullsAndForWhatCannotBeConverted) {
  for (const zvbType type : {zvbTypeBoolean, zvbTypeInteger, zvbTypeReal, zvbTypeString}) {
    EXPECT_EQ("80", bytesOf(type, static_cast<const char*>(nullptr)));
  }
  EXPECT_EQ("81", bytesOf(zvbTypeBoolean, "maybe"));
  EXPECT_EQ("82", bytesOf(zvbTypeDate, "2023-02-29"));
  EXPECT_EQ("82", bytesOf(zvbTypeDate, std::nan("")));
  EXPECT_EQ("83", bytesOf(zvbTypeInteger, "12x"));
  EXPECT_EQ("83", bytesOf(zvbTypeInteger, "9223372036854775808"));
  EXPECT_EQ("84", bytesOf(zvbTypeReal, std::numeric_limits<double>::infinity()));
}

TEST_F(ValueCodec, WritesTheLengthsOfTextsInOneOrFourBytes) {
  EXPECT_TRUE(bytesOf(zvbTypeString, std::string(126, 'x').c_str()).starts_with("05 7f 78"));
  EXPECT_EQ(127, column.maxLength);
  EXPECT_TRUE(
      bytesOf(zvbTypeString, std::string(127, 'x').c_str()).starts_with("05 80 00 00 80 78"));
  EXPECT_EQ(128, column.maxLength);
  EXPECT_EQ(5 + 128, written);
  EXPECT_TRUE(
      bytesOf(zvbTypeString, std::string(70000, 'x').c_str()).starts_with("05 80 01 11 71 78"));
  bytesOf(zvbTypeString, "short");
  EXPECT_EQ(70001, column.maxLength);
}

TEST_F(ValueCodec, CutsTextsToTheColumnsWidthAtACharacter) {
  EXPECT_EQ("05 0b 61 62 63 64 65 66 67 68 69 6a 00", bytesOf(zvbTypeString, "abcdefghijkl", 10));
  EXPECT_EQ("05 0a 61 62 63 64 65 66 67 68 69 00", bytesOf(zvbTypeString, "abcdefghi\xC3\xA9", 10));
  EXPECT_EQ("05 01 00", bytesOf(zvbTypeString, "\xE2\x82\xAC", 2));
  EXPECT_EQ("05 04 61 62 63 00", bytesOf(zvbTypeString, "abc", -1));
  EXPECT_EQ("05 03 31 32 00", bytesOf(zvbTypeString, 123, 2));
}

TEST_F(ValueCodec, ReadsBackWhatItWroteAndPassesOverIt) {
  struct Case {
    zvbType type;
    std::function<void(ZvbDatavar*)> assign;
    const char* text;
  };
  const std::string longText(100000, 'y');
  const std::vector<Case> cases = {
      {zvbTypeBoolean, [](ZvbDatavar* v) { v->assign(true); }, "true"},
      {zvbTypeInteger, [](ZvbDatavar* v) { v->assign(std::numeric_limits<std::int64_t>::min()); },
       "-9223372036854775808"},
      {zvbTypeReal, [](ZvbDatavar* v) { v->assign("0.00000000001"); }, "0.00000000001"},
      {zvbTypeString, [](ZvbDatavar* v) { v->assign("text"); }, "text"},
      {zvbTypeString, [&](ZvbDatavar* v) { v->assign(longText.c_str()); }, longText.c_str()},
      {zvbTypeDate, [](ZvbDatavar* v) { v->assign("9999-12-31"); }, "9999-12-31T00:00:00.000"},
      {zvbTypeDate, [](ZvbDatavar* v) { v->setNull(); }, ""},
  };
  for (const Case& one : cases) {
    column.storageCode = storageCodeOf(one.type);
    ZvbDatavar value;
    one.assign(&value);
    encode(value);
    ZvbDatavar read;
    std::int64_t offset = 0;
    EXPECT_EQ(Result::done, decode(&read, &offset));
    EXPECT_EQ(written, offset);
    EXPECT_STREQ(one.text, read.asString().asCstr());
    EXPECT_EQ(value.isNull(), read.isNull());
    EXPECT_TRUE(read.isNull() || read.type() == one.type);
    offset = 0;
    EXPECT_EQ(Result::done, decode(nullptr, &offset));
    EXPECT_EQ(written, offset);
    EXPECT_EQ(written, np_fio_seek64(file, 0, npFioFromHere));
  }
}

TEST_F(ValueCodec, ReadsTheOtherByteOrder) {
  ZvbDatavar value;
  std::int64_t offset = 0;
  put(storedElsewhere(3, 258U));
  EXPECT_EQ(Result::done, decode(&value, &offset, true));
  EXPECT_STREQ("258", value.asString().asCstr());
  put(storedElsewhere(2, 0x3FF8000000000000U));
  EXPECT_EQ(Result::done, decode(&value, &offset, true));
  EXPECT_STREQ("1970-01-02T12:00:00.000", value.asString().asCstr());
  put(storedElsewhere(4, 0x40000000FFFFFFFFU, 123U, 0U));
  EXPECT_EQ(Result::done, decode(&value, &offset, true));
  EXPECT_STREQ("-12.3", value.asString().asCstr());
  put(std::string("\x05\x80\x00\x00\x03hi\x00", 8));
  EXPECT_EQ(Result::done, decode(&value, &offset, true));
  EXPECT_STREQ("hi", value.asString().asCstr());
}

TEST_F(ValueCodec, RefusesBytesThatAreNoValue) {
  ZvbDatavar value;
  std::int64_t offset = 0;
  for (const std::string& bad :
       {std::string(), std::string("\x00", 1), std::string("\x06zzzzzzzz"), std::string("\x7fz"),
        std::string("\x01"), std::string("\x02zzzzzzz"), std::string("\x03zzz"),
        std::string("\x04zzzzzzzzzzzz"), std::string("\x05"), std::string("\x05\x00", 2),
        std::string("\x05\x05hey"), std::string("\x05\x80\x00", 3),
        std::string("\x05\xff\xff\xff\xffhey")}) {
    put(bad);
    EXPECT_EQ(Result::fileFailed, decode(&value, &offset)) << bytes();
  }
  put(std::string("\x05\x04hey\x00", 6));
  buffer.setLimit(3);
  EXPECT_EQ(Result::fileFailed, decode(&value, &offset));
  EXPECT_EQ(Result::done, decode(nullptr, &offset));
  buffer.setLimit(4);
  EXPECT_EQ(Result::done, decode(&value, &offset));
}

TEST_F(ValueCodec, EndsATextAtItsStoredLengthEvenWithoutATerminator) {
  put("\x05\x03xyzabc");
  ZvbDatavar value;
  std::int64_t offset = 0;
  EXPECT_EQ(Result::done, decode(&value, &offset));
  EXPECT_STREQ("xyz", value.asString().asCstr());
  put(std::string("\x05\x04x\x00y\x00", 6));
  EXPECT_EQ(Result::done, decode(&value, &offset));
  EXPECT_STREQ("x", value.asString().asCstr());
}

}  // namespace
