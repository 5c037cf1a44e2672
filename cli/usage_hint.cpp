#include "usage_hint.h"

#include "commands.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <CLI/CLI.hpp>

#include <utility>
#include <vector>

namespace cli {
namespace {

bool IsOption(const std::string& word) {
  return word.size() > 2 && word.compare(0, 2, "--") == 0;
}

/// The options that help shows.
std::vector<std::string> LongOptions(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : app.get_options())
    if (!option->get_group().empty())
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

std::vector<std::string> Commands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({}))
    names.push_back(command->get_name());
  return names;
}

std::string Hint(const std::string& what, const std::string& word,
                 const std::vector<std::string>& names, const std::string& program) {
  const std::string* const near = FindNear(word, names);
  return "no " + what + ' ' + Quoted(word) + "; " +
         (near != nullptr ? "did you mean " + Quoted(*near) + '?' : program + " --help lists all");
}

}  // namespace

std::string UsageHint(const CLI::App& app) {
  const std::vector<CLI::App*> parsed = app.get_subcommands();
  const std::vector<std::string> words = app.remaining(/*recurse=*/true);
  std::string program = app.get_name();
  std::vector<std::string> options = LongOptions(app);
  if (!parsed.empty()) {
    program += ' ' + parsed.front()->get_name();
    for (std::string& option : LongOptions(*parsed.front())) options.push_back(std::move(option));
  }
  for (const std::string& word : words)
    if (IsOption(word)) return Hint("option", word.substr(0, word.find('=')), options, program);
  return parsed.empty() && !words.empty() ? Hint("command", words.front(), Commands(app), program)
                                          : "";
}

}  // namespace cli
