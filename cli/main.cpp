#include "analysis_commands.h"
#include "commands.h"
#include "common_options.h"
#include "completion.h"
#include "exchange/export_project.h"
#include "foundation/build_version.h"
#include "interruption.h"
#include "manual.h"
#include "standard_output.h"
#include "usage_hint.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

// What an option takes is named by its type name, in help, manual page and completion: PROJECT, CSV
// and FILE are files, see BashCompletion. A positional is named so itself, without a type name.

namespace {

constexpr int kRefused = 1;
constexpr int kUsage = 2;

/// Help of the program has one line for each command; its own help says the rest.
class Help : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App* command) const override {
    const std::string text = command->get_description();
    std::stringstream out;
    CLI::detail::format_help(out, command->get_name(), text.substr(0, text.find('\n')),
                             get_column_width());
    return out.str();
  }
};

void AddInfo(CLI::App& app) {
  auto* const command = app.add_subcommand("info", "Show what a project holds");
  static cli::InfoOptions options;
  cli::AddProject(*command, options.file);
  command->add_flag(
      "--candidates", options.candidates,
      "List the models that competed for each response, the chosen one marked with *");
  command->add_flag("--models", options.models, "Show the formulas of the models, in full");
  command->add_flag("--json", options.json, "Print all as one JSON document");
  cli::AddSignature(*command, options.hash);
  command->callback([] { cli::RunInfo(options); });
}

void AddSolve(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "solve",
      "Predict responses at designs\n\n"
      "Reads a CSV whose header row names the inputs, in any order; other columns are ignored.\n"
      "Writes a CSV with one row for each design: the responses, then what the options add.\n"
      "What a model cannot tell is nan.");
  static cli::SolveOptions options;
  cli::AddProject(*command, options.file);
  command->add_option("--in", options.in, "Designs to predict at; - is standard input")
      ->required()
      ->type_name("CSV");
  command->add_option("-o,--out", options.out, "Result; - is standard output")
      ->capture_default_str()
      ->type_name("CSV");
  command->add_flag("--extrapolate", options.extrapolate,
                    "Predict outside the bounds of the project's designs too");
  command->add_flag("--errors", options.errors,
                    "Add for each response the local CoP, and the root mean square, mean and mean "
                    "absolute error around the design");
  command->add_flag("--density", options.density,
                    "Add for each response the density of support points at the design");
  cli::AddRepeated(
      *command, "--gradients", "RESPONSE", options.gradients,
      "Add the gradients of this response, one column for each input; may be repeated");
  command->add_flag("--criteria", options.criteria, "Add the criteria");
  cli::AddSignature(*command, options.hash);
  cli::AddQuiet(*command, options.quiet);
  command->callback([] { cli::RunSolve(options); });
}

void AddEval(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "eval",
      "Evaluate an expression of the language of criteria\n\n"
      "Prints the value: its kind, then its numbers. Put -- before an expression that begins with "
      "a minus sign.");
  static std::string expression;
  static std::vector<std::string> definitions;
  command->add_option("EXPRESSION", expression, "For example 'max(abs(stress)) <= 25'")
      ->required()
      ->type_name("");
  cli::AddRepeated(*command, "--set", "NAME=EXPRESSION", definitions,
                   "Give a name a meaning for this evaluation; may be repeated");
  command->callback([] { cli::RunEval(expression, definitions); });
}

void AddMacros(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "macros",
      "List the macros of the language of criteria\n\n"
      "A macro puts the texts of its arguments in the places of its parameters. Beside the "
      "built-in "
      "ones there are those of the user's file Corvath/calculator/macros.def in $APPDATA, "
      "$XDG_CONFIG_HOME or ~/.config.");
  command->callback([] { cli::RunMacros(); });
}

void AddHelp(CLI::App& app) {
  auto* const command =
      app.add_subcommand("help", "Explain a function of expressions: signature, text, arguments");
  static std::string function;
  command->add_option("FUNCTION", function, "Its name; zel functions lists all")
      ->required()
      ->type_name("");
  command->callback([] { cli::RunHelp(function); });
}

void AddFunctions(CLI::App& app) {
  auto* const command =
      app.add_subcommand("functions", "List the functions and constants of expressions");
  command->callback([] { cli::RunFunctions(); });
}

