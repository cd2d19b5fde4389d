// Sorting with the command line tool.
#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/ToolFixture.h"

namespace {

struct Line {
  std::optional<std::string> text;
  std::optional<int> number;
  int position;
};

struct Key {
  bool isText;
  bool isDescending = false;
  bool putsNullsLast = false;
  bool ignoresCase = false;
};

using Keys = std::vector<Key>;

constexpr const char* header = "t,n,position\n";

std::vector<Line> makeLines(int count) {
  const std::array<std::optional<std::string>, 9> texts = {
      std::nullopt, "", "a", "A", "ab", "aB", "b", "\u00C4", "\u00E4"};
  const std::array<std::optional<int>, 5> numbers = {std::nullopt, -3, 0, 9, 10};
  std::mt19937 random(1);
  std::vector<Line> lines;
  for (int position = 0; position < count; ++position) {
    lines.push_back({texts[random() % texts.size()], numbers[random() % numbers.size()], position});
  }
  return lines;
}

std::string csv(const std::vector<Line>& lines) {
  std::string text = header;
  for (const Line& line : lines) {
    text += line.text.has_value() && line.text->empty() ? "\"\"" : line.text.value_or("");
    text += ',' + (line.number.has_value() ? std::to_string(*line.number) : "");
    text += ',' + std::to_string(line.position) + '\n';
  }
  return text;
}

std::string folded(const std::string& text) {
  if (text == "\u00C4") {
    return "\u00E4";
  }
  std::string lower = text;
  std::replace(lower.begin(), lower.end(), 'A', 'a');
  std::replace(lower.begin(), lower.end(), 'B', 'b');
  return lower;
}

template <typename Value>
bool isBefore(const std::optional<Value>& left, const std::optional<Value>& right, const Key& key) {
  if (!left.has_value() || !right.has_value()) {
    return left.has_value() != right.has_value() && left.has_value() == key.putsNullsLast;
  }
  return key.isDescending ? *right < *left : *left < *right;
}

bool isBefore(const Line& left, const Line& right, const Key& key) {
  if (!key.isText) {
    return isBefore(left.number, right.number, key);
  }
  if (key.ignoresCase && left.text.has_value() && right.text.has_value()) {
    return isBefore<std::string>(folded(*left.text), folded(*right.text), key);
  }
  return isBefore(left.text, right.text, key);
}

std::vector<Line> sorted(std::vector<Line> lines, const Keys& keys) {
  std::stable_sort(lines.begin(), lines.end(), [&keys](const Line& left, const Line& right) {
    const auto decides = std::find_if(keys.begin(), keys.end(), [&](const Key& key) {
      return isBefore(left, right, key) || isBefore(right, left, key);
    });
    return decides != keys.end() && isBefore(left, right, *decides);
  });
  return lines;
}

std::string optionText(const Keys& keys) {
  std::string text;
  for (const Key& key : keys) {
    text += text.empty() ? "" : ",";
    text += key.isText ? "T" : "n";
    text += key.isDescending ? ":desc" : "";
    text += key.putsNullsLast ? ":nulls-last" : "";
    text += key.ignoresCase ? ":nocase" : "";
  }
  return text;
}

class ToolSort : public Tool {
 protected:
  /// A table of so many rows, in no order.
  std::string makeLargeTable(int rows) { return import(csv(makeLines(rows))); }
};

TEST_F(ToolSort, SortsAsAPlainStableSortDoes) {
  const std::vector<Line> lines = makeLines(5000);
  const std::string text = csv(lines);
  const std::string table = import(text);
  const std::vector<Keys> cases = {
      {{.isText = true}},
      {{.isText = true, .isDescending = true, .ignoresCase = true}, {.isText = false}},
      {{.isText = false, .isDescending = true, .putsNullsLast = true}},
      {{.isText = false, .putsNullsLast = true},
       {.isText = true, .isDescending = true, .putsNullsLast = true, .ignoresCase = true}},
  };
  for (const Keys& keys : cases) {
    const std::string expected = csv(sorted(lines, keys));
    const std::string by = optionText(keys);
    const Outcome outcome = run("sort", {"--by", by, "--memory", "64K", table});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(exported(nameIn(outcome)) == expected) << by;
    EXPECT_TRUE(exported(import(text, {"--sort", by, "--temp-limit=1M"})) == expected) << by;
  }
  EXPECT_TRUE(exported(table) == text);
}

TEST_F(ToolSort, SortsWhatIsSelected) {
  const std::string table = import("a,b\n1,x\n3,z\n2,y\n4,w\n", {"--width", "b=4"});
  const Outcome selected = run("sort", {"--select", "n=a", "--select", "b", "--rows", "1,3",
                                        "--max-element-size", "1", "--by", "N:desc", table});
  EXPECT_EQ(exported(nameIn(selected)), "n,b\n4,w\n3,z\n2,y\n");
  EXPECT_NE(run("info", {nameIn(selected)}).output.find("elements       3\n"), std::string::npos);
  const std::string uri = "zvwt:" + table + "?rows=0,3&col=b&col=k,\u00E9\u00E9,4";
  const Outcome constant = run("sort", {"--by", "k", "--by", "b:asc", uri});
  EXPECT_EQ(exported(nameIn(constant)), "b,k\nx,\u00E9\u00E9\ny,\u00E9\u00E9\nz,\u00E9\u00E9\n");
  EXPECT_EQ(run("uri", {"--rows", "0,1", table}).output,
            "zvwt:" + table + "?rows=0,1&col=a&col=b\n");
  const std::string empty = nameIn(run("sort", {"--by", "a", "--rows", "0,0", table}));
  EXPECT_EQ(exported(empty), "a,b\n");
}

TEST_F(ToolSort, FindsColumnsWhoseNamesLookLikeModifiers) {
  const std::string lines = "\"a,b\",c:desc,d\\e,10:30\n1,2,3,3\n2,1,1,1\n3,3,2,2\n";
  const std::string first = "2,1,1,1\n";
  const std::string last = "3,3,2,2\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a\\,b:desc", last},  {"c\\:desc", first}, {"c\\:desc:desc", last},
      {"d\\e,a\\,b", first}, {"d\\\\e", first},   {"10:30:asc", first},
  };
  for (const auto& [by, row] : cases) {
    const std::string text = exported(import(lines, {"--sort", by}));
    EXPECT_EQ(text.substr(text.find('\n') + 1, row.size()), row) << by;
  }
}

