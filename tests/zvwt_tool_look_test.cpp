// What people look at tables with, and its parts.

#include <filesystem>
#include <limits>

#include "formats/ColumnFit.h"
#include "formats/TextGrid.h"
#include "support/ToolFixture.h"
#include "text/CharacterWidth.h"
#include "text/DisplayText.h"
#include "text/NearName.h"
#include "text/TerminalText.h"

namespace {

using namespace zvwttool;
using Lines = std::vector<std::string>;
using Kind = TextGrid::Kind;

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + '\n';
  }
  return text;
}

/// What a grid prints.
std::string printed(const TextGrid& grid, bool withStyles = false) {
  testing::internal::CaptureStdout();
  {
    OutputBuffer output;
    grid.print(&output, withStyles);
  }
  return testing::internal::GetCapturedStdout();
}

/// A grid of headings and rows, one cell after another.
TextGrid makeGrid(const std::vector<Kind>& kinds, const std::vector<std::string>& cells) {
  TextGrid grid(kinds);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i == kinds.size()) {
      grid.addRule();
    }
    grid.addCell(cells[i]);
  }
  return grid;
}

TEST(NearName, FindsWhatWasMeant) {
  const std::vector<std::string> known = {"name", "number", "born", "Gr\u00F6\u00DFe", "id"};
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"nmae", "name"},
      {"nam", "name"},
      {"NAMES", "name"},
      {"bron", "born"},
      {"nubmre", "number"},
      {"GR\u00D6SSE", "Gr\u00F6\u00DFe"},
      {"gr\u00F6\u00DE", ""},
      {"GR\u00D6\u00DF", "Gr\u00F6\u00DFe"},
      {"ix", ""},
      {"di", ""},
      {"", ""},
      {"mane", ""},
      {"nxmxe", "name"},
      {"numerical", ""},
      {"\xFF\xFF", ""},
  };
  for (const auto& [given, meant] : cases) {
    EXPECT_EQ(nearest(given, known), meant) << given;
  }
  EXPECT_EQ(nearest("cat", {"cut", "cot"}), "cut");
  EXPECT_EQ(nearest("cot", {"cut", "cot"}), "cot");
  EXPECT_EQ(nearest("a", {"a"}), "a");
}

TEST(DisplayText, CountsTheColumnsOfATerminal) {
  const std::vector<std::pair<std::string, std::size_t>> cases = {
      {"", 0},
      {"abc", 3},
      {"\u00C4\u00AD", 2},                    // the soft hyphen is seen
      {"e\u0301", 1},                         // with an accent on it
      {"\u65E5\u672C", 4},                    // Chinese characters
      {"\uFF21\uFF71", 3},                    // a wide letter and a narrow Japanese one
      {"\uD55C\u1112\u1161\u11AB", 4},        // a Korean syllable, and one of its letters
      {"\U0001F600\U0001F1E9\U0001F1EA", 4},  // a face and the two letters of a flag
      {"a\u200Bb\u200D\uFEFF", 2},            // not seen
      {"\U0002A6D6\U0003FFFD\U000E0100", 4},
      {"\u0627\u0644\u064E", 2},
  };
  for (const auto& [text, width] : cases) {
    EXPECT_EQ(displayWidth(text), width) << text;
    EXPECT_EQ(displayText(text, std::numeric_limits<std::size_t>::max()), text);
    EXPECT_EQ(displayText(text, std::max<std::size_t>(width, 1)), text);
  }
  for (const auto& [code, width] : std::vector<std::pair<char32_t, std::size_t>>{{0x2FF, 1},
                                                                                 {0x300, 0},
                                                                                 {0x36F, 0},
                                                                                 {0x370, 1},
                                                                                 {0x10FF, 1},
                                                                                 {0x1100, 2},
                                                                                 {0x115F, 2},
                                                                                 {0x1160, 0},
                                                                                 {0x303E, 2},
                                                                                 {0x303F, 1},
                                                                                 {0x10FFFF, 1},
                                                                                 {0xE01EF, 0}}) {
    EXPECT_EQ(characterWidth(code), width) << static_cast<std::uint32_t>(code);
  }
}

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

