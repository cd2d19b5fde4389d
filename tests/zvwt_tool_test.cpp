// The command line tool as its users meet it: a process with arguments, streams and an exit code.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/ToolFixture.h"

namespace {

using Pool = std::vector<std::string>;

const Pool columnNames = {"n", " name ", "\"a,\"\"b\"", "\"two\nlines\"", "Gr\u00F6\u00DFe", "x=y"};

// Fields in the one form that an export has. Each pool makes another kind of column.
const std::vector<Pool> fieldPools = {
    {"", "true", "false"},
    {"", "0", "-1", "42", "9223372036854775807", "-9223372036854775808"},
    {"", "7", "1.5", "-0.001", "9223372036854775808", "0.1", "12345678901234567890.5"},
    {"", "2024-02-29", "2024-02-29T13:45:10.250", "0001-01-01", "9999-12-31T23:59:59.999"},
    {"", "\"\"", " ", " a ", "\t", "\",\"", "\"\"\"\"", "\"\r\"", "\"\n\"", "\"a\r\nb\"", "007"},
    {"1e5", "-0", "1.50", "+5", "0123456789012345678901234567890123456789012", "true", "TRUE"},
    {"2024-02-30", "2024-02-29T00:00:00.000", "2024-01-01 10:00:00", "null", "NULL"},
    {"\u00E9\u20AC\U0001F600", "\xFF\xFE", "\xEF\xBB\xBF", "\x01\x7F", "'", "`;|", "\\n"},
};

class CsvMaker {
 public:
  explicit CsvMaker(unsigned seed) : random_(seed) {}

  /// A header line and rows, each with its line feed.
  std::vector<std::string> makeLines() {
    const std::size_t columnCount = 1 + below(5);
    std::vector<const Pool*> pools;
    std::vector<std::string> header;
    for (std::size_t column = 0; column < columnCount; ++column) {
      pools.push_back(&fieldPools[below(fieldPools.size())]);
      header.push_back(column < columnNames.size() ? columnNames[column] : "c");
    }
    std::vector<std::string> lines = {joined(header)};
    for (std::size_t row = below(40); row > 0; --row) {
      std::vector<std::string> fields;
      for (const Pool* pool : pools) {
        fields.push_back((*pool)[below(pool->size())]);
      }
      lines.push_back(joined(fields));
    }
    return lines;
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  static std::string joined(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
      line += field + ',';
    }
    line.back() = '\n';
    return line;
  }

  std::mt19937 random_;
};

std::string concatenated(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line;
  }
  return text;
}

/// The same rows as a file of another system has them.
std::string withCarriageReturns(std::vector<std::string> lines) {
  for (std::string& line : lines) {
    line.insert(line.size() - 1, "\r");
  }
  return concatenated(lines);
}

TEST_F(Tool, ExportsWhatItImported) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    std::vector<std::string> lines = CsvMaker(seed).makeLines();
    const std::string text = concatenated(lines);
    const std::string table = import(text, {"--max-element-size", seed % 2 == 0 ? "0" : "20"});
    EXPECT_EQ(exported(table), text) << seed;
    EXPECT_EQ(exported(import(withCarriageReturns(lines))), text) << seed;
    std::reverse(lines.begin() + 1, lines.end());
    EXPECT_EQ(exported(table, {"--backwards"}), concatenated(lines)) << seed;
  }
}

TEST_F(Tool, ReadsPipesTwice) {
  std::string text = "n,t\n";
  for (int row = 0; row < 30000; ++row) {
    text += std::to_string(row) + ",row\n";
  }
  const std::string path = files_.write("piped.csv", text + "007,last\n");
  Program program(programWords(words("import", {"-"})),
                  {{Stream::Kind::pipe, {}}, file("out"), file("err")});
  program.writeInput(text + "007,last\n");
  const Outcome piped = outcomeOf(program);
  EXPECT_EQ(piped.exitCode, 0);
  EXPECT_NE(piped.errors.find("column \"n\": string"), std::string::npos) << piped.errors;
  EXPECT_EQ(exported(piped.output.substr(0, piped.output.size() - 1)), text + "007,last\n");

  const Outcome redirected = run("import", {"-"}, Program::file(path));
  EXPECT_EQ(exported(redirected.output.substr(0, redirected.output.size() - 1)),
            text + "007,last\n");
}