TEST_F(ToolSort, SuggestsWhatAKeyWasToBe) {
  const std::string text = "a,b:desc\n1,2\n";
  const std::string table = import(text);
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a:dsc", "\"a:dsc\"; did you mean \"a:desc\"?"},
      {"A:DESC:nocase", "\"A:DESC\"; did you mean \"A:desc:nocase\"?"},
      {"a:null-last", "\"a:null-last\"; did you mean \"a:nulls-last\"?"},
      {"a:first", "\"a:first\""},
      {"b:desc", "\"b\"; did you mean \"b\\:desc\"?"},
      {"b:desc:asc", "\"b\"; did you mean \"b\\:desc:asc\"?"},
  };
  for (const auto& [key, reason] : cases) {
    EXPECT_EQ(run("sort", {"--by", key, table}).errors,
              "zvwt: the table has no column " + reason + '\n');
    const Outcome imported = run("import", {"--sort", key, files_.file("in.csv")});
    EXPECT_EQ(imported.errors, "zvwt: --sort: there is no column " + reason + '\n');
  }
}

TEST_F(ToolSort, RefusesAWrongCommandLine) {
  const std::string file = files_.write("in.csv", "a,b\n1,x\n");
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
      {"sort", {"x"}},
      {"sort", {"--by", "", "x"}},
      {"sort", {"--by", "a,", "x"}},
      {"sort", {"--by", ":desc", "x"}},
      {"sort", {"--by", "a,b", "--by", "A:desc", "x"}},
      {"sort", {"--by", "a", "--memory", "63K", "x"}},
      {"sort", {"--by", "a", "--memory", "1T", "x"}},
      {"sort", {"--by", "a", "--memory", "8589934592G", "x"}},
      {"sort", {"--by", "a", "--temp-limit", "K", "x"}},
      {"sort", {"--by", "a", "--temp-limit", "-1", "x"}},
      {"import", {"--memory", "1M", file}},
      {"import", {"--sort", "b,c", file}},
  };
  for (const auto& [verb, arguments] : cases) {
    const Outcome outcome = run(verb, arguments);
    EXPECT_EQ(outcome.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors, "");
  }
  EXPECT_EQ(tables_.names(), std::vector<std::string>());
}