void AddSample(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "sample",
      "Make points at which to evaluate a design study\n\n"
      "Schemes, of which the first letters suffice: center-point, full-factorial, axial-points,\n"
      "star-points, koshal, koshal-linear, koshal-quadratic, central-composite, mixed-terms,\n"
      "box-behnken, full-combinatorial, latin-hypercube-sampling,\n"
      "latin-hypercube-sampling-midpoint, orthogonal-latin-hypercube-sampling,\n"
      "space-filling-latin-hypercube-sampling, advanced-latin-hypercube-sampling,\n"
      "sobol-sequence, plain-monte-carlo, fekete-points.\n"
      "fekete-points lie on a sphere within the bounds. Random inputs of a project follow their\n"
      "distributions and correlations; the levels of the first eleven schemes then span three\n"
      "standard deviations of a normal variable to each side.");
  static cli::SampleOptions options;
  command->add_option("--scheme", options.scheme, "How to place the points")
      ->required()
      ->type_name("SCHEME");
  command
      ->add_option("--n", options.n,
                   "Number of points; of levels per input for full-factorial, of steps on an "
                   "axis for axial-points and star-points, degree 1 or 2 for koshal")
      ->check(CLI::NonNegativeNumber.description(""))
      ->type_name("NUMBER");
  auto* const inputs =
      command
          ->add_option(
              "--inputs", options.inputs,
              "Inputs: name:low:high, or name:{a;b;c} with all states of a discrete one, numbers "
              "or words")
          ->delimiter(',')
          ->type_name("INPUT");
  auto* const from = command
                         ->add_option("--from", options.from,
                                      "Take the inputs of this project file (.vrdb) instead")
                         ->type_name("PROJECT");
  inputs->excludes(from);
  command->add_option("--hash", options.hash, "Refuse that file unless this is its signature")
      ->needs(from)
      ->type_name("SHA512");
  command->add_option("--seed", options.seed, "The same seed gives the same points")
      ->check(CLI::NonNegativeNumber.description(""))
      ->capture_default_str()
      ->type_name("NUMBER");
  command->add_option("-o,--out", options.out, "Result; - is standard output")
      ->capture_default_str()
      ->type_name("CSV");
  command->callback([inputs, from] {
    if (inputs->empty() && from->empty()) throw CLI::RequiredError("--inputs or --from");
    cli::RunSample(options);
  });
}

void AddTrain(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "train",
      "Train models on a table of designs, and write them as a project file\n\n"
      "Reads a CSV with one row for each design, also with semicolons or tabs, decimal commas, in\n"
      "UTF-16 or Latin-1. Its header row names the columns; those that neither --inputs nor\n"
      "--responses names are ignored. A row of units below it and lines that begin with # are no\n"
      "designs. Where the cell of a response is empty or no number, the design failed for this\n"
      "response alone. Inputs of few words become discrete inputs. For each response\n"
      "regressions, moving least squares and kriging compete over subsets of the inputs. The\n"
      "coefficient of prognosis (CoP) decides: the share of the variation that a model predicts\n"
      "at designs that it was not trained on. Prints a table of the chosen models.\n"
      "A name with a comma stands in quotation marks: --inputs 'a,\"b, c\"'.");
  static cli::TrainOptions options;
  command->add_option("CSV", options.table, "Table of designs; - is standard input")
      ->required()
      ->type_name("");
  const auto add_list = [&](const char* name, std::vector<std::string>& list, const char* text) {
    return cli::AddRepeated(*command, name, "NAMES", list, text);
  };
  add_list("--inputs", options.inputs,
           "Columns of the inputs: a,b,c or 'x_*', or all that are no responses: all; may be "
           "repeated")
      ->required();
  add_list("--responses", options.responses, "Columns of the responses: y,z or 'y*'")->required();
  add_list("--ignore", options.ignored, "Columns that patterns and all leave out");
  add_list("--discrete", options.discrete,
           "Inputs among them that take the values of the table and no others");
  add_list("--dates", options.dates,
           "Columns among them that are dates: 2024-01-31 or 31.01.2024, with or without 13:45; "
           "they become days since 1970-01-01");
  command->add_flag("--skip-incomplete", options.skip_incomplete,
                    "Leave rows out where an input is empty or NA, in place of refusing them");
  cli::AddRepeated(*command, "--criterion", "NAME:EXPRESSION", options.criteria,
                   "'cost: 3*mass + load' for a value, 'limit: stress <= 25' for a limit (or >=); "
                   "may be repeated");
  command
      ->add_option("-o,--out", options.out,
                   "Project file (.vrdb), replaced if it exists; without this option CSV with the "
                   "ending .vrdb, which must not exist")
      ->type_name("PROJECT");
  command
      ->add_option("--report", options.report,
                   "Write the project as a page for a browser, too, with the notes of the training "
                   "(see zel report)")
      ->type_name("FILE");
  command
      ->add_option("--budget", options.budget,
                   "Seconds that the training may take, roughly, on one core of a common machine; "
                   "counted in operations, so that the same budget gives the same models")
      ->check(CLI::PositiveNumber.description(""))
      ->capture_default_str()
      ->type_name("SECONDS");
  command
      ->add_flag("--anisotropic", options.anisotropic,
                 "No longer needed: kriging with a radius for each input always competes")
      ->group("");
  command
      ->add_option("--seed", options.seed,
                   "Of the groups of the cross-validation; the same seed gives the same models")
      ->check(CLI::NonNegativeNumber.description(""))
      ->capture_default_str()
      ->type_name("NUMBER");
  command->add_flag("--json", options.json,
                    "Print the result, the notes and the candidates tried as one JSON document");
  cli::AddQuiet(*command, options.quiet);
  command->callback([] { cli::RunTrain(options); });
}

