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

/// A project as one HTML page that asks nothing of anybody: its models answer in the page, its
/// designs are shown. Names and texts of the project stand in it as text alone; a content security
/// policy lets nothing run but the page's own script.
/// @param solver       of a project that is loaded
/// @param project      what DescribeProject gave for it
/// @param competitors  of each of its responses; or none at all
/// @param notes        of its training
/// @throws exchange::NotDescribable  no inputs or no responses
std::string WriteReport(zel::ZELSolver& solver, const exchange::ProjectDescription& project,
                        const std::vector<std::vector<Competitor>>& competitors,
                        const std::vector<std::string>& notes);

}  // namespace corvath::report
