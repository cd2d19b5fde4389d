// The parts of the command line tool that read CSV and show texts.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "formats/CsvInput.h"
#include "formats/CsvReader.h"
#include "formats/TypeInference.h"
#include "process/Failure.h"
#include "process/Progress.h"
#include "support/TemporaryDirectory.h"
#include "tables/FieldValue.h"
#include "text/DisplayText.h"

using namespace zvwttool;
using namespace std::string_literals;

namespace {

using Row = std::vector<std::string>;
constexpr const char* null = "<null>";

/// Reads a text to its end, the header line first; *error is empty when all of it is well-formed.
std::vector<Row> readAll(const TemporaryDirectory& directory, const std::string& text,
                         std::string* error, const CsvForm& form = {},
                         CsvReader::ShortRows shortRows = CsvReader::ShortRows::refused) {
  std::vector<Row> rows;
  ZvbDatavar value;
  try {
    CsvInput input(directory.write("in.csv", text), {directory.path()});
    CsvReader reader(&input, form, shortRows);
    reader.readHeader();
    rows.push_back(reader.columnNames());
    while (reader.readRow()) {
      Row& row = rows.emplace_back();
      for (std::size_t column = 0; column < reader.columnNames().size(); ++column) {
        EXPECT_TRUE(readField(reader.text(column), zvbTypeString, &value));
        row.emplace_back(reader.isNull(column) ? null : value.asString().asCstr());
        EXPECT_FALSE(value.isNull());
      }
    }
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::damaged);
    *error = failure.what();
  }
  const std::string path = directory.file("in.csv");
  if (error->starts_with(path + ": ")) {
    error->erase(0, path.size() + 2);
  }
  return rows;
}

/// Reads CSV without a header line in the plainest way; nothing when it is malformed.
std::optional<std::vector<Row>> readPlainly(const std::string& text, const CsvForm& form) {
  const auto at = [&text](std::size_t i) { return i < text.size() ? text[i] : '\0'; };
  std::vector<Row> rows;
  for (std::size_t i = 0; i < text.size();) {
    Row row;
    for (bool rowEnds = false; !rowEnds; ++i) {
      const bool isQuoted = at(i) == '"';
      std::string field;
      if (isQuoted) {
        for (++i; at(i) != '"' || at(i + 1) == '"'; ++i) {
          if (i >= text.size()) {
            return std::nullopt;
          }
          i += at(i) == '"' ? 1 : 0;
          field += at(i);
        }
        ++i;
      } else {
        for (; at(i) == 'a'; ++i) {
          field += at(i);
        }
      }
      row.push_back(!isQuoted && field == form.null ? null : field);
      i += at(i) == '\r' && at(i + 1) == '\n' ? 1 : 0;
      rowEnds = i >= text.size() || at(i) == '\n';
      if (!rowEnds && at(i) != form.delimiter) {
        return std::nullopt;
      }
    }
    rows.push_back(row);
    if (row.size() != rows[0].size()) {
      return std::nullopt;
    }
  }
  return rows;
}

/// All texts of these bytes that have at least one of them and at most `longest`.
std::vector<std::string> textsOf(const std::string& bytes, std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; texts[i].size() < longest; ++i) {
    for (const char byte : bytes) {
      texts.push_back(texts[i] + byte);
    }
  }
  texts.erase(texts.begin());
  return texts;
}

/// What the fields of a file's only column, from line 2 on, make of it.
TypeInference observed(const std::vector<std::string>& fields) {
  TypeInference inference(1);
  std::int64_t line = 1;
  for (const std::string& field : fields) {
    inference.observe(0, field, ++line);
  }
  return inference;
}

zvbType inferred(const std::vector<std::string>& fields) { return observed(fields).typeOf(0); }

