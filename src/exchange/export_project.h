#pragma once

#include "exchange/project_description.h"

#include <string>
#include <vector>

namespace corvath::exchange {

/// The forms of an export: "json", "c", "python".
const std::vector<std::string>& ExportFormats();

struct Export {
  std::string text;                   ///< the whole file
  std::vector<std::string> warnings;  ///< what was left out and why, a line each
};

/// @param format  one of ExportFormats()
/// @param name    from which the identifiers of C are made; empty: the project's
/// @throws NotDescribable  a response that cannot be exported, and why; an unknown format
Export ExportProject(const ProjectDescription& project, const std::string& format,
                     const std::string& name);

}  // namespace corvath::exchange
