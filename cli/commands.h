#pragma once

#include "study/refusal.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

using namespace corvath::study;  // what a command does stands there; here it is asked for

struct InfoOptions {
  std::string file;
  std::string hash;         ///< expected signature of `file`; empty: not checked
  bool candidates = false;  ///< the models that competed, too
  bool models = false;      ///< the models' descriptions, too
  bool json = false;        ///< as one JSON document
};

/// Prints what the project `file` holds: inputs with bounds, reference values and, where they are
/// random, distributions and correlations; responses with CoP, model and used inputs; criteria.
void RunInfo(const InfoOptions& options);

struct SolveOptions {
  std::string file;
  std::string in = "-";   ///< CSV with a header row; "-" is standard input
  std::string out = "-";  ///< CSV; "-" is standard output
  std::string hash;       ///< expected signature of `file`; empty: not checked
  bool extrapolate = false;
  bool errors = false;
  bool density = false;
  bool criteria = false;
  bool quiet = false;                  ///< errors alone
  std::vector<std::string> gradients;  ///< responses of which to add the gradients
};

/// Predicts at each row of a CSV. Works in blocks, so that memory does not grow with the rows.
void RunSolve(const SolveOptions& options);

struct SampleOptions {
  std::string scheme;               ///< its name, or the beginning that no other name has
  std::uint64_t n = 0;              ///< number of points, levels or degree, as the scheme wants it
  std::uint32_t seed = 1;           ///< of the random schemes
  std::vector<std::string> inputs;  ///< see SampleInputs
  std::string from;                 ///< a project file, in place of `inputs`
  std::string hash;                 ///< expected signature of `from`; empty: not checked
  std::string out = "-";            ///< CSV; "-" is standard output
};

/// Writes a CSV of points in the units of the inputs, one column each.
void RunSample(const SampleOptions& options);

struct TrainOptions {
  std::string table;                   ///< CSV with a header row; "-" is standard input
  std::vector<std::string> inputs;     ///< lists of columns, see ParseNames
  std::vector<std::string> responses;  ///< likewise
  std::vector<std::string> discrete;   ///< likewise: inputs that take the table's values alone
  std::vector<std::string> dates;      ///< likewise: columns of dates
  std::vector<std::string> ignored;    ///< likewise: what patterns leave out
  bool skip_incomplete = false;        ///< leave rows out that lack an input
  std::vector<std::string> criteria;   ///< see ParseCriteria
  std::string out;                     ///< project file; empty: named after the table
  std::string report;                  ///< page of the project, see RunReport; empty: none
  std::uint32_t seed = 1;              ///< of the groups of the cross-validation
  double budget = 60.0;                ///< of the training, see TrainSettings
  bool anisotropic = false;            ///< has no effect; scripts of old may name it
  bool quiet = false;                  ///< errors alone
  bool json = false;                   ///< print the result as JSON
};

/// Trains a model for each response of a table of designs, writes them as a project file, and
/// prints how good they are.
void RunTrain(const TrainOptions& options);

struct ExportOptions {
  std::string file;
  std::string format = "json";  ///< see ExportFormats
  std::string out = "-";        ///< "-" is standard output
  std::string name;             ///< of the identifiers; empty: that of `out`, or the project's
  std::string hash;             ///< expected signature of `file`; empty: not checked
  std::vector<std::string> responses;  ///< empty: all
  bool quiet = false;                  ///< errors alone
};

/// Writes the models as a description or as source text for other programs.
void RunExport(const ExportOptions& options);

struct ReportOptions {
  std::string file;
  std::string out;                ///< HTML; "-" is standard output
  std::vector<std::string> with;  ///< analyses, see ReportRequest; so are the following two
  std::vector<std::string> minimize;
  std::vector<std::string> maximize;
  std::string hash;    ///< expected signature of `file`; empty: not checked
  bool quiet = false;  ///< errors alone
};

/// Writes the project as one page for a browser.
void RunReport(const ReportOptions& options);

/// Prints the SHA-512 signature of `file`.
void RunHash(const std::string& file);

/// Prints the value of an expression text.
/// @param definitions  "NAME=EXPRESSION": objects that the texts may use, in any order
void RunEval(const std::string& expression, const std::vector<std::string>& definitions);

/// Lists the macros that expression texts can call: the built-in ones and the user's.
void RunMacros();

/// Prints signatures, text and arguments of a function of expressions, or what a constant means.
/// @throws Refusal  there is none of this name; the message shows near ones
void RunHelp(const std::string& function);

/// Prints the names of all functions and constants by group, a line for each.
void RunFunctions();

}  // namespace cli
