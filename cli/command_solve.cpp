#include "commands.h"
#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/solve/csv_solver.h"

#include <iostream>

namespace cli {

void RunSolve(const SolveOptions& options) {
  CsvSolveRequest request;
  request.in = options.in;
  request.out = options.out;
  request.extrapolate = options.extrapolate;
  request.errors = options.errors;
  request.densities = options.density;
  request.criteria = options.criteria;
  request.gradients = options.gradients;
  request.wording = Wording::kCommandLine;
  request.standard_output = ClaimStandardOutput();  // before the library logs what it meets
  request.watcher = &GetFileWatcher();
  const Project project = Project::Open(options.file, options.hash);
  CsvSolveSummary summary;
  {
    ProgressLine line;
    summary = SolveCsv(project, request, [&line](double share, const std::string& text) {
      line.Update(text, share);
      return true;
    });
  }
  for (const std::string& note : summary.notes) std::cerr << "zel: " << note << '\n';
  if (options.quiet) return;
  for (const std::string& text : {summary.format, DescribeOutside(summary)})
    if (!text.empty()) std::cerr << "zel: " << summary.table << ": " << text << '\n';
}

}  // namespace cli
