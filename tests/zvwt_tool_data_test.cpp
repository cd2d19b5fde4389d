// Data in and out of tables by the command line tool, in every form that it knows.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "formats/JsonLinesWriter.h"
#include "support/ToolFixture.h"

namespace {

using Words = std::vector<std::string>;

/// Columns of every type, and texts that a reader could take for something else.
constexpr std::string_view hardLines =
    "i,r,d,b,t,NULL\n"
    "0,0.5,2024-02-29T13:45:10.250,true,NULL,\"\"\n"
    "-1,-1.5,2024-02-29,false,\"\",\n"
    ",,,,,-\n"
    "5,12345678901234567890123456789012345678,,true,\"a\r\nb\",a;b\tc|d e\n"
    "42,1e60,0001-01-01,,\"\"\"\",\"\"\"x\"\n"
    "7,0.1,,,\xEF\xBB\xBF,\"a\rb\"\n"
    "0,2,9999-12-31T23:59:59.999,false,0,true\n";

class ToolData : public Tool {
 protected:
  /// Whether a table, whose common export is `lines`, is the same again when it was exported and
  /// imported in another form, with its header line and without.
  void expectLossless(const std::string& table, std::string_view lines, const Words& form) {
    EXPECT_EQ(exported(import(exported(table, form), form)), lines) << testing::PrintToString(form);
    Words rowsOnly = form;
    rowsOnly.push_back("--no-header");
    const std::string again = exported(import(exported(table, rowsOnly), rowsOnly));
    EXPECT_EQ(again.substr(again.find('\n')), lines.substr(lines.find('\n')))
        << testing::PrintToString(form);
  }

  /// Bytes of all files there.
  [[nodiscard]] std::uintmax_t sizeOfTables() const {
    std::uintmax_t size = 0;
    for (const std::string& name : tables_.names()) {
      size += std::filesystem::file_size(tables_.file(name));
    }
    return size;
  }

  /// The code that a verb ends with, and that it says why.
  int refusal(const std::string& verb, const Words& arguments) {
    const Outcome outcome = run(verb, arguments);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors, "");
    return outcome.exitCode;
  }
};

TEST_F(ToolData, LosesNothingInAnyFormOfCsv) {
  const std::string table = import(std::string(hardLines));
  EXPECT_EQ(exported(table), hardLines);
  for (const char* delimiter : {";", "tab", "\\t", "|", " ", "-", "0", "e", "T", ":", "\x1F"}) {
    expectLossless(table, hardLines, {"--delimiter", delimiter, "--null", "2"});
  }
  expectLossless(table, hardLines, {"--delimiter", "-"});
  for (const char* nullText : {"NULL", "0", "true", "-", "a", "\\N", "2024-02-29"}) {
    expectLossless(table, hardLines, {"--null", nullText});
  }
  EXPECT_EQ(exported(import(exported(table, {"--crlf"}))), hardLines);
  const std::string lines = "t\n\xEF\xBB\xBF\n\n\"\"\nx\n\n";
  const std::string single = import(lines);
  expectLossless(single, lines, {});
  expectLossless(single, lines, {"--null", "x"});
}

TEST_F(ToolData, WritesCsvInTheFormThatIsAskedFor) {
  const std::string table = import("n,t,\"a;b\"\n1,,\"\"\n,NULL,x;y\n", {"--type", "t=string"});
  EXPECT_EQ(exported(table, {"--delimiter", ";", "--null", "NULL"}),
            "n;t;\"a;b\"\n1;NULL;\"\"\nNULL;\"NULL\";\"x;y\"\n");
  EXPECT_EQ(exported(table, {"--delimiter", "1", "--no-header", "--crlf"}),
            "\"1\"11\"\"\r\n1NULL1x;y\r\n");
  EXPECT_EQ(exported(table, {"--select", "n", "--null", "1"}), "n\n\"1\"\n1\n");
}

