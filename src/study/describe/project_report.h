#pragma once

#include <string>
#include <vector>

namespace corvath::study {

class Project;

/// A result file, and what is not in it.
struct WrittenProject {
  std::string text;                   ///< UTF-8
  std::vector<std::string> warnings;  ///< what was left out and why, a line each
};

/// The project as one HTML page, see report::WriteReport.
/// @param notes  of the training, which a project does not keep
/// @throws Refusal  there is nothing to show
WrittenProject ReportProject(const Project& project, const std::vector<std::string>& notes = {});

/// The models for other programs, see exchange::ExportProject.
/// @param format     "json", "c" or "python"
/// @param name       from which the names in C are made; empty: the project's
/// @param responses  which ones; empty: all
/// @throws Refusal  an unknown format or response; a response that cannot be exported, and why
WrittenProject ExportModels(const Project& project, const std::string& format,
                            const std::string& name, const std::vector<std::string>& responses);

}  // namespace corvath::study
