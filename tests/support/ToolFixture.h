/// What the tests of the command line tool share: its runs, on directories of their own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Program.h"
#include "support/TemporaryDirectory.h"

struct Outcome {
  int exitCode;
  std::string output;
  std::string errors;
};

class Tool : public testing::Test {
 protected:
  using Stream = Program::Stream;
  using Words = std::vector<std::string>;

  /// Runs the tool on the tables' directory.
  Outcome run(const std::string& verb, const Words& arguments, const Stream& input = {}) {
    return runTool(words(verb, arguments), input);
  }

  /// Runs it with nothing but these words.
  Outcome runTool(const Words& given, const Stream& input = {}) {
    Program program(programWords(given), {input, file("out"), file("err")});
    return outcomeOf(program);
  }

  /// The exit code when nothing can be written to standard output, and what it says about it.
  Outcome runWithoutOutput(const std::string& verb, const Words& arguments) {
    Program program(programWords(words(verb, arguments)),
                    {{}, {Stream::Kind::refusing, {}}, file("err")});
    (void)files_.write("out", "");
    return outcomeOf(program);
  }

  Outcome outcomeOf(Program& program) {
    const int exitCode = program.wait();
    return {exitCode, TemporaryDirectory::read(files_.file("out")), errors()};
  }

  /// What was said, whatever ends the lines of texts on this system.
  [[nodiscard]] std::string errors() const {
    std::string text = TemporaryDirectory::read(files_.file("err"));
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) {
      text.erase(at, 1);
    }
    return text;
  }

  Words words(const std::string& verb, const Words& arguments) const {
    Words all = {verb, "--dir", tables_.path()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }

  static Words programWords(const Words& given) {
    Words all = programAt(ZVWT_TOOL_PATH);
    all.insert(all.end(), given.begin(), given.end());
    return all;
  }

  /// One of the tests' own files as a stream.
  [[nodiscard]] Stream file(const std::string& name) const {
    return Program::file(files_.file(name));
  }

  /// The line that a verb prints: the name of a table.
  static std::string nameIn(const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(outcome.output.ends_with('\n'));
    return outcome.output.substr(0, outcome.output.find('\n'));
  }

  /// Imports a CSV text and returns the table's name.
  std::string import(const std::string& text, std::vector<std::string> options = {}) {
    options.push_back(files_.write("in.csv", text));
    return nameIn(run("import", options));
  }

  /// A path as it stands in JSON.
  static std::string inJson(const std::string& path) {
    std::string text;
    for (const char byte : path) {
      text += byte == '\\' ? "\\\\" : std::string(1, byte);
    }
    return text;
  }

  std::string exported(const std::string& table, std::vector<std::string> options = {}) {
    options.push_back(table);
    const Outcome outcome = run("export", options);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return outcome.output;
  }

  TemporaryDirectory tables_;
  TemporaryDirectory files_;
};
