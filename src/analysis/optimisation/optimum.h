#pragma once

#include "analysis/optimisation/design_task.h"
#include "analysis/optimisation/expected_errors.h"
#include "analysis/optimisation/global_search.h"
#include "analysis/progress.h"

#include <Eigen/Core>

#include <string>
#include <vector>

namespace corvath::analysis {

/// Where a prediction stands among the designs that a model was trained on.
struct PredictionTrust {
  Eigen::Index response = 0;
  double local_cop = 0.0;  ///< of the designs around, NaN: not known
  double density = 0.0;    ///< of support points
  /// Share of the analysed designs where the density is lower; below 0.05 the design is a lonely one.
  double density_rank = 0.0;
};

/// What is known about one design of a study.
struct DesignReport {
  Eigen::RowVectorXd inputs;
  Eigen::RowVectorXd quantities;  ///< all of the study
  Eigen::RowVectorXd
      errors;  ///< to expect of each quantity, one standard deviation; NaN: not known
  std::vector<PredictionTrust> trust;  ///< of the responses that matter
  struct Neighbour {
    Eigen::Index row;  ///< among the analysed designs
    double distance;   ///< root mean square over the inputs, in shares of their ranges
  };
  std::vector<Neighbour> nearest;  ///< up to three analysed designs, the nearest first
};

/// @param used  the responses to tell the trust of
DesignReport ReportDesign(const StudyModel& model, const Eigen::RowVectorXd& x,
                          const std::vector<Eigen::Index>& used);

enum class OptimumStatus {
  kOptimal,     ///< meets the conditions of optimality and keeps all limits
  kFeasible,    ///< keeps all limits, but the method stopped before it met the conditions
  kInfeasible,  ///< no point was found that keeps all limits; this one breaks them least
  kFailed       ///< no point has a value for every objective and limit
};

struct Optimum {
  OptimumStatus status = OptimumStatus::kFailed;
  DesignReport design;         ///< empty after kFailed
  Eigen::VectorXd objectives;  ///< in the user's sense
  struct LimitState {
    double reserve =
        0.0;  ///< negative where the limit is broken; with scatter, beyond what it asks for
    bool is_active = false;
    double multiplier =
        0.0;             ///< what the objective gains for each unit by which the limit gives way
    double error = 0.0;  ///< to expect of the reserve; NaN: not known
  };
  std::vector<LimitState> limits;  ///< as in the task
  struct BoundState {
    Eigen::Index input;
    bool is_upper;
    double multiplier;  ///< likewise
  };
  std::vector<BoundState> bounds;  ///< those that stop the objective
  Eigen::Index worst_limit = -1;   ///< after kInfeasible the one that is broken most, in its scale
  Eigen::Index num_searches = 0, num_optima = 0;
  std::vector<std::wstring> notes;  ///< what else the user should know
};

/// Solves a task with one objective.
/// @throws AnalysisCancelled  `progress` said so
Optimum FindOptimum(const DesignTask& task, const SearchSettings& settings,
                    const Progress& progress = {});

/// The analysed designs that are worth a look as starts: all, or the first of very many.
Eigen::MatrixXd AnalysedStarts(const StudyModel& model);

/// Says what has no value at any point of a screening, an objective or a limit; empty if each has.
std::wstring DescribeFailure(const DesignTask& task, const Screening& screening);

}  // namespace corvath::analysis
