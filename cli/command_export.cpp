#include "commands.h"
#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/describe/project_report.h"
#include "study/project/project.h"
#include "study/table/output_file.h"

#include <iostream>

namespace cli {
namespace {

/// "truss" of "out/truss.c"; empty for standard output.
std::string NameOfFile(const std::string& path) {
  if (path == "-") return {};
  const std::string file = path.substr(path.find_last_of('/') + 1);
  return file.substr(0, file.find('.'));
}

void WriteFile(const WrittenProject& result, const std::string& source, const std::string& path,
               std::FILE* standard_output, bool quiet) {
  OutputFile file(path, standard_output, &GetFileWatcher());
  file.Write(result.text);
  file.Commit();
  if (quiet) return;
  for (const std::string& warning : result.warnings)
    std::cerr << "zel: " << source << ": " << warning << '\n';
}

}  // namespace

void RunExport(const ExportOptions& options) {
  std::FILE* const standard_output =
      ClaimStandardOutput();  // before the library logs what it meets
  const Project project = Project::Open(options.file, options.hash);
  const std::string name = options.name.empty() ? NameOfFile(options.out) : options.name;
  WriteFile(ExportModels(project, options.format, name, options.responses), options.file,
            options.out, standard_output, options.quiet);
}

void RunReport(const ReportOptions& options) {
  std::FILE* const standard_output = ClaimStandardOutput();
  const Project project = Project::Open(options.file, options.hash);
  ReportRequest request;
  request.with = options.with;
  request.minimize = options.minimize;
  request.maximize = options.maximize;
  request.wording = Wording::kCommandLine;
  WrittenProject page;
  {
    ProgressLine line(!options.quiet);
    page = ReportProject(project, request, [&line](double share, const std::string& text) {
      line.Update(text, share);
      return true;
    });
  }
  WriteFile(page, options.file, options.out, standard_output, options.quiet);
}

}  // namespace cli
