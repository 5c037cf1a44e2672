#pragma once

#include "study/progress.h"
#include "study/wording.h"

#include <string>
#include <vector>

namespace corvath::study {

class Project;

/// A result file, and what is not in it.
struct WrittenProject {
  std::string text;                   ///< UTF-8
  std::vector<std::string> warnings;  ///< what was left out and why, a line each
};

struct ReportRequest {
  std::vector<std::string> notes;     ///< of the training, which a project does not keep
  std::vector<std::string> with;      ///< analyses to show: "sensitivity", "propagate", "optimize"
  std::vector<std::string> minimize;  ///< of "optimize": responses, criteria or expressions
  std::vector<std::string> maximize;
  Wording wording = Wording::kKeys;  ///< of messages
};

/// The project as one HTML page, see report::WriteReport.
/// @throws Refusal    there is nothing to show, or an analysis cannot be made
/// @throws Cancelled  `progress` said so
WrittenProject ReportProject(const Project& project, const ReportRequest& request = {},
                             const Progress& progress = {});

/// The models for other programs, see exchange::ExportProject.
/// @param format     "json", "c" or "python"
/// @param name       from which the names in C are made; empty: the project's
/// @param responses  which ones; empty: all
/// @throws Refusal  an unknown format or response; a response that cannot be exported, and why
WrittenProject ExportModels(const Project& project, const std::string& format,
                            const std::string& name, const std::vector<std::string>& responses);

}  // namespace corvath::study