TEST_F(ToolData, ReadsCsvOfOtherForms) {
  const std::string text =
      "\xEF\xBB\xBF"
      "a;b;c\r\n1;\"x;\"\"\r\ny\";-\r\n2;;\"-\"\r\n-;,;3";
  EXPECT_EQ(exported(import(text, {"--delimiter", ";", "--null", "-"})),
            "a,b,c\n1,\"x;\"\"\r\ny\",\n2,\"\",-\n,\",\",3\n");
  EXPECT_EQ(exported(import("1\tx\n2\t\n", {"--no-header", "--delimiter", "tab"})),
            "c1,c2\n1,x\n2,\n");
  EXPECT_EQ(
      exported(import("1,x\n2,y\n", {"--no-header", "--type", "C2=string", "--sort", "c1:desc"})),
      "c1,c2\n2,y\n1,x\n");
}

TEST_F(ToolData, SaysWhyATypeIsNotTheExpectedOne) {
  const std::string path = files_.write("in.csv", "n,zip,t,g\n1,123,x,1\n2,\"\n007\",y,x\n");
  EXPECT_EQ(run("import", {"--type", "g=string", path}).errors,
            "zvwt: column \"n\": int\nzvwt: column \"zip\": string (line 3: \"\\n007\")\n"
            "zvwt: column \"t\": string\nzvwt: column \"g\": string (given)\nzvwt: 2 rows\n");
}

TEST_F(ToolData, SaysWhatItMakesOfAHeaderLine) {
  const std::string nameless = files_.write("frame.csv", ",t,\n0,a,b\n1,bc,d\n");
  const Outcome named = run("import", {"--width", "t=1", nameless});
  EXPECT_EQ(named.errors,
            "zvwt: column 1 has no name and is called \"c1\"\n"
            "zvwt: column 3 has no name and is called \"c3\"\n"
            "zvwt: column \"c1\": int\nzvwt: column \"t\": string (given)\n"
            "zvwt: column \"c3\": string\n"
            "zvwt: column \"t\": 1 text was cut to 1 byte\nzvwt: 2 rows\n");
  EXPECT_EQ(exported(nameIn(named)), "c1,t,c3\n0,a,b\n1,b,d\n");

  const auto errorsFor = [this](const std::string& text, const Words& options) {
    Words all = options;
    all.push_back(files_.write("in.csv", text));
    return run("import", all).errors;
  };
  const std::string question = "zvwt: there is one column; did you mean --delimiter ";
  EXPECT_TRUE(errorsFor("a;b\n1;2\n", {}).starts_with(question + "';'?\n"));
  EXPECT_TRUE(errorsFor("a\tb\n", {"--delimiter", ";"}).starts_with(question + "tab?\n"));
  EXPECT_FALSE(errorsFor("a;b,c\n", {}).starts_with(question));
  EXPECT_FALSE(errorsFor("a;b\n", {"--no-header"}).starts_with(question));
}

TEST_F(ToolData, RefusesTypesAndWidthsThatContradictEachOther) {
  const std::string path = files_.write("in.csv", "a\n1\n");
  EXPECT_EQ(run("import", {"--type", "a=int", "--type", "A=string", path}).errors,
            "zvwt: --type: column \"A\" is to be int and string\n");
  EXPECT_EQ(refusal("import", {"--width", "a=4", "--width", "a=5", path}), 2);
  EXPECT_EQ(run("import", {"-q", "--type", "a=int", "--type", "a=int", path}).exitCode, 0);
  EXPECT_EQ(run("import", {"--width", "a=4", "--width", "a=4", path}).exitCode, 0);
}

TEST_F(ToolData, IsQuietWhenAskedTo) {
  const std::string path = files_.write("in.csv", "n,t\n007\n8,\xFF\n");
  const Outcome imported = run("import", {"-q", "--ragged", "--width", "t=1", path});
  EXPECT_EQ(imported.errors, "");
  const std::string table = nameIn(imported);
  EXPECT_EQ(run("export", {"--quiet", "--format", "jsonl", table}).errors, "");
  EXPECT_EQ(run("copy", {"-q", table}).errors, "");
  EXPECT_EQ(run("sort", {"-q", "--by", "n", table}).errors, "");
  EXPECT_EQ(refusal("import", {"-q", path}), 4);
  EXPECT_EQ(refusal("sort", {"-q", "--by", "x", table}), 2);
}