TEST(DisplayText, CutsBetweenCharacters) {
  const std::vector<std::tuple<std::string, std::size_t, std::string>> cases = {
      {"abcd", 3, "ab\u2026"},
      {"\u65E5\u672C\u8A9E", 5, "\u65E5\u672C\u2026"},
      {"\u65E5\u672C\u8A9E", 4, "\u65E5\u2026"},  // one column stays free
      {"\u65E5\u672C", 1, "\u2026"},
      {"ae\u0301bc", 3, "ae\u0301\u2026"},
      {"abe\u0301", 3, "abe\u0301"},
      {"a\x1B[0m", 4, "a\u2026"},
      {"a\x1B[0m", 5, "a\u2026"},
      {"a\x1B[0m", 6, "a\\x1b\u2026"},
      {"a\xFF", 5, "a\\xff"},
      {"\u202Eabc\u2028\u0085\t", 40, "\\xe2\\x80\\xaeabc\\xe2\\x80\\xa8\\xc2\\x85\\t"},
      {"\u200E\u200F\u061C\u061B", 40, "\\xe2\\x80\\x8e\\xe2\\x80\\x8f\\xd8\\x9c\u061B"},
      {"e" + repeated("\u0301", 8) + "b", 2, "e" + repeated("\u0301", 8) + "b"},
      {"e" + repeated("\u0301", 9) + "b", 10, "e" + repeated("\u0301", 8) + "\\xcc\\x81b"},
      {"e" + repeated("\u0301", 200'000), 20,
       "e" + repeated("\u0301", 8) + "\\xcc\\x81\\xcc\\x81\u2026"},
  };
  for (const auto& [text, limit, shown] : cases) {
    EXPECT_EQ(displayText(text, limit), shown);
  }
}

TEST(TerminalText, EscapesDataHoweverTheyArePieced) {
  const std::string data =
      "a\tb\r\n\x1B[2J\r\u20AC\u0085\u202E\r\r\n\xE2\x82x\xFF\n\U0001F600\xF0\x9F";
  const std::string expected =
      "a\tb\r\n\\x1b["
      "2J\\r\u20AC\\xc2\\x85\\xe2\\x80\\xae\\r\r\n\\xe2\\x82x\\xff\n\U0001F600\\xf0\\x9f";
  for (std::size_t size = 1; size <= data.size(); ++size) {
    TerminalText text;
    std::string shown;
    for (std::size_t i = 0; i < data.size(); i += size) {
      shown += text.add(std::string_view(data).substr(i, size));
    }
    shown += text.end();
    EXPECT_EQ(shown, expected) << size;
    EXPECT_TRUE(text.hasEscapes());
  }
  TerminalText harmless;
  EXPECT_EQ(harmless.add("a\tb\r\n\u20AC"), "a\tb\r\n\u20AC");
  EXPECT_EQ(harmless.end(), "");
  EXPECT_FALSE(harmless.hasEscapes());
}

TEST(OutputBuffer, WritesAllThatItHasForATerminal) {
  const std::string most(300'000, 'x');
  testing::internal::CaptureStdout();
  OutputBuffer output;
  output.beForTerminal();
  output.append(most + "\xE2");
  output.append("\x82\xAC\x1B" + most + "\xE2");
  output.finish();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), most + "\u20AC\\x1b" + most + "\\xe2");
  EXPECT_TRUE(output.hasEscapes());
}

TEST(ColumnFit, LowersTheWidestColumnsAndThenLeavesOutThoseInTheMiddle) {
  using Demands = std::vector<ColumnDemand>;
  using Widths = std::vector<std::size_t>;
  struct Case {
    Demands demands;
    std::size_t lineWidth;
    Widths widths;
    std::size_t firstLeftOut;
    std::size_t leftOut;
  };
  const Demands three = {{5, 5}, {30, 8}, {20, 8}};
  const Demands seven(7, {10, 8});
  const std::vector<Case> cases = {
      {{}, 10, {}, 0, 0},
      {three, 100, {5, 30, 20}, 0, 0},
      {three, 59, {5, 30, 20}, 0, 0},
      {three, 58, {5, 29, 20}, 0, 0},
      {three, 48, {5, 20, 19}, 0, 0},
      {three, 25, {5, 8, 8}, 0, 0},
      {three, 24, {5, 0, 14}, 1, 1},  // 5 + 2 + the mark + 2 + 14
      {three, 18, {5, 0, 8}, 1, 1},
      {three, 17, {5, 0, 0}, 1, 2},
      {three, 7, {4, 0, 0}, 1, 2},
      {three, 4, {1, 0, 0}, 1, 2},
      {three, 3, {1, 0, 0}, 1, 2},  // does not fit, but is there
      {{{30, 8}, {1, 1}}, 10, {7, 1}, 0, 0},
      {seven, 68, Widths(7, 8), 0, 0},
      {seven, 67, {9, 9, 9, 0, 9, 9, 9}, 3, 1},
      {seven, 50, {10, 10, 0, 0, 0, 10, 10}, 2, 3},
      {{{40, 8}}, 20, {20}, 0, 0},
      {{{40, 40}}, 20, {20}, 0, 0},
  };
  for (const Case& fitted : cases) {
    const ColumnFit fit = fitColumns(fitted.demands, fitted.lineWidth);
    EXPECT_EQ(fit.widths, fitted.widths) << fitted.lineWidth;
    EXPECT_EQ(fit.firstLeftOut, fitted.firstLeftOut) << fitted.lineWidth;
    EXPECT_EQ(fit.leftOut, fitted.leftOut) << fitted.lineWidth;
  }
}

