// The parts of the command line tool that read CSV and show texts.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CsvInput.h"
#include "CsvReader.h"
#include "DisplayText.h"
#include "FieldValue.h"
#include "TypeInference.h"
#include "support/TemporaryDirectory.h"

using namespace zvwttool;
using namespace std::string_literals;

namespace {

using Row = std::vector<std::string>;
constexpr const char* null = "<null>";

/// Reads a text to its end, the header line first; *error is empty when all of it is well-formed.
std::vector<Row> readAll(const TemporaryDirectory& directory, const std::string& text,
                         std::string* error) {
  CsvInput input;
  std::vector<Row> rows;
  if (!input.open(directory.write("in.csv", text), {directory.path()}, error)) {
    return rows;
  }
  CsvReader reader(&input);
  ReadResult result = reader.readHeader() ? ReadResult::row : ReadResult::failure;
  const std::size_t columnCount = reader.columnNames().size();
  rows.push_back(reader.columnNames());
  while (result == ReadResult::row && (result = reader.readRow()) == ReadResult::row) {
    Row& row = rows.emplace_back();
    for (std::size_t column = 0; column < columnCount; ++column) {
      row.push_back(reader.isNull(column) ? null : std::string(reader.text(column)));
    }
  }
  const std::string path = directory.file("in.csv");
  *error = reader.errorText();
  EXPECT_EQ(result == ReadResult::failure, !error->empty());
  if (error->starts_with(path + ": ")) {
    error->erase(0, path.size() + 2);
  }
  return rows;
}

zvbType inferred(const std::vector<std::string>& fields) {
  TypeInference inference(1);
  for (const std::string& field : fields) {
    inference.observe(0, field);
  }
  return inference.typeOf(0);
}

TEST(CsvReader, KeepsWhatStandsInTheFields) {
  const TemporaryDirectory directory;
  const std::vector<std::pair<std::string, std::vector<Row>>> cases = {
      {"a,b\n1,\n\"\",\" x \"\n", {{"a", "b"}, {"1", null}, {"", " x "}}},
      {"a, b\r\n c ,\"d\r\ne\"\r\n", {{"a", " b"}, {" c ", "d\r\ne"}}},
      {"\xEF\xBB\xBF\"a\"\"b\"\n\n\"\"\n\r\nx", {{"a\"b"}, {null}, {""}, {null}, {"x"}}},
      {"a\n\"last\"", {{"a"}, {"last"}}},
      {"a,b\n,", {{"a", "b"}, {null, null}}},
      {"a,b", {{"a", "b"}}},
      {"\"\xEF\xBB\xBF\",\xFF\n", {{"\xEF\xBB\xBF", "\xFF"}}},
  };
  for (const auto& [text, rows] : cases) {
    std::string error;
    EXPECT_EQ(readAll(directory, text, &error), rows) << text;
    EXPECT_EQ(error, "") << text;
  }
}

TEST(CsvReader, NamesTheLineAndColumnOfWhatIsMalformed) {
  const TemporaryDirectory directory;
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "there is no header line"},
      {"\n1\n", "line 1, column 1: the column has no name"},
      {"a,\"\"\n", "line 1, column 2: the column has no name"},
      {"a,b\n1,2\n\"x\ny\",3\"\n",
       "line 4, column 2 \"b\": a quote stands inside a field that does not begin with one"},
      {"a,b\n\"1\" ,2\n", "line 2, column 1 \"a\": the closing quote is followed by more text"},
      {"a,b\n1,2\n3,\"4\n5\n6\n",
       "line 3, column 2 \"b\": the field begins with a quote that is never closed"},
      {"a,b\n1,2\n3\n", "line 3, column 2 \"b\": the row has 1 field, the header line has 2"},
      {"a,b\n1,2,3\n", "line 2, column 3: the row has 3 fields, the header line has 2"},
      {"a,b\n1,2\n\n", "line 3, column 2 \"b\": the row has 1 field, the header line has 2"},
      {"a,b\n1,x\0y\n"s, "line 2, column 2 \"b\": the field contains a zero byte"},
      {"a,b\n1,2\r3,4\n", "line 2, column 2 \"b\": a carriage return stands without its line feed"},
      {"a,b\n1,2\r\r\n", "line 2, column 2 \"b\": a carriage return stands without its line feed"},
      {"a,b\n1,2\r", "line 2, column 2 \"b\": a carriage return stands without its line feed"},
  };
  for (const auto& [text, reason] : cases) {
    std::string error;
    (void)readAll(directory, text, &error);
    EXPECT_EQ(error, reason) << text;
  }
}