TEST_F(Tool, TakesGivenTypesAndWidths) {
  const std::string table =
      import("n,d,b,t\n007,2024-02-29 10:00,YES,aaaaa\n+5,2024-02-29,0,\u20AC\u20AC\n",
             {"--type", "N=int", "--type", "d=date", "--type=b=bool", "--width", "t=4"});
  EXPECT_EQ(exported(table),
            "n,d,b,t\n7,2024-02-29T10:00:00.000,true,aaaa\n5,2024-02-29,false,\u20AC\n");
}

TEST_F(Tool, LeavesNothingBehindAFailedImport) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a,b\n1,x\n1.5,y\n", ": line 3, column 1 \"a\": the field \"1.5\" is no int\n"},
      {"a,b\n1,x\n\"\x1b\",y\n", ": line 3, column 1 \"a\": the field \"\\x1b\" is no int\n"},
      {"a,b\n1,x\n2\n",
       ": line 3, column 2 \"b\": the row has 1 field, the header line has 2; "
       "--ragged takes such rows\n"},
      {",C1\n1,x\n",
       ": line 1, column 1 \"c1\": the column has no name, and another one is called that\n"},
      {"a,A\n1,x\n", ": line 1, column 2 \"A\": another column has this name, letter case aside\n"},
      {"", ": there is no header line\n"},
  };
  for (const auto& [text, reason] : cases) {
    const std::string path = files_.write("bad.csv", text);
    const Outcome outcome = run("import", {"--type", "a=int", "--type", "b=string", path});
    EXPECT_EQ(outcome.exitCode, 4) << text;
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.ends_with("zvwt: " + path + reason)) << outcome.errors;
  }
  const std::string good = files_.write("good.csv", "a\n1\n");
  EXPECT_EQ(run("import", {files_.path()}).exitCode, 5);
  EXPECT_EQ(run("import", {files_.file("missing")}).exitCode, 3);
  EXPECT_EQ(run("import", {"--type", "b=int", good}).exitCode, 2);
  EXPECT_EQ(run("import", {"--width", "a=4", "--type", "a=int", good}).exitCode, 2);
  EXPECT_EQ(runWithoutOutput("import", {good}).exitCode, 5);
  EXPECT_EQ(tables_.names(), std::vector<std::string>());
}

TEST_F(Tool, ReadsRangesInBothDirections) {
  const std::string table = import("n\n0\n1\n2\n3\n4\n5\n6\n", {"--max-element-size", "20"});
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
      {"2,3", {"2", "3", "4"}}, {"5,-1", {"5", "6"}}, {"5,9", {"5", "6"}},
      {"0,1", {"0"}},           {"3,0", {}},          {"7,1", {}},
  };
  for (const auto& [range, rows] : cases) {
    std::vector<std::string> lines = {"n\n"};
    for (const std::string& row : rows) {
      lines.push_back(row + '\n');
    }
    EXPECT_EQ(exported(table, {"--rows", range}), concatenated(lines)) << range;
    std::reverse(lines.begin() + 1, lines.end());
    EXPECT_EQ(exported(table, {"--rows", range, "--backwards"}), concatenated(lines)) << range;
  }
}

TEST_F(Tool, ReadsSelectedColumnsByOptionsOrByTheUriThatStandsForThem) {
  const std::string table = import("a,\"b,c\",x=y\n1,one,0.5\n2,two,1.5\n3,three,2.5\n");
  const std::vector<std::string> options = {"--select", "x=y,n=A", "--select",
                                            "a",        "--rows",  "1,2"};
  const std::string rows = "x=y,n,a\n1.5,2,2\n2.5,3,3\n";
  EXPECT_EQ(exported(table, options), rows);
  std::vector<std::string> asked = options;
  asked.push_back(table);
  const std::string uri = "zvwt:" + table + "?rows=1,2&col=x%3Dy&col=n,A&col=a";
  EXPECT_EQ(run("uri", asked).output, uri + '\n');
  EXPECT_EQ(exported(uri), rows);
  EXPECT_EQ(exported(uri, {"--backwards"}), "x=y,n,a\n2.5,3,3\n1.5,2,2\n");
  EXPECT_EQ(exported("zvwt:" + table + "?col=b%2Cc&col=k,42,2", {"--rows", "2,1"}),
            "\"b,c\",k\nthree,42\n");
  EXPECT_EQ(exported("zvwt:" + table, {"--select", "a"}), "a\n1\n2\n3\n");
  EXPECT_EQ(run("info", {uri}).output, run("info", {table}).output);

  const Outcome missing = run("export", {"--select", "a,x=b", table});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.errors, "zvwt: the table has no column \"b\"\n");
  EXPECT_EQ(run("export", {"zvwt:" + table + "?rows=-1,1"}).exitCode, 2);
}

