#include "analysis_commands.h"
#include "commands.h"
#include "common_options.h"
#include "interruption.h"
#include "number_range.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/decide/optimize.h"
#include "study/describe/json_text.h"
#include "study/table/csv_writer.h"
#include "study/table/output_file.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace cli {
namespace {

struct OptimizeOptions {
  std::string file;
  std::string hash;  ///< expected signature of `file`; empty: not checked
  std::vector<std::string> minimize;
  std::vector<std::string> maximize;
  std::vector<std::string> limits;
  std::vector<std::string> bounds;
  std::vector<std::string> fixed;
  std::vector<std::string> distributions;
  bool no_project_limits = false;
  double robust = 0.0;
  std::uint64_t starts = 40;
  std::uint64_t points = 0;
  std::uint64_t next = 0;
  std::string next_by = "improvement";  ///< or "error"
  std::uint32_t seed = 1;
  std::string csv;     ///< the designs as CSV; "-" is standard output; empty: none
  bool json = false;   ///< print the result as JSON
  bool quiet = false;  ///< errors alone
};

OptimizeRequest RequestOf(const OptimizeOptions& options) {
  OptimizeRequest request;
  request.minimize = options.minimize;
  request.maximize = options.maximize;
  request.limits = options.limits;
  request.own_limits = !options.no_project_limits;
  request.bounds = options.bounds;
  request.fixed = options.fixed;
  request.distributions = options.distributions;
  request.robust = options.robust;
  request.seed = options.seed;
  request.starts = options.starts;
  request.points = options.points;
  request.next = options.next;
  request.next_by_error = options.next_by == "error";
  request.wording = Wording::kCommandLine;
  return request;
}

void WriteDesigns(const Optimization& result, const std::string& path) {
  OutputFile file(path, ClaimStandardOutput(), &GetFileWatcher());
  CsvWriter writer(file);
  for (const std::string& column : result.columns) writer.Add(column);
  writer.EndRecord();
  for (Eigen::Index k = 0; k < result.designs.rows(); ++k) {
    for (Eigen::Index i = 0; i < result.designs.cols(); ++i) {
      const auto column = static_cast<std::size_t>(i);
      const double value = result.designs(k, i);
      if (column < result.words.size() && !result.words[column].empty())
        writer.Add(result.words[column].at(static_cast<std::size_t>(value)));
      else
        writer.Add(value);
    }
    writer.EndRecord();
  }
  writer.Flush();
  file.Commit();
}

/// @throws Refusal  also where no design keeps the limits, after the result is printed
void RunOptimize(const OptimizeOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  const Project project = Project::Open(options.file, options.hash);
  ProgressLine line(!options.quiet);
  const Optimization result =
      Optimize(project, RequestOf(options), [&](double share, const std::string& work) {
        line.Update(work, share);
        return true;
      });
  line.Clear();
  if (!options.csv.empty() && result.success) WriteDesigns(result, options.csv);
  if (options.json)
    PrintResult(JsonText(result.document));
  else if (!options.quiet && options.csv != "-")
    PrintResult(result.text);
  if (!result.success) throw Refusal(options.file + ": " + result.refusal);
}

}  // namespace

void AddOptimize(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "optimize",
      "Find the best design on the models of a project\n\n"
      "Minimises or maximises responses, criteria or expressions of them within the bounds of the\n"
      "analysed designs and the project's limit criteria. Prints the design, what holds it back, "
      "the\n"
      "error to expect there, how far the models are to be trusted, and the nearest analysed\n"
      "designs. With two or three objectives it is a Pareto front. A result that breaks a limit "
      "has\n"
      "the exit status 1.");
  static OptimizeOptions options;
  const auto add_texts = [&](const char* name, std::vector<std::string>& texts, const char* help,
                             const char* type) { AddRepeated(*command, name, type, texts, help); };
  AddProject(*command, options.file);
  add_texts("--minimize", options.minimize,
            "Response, criterion or expression of them; may be repeated", "OBJECTIVE");
  add_texts("--maximize", options.maximize, "Likewise", "OBJECTIVE");
  add_texts("--limit", options.limits,
            "For example 'max(abs(stress)) <= 20', with name: in front of it if it is to have one; "
            "of a vector each element counts; may be repeated",
            "LIMIT");
  command->add_flag("--no-project-limits", options.no_project_limits,
                    "Leave out the limit criteria of the project");
  add_texts(
      "--bounds", options.bounds,
      "Range of an input in place of that of the analysed designs; name=value holds its mean, "
      "which --robust lets scatter; may be repeated",
      "NAME:LOW:HIGH");
  add_texts("--fix", options.fixed, "An input that shall not vary, and its value; may be repeated",
            "NAME=VALUE");
  add_texts("--distribution", options.distributions,
            "How an input scatters, in place of what the project says, for --robust: "
            "'load:normal(12, 0.6)'; around the designs, with the mean of each; may be repeated",
            "NAME:TYPE(NUMBERS)");
  command
      ->add_option("--robust", options.robust,
                   "Keep limits with so many standard deviations of what the inputs' scatter gives")
      ->check(Number(0.0, 1000.0))
      ->type_name("NUMBER");
  command
      ->add_option("--starts", options.starts,
                   "Searches, at most; fewer where they make sure earlier that there is no better "
                   "optimum")
      ->transform(WholeNumber(1, 100000))
      ->capture_default_str()
      ->type_name("NUMBER");
  command
      ->add_option(
          "--points", options.points,
          "Points of a Pareto front; 101 without this option, with three objectives some 100")
      ->transform(WholeNumber(2, 10000))
      ->type_name("NUMBER");
  auto* const next =
      command
          ->add_option("--next", options.next,
                       "Propose so many designs to analyse next, instead of an optimum")
          ->transform(WholeNumber(1, 10000))
          ->type_name("NUMBER");
  command
      ->add_option("--next-by", options.next_by,
                   "improvement: where the objective is expected to improve most; error: where the "
                   "models err most, without an objective")
      ->check(CLI::IsMember({"improvement", "error"}).description(""))
      ->needs(next)
      ->capture_default_str()
      ->type_name("WHAT");
  command->add_option("--seed", options.seed, "The same seed gives the same result")
      ->transform(Seed())
      ->capture_default_str()
      ->type_name("NUMBER");
  AddJsonAndCsv(*command, options.json, "Print the result as one JSON document", options.csv,
                "Write the designs too: inputs, then responses and criteria; proposed ones as "
                "inputs alone; - prints them in place of the text");
  AddSignature(*command, options.hash);
  AddQuiet(*command, options.quiet);
  command->callback([] { RunOptimize(options); });
}

}  // namespace cli