TEST_F(ToolSort, LeavesNothingBehindAFailedSort) {
  const std::string table = makeLargeTable(20000);
  const std::vector<std::string> files = tables_.names();
  const auto expectFailure = [&](int exitCode, const std::string& verb,
                                 std::vector<std::string> arguments, const std::string& source,
                                 const std::string& reason) {
    arguments.push_back(source);
    const Outcome outcome = run(verb, arguments);
    EXPECT_EQ(outcome.exitCode, exitCode) << reason;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find(reason), std::string::npos) << outcome.errors;
    EXPECT_EQ(tables_.names(), files) << reason;
  };
  expectFailure(2, "sort", {"--by", "t,x:desc"}, table, "zvwt: the table has no column \"x\"\n");
  expectFailure(2, "sort", {"--by", "n", "--select", "t"}, table, "no column \"n\"\n");
  expectFailure(2, "sort", {"--by", "n:nocase"}, table, "zvwt: column \"n\" has no texts");
  expectFailure(2, "sort", {"--by", "t", "--select", "t,T=n"}, table, "two columns");
  expectFailure(3, "sort", {"--by", "t"}, "zvwt_missing", "zvwt_missing");

  const std::vector<std::string> small = {"--memory", "64K", "--temp-limit", "4K"};
  std::vector<std::string> sort = {"--by", "t"};
  sort.insert(sort.end(), small.begin(), small.end());
  expectFailure(5, "sort", sort, table, "zvwt: ");
  sort[0] = "--sort";
  const std::string lines = csv(makeLines(20000));
  expectFailure(5, "import", sort, files_.write("large.csv", lines), "zvwt: ");
  expectFailure(2, "import", {"--sort", "n:nocase"}, files_.write("few.csv", "n\n1\n"), "no texts");
  expectFailure(4, "import", {"--sort", "t", "--type", "n=int"},
                files_.write("bad.csv", lines + "a,1.5,2\n"), "the field \"1.5\" is no int\n");

  EXPECT_EQ(runWithoutOutput("sort", {"--by", "t", table}).exitCode, 5);
  EXPECT_EQ(tables_.names(), files);
}

TEST_F(ToolSort, LeavesNothingBehindAnInterruptedSort) {
  const std::string table = makeLargeTable(2000);
  for (int doubling = 0; doubling < 9; ++doubling) {
    EXPECT_EQ(run("append", {table, table}).exitCode, 0);
  }
  const std::vector<std::string> files = tables_.names();
  // It is told as soon as the new table is there, long before its rows are in order.
  Program program(programWords(words("sort", {"--by", "t,n", "--memory", "64K", table})),
                  {{}, file("out"), file("err")});
  while (program.isRunning() && tables_.names().size() == files.size()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (!program.interrupt()) {
    GTEST_SKIP() << "there is no console from which to interrupt it";
  }
  const Outcome outcome = outcomeOf(program);
  EXPECT_NE(outcome.exitCode, 0);
  EXPECT_EQ(outcome.output, "");
  EXPECT_NE(outcome.errors.find("zvwt: interrupted; what had been begun is removed\n"),
            std::string::npos)
      << outcome.errors;
  EXPECT_EQ(tables_.names(), files);
}

}  // namespace
