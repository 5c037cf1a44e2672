#include "commands.h"
#include "foundation/text.h"
#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/describe/project_report.h"
#include "study/describe/text_table.h"
#include "study/project/project.h"
#include "study/table/csv_reader.h"
#include "study/table/output_file.h"
#include "study/train/training.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <optional>
#include <sstream>

namespace cli {
namespace {

using corvath::training::TrainedResponse;
using corvath::utils::ToUtf8;

/// "study.vrdb" beside "study.csv".
std::string DefaultOutput(const std::string& table) {
  if (table == "-") throw Refusal("-o: a table from standard input gives the project no name");
  const std::size_t name = table.find_last_of('/') + 1;  // 0 without a folder
  const std::size_t dot = table.find_last_of('.');
  const bool has_extension = dot != std::string::npos && dot > name;
  return table.substr(0, has_extension ? dot : table.size()) + ".vrdb";
}

/// Where the project goes, made sure of before the long work. A file that only the default names is
/// not replaced: nobody asked for that.
std::string RequireOutput(const TrainOptions& options) {
  const std::string path = options.out.empty() ? DefaultOutput(options.table) : options.out;
  if (path == "-") throw Refusal("-o: a project is no text; give it a file name");
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) throw Refusal(path + ": is a directory");
    if (!S_ISREG(status.st_mode)) throw Refusal(path + ": is no regular file");
    struct stat table {};
    if (stat(options.table.c_str(), &table) == 0 && table.st_dev == status.st_dev &&
        table.st_ino == status.st_ino)
      throw Refusal(path + ": is the table itself");
    if (options.out.empty()) throw Refusal(path + ": exists already; -o " + path + " replaces it");
  }
  const std::size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  if (access(folder.c_str(), W_OK | X_OK) != 0) throw Refusal(path + ": " + std::strerror(errno));
  return path;
}

std::string Summary(const Training& training, const std::string& path, const std::string& report) {
  TextTable summary;
  summary.AddColumn("response", TextTable::Align::kLeft);
  summary.AddColumn("CoP", TextTable::Align::kRight);
  summary.AddColumn("raw", TextTable::Align::kRight);
  summary.AddColumn("designs", TextTable::Align::kRight);
  summary.AddColumn("model", TextTable::Align::kLeft);
  summary.AddColumn("inputs that it uses, with the loss of CoP without each",
                    TextTable::Align::kLeft);
  for (const TrainedResponse& response : training.GetStudy().responses) {
    const ModelInputs inputs(response, training.GetTable().data.inputs);
    summary.AddRow({ToUtf8(response.name), CoPText(response.cop, 4), CoPText(response.cop_raw, 4),
                    std::to_string(response.num_designs), ToUtf8(response.model),
                    UsedInputs(inputs.names, inputs.filtered, inputs.cops)});
  }
  std::ostringstream text;
  summary.Print(text, "");
  for (const std::string& note : training.GetNotes()) text << note << '\n';
  text << "Wrote " << path << '\n';
  if (!report.empty()) text << "Wrote " << report << '\n';
  return text.str();
}

}  // namespace

void RunTrain(const TrainOptions& options) {
  std::FILE* const standard_output =
      ClaimStandardOutput();  // before the library logs what it meets
  TrainRequest request;
  request.columns.inputs = ParseNames(options.inputs, "--inputs");
  request.columns.responses = ParseNames(options.responses, "--responses");
  request.columns.discrete = ParseNames(options.discrete, "--discrete");
  request.columns.dates = ParseNames(options.dates, "--dates");
  request.columns.ignored = ParseNames(options.ignored, "--ignore");
  request.columns.wording = Wording::kCommandLine;
  request.criteria = options.criteria;
  request.skip_incomplete = options.skip_incomplete;
  request.seed = options.seed;
  request.budget = options.budget;
  const std::string path = RequireOutput(options);
  if (options.report == "-")
    throw Refusal("--report: standard output tells how good the models are");
  std::optional<OutputFile> report;  // made before the long work, which its place may make vain
  if (!options.report.empty()) report.emplace(options.report, standard_output, &GetFileWatcher());
  CsvReader table(options.table);
  Training training(table, std::move(request));
  if (!options.quiet && !options.json)
    for (const std::string& note : training.GetTable().notes) std::cerr << "zel: " << note << '\n';
  {
    ProgressLine line(!options.quiet);
    training.Run([&line](double share, const std::string& text) {
      line.Update(text, share);
      return true;
    });
  }
  {
    // Half of a file under a temporary name would stay.
    const InterruptionDelay delay;
    corvath::training::WriteStudy(training.GetStudy(), path);
  }
  if (report) {
    ReportRequest page;
    page.notes = training.GetNotes();
    report->Write(ReportProject(Project::Open(path), page).text);
    report->Commit();
  }
  if (options.json) {
    Json::Value document = training.GetDocument();
    document["project"] = path;
    PrintResult(JsonText(document));
  } else if (!options.quiet) {
    PrintResult(Summary(training, path, options.report));
  }
}

}  // namespace cli