TEST_F(ToolData, SaysWhatBecomesOfAnInterruptedAppend) {
  std::string text = "n,t\n";
  for (int row = 0; row < 2000; ++row) {
    text += std::to_string(row) + ",a row of a table\n";
  }
  const std::string table = import(text);
  std::int64_t rows = 2000;
  for (; rows < 1'000'000; rows *= 2) {
    EXPECT_EQ(run("append", {table, table}).exitCode, 0);
  }
  const std::uintmax_t size = sizeOfTables();
  Program program(programWords(words("append", {table, table})), {{}, file("out"), file("err")});
  while (program.isRunning() && sizeOfTables() == size) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  if (!program.interrupt()) {
    GTEST_SKIP() << "there is no console from which to interrupt it";
  }
  const Outcome outcome = outcomeOf(program);
  // It may have been faster than the signal.
  EXPECT_EQ(outcome.errors,
            outcome.exitCode == 0
                ? ""
                : "zvwt: interrupted; the table has either all of the new rows or none of them\n");
  const std::string known = run("info", {table}).output;
  const auto has = [&known](std::int64_t count) {
    return known.find("rows           " + std::to_string(count) + '\n') != std::string::npos;
  };
  EXPECT_TRUE(has(2 * rows) || (outcome.exitCode != 0 && has(rows))) << known;
}

TEST_F(ToolData, FillsShortRowsWhenAskedTo) {
  const std::string path = files_.write("ragged.csv", "a,b,c\n1\n2,x,3\n\n4,\"y\n\"\n");
  EXPECT_EQ(refusal("import", {path}), 4);
  const Outcome outcome = run("import", {"--ragged", path});
  EXPECT_EQ(exported(nameIn(outcome)), "a,b,c\n1,,\n2,x,3\n,,\n4,\"y\n\",\n");
  EXPECT_NE(outcome.errors.find("zvwt: 3 short rows: their missing fields are null\n"),
            std::string::npos)
      << outcome.errors;
  EXPECT_EQ(
      run("import", {"--ragged", files_.write("even.csv", "a,b\n1,2\n")}).errors.find("short"),
      std::string::npos);
  const Outcome tooMany = run("import", {"--ragged", files_.write("long.csv", "a,b\n1,2,3\n")});
  EXPECT_EQ(tooMany.exitCode, 4);
  EXPECT_NE(tooMany.errors.find("line 2, column 3: the row has 3 fields, the header line has 2"),
            std::string::npos)
      << tooMany.errors;
}

TEST_F(ToolData, WritesAnObjectOfJsonForEachRow) {
  const std::string table = import(
      "i,r,d,b,\"t\"\"\\\n\u00E9\"\n"
      "-9223372036854775808,12345678901234567890123456789012345678,2024-02-29,true,\"\"\n"
      ",-0.001,2024-02-29T13:45:10.250,false,\"\"\"\\/"
      "\n\x01\x7F\u0080\u009F\u00A0\u061B\u061C\u200D\u200E\u200F"
      "\u2028\u2029\u202A\u202E\u202F\u2065\u2066\u2069\u206A\"\n"
      "9223372036854775807,-1e-60,,,\u00E9\u20AC\U0001F600\n"
      "0,,,,\n"
      "0,,,,a\xFF\xC3z\xED\xA0\x80\n");
  const std::string name = R"("t\"\\\u000a)"
                           "\u00E9\":";
  const Outcome outcome = run("export", {"--format", "jsonl", table});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.output,
            R"({"i":-9223372036854775808,"r":12345678901234567890123456789012345678,)"
            R"("d":"2024-02-29","b":true,)" +
                name + "\"\"}\n" +
                R"({"i":null,"r":-0.001,"d":"2024-02-29T13:45:10.250","b":false,)" + name +
                R"("\"\\/\u000a\u0001\u007f\u0080\u009f)" + "\u00A0\u061B" + R"(\u061c)" +
                "\u200D" + R"(\u200e\u200f\u2028\u2029\u202a\u202e)" + "\u202F\u2065" +
                R"(\u2066\u2069)" + "\u206A\"}\n" +
                R"({"i":9223372036854775807,"r":-1e-60,"d":null,"b":null,)" + name +
                "\"\u00E9\u20AC\U0001F600\"}\n" + R"({"i":0,"r":null,"d":null,"b":null,)" + name +
                "null}\n" + R"({"i":0,"r":null,"d":null,"b":null,)" + name +
                R"("a\ufffd\ufffdz\ufffd\ufffd\ufffd"})" + "\n");
  EXPECT_EQ(outcome.errors, "zvwt: 1 text is not UTF-8: each byte that is none became U+FFFD\n");
  EXPECT_EQ(
      exported(table, {"--format", "jsonl", "--select", "x=b", "--rows", "0,2", "--backwards"}),
      "{\"x\":false}\n{\"x\":true}\n");
  EXPECT_EQ(exported(table, {"--format", "jsonl", "--rows", "0,0"}), "");
  EXPECT_EQ(refusal("export", {"--format", "jsonl", "--select", "b,b", table}), 2);
  EXPECT_EQ(refusal("export", {"--format", "jsonl", "--null", "-", table}), 2);
  testing::internal::CaptureStdout();
  {
    zvwttool::OutputBuffer output;
    zvwttool::JsonLinesWriter writer(&output, {});
    writer.endRow();
    writer.endRow();
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "{}\n{}\n");
}