TEST(TextGrid, FitsLines) {
  const std::vector<Kind> kinds = {Kind::number, Kind::text, Kind::word, Kind::text};
  TextGrid grid = makeGrid(
      kinds, {"number of the row", "name", "d", "\u65E5\u672C\u8A9E", "7", "A name of some length",
              "2024-02-29", "x", "-12345678901", "e\u0301", "2024-03-01", "\u65E5\u672C\u8A9E"});
  const std::string whole = joined({
      "number of the row  name                   d           \u65E5\u672C\u8A9E",
      "-----------------  ---------------------  ----------  ------",
      "                7  A name of some length  2024-02-29  x",
      "     -12345678901  e\u0301                      2024-03-01  \u65E5\u672C\u8A9E",
  });
  EXPECT_EQ(printed(grid), whole);
  EXPECT_EQ(grid.fit(60), 0U);
  EXPECT_EQ(printed(grid), whole);
  EXPECT_EQ(grid.fit(48), 0U);
  EXPECT_EQ(printed(grid), joined({
                               "number of th\u2026  name           d           \u65E5\u672C\u8A9E",
                               "-------------  -------------  ----------  ------",
                               "            7  A name of so\u2026  2024-02-29  x",
                               " -12345678901  e\u0301              2024-03-01  \u65E5\u672C\u8A9E",
                           }));
  EXPECT_EQ(grid.fit(30), 2U);
  EXPECT_EQ(printed(grid), joined({
                               "number of the row  \u2026  \u65E5\u672C\u8A9E",
                               "-----------------  -  ------",
                               "                7  \u2026  x",
                               "     -12345678901  \u2026  \u65E5\u672C\u8A9E",
                           }));
  EXPECT_EQ(grid.fit(10), 3U);
  EXPECT_EQ(printed(grid), joined({"number\u2026  \u2026", "-------  -", "      7  \u2026",
                                   "-12345\u2026  \u2026"}));
}

TEST(TextGrid, CutsNoEscapes) {
  TextGrid grid({Kind::text, Kind::text}, 20);
  grid.addCell("1234567\x1B[2J\u202E\u202E");
  grid.addCell("e" + repeated("\u0301", 9));
  EXPECT_EQ(printed(grid), "1234567\\x1b[2J\u2026  e" + repeated("\u0301", 8) + "\\xcc\\x81\n");
  EXPECT_EQ(grid.fit(23), 0U);
  EXPECT_EQ(printed(grid), "1234567\\x1b\u2026  e" + repeated("\u0301", 8) + "\\xcc\\x81\n");
  EXPECT_EQ(grid.fit(21), 0U);
  EXPECT_EQ(printed(grid), "1234567\u2026    e" + repeated("\u0301", 8) + "\\xcc\\x81\n");
}

TEST(TextGrid, HasStylesForTerminals) {
  TextGrid grid({Kind::number, Kind::text});
  grid.addCell("n");
  grid.addCell("");
  grid.addRule();
  grid.addCell("x", TextGrid::Style::dim);
  grid.addCell("y");
  EXPECT_EQ(printed(grid, true), "\x1B[1mn\x1B[0m\n-  -\n\x1B[2mx\x1B[0m  y\n");
  EXPECT_EQ(printed(grid), "n\n-  -\nx  y\n");
  EXPECT_EQ(printed(TextGrid({})), "");
}

