#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

namespace {

using Play = void (*)(const Teller&, const Words&);

constexpr const char* asChild = "--child";

std::map<std::string, Play>& parts() {
  static std::map<std::string, Play> known;
  return known;
}

Words wordsOfChild(const std::string& part, const Words& words) {
  Words all = programAt(ownPath());
  all.insert(all.end(), {asChild, part});
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

}  // namespace

void Teller::tell(int stage, const char* text, std::int64_t number) const {
  Note note = {.stage = stage, .number = number};
  (void)std::snprintf(note.text, sizeof note.text, "%s", text);
  if (std::fwrite(&note, sizeof note, 1, stdout) != 1 || std::fflush(stdout) != 0) {
    std::_Exit(2);
  }
}

void Teller::fail(const char* text) const {
  tell(failed, text);
  std::_Exit(1);
}

ChildPart::ChildPart(const char* name, Play play) { parts()[name] = play; }

ChildProcess::ChildProcess(const std::string& part, const Words& words)
    : program_(wordsOfChild(part, words), {.input = {},
                                           .output = {Program::Stream::Kind::pipe, {}},
                                           .errors = {Program::Stream::Kind::sameAsTest, {}}}) {}

std::optional<Note> ChildProcess::next(std::chrono::milliseconds wait) const {
  Note note;
  return program_.readOutput(&note, sizeof note, wait) ? std::optional(note) : std::nullopt;
}

void ChildProcess::end() {
  program_.kill();
  (void)program_.wait();
}

int main(int count, char** arguments) {
  if (count > 2 && std::strcmp(arguments[1], asChild) == 0) {
    keepOutputUnchanged();
    parts().at(arguments[2])(Teller(), Words(arguments + 3, arguments + count));
    return 0;
  }
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