TEST(CsvReader, KeepsWhatStandsInTheFields) {
  const TemporaryDirectory directory;
  const std::vector<std::pair<std::string, std::vector<Row>>> cases = {
      {"a,b\n1,\n\"\",\" x \"\n", {{"a", "b"}, {"1", null}, {"", " x "}}},
      {"a, b\r\n c ,\"d\r\ne\"\r\n", {{"a", " b"}, {" c ", "d\r\ne"}}},
      {"\xEF\xBB\xBF\"a\"\"b\"\n\n\"\"\n\r\nx", {{"a\"b"}, {null}, {""}, {null}, {"x"}}},
      {"a\n\"last\"", {{"a"}, {"last"}}},
      {"a,b\n,", {{"a", "b"}, {null, null}}},
      {"a,b", {{"a", "b"}}},
      {",b,\"\"\n1,2,3\n", {{"c1", "b", "c3"}, {"1", "2", "3"}}},
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
      {"a,b\n1,2\n\"x\ny\",3\"\n",
       "line 4, column 2 \"b\": a quote stands inside a field that does not begin with one"},
      {"a,b\n\"1\" ,2\n", "line 2, column 1 \"a\": the closing quote is followed by more text"},
      {"a,b\n1,2\n3,\"4\n5\n6\n",
       "line 3, column 2 \"b\": the field begins with a quote that is never closed"},
      {"a,b\n1,2\n3\n",
       "line 3, column 2 \"b\": the row has 1 field, the header line has 2; "
       "--ragged takes such rows"},
      {"a,b\n1,2,3\n", "line 2, column 3: the row has 3 fields, the header line has 2"},
      {"a,b\n1,2\n\n", "line 3, column 1 \"a\": the line is empty; --ragged takes such rows"},
      {"a,b\n\"\"\n",
       "line 2, column 2 \"b\": the row has 1 field, the header line has 2; "
       "--ragged takes such rows"},
      {"a,b\n\"\"\"\",2\r\n\r\n",
       "line 3, column 1 \"a\": the line is empty; --ragged takes such rows"},
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

TEST(CsvReader, AgreesWithAPlainReaderOnAllShortTexts) {
  const TemporaryDirectory directory(memoryDirectory());
  const std::vector<CsvForm> forms = {{.hasHeader = false},
                                      {.delimiter = ' ', .null = "a", .hasHeader = false}};
  for (const CsvForm& form : forms) {
    for (const std::string& text : textsOf(std::string("a\"\n\r") + form.delimiter, 5)) {
      std::string error;
      std::vector<Row> rows = readAll(directory, text, &error, form);
      const std::optional<std::vector<Row>> expected = readPlainly(text, form);
      ASSERT_EQ(error.empty(), expected.has_value()) << testing::PrintToString(text) << error;
      if (expected.has_value()) {
        rows.erase(rows.begin());  // the columns' names
        ASSERT_EQ(rows, *expected) << testing::PrintToString(text);
      }
    }
  }
}

TEST(CsvReader, FillsShortRowsAndNumbersColumns) {
  const TemporaryDirectory directory;
  std::string error;
  const auto filled = CsvReader::ShortRows::filled;
  EXPECT_EQ(readAll(directory, "a,b,c\n1,\"\"\"\"\n\n1,2,3\nx", &error, {}, filled),
            (std::vector<Row>{{"a", "b", "c"},
                              {"1", "\"", null},
                              {null, null, null},
                              {"1", "2", "3"},
                              {"x", null, null}}));
  EXPECT_EQ(error, "");
  CsvForm form = {.null = "-", .hasHeader = false};
  EXPECT_EQ(readAll(directory, "\xEF\xBB\xBF-,\n\"-\"\n\n", &error, form, filled),
            (std::vector<Row>{{"c1", "c2"}, {null, ""}, {"-", null}, {"", null}}));
  EXPECT_EQ(error, "");
  (void)readAll(directory, "1,2\n1,2,3\n", &error, form, filled);
  EXPECT_EQ(error, "line 2, column 3: the row has 3 fields, the first row has 2");
  error.clear();
  (void)readAll(directory, "", &error, form, filled);
  EXPECT_EQ(error, "there is no row that has columns");
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

TEST(TypeInference, TellsWhichFieldSurprises) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, ""},
      {{"Oslo", "7"}, ""},
      {{"", "7"}, ""},
      {{"1", "2.5"}, ""},
      {{"007", "x"}, "line 2: \"007\""},
      {{"1", "n/a", "2.50"}, "line 3: \"n/a\""},
      {{"2024-02-29", "2024-02-30"}, "line 3: \"2024-02-30\""},
      {{"true", "1"}, "line 3: \"1\""},
      {{"1", ""}, "line 3: \"\""},
      {{"-.5"}, "line 2: \"-.5\""},
      {{"1,000.00"}, "line 2: \"1,000.00\""},
      {{"29.02.2024"}, "line 2: \"29.02.2024\""},
      {{"7bd5d4"}, ""},
      {{"-", "5"}, ""},
      {{std::string(200, '1')}, "line 2: \"" + std::string(59, '1') + "\u2026\""},
  };
  for (const auto& [fields, reason] : cases) {
    EXPECT_EQ(observed(fields).reasonFor(0), reason) << testing::PrintToString(fields);
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
  EXPECT_TRUE(readField("2024-02-29T03:04:05.1230", zvbTypeDate, &value));
  EXPECT_FALSE(readField("2024-02-29T03:04:05.1234", zvbTypeDate, &value));
}

TEST(Progress, FitsTheTerminal) {
  constexpr std::int64_t all = 2'600'000'000;
  const ProgressState bytes = {"importing", ProgressUnit::bytes, 9 * all / 10, all, 9.5};
  const ProgressState rows = {"copying", ProgressUnit::rows, 735'000, 1'000'000, 4000};
  const ProgressState endless = {"reading", ProgressUnit::bytes, 999, -1, 0.5};
  const std::vector<std::tuple<ProgressState, int, std::string>> cases = {
      {bytes, 79,
       "importing  90% [====================>  ]  2.3 GB of 2.6 GB  246 MB/s  0:01 left"},
      {bytes, 53, "importing  90%  2.3 GB of 2.6 GB  246 MB/s  0:01 left"},
      {bytes, 52, "importing  90% [============> ]  246 MB/s  0:01 left"},
      {bytes, 30, "importing  90%  0:01 left"},
      {bytes, 14, "importing  90%"},
      {rows, 200,
       "copying  73% [" + std::string(29, '=') + '>' + std::string(10, ' ') +
           "]  735k of 1.0M rows  184 rows/s  24:02 left"},
      {{"copying", ProgressUnit::rows, 1, 1'000'000, 0.02},
       66,
       "copying   0% [>         ]  1 of 1.0M rows  50 rows/s  5:33:20 left"},
      {{"copying", ProgressUnit::rows, 0, 5, 1}, 40, "copying   0%  0 of 5 rows  0 rows/s"},
      {{"copying", ProgressUnit::rows, 7, 5, 1},
       60,
       "copying 100% [===========]  7 of 5 rows  7 rows/s  0:00 left"},
      {endless, 80, "reading  999 B  2.0 kB/s"},
      {endless, 20, "reading  2.0 kB/s"},
  };
  for (const auto& [state, width, text] : cases) {
    EXPECT_STREQ(progressText(state, width).asCstr(), text.c_str());
  }
  for (int width = 15; width < 150; ++width) {
    for (const ProgressState& state : {bytes, rows, endless}) {
      EXPECT_LE(static_cast<int>(progressText(state, width).asView().size()), width);
    }
  }
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