// The texts are long enough for every kind of byte to fall on a border of the reader's buffer.
TEST(CsvReader, DoesNotMindWhereItsBufferEnds) {
  const TemporaryDirectory directory;
  for (std::size_t shift = 0; shift < 12; ++shift) {
    std::string text = std::string(shift + 1, 'n') + ",b\r\n";
    std::vector<Row> rows = {{std::string(shift + 1, 'n'), "b"}};
    while (text.size() < 600000) {
      text += "\"a\r\nb\"\"\",\r\n";
      rows.push_back({"a\r\nb\"", null});
    }
    std::string error;
    EXPECT_TRUE(readAll(directory, text, &error) == rows) << shift;
    EXPECT_EQ(error, "");
  }
}

TEST(TypeInference, TakesTheNarrowestTypeThatChangesNoField) {
  const std::vector<std::pair<std::vector<std::string>, zvbType>> cases = {
      {{}, zvbTypeString},
      {{""}, zvbTypeString},
      {{"true", "false"}, zvbTypeBoolean},
      {{"true", "True"}, zvbTypeString},
      {{"true", "1"}, zvbTypeString},
      {{"0", "-1", "9223372036854775807", "-9223372036854775808"}, zvbTypeInteger},
      {{"9223372036854775808"}, zvbTypeReal},
      {{"1", "2.5", "-0.001"}, zvbTypeReal},
      {{"2.5", "1"}, zvbTypeReal},
      {{"1", ""}, zvbTypeString},
      {{"1", "2024-02-29"}, zvbTypeString},
      {{"2024-02-29", "2024-02-29T13:45:10.250"}, zvbTypeDate},
      {{"2024-02-30"}, zvbTypeString},
      {{"2024-02-29 13:45:10.250"}, zvbTypeString},
      {{"2024-02-29T00:00:00.000"}, zvbTypeString},
      {{"2024-02-29T13:45:10"}, zvbTypeString},
  };
  for (const auto& [fields, type] : cases) {
    EXPECT_EQ(inferred(fields), type) << testing::PrintToString(fields);
  }
  for (const char* text : {"007", "+5", "-0", "-", ".5", "5.", "1.50", "1e5", " 1", "1,5", "0x10",
                           "12345678901234567890123456789012345678901", "inf", "nan"}) {
    EXPECT_EQ(inferred({text}), zvbTypeString) << text;
  }
}

TEST(FieldValue, GivenTypesLoseNothingSilently) {
  ZvbDatavar value;
  bool failed = false;
  for (const auto& [text, number] : std::vector<std::pair<const char*, std::int64_t>>{
           {"007", 7}, {"+5", 5}, {"1e3", 1000}, {"-2.0", -2}}) {
    EXPECT_TRUE(readField(text, zvbTypeInteger, &value)) << text;
    EXPECT_EQ(value.asInt64(&failed), number) << text;
  }
  for (const char* text : {"1.5", "9223372036854775808", "", "x"}) {
    EXPECT_FALSE(readField(text, zvbTypeInteger, &value)) << text;
  }
  EXPECT_TRUE(readField("Yes", zvbTypeBoolean, &value));
  EXPECT_FALSE(readField("2", zvbTypeBoolean, &value));
  EXPECT_FALSE(readField("", zvbTypeReal, &value));
  EXPECT_FALSE(readField("2023-02-29", zvbTypeDate, &value));
}

TEST(DisplayText, FitsOneLineOfATerminal) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a\tb\r\n\x1B", "a\\tb\\r\\n\\x1b"},
      {"\xC2\x85\xC3\xA9", "\\xc2\\x85\u00E9"},
      {"\xFF\xC3\xE2\x82", "\\xff\\xc3\\xe2\\x82"},
      {"\xC0\x80\xED\xA0\x80", "\\xc0\\x80\\xed\\xa0\\x80"},
      {std::string(20, 'x'), std::string(20, 'x')},
      {std::string(21, 'x'), std::string(19, 'x') + "\u2026"},
      {std::string(18, 'x') + "\n\n", std::string(18, 'x') + "\u2026"},
  };
  for (const auto& [text, shown] : cases) {
    EXPECT_EQ(displayText(text, 20), shown);
    EXPECT_LE(displayWidth(shown), 20U);
  }
}

}  // namespace