TEST_F(Tool, ExportsXmlAndStatistics) {
  const std::string table = import("a,b\n1,x&y\n2,\n3,z\n");
  const std::vector<std::string> xml = {"--format", "xml", "--rows", "1,2", "--backwards"};
  const std::string document = exported(table, xml);
  EXPECT_TRUE(document.starts_with("<?xml version='1.0' encoding='UTF-8'?><beans ")) << document;
  EXPECT_TRUE(
      document.ends_with("<list><list><value>3</value><value>z</value></list>"
                         "<list><value>2</value><value></value></list></list>"
                         "</constructor-arg></bean></beans>\n"))
      << document;
  EXPECT_NE(exported(table, {"--format", "xml"}).find("x&amp;y"), std::string::npos);
  EXPECT_EQ(run("export", {"--format", "xml", "--select", "b", table}).exitCode, 2);
  EXPECT_EQ(run("export", {"--format", "xml", import("a<b\n1\n")}).exitCode, 2);
  EXPECT_EQ(run("export", {"--format", "yaml", table}).exitCode, 2);

  const Outcome statistics = run("info", {"--stats", table});
  EXPECT_EQ(statistics.output,
            "Statistic    Value\n-----------  -----\nAccessKey\nColumns      2\n"
            "ElementSize  0\nElements     1\nRows         3\nVersion      1.0\n");
}

TEST_F(Tool, CopiesAndAppendsWhatIsSelected) {
  const std::string table = import("a,b\n1,x\n2,\u00E4\n");
  const Outcome copied = run("copy", {"--select", "n=b,m=a", "--max-element-size", "1", table});
  EXPECT_EQ(copied.exitCode, 0) << copied.errors;
  EXPECT_EQ(copied.errors, "");
  const std::string copy = copied.output.substr(0, copied.output.find('\n'));
  EXPECT_EQ(run("append", {copy, "zvwt:" + table + "?rows=1,1&col=n,b&col=m,7,2"}).exitCode, 0);
  EXPECT_EQ(exported(copy), "n,m\nx,1\n\u00E4,2\n\u00E4,7\n");
  EXPECT_NE(run("info", {copy}).output.find("elements       3\n"), std::string::npos);
  const Outcome other = run("append", {copy, table});
  EXPECT_EQ(other.exitCode, 2);
  EXPECT_NE(other.errors.find("1770"), std::string::npos) << other.errors;
  const std::size_t files = tables_.names().size();
  EXPECT_EQ(runWithoutOutput("copy", {table}).exitCode, 5);
  EXPECT_EQ(run("copy", {"zvwt_missing"}).exitCode, 3);
  EXPECT_EQ(run("copy", {"--select", "x=a,X=b", table}).exitCode, 2);
  EXPECT_EQ(tables_.names().size(), files);
}