void AddExport(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "export",
      "Write the models for other programs\n\n"
      "json is a description of the models, c one file of C99 that needs nothing but libm and\n"
      "allocates nothing, python one module that needs numpy. Criteria go along where they are\n"
      "arithmetic of scalars.");
  static cli::ExportOptions options;
  cli::AddProject(*command, options.file);
  command->add_option("--format", options.format, "json, c or python")
      ->check(CLI::IsMember(corvath::exchange::ExportFormats()).description(""))
      ->capture_default_str()
      ->type_name("FORMAT");
  command->add_option("-o,--out", options.out, "Result; - is standard output")
      ->capture_default_str()
      ->type_name("FILE");
  command
      ->add_option("--name", options.name,
                   "Beginning of all names in C; without this option that of FILE or PROJECT")
      ->type_name("NAME");
  cli::AddRepeated(*command, "--response", "RESPONSE", options.responses,
                   "Export this response, and no others than those named so; may be repeated");
  cli::AddSignature(*command, options.hash);
  cli::AddQuiet(*command, options.quiet);
  command->callback([] { cli::RunExport(options); });
}

void AddReport(CLI::App& app) {
  auto* const command = app.add_subcommand(
      "report",
      "Write a project as a page for a browser\n\n"
      "One HTML file that needs no network: inputs and quality of the models, predicted against\n"
      "measured values, sliders whose models answer in the page, and the designs.");
  static cli::ReportOptions options;
  cli::AddProject(*command, options.file);
  command->add_option("-o,--out", options.out, "HTML page; - is standard output")
      ->required()
      ->type_name("FILE");
  command
      ->add_option("--with", options.with,
                   "Analyses to show, too: sensitivity, propagate, optimize, with commas")
      ->delimiter(',')
      ->check(CLI::IsMember({"sensitivity", "propagate", "optimize"}).description(""))
      ->type_name("NAMES");
  cli::AddRepeated(*command, "--minimize", "EXPRESSION", options.minimize,
                   "With optimize: a response, criterion or expression; may be repeated");
  cli::AddRepeated(*command, "--maximize", "EXPRESSION", options.maximize, "Likewise");
  cli::AddSignature(*command, options.hash);
  cli::AddQuiet(*command, options.quiet);
  command->callback([] { cli::RunReport(options); });
}

void AddHash(CLI::App& app) {
  auto* const command = app.add_subcommand("hash", "Print the SHA-512 signature of a file");
  static std::string file;
  command->add_option("FILE", file, "Any file")->required()->type_name("");
  command->callback([] { cli::RunHash(file); });
}

/// Options for the build, which help does not show: print the manual page and the completion.
void AddPages(CLI::App& app) {
  const auto add = [&app](const char* name, std::string (*make)(const CLI::App&)) {
    app.add_flag_callback(name,
                          [&app, make] {
                            std::cout << make(app);
                            throw CLI::Success();
                          })
        ->group("");
  };
  add("--man-page", cli::ManualPage);
  add("--bash-completion", cli::BashCompletion);
}

/// @return the exit status
int Run(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const std::string hint = error.get_exit_code() == 0 ? "" : cli::UsageHint(app);
    if (!hint.empty()) {
      std::cerr << "zel: " << hint << '\n';
      return kUsage;
    }
    if (app.exit(error) != 0) return kUsage;
    cli::FlushStandardOutput();
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  cli::HandleInterruptions();
  CLI::App app("Predictions from the trained metamodels of a project file (.vrdb)", "zel");
  app.formatter(std::make_shared<Help>());  // commands take it over when they are added
  app.set_version_flag("--version", corvath::utils::GetBuildVersion().full_text);
  app.require_subcommand(1);
  app.add_flag_callback(
      "--log", [] { cli::ShowLog(true); },
      "Show the library's warnings and notes on standard error");
  app.footer("Exit status: 0, 1 when an input is refused, 2 for a wrong command line.");
  AddInfo(app);
  AddSolve(app);
  AddEval(app);
  AddMacros(app);
  AddHelp(app);
  AddFunctions(app);
  AddSample(app);
  AddTrain(app);
  cli::AddSensitivity(app);
  cli::AddPropagate(app);
  cli::AddOptimize(app);
  AddExport(app);
  AddReport(app);
  AddHash(app);
  AddPages(app);
  try {
    return Run(app, argc, argv);
  } catch (const std::bad_alloc&) {
    std::cerr << "zel: out of memory\n";
    return kRefused;
  } catch (const std::exception& error) {
    std::cerr << "zel: " << error.what() << '\n';
    return kRefused;
  }
}
