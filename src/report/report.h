#pragma once

#include "exchange/project_description.h"

#include <string>
#include <vector>

namespace corvath::zel {
class ZELSolver;
}

namespace corvath::report {

/// A model that competed for a response.
struct Competitor {
  std::string model;
  std::string inputs;
  double cop = 0.0;   ///< NaN where it has none; so is the other one
  double rmse = 0.0;  ///< of the cross-validation
  bool chosen = false;
};

/// What a page shows beside the models and designs of a project.
struct Extras {
  std::vector<std::vector<Competitor>> competitors;  ///< of each response; or none at all
  std::vector<std::vector<std::string>> words;  ///< of each input, by its codes; or none at all
  std::vector<std::string> notes;               ///< of the training
  std::string sensitivity;  ///< result of the analysis, see zelstudy_sensitivity(); or empty
  std::string propagation;  ///< see zelstudy_propagate(); or empty
  /// {"text": what was found, "columns": the inputs and more, "designs": rows}; or empty.
  std::string optimization;
};

/// A project as one HTML page that asks nothing of anybody: its models answer in the page, its
/// designs are shown. Names and texts of the project stand in it as text alone; a content security
/// policy lets nothing run but the page's own script.
/// @param solver   of a project that is loaded
/// @param project  what DescribeProject gave for it
/// @throws exchange::NotDescribable  no inputs or no responses
std::string WriteReport(zel::ZELSolver& solver, const exchange::ProjectDescription& project,
                        const Extras& extras);

}  // namespace corvath::report
