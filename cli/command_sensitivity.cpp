#include "analysis_commands.h"
#include "number_range.h"
#include "study/analysis/sensitivity_report.h"
#include "varied_study_options.h"

#include <CLI/CLI.hpp>

namespace cli {
namespace {

struct SensitivityOptions : VariedStudyOptions {
  corvath::analysis::SensitivitySettings settings;
};

void RunSensitivity(const SensitivityOptions& options) {
  RunVariedStudy(
      options, /*needs_distributions=*/false,
      [&](const corvath::study::VariedStudy& study, const corvath::study::Progress& progress) {
        return corvath::study::SensitivityReport(study, options.settings, progress);
      });
}

}  // namespace

void AddSensitivity(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "sensitivity",
      "Tell which inputs matter for each response and criterion\n\n"
      "Sobol' indices on the models: the share of the variance that an input explains by itself\n"
      "(first order) and with all its interactions (total). Inputs vary evenly between their\n"
      "bounds, or as they scatter if the project is over random inputs. Correlated inputs count "
      "as\n"
      "one. What the models leave unexplained (1 - CoP) is told beside it.");
  static SensitivityOptions options;
  AddVariedStudyOptions(*command, options);
  command
      ->add_option(
          "--over", options.variation.over,
          "How inputs vary: evenly between their bounds, or by their distributions; inputs "
          "without distribution then stay at their reference values. Without this option as the "
          "project was sampled, or by what --distribution says")
      ->check(CLI::IsMember({"bounds", "distributions"}).description(""))
      ->type_name("bounds|distributions");
  command
      ->add_option(
          "--n", options.settings.num_base,
          "Rows of the base samples; the models are evaluated at n (inputs + 2) designs. A "
          "power of 2 is best")
      ->transform(WholeNumber(2, 1000000000))
      ->capture_default_str()
      ->type_name("NUMBER");
  command->add_flag("--second-order", options.settings.second_order,
                    "Add the interactions of pairs of inputs, at n (2 inputs + 2) designs");
  command->add_option("--seed", options.settings.seed, "The same seed gives the same numbers")
      ->transform(Seed())
      ->capture_default_str()
      ->type_name("NUMBER");
  command->callback([] { RunSensitivity(options); });
}

}  // namespace cli
