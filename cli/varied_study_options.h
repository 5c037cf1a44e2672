#pragma once

#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/analysis/varied_study.h"
#include "study/describe/json_text.h"
#include "study/table/csv_writer.h"

#include <string>

namespace CLI {
class App;
}

namespace cli {

/// What the commands share that let inputs vary.
struct VariedStudyOptions {
  std::string file;
  std::string hash;  ///< expected signature of `file`; empty: not checked
  corvath::study::VariationRequest variation;
  std::string csv;  ///< file for the result as CSV, "-" for standard output; empty: none
  bool json = false;
  bool quiet = false;  ///< no line of progress
};

/// Adds project, distributions, fixed inputs, criteria and forms of the result to a command.
/// `options` outlives it.
void AddVariedStudyOptions(CLI::App& command, VariedStudyOptions& options);

/// Opens the project, makes a report with a line of progress, and puts it out.
/// @param make_report  of a study and a progress: an object with GetDocument(), WriteCsv(),
///                     GetText()
template <class MakeReport>
void RunVariedStudy(const VariedStudyOptions& options, bool needs_distributions,
                    const MakeReport& make_report) {
  ClaimStandardOutput();  // before the library logs what it meets
  const auto project = corvath::study::Project::Open(options.file, options.hash);
  const corvath::study::VariedStudy study(project, options.variation, needs_distributions);
  const auto report = [&] {
    ProgressLine line(!options.quiet);
    return make_report(study, [&line](double share, const std::string& work) {
      line.Update(work, share);
      return true;
    });
  }();
  if (!options.csv.empty()) {
    corvath::study::OutputFile file(options.csv, ClaimStandardOutput(), &GetFileWatcher());
    corvath::study::CsvWriter writer(file);
    report.WriteCsv(writer);
    writer.Flush();
    file.Commit();
  }
  if (options.json)
    PrintResult(corvath::study::JsonText(report.GetDocument()));
  else if (options.csv != "-")
    PrintResult(report.GetText());
}

}  // namespace cli
