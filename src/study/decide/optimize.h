#pragma once

#include "study/progress.h"
#include "study/project/project.h"
#include "study/wording.h"

#include <Eigen/Core>
#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::study {

struct OptimizeRequest {
  std::vector<std::string> minimize;  ///< responses, criteria or expressions
  std::vector<std::string> maximize;
  std::vector<std::string> limits;  ///< "stress <= 20", also with "name:" in front
  bool own_limits = true;           ///< the limit criteria of the project count
  std::vector<std::string> bounds;  ///< "name:low:high", or "name=value" to hold an input's mean
  std::vector<std::string> fixed;   ///< "name=value": neither moves nor scatters
  std::vector<std::string> distributions;  ///< see ParseNamedDistribution, for `robust`
  double robust = 0.0;                     ///< standard deviations that limits are kept with
  std::uint32_t seed = 1;
  std::uint64_t starts = 40;  ///< local searches, at most
  std::uint64_t points = 0;   ///< of a front; 0: by the number of objectives
  std::uint64_t next = 0;     ///< designs to propose in place of an optimum
  bool next_by_error = false;
  Wording wording = Wording::kKeys;  ///< of messages
};

/// What came of it.
struct Optimization {
  bool success = false;  ///< a design that keeps all limits, or all that was asked for
  std::string status;    ///< "optimal", "feasible", "infeasible", "failed", "front", "proposed"
  Json::Value document{Json::objectValue};
  std::string text;                  ///< the same for a person
  std::vector<std::string> columns;  ///< of `designs`: the inputs, then what belongs to them
  Eigen::MatrixXd designs;           ///< the optimum, the front or what is proposed
  /// Of each of the first columns the words that its numbers stand for; none where they are numbers.
  std::vector<std::vector<std::string>> words;
  std::string refusal;  ///< without success: why, in one line
};

/// Minimises or maximises what the models of a project predict, see analysis/optimisation/.
/// @throws Refusal    a wish that the project cannot have, by name
/// @throws Cancelled  `progress` said so
Optimization Optimize(const Project& project, const OptimizeRequest& request,
                      const Progress& progress = {});

}  // namespace corvath::study