TEST_F(Tool, PartsReadInParallelAreTheTable) {
  std::string text = "n,t\n";
  for (int row = 0; row < 1000; ++row) {
    text += std::to_string(row) + ",row\n";
  }
  const std::string table = import(text);
  for (int doubling = 0; doubling < 10; ++doubling) {
    EXPECT_EQ(run("append", {table, table}).exitCode, 0);
  }
  const Outcome copied = run("copy", {"--max-element-size", "3000000", table});
  const std::string copy = copied.output.substr(0, copied.output.find('\n'));
  EXPECT_EQ(run("partition", {"--select", "t", "zvwt:" + copy, "1"}).output,
            "zvwt:" + copy + "?rows=0,1024000&col=t\n");
  const Outcome parts = run("partition", {copy, "20"});
  std::istringstream uris(parts.output);
  std::vector<std::unique_ptr<Program>> programs;
  for (std::string uri; std::getline(uris, uri);) {
    const Stream output = file("part" + std::to_string(programs.size()));
    programs.push_back(std::make_unique<Program>(programWords(words("export", {uri})),
                                                 Program::Streams{{}, output, {}}));
  }
  EXPECT_GT(programs.size(), 1U);
  std::string together = "n,t\n";
  for (std::size_t i = 0; i < programs.size(); ++i) {
    EXPECT_EQ(programs[i]->wait(), 0);
    together += TemporaryDirectory::read(files_.file("part" + std::to_string(i))).substr(4);
  }
  EXPECT_TRUE(together == exported(table));
}

TEST_F(Tool, ShowsRowsInAlignedColumns) {
  const std::string longText(61, 'x');
  const std::string table =
      import("n,long name,d\n1,\"two\nlines\",2024-02-29\n-20,\u00E9,\n,,\n5," + longText + ",\n");
  const Outcome outcome = run("show", {"--limit", "3", table});
  EXPECT_EQ(outcome.output,
            "  n  long name   d\n"
            "---  ----------  ----------\n"
            "  1  two\\nlines  2024-02-29\n"
            "-20  \u00E9           \u2205\n"
            "  \u2205  \u2205           \u2205\n");
  EXPECT_EQ(outcome.errors, "zvwt: 1 more row\n");
  const Outcome last = run("show", {"--backwards", "--rows", "3,1", table});
  EXPECT_NE(last.output.find(" " + std::string(59, 'x') + "\u2026  "), std::string::npos);
  EXPECT_EQ(last.errors, "");
}

TEST_F(Tool, TellsWhatATableConsistsOf) {
  const std::string table = import("n,t\n1,abc\n2,\n3,d\n", {"--max-element-size", "10"});
  const Outcome outcome = run("info", {table});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  for (const std::string& line :
       {"table          " + table, "file           " + tables_.file(table),
        std::string("rows           3"), std::string("elements       2"),
        std::string("element limit  10 bytes"), std::string("index          24 bytes"),
        std::string("2  t       string               3")}) {
    EXPECT_NE(outcome.output.find(line + '\n'), std::string::npos) << line << outcome.output;
  }
}

TEST_F(Tool, DeletesWhatItCan) {
  const std::string first = import("a\n1\n");
  const std::string second = import("a\n1\n");
  const Outcome outcome = run("delete", {first, "zvwt_missing", second});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_NE(outcome.errors.find("zvwt_missing"), std::string::npos);
  EXPECT_EQ(tables_.names(), std::vector<std::string>());
}

