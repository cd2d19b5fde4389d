#include "command_line/CommandWords.h"

#include <algorithm>
#include <string_view>

namespace zvwttool {
namespace {

void replaceHelp(std::vector<std::string>* words) {
  if (words->empty() || words->front() != "help") {
    return;
  }
  words->erase(words->begin());
  words->insert(words->begin() + (words->empty() ? 0 : 1), "--help");
}

/// The verb that a command line begins with; null when it begins with none.
const CLI::App* verbOf(const CLI::App& app, const std::vector<std::string>& words) {
  const std::vector<const CLI::App*> verbs = app.get_subcommands({});
  const auto found = std::find_if(verbs.begin(), verbs.end(), [&words](const CLI::App* verb) {
    return !words.empty() && verb->get_name() == words.front();
  });
  return found == verbs.end() ? nullptr : *found;
}

/// Whether a word is an option that has a value, given behind it or as another word.
bool takesValue(const CLI::App& verb, const std::string& word) {
  const CLI::Option* option = verb.get_option_no_throw(word);
  return word.starts_with('-') && option != nullptr && option->get_items_expected_max() > 0;
}

std::vector<std::string> withEmptyValues(const CLI::App& verb,
                                         const std::vector<std::string>& words) {
  std::vector<std::string> all;
  bool isValue = false;  // of the option before it, whatever it looks like
  bool areOptionsOver = false;
  for (const std::string& word : words) {
    areOptionsOver = areOptionsOver || (word == "--" && !isValue);
    const std::string option = word.substr(0, word.size() - 1);
    const bool lacksValue = !isValue && !areOptionsOver && word.starts_with("--") &&
                            word.find('=') == word.size() - 1 && takesValue(verb, option);
    isValue = !isValue && !areOptionsOver && takesValue(verb, word);
    all.push_back(lacksValue ? option : word);
    if (lacksValue) {
      all.emplace_back();
    }
  }
  return all;
}

}  // namespace

std::vector<std::string> parsableWords(const CLI::App& app, std::vector<std::string> words) {
  replaceHelp(&words);
  const CLI::App* verb = verbOf(app, words);
  return verb != nullptr ? withEmptyValues(*verb, words) : words;
}

}  // namespace zvwttool