TEST_F(Tool, ShowsOddTables) {
  const std::string odd = import(
      "\u65E5\u672C,t\n\u8A9E,\u2205\n,\"\"\"\u2205\"\"\"\n,\"\"\"\u2205\"\n,e\u0301x\n\x1B[2J,"
      "\"\"\n\u202E,\n");
  EXPECT_EQ(run("show", {odd}).output, joined({
                                           "\u65E5\u672C          t",
                                           "------------  -----",
                                           "\u8A9E            \"\u2205\"",
                                           "\u2205             \"\"\u2205\"\"",
                                           "\u2205             \"\u2205",
                                           "\u2205             e\u0301x",
                                           "\\x1b[2J",
                                           "\\xe2\\x80\\xae  \u2205",
                                       }));
  EXPECT_EQ(run("show", {import("n,text\n")}).output, "n  text\n-  ----\n");
  const std::string one = import("n\n1\n");
  EXPECT_EQ(run("show", {one}).output, "n\n-\n1\n");
  EXPECT_EQ(run("show", {"zvwt:" + one}).output, "");
  EXPECT_EQ(run("show", {"zvwt:" + one}).errors, "zvwt: there are no columns\n");
}

TEST_F(Tool, ShowsAllColumnsWhereNoTerminalEndsLines) {
  std::string names;
  std::string values;
  for (int column = 0; column < 300; ++column) {
    const std::string comma = column > 0 ? "," : "";
    names += comma + "c" + std::to_string(1000 + column);
    values += comma + std::to_string(column);
  }
  const Outcome outcome = run("show", {import(names + '\n' + values + '\n')});
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 3);
  EXPECT_TRUE(outcome.output.starts_with("c1000  c1001  ")) << outcome.output;
  EXPECT_TRUE(outcome.output.ends_with("   298    299\n")) << outcome.output;

  const std::string longText(5000, 'x');
  const std::string table = import("t\n" + longText + '\n');
  EXPECT_TRUE(run("show", {table}).output.ends_with(std::string(59, 'x') + "\u2026\n"));
  EXPECT_TRUE(run("show", {"--wide", table}).output.ends_with('\n' + longText + '\n'));
}

TEST_F(Tool, ShowsAndCountsTheFirstRows) {
  std::string text = "n\n";
  for (int row = 1; row <= 12; ++row) {
    text += std::to_string(row) + '\n';
  }
  const std::string table = import(text);
  EXPECT_EQ(run("head", {table}).output, " n\n--\n 1\n 2\n 3\n 4\n 5\n 6\n 7\n 8\n 9\n10\n");
  EXPECT_EQ(run("head", {table}).errors, "zvwt: 2 more rows\n");
  EXPECT_EQ(run("head", {"-n", "1", "--backwards", table}).output, " n\n--\n12\n");
  EXPECT_EQ(run("head", {"-n", "x", table}).exitCode, 2);

  // What is only counted is not read.
  for (const std::string& name : tables_.names()) {
    if (name.starts_with("zvwte_")) {
      std::filesystem::resize_file(tables_.file(name), 0);
    }
  }
  const std::vector<std::pair<std::vector<std::string>, std::string>> counts = {
      {{table}, "12\n"},
      {{"--rows", "2,3", table}, "3\n"},
      {{"--rows", "2,-1", table}, "10\n"},
      {{"--rows", "20,5", table}, "0\n"},
      {{"zvwt:" + table + "?rows=10,5&col=n"}, "2\n"},
  };
  for (const auto& [arguments, count] : counts) {
    const Outcome outcome = run("count", arguments);
    EXPECT_EQ(outcome.output, count) << outcome.errors;
    EXPECT_EQ(outcome.exitCode, 0);
  }
  EXPECT_EQ(run("count", {"zvwt_missing"}).exitCode, 3);
  EXPECT_EQ(run("count", {"zvwt:" + table + "?rows=1,2", "--rows", "1,1"}).exitCode, 2);
}

/// What a document or an output has behind the first occurrence of a text.
std::string from(const std::string& start, const std::string& output) {
  const std::size_t at = output.find(start);
  return at == std::string::npos ? output : output.substr(at);
}

