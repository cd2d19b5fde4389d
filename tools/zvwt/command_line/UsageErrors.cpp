#include "command_line/UsageErrors.h"

#include <algorithm>

#include "process/Failure.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

constexpr const char* advice = "; zvwt --help tells what there is";

std::vector<std::string> verbNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* verb : app.get_subcommands({})) {
    names.push_back(verb->get_name());
  }
  return names;
}

std::vector<std::string> optionNames(const CLI::App& verb) {
  std::vector<std::string> names;
  for (const CLI::Option* option : verb.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return names;
}

/// The first word that the verb had no place for.
std::string unexpectedWordText(const CLI::App& verb, const std::string& word) {
  if (!word.starts_with('-')) {
    return quotedName(word) + " is one argument too many";
  }
  const std::string name = word.substr(0, word.find('='));
  return "there is no option " + quotedName(name) + didYouMean(name, optionNames(verb));
}

}  // namespace

void requireVerb(const CLI::App& app, const std::string& word) {
  const std::vector<std::string> verbs = verbNames(app);
  const bool isVerb = std::find(verbs.begin(), verbs.end(), word) != verbs.end();
  if (isVerb || word.starts_with('-')) {
    return;
  }
  const std::string suggestion = didYouMean(word, verbs);
  throw Failure(ExitCode::usage, "there is no verb " + quotedName(word) +
                                     (suggestion.empty() ? advice : suggestion));
}

std::string usageErrorText(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> verbs = app.get_subcommands();
  const std::vector<std::string> words = app.remaining(/*recurse=*/true);
  if (verbs.empty()) {
    return words.empty() ? std::string("a verb is missing") + advice
                         : unexpectedWordText(app, words.front());
  }
  const CLI::App& verb = *verbs.front();
  const bool isUnexpected = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  return verb.get_name() + ": " +
         (isUnexpected && !words.empty() ? unexpectedWordText(verb, words.front()) : error.what());
}

}  // namespace zvwttool
