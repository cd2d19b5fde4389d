/// What the tests of the command line tool share: its runs, on directories of their own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/TemporaryDirectory.h"

struct Outcome {
  int exitCode;
  std::string output;
  std::string errors;
};

/// An argument as the shell takes it.
inline std::string quoted(const std::string& argument) {
  std::string text = "'";
  for (const char byte : argument) {
    text += byte == '\'' ? "'\\''" : std::string(1, byte);
  }
  return text + "'";
}

class Tool : public testing::Test {
 protected:
  /// Runs the tool on the tables' directory.
  Outcome run(const std::string& verb, const std::vector<std::string>& arguments,
              const std::string& redirection = "") {
    return execute(commandLine(verb, arguments) + ' ' + redirection);
  }

  std::string commandLine(const std::string& verb, const std::vector<std::string>& arguments) {
    std::string command = quoted(ZVWT_TOOL_PATH) + ' ' + verb;
    command += " --dir " + quoted(tables_.path());
    for (const std::string& argument : arguments) {
      command += ' ' + quoted(argument);
    }
    return command;
  }

  /// Runs a line of the shell, whose own redirections go before these.
  Outcome execute(const std::string& command) {
    const int status = std::system(("{ " + command + "\n} >" + quoted(files_.file("out")) + " 2>" +
                                    quoted(files_.file("err")) + " </dev/null")
                                       .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            TemporaryDirectory::read(files_.file("out")),
            TemporaryDirectory::read(files_.file("err"))};
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

  std::string exported(const std::string& table, std::vector<std::string> options = {}) {
    options.push_back(table);
    const Outcome outcome = run("export", options);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return outcome.output;
  }

  TemporaryDirectory tables_;
  TemporaryDirectory files_;
};