TEST_F(Tool, TellsWhatTheValuesOfColumnsAreLike) {
  const std::string table = import(
      "i,r,b,d,t,empty,n\n"
      "10,10.5,true,2024-02-29,Zoe,\"\",\n"
      "9,9.75,,2024-02-29T00:00:00.001,\u00C4mne,\"\",\n"
      "-10,12345678901234567890.00000001,false,1999-12-31,\"a\nb\",\"\",\n"
      ",12345678901234567890.00000002,true,,\U0001F600,,\n",
      {"--width", "t=9", "--max-element-size", "40"});
  EXPECT_EQ(
      from("#", run("info", {"--columns", table}).output),
      joined({
          "#  column  type    width  longest  nulls  minimum     maximum",
          "-  ------  ------  -----  -------  -----  ----------  -----------------------------",
          "1  i       int                         1  -10         10",
          "2  r       real                        0  9.75        12345678901234567890.00000002",
          "3  b       bool                        1  false       true",
          "4  d       date                        1  1999-12-31  2024-02-29T00:00:00.001",
          "5  t       string      9        5      0  Zoe         \U0001F600",
          "6  empty   string               0      1",
          "7  n       string                      4  \u2205           \u2205",
      }));
  const Outcome json = run("info", {"--columns", "--json", "zvwt:" + table + "?rows=0,1&col=i"});
  EXPECT_EQ(json.exitCode, 0) << json.errors;
  EXPECT_EQ(from("\"columns\"", json.output),
            "\"columns\": ["
            "{\"name\": \"i\", \"type\": \"int\", \"width\": null, \"longest\": null, "
            "\"nulls\": 1, \"minimum\": -10, \"maximum\": 10}, "
            "{\"name\": \"r\", \"type\": \"real\", \"width\": null, \"longest\": null, "
            "\"nulls\": 0, \"minimum\": 9.75, "
            "\"maximum\": 12345678901234567890.00000002}, "
            "{\"name\": \"b\", \"type\": \"bool\", \"width\": null, \"longest\": null, "
            "\"nulls\": 1, \"minimum\": false, \"maximum\": true}, "
            "{\"name\": \"d\", \"type\": \"date\", \"width\": null, \"longest\": null, "
            "\"nulls\": 1, \"minimum\": \"1999-12-31\", "
            "\"maximum\": \"2024-02-29T00:00:00.001\"}, "
            "{\"name\": \"t\", \"type\": \"string\", \"width\": 9, \"longest\": 5, "
            "\"nulls\": 0, \"minimum\": \"Zoe\", \"maximum\": \"\U0001F600\"}, "
            "{\"name\": \"empty\", \"type\": \"string\", \"width\": null, \"longest\": 0, "
            "\"nulls\": 1, \"minimum\": \"\", \"maximum\": \"\"}, "
            "{\"name\": \"n\", \"type\": \"string\", \"width\": null, \"longest\": null, "
            "\"nulls\": 4, \"minimum\": null, \"maximum\": null}]\n}\n");
}

TEST_F(Tool, TellsWhatATableConsistsOfInJson) {
  const std::string table = import("n,\"t\n\"\n1,abc\n2,\n3,d\n", {"--max-element-size", "10"});
  EXPECT_EQ(run("info", {"--json", table}).output,
            "{\n  \"name\": \"" + table + "\",\n  \"path\": \"" + inJson(tables_.file(table)) +
                "\",\n  \"rows\": 3,\n  \"elements\": 2,\n  \"element_limit\": 10,\n"
                "  \"catalogue_bytes\": " +
                std::to_string(std::filesystem::file_size(tables_.file(table))) +
                ",\n  \"data_bytes\": 38,\n  \"index_bytes\": 24,\n  \"columns\": ["
                "{\"name\": \"n\", \"type\": \"int\", \"width\": null, \"longest\": null}, "
                "{\"name\": \"t\\u000a\", \"type\": \"string\", \"width\": null, "
                "\"longest\": 3}]\n}\n");
  const std::string empty = import("t\n");
  EXPECT_EQ(from("#", run("info", {"--columns", empty}).output),
            joined({"#  column  type    width  longest  nulls  minimum  maximum",
                    "-  ------  ------  -----  -------  -----  -------  -------",
                    "1  t       string                      0  \u2205        \u2205"}));
  EXPECT_EQ(run("info", {"--stats", "--json", table}).exitCode, 2);
  (void)tables_.write(table, "damaged");
  EXPECT_EQ(run("info", {"--columns", "--json", table}).exitCode, 4);
}

