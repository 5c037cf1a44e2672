#include "analysis_commands.h"
#include "number_range.h"
#include "study/analysis/propagation_report.h"
#include "varied_study_options.h"

#include <CLI/CLI.hpp>

namespace cli {
namespace {

struct PropagateOptions : VariedStudyOptions {
  corvath::analysis::PropagationSettings settings;
  std::string scheme = "latin-hypercube";
  bool without_form = false;
};

void RunPropagate(PropagateOptions& options) {
  options.settings.scheme = corvath::study::ParseSampleScheme(options.scheme);
  options.settings.with_form = !options.without_form;
  RunVariedStudy(
      options, /*needs_distributions=*/true,
      [&](const corvath::study::VariedStudy& study, const corvath::study::Progress& progress) {
        return corvath::study::PropagationReport(study, options.settings, progress);
      });
}

}  // namespace

void AddPropagate(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "propagate",
      "Tell how responses and criteria scatter when the inputs do\n\n"
      "Statistics of a sample of the inputs' distributions, each with its confidence interval, "
      "and\n"
      "the probability that each limit is violated. For rare violations their most likely points\n"
      "are searched (FORM), with importance sampling around them. Inputs without distribution "
      "stay\n"
      "at their reference values.");
  static PropagateOptions options;
  AddVariedStudyOptions(*command, options);
  command->add_option("--scheme", options.scheme, "latin-hypercube, sobol or monte-carlo")
      ->capture_default_str()
      ->type_name("SCHEME");
  command->add_option("--n", options.settings.num_designs, "Designs of the sample")
      ->transform(WholeNumber(2, 1000000000))
      ->capture_default_str()
      ->type_name("NUMBER");
  command
      ->add_option("--until", options.settings.until,
                   "Double the sample until means, standard deviations and probabilities are known "
                   "to this relative precision, 0.01 for 1 %")
      ->check(Number(1e-6, 1.0))
      ->type_name("PRECISION");
  command->add_option("--most", options.settings.most, "Designs at most with --until")
      ->transform(WholeNumber(2, 1000000000))
      ->capture_default_str()
      ->type_name("NUMBER");
  command->add_option("--quantiles", options.settings.quantiles, "Probabilities of quantiles")
      ->delimiter(',')
      ->check(Number(0.0, 1.0))
      ->capture_default_str()
      ->type_name("P,...");
  command->add_flag(
      "--model-error", options.settings.with_errors,
      "Let the errors of the models scatter, too: normal, with the root mean square of "
      "the cross-validated residuals");
  command->add_flag("--no-form", options.without_form, "Sample alone");
  command->add_option("--seed", options.settings.seed, "The same seed gives the same numbers")
      ->transform(Seed())
      ->capture_default_str()
      ->type_name("NUMBER");
  command->callback([] { RunPropagate(options); });
}

}  // namespace cli