TEST_F(Tool, TakesNamesForFilesInItsDirectoriesAndNothingElse) {
  const std::string table = import("a\n1\n");
  const std::string folder = std::filesystem::path(tables_.path()).filename().string();
  for (const std::string& name :
       {"../" + folder + '/' + table, tables_.file(table), "./" + table, std::string("..")}) {
    for (const char* verb : {"show", "export", "copy", "info", "check", "delete"}) {
      const Outcome outcome = run(verb, {name});
      EXPECT_EQ(outcome.exitCode, 2) << verb << ' ' << name;
      EXPECT_NE(outcome.errors.find(" is no table's name"), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(run("append", {table, name}).exitCode, 2);
    EXPECT_EQ(run("append", {name, table}).exitCode, 2);
  }
  EXPECT_EQ(exported(table), "a\n1\n");
}

TEST_F(Tool, SendsNoCommandsOfNamesToATerminal) {
  const Outcome outcome = run("append", {import("a\n1\n"), import("\x1B[2J\n1\n")});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_NE(outcome.errors.find("\\x1b[2J"), std::string::npos) << outcome.errors;
  EXPECT_EQ(outcome.errors.find('\x1B'), std::string::npos) << outcome.errors;
}

TEST_F(Tool, FailsWhenNotEverythingWasRead) {
  std::string text = "t\n";
  for (int row = 0; row < 1000; ++row) {
    text += "row " + std::to_string(row) + '\n';
  }
  const std::string table = import(text);
  for (const std::string& name : tables_.names()) {
    if (name.starts_with("zvwte_")) {
      std::filesystem::resize_file(tables_.file(name), 5000);
    }
  }
  const Outcome outcome = run("export", {table});
  EXPECT_EQ(outcome.exitCode, 4);
  EXPECT_TRUE(text.starts_with(outcome.output)) << outcome.output;
  EXPECT_TRUE(outcome.output.starts_with("t\nrow 0\n")) << outcome.output;
  EXPECT_TRUE(outcome.errors.starts_with("zvwt: " + table + ": ")) << outcome.errors;
  const std::string sound = import("t\nx\n");
  for (const Words& words : {Words{"show", "-n", "1000", "zvwt:" + table + "?col=t"},
                             {"copy", table},
                             {"count", "--where", "t=x", table},
                             {"append", sound, table}}) {
    const Outcome failed = run(words[0], {words.begin() + 1, words.end()});
    EXPECT_EQ(failed.exitCode, 4) << words[0];
    EXPECT_TRUE(failed.errors.ends_with("; zvwt check " + table + " tells where\n"))
        << failed.errors;
  }
}

TEST_F(Tool, TakesATableForDamagedThatLacksFiles) {
  const std::string table = import("t\nx\n");
  for (const std::string& name : tables_.names()) {
    if (name.starts_with("zvwte_")) {
      std::filesystem::remove(tables_.file(name));
    }
  }
  EXPECT_EQ(run("export", {table}).exitCode, 4);
  EXPECT_EQ(run("copy", {table}).exitCode, 4);
  EXPECT_EQ(run("info", {table}).exitCode, 4);
  std::filesystem::resize_file(tables_.file(table), 30);
  const Outcome outcome = run("delete", {table, "zvwt_missing", "a/b"});
  EXPECT_EQ(outcome.exitCode, 4);
  EXPECT_NE(outcome.errors.find("; its catalogue is " + tables_.file(table) + ": "),
            std::string::npos)
      << outcome.errors;
}

TEST_F(Tool, SuggestsWhichTableWasMeant) {
  const std::string table = import("a\n1\n");
  const std::string shortened = table.substr(0, table.size() - 1);
  const std::string question = "; did you mean \"" + table + "\"?\n";
  EXPECT_TRUE(run("show", {shortened}).errors.ends_with(question));
  EXPECT_TRUE(run("delete", {shortened}).errors.ends_with(question));
  EXPECT_TRUE(run("append", {"x", table}).errors.ends_with("; zvwt list tells what there is\n"));
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"zvwt:" + table + "?rows=0,1",
       "\"zvwt:" + table + "?rows=0,1\" is a URI: give the table's name, " + table},
      {"./" + table,
       "\"./" + table + "\" is no table's name: give it without its directory; --dir names that"},
      {"", "\"\" is no table's name"},
  };
  for (const auto& [name, text] : cases) {
    for (const char* verb : {"check", "delete"}) {
      const Outcome outcome = run(verb, {name});
      EXPECT_EQ(outcome.exitCode, 2);
      EXPECT_EQ(outcome.errors, "zvwt: " + text + '\n');
    }
  }
}

TEST_F(Tool, FailsWhenItsOutputIsRefused) {
  std::string text = "t\n";
  for (int row = 0; row < 100000; ++row) {
    text += "a row of a table\n";
  }
  const std::string table = import(text);
  const Outcome full = runWithoutOutput("export", {table});
  EXPECT_EQ(full.exitCode, 5);
  EXPECT_NE(full.errors.find("cannot write to standard output"), std::string::npos);

  Program program(programWords(words("export", {table})),
                  {{}, {Stream::Kind::pipe, {}}, file("err")});
  char start[] = "t\n????????????????\n";
  EXPECT_TRUE(program.readOutput(start, sizeof start - 1));
  EXPECT_STREQ(start, "t\na row of a table\n");
  program.closeOutput();
  EXPECT_EQ(program.wait(), 5);
  EXPECT_EQ(TemporaryDirectory::read(files_.file("err")), "");
}

