#include "varied_study_options.h"

#include <CLI/CLI.hpp>

namespace cli {

void AddVariedStudyOptions(CLI::App& command, VariedStudyOptions& options) {
  command.add_option("PROJECT", options.file, "Project file (.vrdb)")->required()->type_name("");
  command
      .add_option("--distribution", options.variation.distributions,
                  "How an input scatters, in place of what the project says: "
                  "'load:normal(12, 0.6)', 'load:lognormal(mean=12, cov=0.05)', "
                  "'gap:uniform(0.1, 0.3)'; may be repeated")
      ->type_name("NAME:TYPE(NUMBERS)")
      ->allow_extra_args(false);
  command
      .add_option("--fix", options.variation.fixed,
                  "An input that shall not vary, and its value; may be repeated")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command
      .add_option(
          "--criterion", options.variation.criteria,
          "A further criterion: 'cost: 3*mass + load' for a value, 'limit: stress <= 25' for "
          "a limit (or >=); may be repeated")
      ->type_name("NAME:EXPRESSION")
      ->allow_extra_args(false);
  auto* const json = command.add_flag("--json", options.json, "Print all as one JSON document");
  command
      .add_option("--csv", options.csv,
                  "Write the numbers to this file as well; - prints them in place of the text")
      ->type_name("CSV")
      ->each([json](const std::string& path) {
        if (path == "-" && json->count() > 0) throw CLI::ExcludesError("--csv -", "--json");
      });
  command
      .add_option("--hash", options.hash,
                  "Refuse PROJECT unless this is its signature (see zel hash)")
      ->type_name("SHA512");
  command.add_flag("--quiet", options.quiet, "Print no line of progress");
}

}  // namespace cli
