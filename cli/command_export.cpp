#include "commands.h"
#include "exchange/export_project.h"
#include "exchange/model_reader.h"
#include "exchange/project_reader.h"
#include "interruption.h"
#include "standard_output.h"
#include "study/project/project.h"
#include "study/table/output_file.h"

#include <exception>
#include <iostream>

namespace cli {
namespace {

/// "truss" of "out/truss.c"; empty for standard output.
std::string NameOfFile(const std::string& path) {
  if (path == "-") return {};
  const std::string file = path.substr(path.find_last_of('/') + 1);
  return file.substr(0, file.find('.'));
}

}  // namespace

void RunExport(const ExportOptions& options) {
  std::FILE* const standard_output = ClaimStandardOutput();  // before the library logs what it meets
  const Project source = Project::Open(options.file, options.hash);
  corvath::exchange::Export result;
  try {
    const auto project =
        corvath::exchange::DescribeProject(source.GetSolver(), options.file, options.responses);
    result = corvath::exchange::ExportProject(
        project, options.format, options.name.empty() ? NameOfFile(options.out) : options.name);
  } catch (const corvath::exchange::NotDescribable& error) {
    throw Refusal(options.file + ": " + error.what());
  }
  OutputFile file(options.out, standard_output, &GetFileWatcher());
  file.Write(result.text);
  file.Commit();
  if (options.quiet) return;
  for (const std::string& warning : result.warnings)
    std::cerr << "zel: " << options.file << ": " << warning << '\n';
}

}  // namespace cli