TEST_F(Tool, RefusesAWrongCommandLine) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
      {"", {}},
      {"frobnicate", {}},
      {"import", {}},
      {"import", {"--type", "a=float", "x"}},
      {"import", {"--width", "a=0", "x"}},
      {"import", {"--max-element-size", "-1", "x"}},
      {"show", {"--rows", "5", "x"}},
      {"export", {"--rows", "-1,5", "x"}},
      {"export", {"--rows", "9223372036854775807,1", "x"}},
      {"delete", {}},
      {"copy", {}},
      {"append", {"x"}},
      {"partition", {"x"}},
      {"partition", {"x", "0"}},
      {"export", {"http://x"}},
      {"export", {"zvwt:x?cols=a"}},
      {"info", {"http://x"}},
      {"export", {"zvwt:x?col=a", "--select", "a"}},
      {"copy", {"zvwt:x?rows=0,1", "--rows", "0,1"}},
  };
  for (const auto& [verb, arguments] : cases) {
    const Outcome outcome = run(verb, arguments);
    EXPECT_EQ(outcome.exitCode, 2) << verb;
    EXPECT_EQ(outcome.output, "") << verb;
    EXPECT_NE(outcome.errors, "") << verb;
  }
  const Outcome help = runTool({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.output.find("Exit codes:"), std::string::npos);
}

TEST_F(Tool, ReadsNumbersAsPeopleWriteThem) {
  const std::string table =
      import("n\n0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n", {"--max-element-size", "020"});
  EXPECT_NE(run("info", {table}).output.find("element limit  20 bytes\n"), std::string::npos);
  EXPECT_EQ(run("show", {"-n", "08", table}).errors, "zvwt: 2 more rows\n");
  EXPECT_EQ(run("head", {"-n010", table}).errors, "");
  EXPECT_EQ(run("partition", {table, "010"}).output, run("partition", {table, "10"}).output);
  const std::vector<std::pair<std::string, Words>> cases = {
      {"show: --limit: \"9223372036854775808\" is more than 9223372036854775807",
       {"show", "-n", "9223372036854775808", table}},
      {"show: --limit: \"0x10\" is no number from 0 on", {"show", "-n", "0x10", table}},
      {"partition: N: \"2147483648\" is more than 2147483647", {"partition", table, "2147483648"}},
      {"sort: --memory: \"9999999999G\" is more bytes than can be counted",
       {"sort", "--by", "n", "--memory", "9999999999G", table}},
  };
  for (const auto& [text, given] : cases) {
    const Outcome outcome = runTool(given);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "zvwt: " + text + '\n');
  }
}

TEST_F(Tool, SaysWhatIsWrongWithACommandLine) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "a verb is missing; zvwt --help tells what there is"},
      {{"improt", "x"}, "there is no verb \"improt\"; did you mean \"import\"?"},
      {{"x\x1b[2J"}, "there is no verb \"x\\x1b[2J\"; zvwt --help tells what there is"},
      {{"--hepl"}, "there is no option \"--hepl\"; did you mean \"--help\"?"},
      {{"export", "--frmat=csv", "x"},
       "export: there is no option \"--frmat\"; did you mean \"--format\"?"},
      {{"show", "x", "y"}, "show: \"y\" is one argument too many"},
      {{"show"}, "show: TABLE is required"},
  };
  for (const auto& [words, text] : cases) {
    const Outcome outcome = runTool(words);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "zvwt: " + text + '\n');
  }
}

TEST_F(Tool, HelpsHoweverItIsAsked) {
  const Outcome help = runTool({"sort", "--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_EQ(help.errors, "");
  EXPECT_EQ(runTool({"help", "sort"}).output, help.output);
  EXPECT_EQ(runTool({"help"}).output, runTool({"--help"}).output);
  EXPECT_EQ(runTool({"help", "improt"}).errors, runTool({"improt"}).errors);
  for (const char* option : {"--help", "--version"}) {
    Program program(programWords({option}), {{}, {Stream::Kind::refusing, {}}, file("err")});
    EXPECT_EQ(program.wait(), 5) << option;
  }
  EXPECT_LT(help.output.find("Examples:"), help.output.find("Usage:"));
}

}  // namespace