TEST_F(ToolData, TakesTheRowsThatSatisfyConditions) {
  const std::string table = import(
      "k,i,r,d,b,t,u=1\n"
      "a,-5,1.50,2024-02-29,true,x,1\n"
      "b,7,-2,2024-02-29T10:00:00,false,\"\",2\n"
      "c,,,,,,\n"
      "d,70,1e3,0001-01-01,true,Xy is null,3\n",
      {"--type", "r=real", "--type", "d=date"});
  const std::vector<std::pair<Words, std::string>> cases = {
      {{"i>-5"}, "bd"},
      {{"i <= 7"}, "ab"},
      {{"i!=7"}, "ad"},
      {{"i<>7.0"}, "ad"},
      {{"R=1.5"}, "a"},
      {{"r==1000"}, "d"},
      {{"d=2024-02-29"}, "a"},
      {{"d~2024-"}, "ab"},
      {{"b=TRUE"}, "ad"},
      {{"b>0"}, "ad"},
      {{"t="}, "b"},
      {{"t = 'x'"}, "a"},
      {{"t>=\"x\""}, "a"},
      {{"t~y"}, "d"},
      {{"t=Xy is null"}, "d"},
      {{"t is null"}, "c"},
      {{"T IS NOT NULL", "i>0", "i>=70"}, "d"},
      {{"u=1=3"}, "d"},
      {{"u=1!=3"}, "ab"},
      {{"i is null", "i=7"}, ""},
  };
  for (const auto& [conditions, rows] : cases) {
    Words options = {"--select", "k", "--no-header"};
    for (const std::string& condition : conditions) {
      options.insert(options.end(), {"--where", condition});
    }
    std::string keys = exported(table, options);
    std::erase(keys, '\n');
    EXPECT_EQ(keys, rows) << testing::PrintToString(conditions);
  }
  for (const char* condition : {"i", "", "=1", "x=1", "i=x", "i=7.5", "d=2024", "i is nul", "i="}) {
    EXPECT_EQ(refusal("export", {"--where", condition, table}), 2) << condition;
  }
  EXPECT_EQ(refusal("export", {"--where", "i>0", "--format", "xml", table}), 2);
  EXPECT_EQ(run("count", {"--where", "d>=1900", table}).errors,
            "zvwt: --where: column \"d\" has values of type date, and \"1900\" is none; the form "
            "is YYYY-MM-DD\n");
  EXPECT_EQ(run("count", {"--where", "K=1 is null", "--where", " z = 1", table}).errors,
            "zvwt: --where: the table has no column \"z\"\n");
}

