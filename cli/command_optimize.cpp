#include "commands.h"
#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/decide/optimize.h"
#include "study/describe/json_text.h"
#include "study/table/csv_writer.h"
#include "study/table/output_file.h"

namespace cli {
namespace {

OptimizeRequest RequestOf(const OptimizeOptions& options) {
  OptimizeRequest request;
  request.minimize = options.minimize;
  request.maximize = options.maximize;
  request.limits = options.limits;
  request.own_limits = !options.no_project_limits;
  request.bounds = options.bounds;
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
    for (const double value : result.designs.row(k)) writer.Add(value);
    writer.EndRecord();
  }
  writer.Flush();
  file.Commit();
}

}  // namespace

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

}  // namespace cli
