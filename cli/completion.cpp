#include "completion.h"

#include "commands.h"
#include "manual.h"
#include "study/expression/language.h"
#include "study/sample/sample.h"

#include <CLI/CLI.hpp>

#include <map>
#include <vector>

namespace cli {
namespace {

/// The fixed parts of the script. Between them stands, for each command, what may follow it.
constexpr char kHead[] =
    R"(# Completion of zel's command lines for bash. Made by the program from its own help.

# What may stand after the first words of the line: prints possible words of $1.
_zel_words() { compgen -W "$2" -- "$1"; }
_zel_files() { compgen -f -- "$1"; }
_zel_files_named() {
  compgen -f -X "!*$2" -- "$1"
  compgen -d -- "$1"
}

_zel() {
  local current=$2 previous=$3 command= i
  if [[ $current == = ]]; then  # --option=
    current=
  elif [[ $previous == = && $COMP_CWORD -ge 2 ]]; then  # --option=beginning
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} != -* ]] && command=${COMP_WORDS[i]} && break
  done
  COMPREPLY=()
  case $command in
)";
constexpr char kTail[] = R"(  esac
}
complete -F _zel zel
)";

std::string Join(const std::vector<std::string>& words, const std::string& separator) {
  std::string out;
  for (const std::string& word : words) out += (out.empty() ? "" : separator) + word;
  return out;
}

std::vector<std::string> Names(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::string Reply(const std::string& call) {
  return "mapfile -t COMPREPLY < <(" + call + ")";
}

std::string Words(const std::vector<std::string>& words) {
  return Reply("_zel_words \"$current\" '" + Join(words, " ") + "'");
}

/// The statement that offers values of that name; empty when they cannot be told.
std::string Values(const std::string& name) {
  if (name == "FUNCTION") return Words(FunctionNames());
  if (name == "SCHEME") return Words(SchemeNames());
  // Outside of a running completion, as in tests, compopt has nothing to set.
  const std::string files = "compopt -o filenames 2>/dev/null; ";
  if (name == "PROJECT") return files + Reply("_zel_files_named \"$current\" .vrdb");
  if (name == "CSV") return files + Reply("_zel_files_named \"$current\" .csv");
  if (name == "FILE") return files + Reply("_zel_files \"$current\"");
  return "";
}

/// The branch of the script that completes behind `pattern`.
/// @param commands  of the program; a command has none
std::string Branch(const CLI::App& app, const std::string& pattern,
                   const std::vector<std::string>& commands) {
  std::vector<std::string> options;
  std::map<std::string, std::vector<std::string>> by_statement;  // options with such values
  std::string positional;
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_group().empty()) continue;
    const std::string value = ValueName(*option);
    if (option->get_positional() && positional.empty()) positional = Values(value);
    if (option->get_positional()) continue;
    const std::vector<std::string> names = Names(*option);
    options.insert(options.end(), names.begin(), names.end());
    if (value.empty()) continue;
    auto& same = by_statement[Values(value)];
    same.insert(same.end(), names.begin(), names.end());
  }
  if (!commands.empty()) positional = Words(commands);

  std::string out = "    " + pattern + ")\n      case $previous in\n";
  for (const auto& [statement, names] : by_statement)
    out += "        " + Join(names, " | ") + ")\n" +
           (statement.empty() ? "" : "          " + statement + '\n') + "          return ;;\n";
  out += "      esac\n";
  if (positional.empty()) return out + "      " + Words(options) + " ;;\n";
  return out + "      if [[ $current == -* ]]; then\n        " + Words(options) +
         "\n      else\n        " + positional + "\n      fi ;;\n";
}

}  // namespace

std::string BashCompletion(const CLI::App& app) {
  std::vector<std::string> commands;
  std::string branches;
  for (const CLI::App* const command : app.get_subcommands(nullptr)) {
    if (command->get_group().empty()) continue;
    commands.push_back(command->get_name());
    branches += Branch(*command, command->get_name(), {});
  }
  return kHead + Branch(app, "''", commands) + branches + kTail;
}

}  // namespace cli