TEST_F(Tool, ExplainsUris) {
  const std::string table = import("A,x=y,name\n1,0.5,Ada\n2,1.5,\n3,2.5,\n");
  const std::string start = "zvwt:" + table;
  const std::string uri =
      start + "?rows=1,5&col=x%3Dy&col=n,a&col=k,42,2&col=z,,3&col=nmae&col=u,not%20here";
  const std::string hints =
      "zvwt: the table has no column \"nmae\"; did you mean \"name\"?\n"
      "zvwt: the table has no column \"not here\"\n";
  const Outcome explained = run("uri", {uri});
  EXPECT_EQ(explained.exitCode, 0);
  EXPECT_EQ(explained.errors, hints);
  EXPECT_EQ(explained.output, joined({
                                  "table  " + table,
                                  "rows   2 of 3, from row 1 on",
                                  "",
                                  "#  column  type    from      source",
                                  "-  ------  ------  --------  --------",
                                  "1  x=y     real    table     x=y",
                                  "2  n       int     table     a",
                                  "3  k       int     constant  42",
                                  "4  z       real    constant  \u2205",
                                  "5  nmae    string  missing   nmae",
                                  "6  u       string  missing   not here",
                              }));
  const Outcome json = run("uri", {"--json", uri});
  EXPECT_EQ(json.errors, hints);
  EXPECT_EQ(
      json.output,
      "{\n  \"uri\": \"" + uri + "\",\n  \"table\": \"" + table +
          "\",\n  \"first_row\": 1,\n  \"rows\": 2,\n  \"rows_of_table\": 3,\n"
          "  \"columns\": ["
          "{\"name\": \"x=y\", \"type\": \"real\", \"from\": \"table\", \"column\": \"x=y\"}, "
          "{\"name\": \"n\", \"type\": \"int\", \"from\": \"table\", \"column\": \"a\"}, "
          "{\"name\": \"k\", \"type\": \"int\", \"from\": \"constant\", \"value\": 42}, "
          "{\"name\": \"z\", \"type\": \"real\", \"from\": \"constant\", \"value\": null}, "
          "{\"name\": \"nmae\", \"type\": \"string\", \"from\": \"missing\", "
          "\"column\": \"nmae\", \"value\": null}, "
          "{\"name\": \"u\", \"type\": \"string\", \"from\": \"missing\", "
          "\"column\": \"not here\", \"value\": \"not here\"}]\n}\n");
  EXPECT_EQ(exported(uri), "x=y,n,k,z,nmae,u\n1.5,2,42,,,not here\n2.5,3,42,,,not here\n");

  // A URI is made where there is something to make it of.
  EXPECT_EQ(run("uri", {table}).output, start + "?col=A&col=x%3Dy&col=name\n");
  EXPECT_EQ(run("uri", {"--rows", "0,1", start + "?col=A"}).output, start + "?rows=0,1&col=A\n");
  EXPECT_EQ(run("uri", {start + "?col=A"}).output, joined({
                                                       "table  " + table,
                                                       "rows   all 3",
                                                       "",
                                                       "#  column  type  from   source",
                                                       "-  ------  ----  -----  ------",
                                                       "1  A       int   table  A",
                                                   }));
  EXPECT_EQ(run("uri", {"zvwt:zvwt_missing"}).exitCode, 3);
  EXPECT_EQ(run("uri", {"zvwt:" + table + "?rows=x"}).exitCode, 2);
}

TEST_F(Tool, SuggestsTheColumnThatWasMeant) {
  const std::string table = import("name,born\nAda,1815\n");
  const std::string hint = "\"nmae\"; did you mean \"name\"?\n";
  for (const char* list : {"nmae", "born,x=nmae"}) {
    const Outcome outcome = run("show", {"--select", list, table});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "zvwt: the table has no column " + hint);
  }
  EXPECT_EQ(run("sort", {"--by", "born,nmae", table}).errors,
            "zvwt: the table has no column " + hint);
  EXPECT_EQ(run("sort", {"--by", "height", table}).errors,
            "zvwt: the table has no column \"height\"\n");
  const std::string file = files_.write("people.csv", "name\nAda\n");
  EXPECT_EQ(run("import", {"--type", "nmae=string", file}).errors,
            "zvwt: --type: there is no column " + hint);
}

}  // namespace
