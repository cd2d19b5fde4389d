#include <vector>

#include "command_line/CommandDescription.h"

namespace zvwttool {
namespace {

constexpr const char* start =
    R"BASH(# Completes the command line of zvwt in bash; made by zvwt --bash-completion.

# The tables in the directories that the command line names.
_zvwt_tables() {
  local directories=() i
  for ((i = 2; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} == --dir ]]; then
      directories+=(--dir "${COMP_WORDS[i + 1]}")
    fi
  done
  "${COMP_WORDS[0]}" list --json "${directories[@]}" 2>/dev/null |
    sed -n 's/^ *{"name": "\([^"]*\)".*/\1/p'
}

_zvwt_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "${COMP_WORDS[COMP_CWORD]}")
}

_zvwt_paths() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "${COMP_WORDS[COMP_CWORD]}")
}

_zvwt() {
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
)BASH";

constexpr const char* end = R"BASH(  esac
}

complete -F _zvwt zvwt
)BASH";

std::vector<const CLI::App*> verbsOf(const CLI::App& app) { return app.get_subcommands({}); }

std::string verbNames(const CLI::App& app) {
  std::string names;
  for (const CLI::App* verb : verbsOf(app)) {
    names += (names.empty() ? "" : " ") + verb->get_name();
  }
  return names;
}

std::string longName(const CLI::Option& option) {
  return option.get_lnames().empty() ? "" : "--" + option.get_lnames().front();
}

/// The words that an option's value can be, parted by blanks; empty when any text can be.
std::string choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t begin = type.find('{');
  if (begin == std::string::npos) {
    return "";
  }
  std::string words = type.substr(begin + 1, type.find('}') - begin - 1);
  for (char& character : words) {
    character = character == ',' ? ' ' : character;
  }
  return words;
}

/// A case for an option that takes a value: what to complete behind it, if anything.
std::string valueCase(const std::string& verb, const CLI::Option& option) {
  const std::string choices = choicesOf(option);
  std::string action;
  if (longName(option) == "--dir") {
    action = "_zvwt_paths -d; ";
  } else if (!choices.empty()) {
    action = "_zvwt_words '" + choices + "'; ";
  }
  return "    " + verb + ':' + longName(option) + ") " + action + "return ;;\n";
}

std::string valueCases(const CLI::App& verb) {
  std::string cases;
  for (const CLI::Option* option : verb.get_options()) {
    if (option->nonpositional() && option->get_items_expected_max() > 0) {
      cases += valueCase(verb.get_name(), *option);
    }
  }
  return cases;
}

std::string optionNames(const CLI::App& verb) {
  std::string names;
  for (const CLI::Option* option : verb.get_options()) {
    if (option->nonpositional() && !longName(*option).empty()) {
      names += (names.empty() ? "" : " ") + longName(*option);
    }
  }
  return names;
}

bool takesWords(const CLI::App& verb) {
  return !verb.get_options([](const CLI::Option* option) { return option->get_positional(); })
              .empty();
}

/// What stands where no option does: files for import, nothing for verbs that take nothing but
/// options, else tables.
std::string wordCase(const CLI::App& verb) {
  const std::string begin = "    " + verb.get_name();
  std::string cases = begin + ":-*) _zvwt_words '" + optionNames(verb) + "' ;;\n";
  if (takesWords(verb)) {
    const bool takesFile = verb.get_option_no_throw("FILE") != nullptr;
    cases += begin + ":*) " + (takesFile ? "_zvwt_paths -f" : "_zvwt_words \"$(_zvwt_tables)\"") +
             " ;;\n";
  }
  return cases;
}

}  // namespace

std::string bashCompletion(const CLI::App& app) {
  std::string script = start;
  script += "    _zvwt_words '" + verbNames(app) + " --help --version'\n    return\n  fi\n";
  script += "  case ${COMP_WORDS[1]}:${COMP_WORDS[COMP_CWORD - 1]} in\n";
  for (const CLI::App* verb : verbsOf(app)) {
    script += valueCases(*verb);
  }
  script += "  esac\n  case ${COMP_WORDS[1]}:${COMP_WORDS[COMP_CWORD]} in\n";
  for (const CLI::App* verb : verbsOf(app)) {
    script += wordCase(*verb);
  }
  return script + end;
}

}  // namespace zvwttool