TEST_F(ToolData, KnowsConditionsWhereverRowsAreRead) {
  const std::string table = import("n,t\n1,a\n2,b\n3,a\n4,a\n", {"--width", "t=3"});
  const Words where = {"--where", "t=a"};
  const auto with = [&where](Words options) {
    options.insert(options.end(), where.begin(), where.end());
    return options;
  };
  EXPECT_EQ(run("count", with({table})).output, "3\n");
  EXPECT_EQ(run("count", with({"--rows", "1,2", table})).output, "1\n");
  EXPECT_EQ(exported(table, with({"--backwards", "--format", "jsonl", "--select", "n"})),
            "{\"n\":4}\n{\"n\":3}\n{\"n\":1}\n");
  const Outcome shown = run("head", with({"-n", "2", "--select", "n", table}));
  EXPECT_EQ(shown.output, "n\n-\n1\n3\n");
  EXPECT_EQ(shown.errors, "zvwt: up to 1 more row\n");

  const std::string uri = "zvwt:" + table + "?rows=1,3&col=x,n&col=t";
  const std::string copy = nameIn(run("copy", with({uri})));
  EXPECT_EQ(exported(copy), "x,t\n3,a\n4,a\n");
  EXPECT_EQ(run("append", {copy, uri}).exitCode, 0);  // of the same widths
  EXPECT_EQ(exported(nameIn(run("sort", with({"--by", "n:desc", table})))), "n,t\n4,a\n3,a\n1,a\n");
  const std::size_t files = tables_.names().size();
  EXPECT_EQ(refusal("copy", {"--where", "x=1", uri}), 2);
  EXPECT_EQ(refusal("copy", with({"--select", "n,n", table})), 2);
  EXPECT_EQ(tables_.names().size(), files);
}

TEST_F(ToolData, MindsWhichColumnsAUriNames) {
  const std::string table = import("n,t\n1,a\n");
  const std::string uri = "zvwt:" + table;
  EXPECT_EQ(refusal("export", {uri + "?rows=0,1"}), 2);
  EXPECT_EQ(refusal("copy", {uri}), 2);
  EXPECT_EQ(refusal("sort", {"--by", "n", uri}), 2);
  EXPECT_EQ(refusal("append", {table, uri}), 2);
  EXPECT_EQ(exported(uri, {"--select", "t"}), "t\na\n");
  EXPECT_EQ(run("count", {uri}).output, "1\n");
  const Outcome missing = run("export", {uri + "?col=x,nn&col=n&col=5,,2"});
  EXPECT_EQ(missing.output, "x,n,5\nnn,1,\n");
  EXPECT_EQ(missing.errors, "zvwt: the table has no column \"nn\"\n");
}

TEST_F(ToolData, KnowsEmptyValuesOfOptions) {
  const std::string table = import("a,b\n1,\n");
  EXPECT_EQ(run("export", {"--null=", table}).output, "a,b\n1,\n");
  EXPECT_EQ(run("export", {"--delimiter=", table}).errors.find("--delimiter: \"\""), 14U);
  EXPECT_EQ(run("export", {table, "--null", "--null="}).output, "a,b\n1,--null=\n");
  EXPECT_EQ(run("export", {"--", "--null="}).errors.find("one argument too many"),
            std::string::npos);
  EXPECT_EQ(run("export", {"--null", "--", table}).output, "a,b\n1,--\n");
}

TEST_F(ToolData, RefusesFormsThatCannotBeReadBack) {
  const std::string table = import("a\n1\n");
  const std::string file = files_.write("in.csv", "a\n1\n");
  for (const char* delimiter : {"", "\"", "\r", "\n", ";;", "\u00E9", "tabs", "\\n"}) {
    EXPECT_EQ(refusal("import", {"--delimiter", delimiter, file}), 2) << delimiter;
    EXPECT_EQ(refusal("export", {"--delimiter", delimiter, table}), 2) << delimiter;
  }
  for (const char* nullText : {"a,b", "\"", "a\n", "\xEF\xBB\xBFx"}) {
    EXPECT_EQ(refusal("import", {"--null", nullText, file}), 2) << nullText;
    EXPECT_EQ(refusal("export", {"--null", nullText, table}), 2) << nullText;
  }
  EXPECT_EQ(refusal("export", {"--delimiter", ";", "--null", ";", table}), 2);
  EXPECT_EQ(refusal("export", {"--format", "xml", "--crlf", table}), 2);
  EXPECT_EQ(refusal("import", {"--no-header", files_.write("empty.csv", "")}), 4);
  for (const char* text : {"\x01", "\xFF", "]]>", "\xEF\xBF\xBF"}) {
    EXPECT_EQ(refusal("export", {"--format", "xml", import(std::string("t\nx") + text + '\n')}), 2);
  }
}

}  // namespace
