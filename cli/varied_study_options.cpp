#include "varied_study_options.h"

#include "common_options.h"

#include <CLI/CLI.hpp>

namespace cli {

void AddVariedStudyOptions(CLI::App& command, VariedStudyOptions& options) {
  AddProject(command, options.file);
  AddRepeated(command, "--distribution", "NAME:TYPE(NUMBERS)", options.variation.distributions,
              "How an input scatters, in place of what the project says: "
              "'load:normal(12, 0.6)', 'load:lognormal(mean=12, cov=0.05)', "
              "'gap:uniform(0.1, 0.3)'; may be repeated");
  AddRepeated(command, "--fix", "NAME=VALUE", options.variation.fixed,
              "An input that shall not vary, and its value; may be repeated");
  AddRepeated(command, "--criterion", "NAME:EXPRESSION", options.variation.criteria,
              "A further criterion: 'cost: 3*mass + load' for a value, 'limit: stress <= 25' for "
              "a limit (or >=); may be repeated");
  AddJsonAndCsv(command, options.json, "Print all as one JSON document", options.csv,
                "Write the numbers to this file as well; - prints them in place of the text");
  AddSignature(command, options.hash);
  AddQuiet(command, options.quiet, "Print no line of progress");
}

}  // namespace cli
