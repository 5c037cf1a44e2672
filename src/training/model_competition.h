#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "training/candidate.h"
#include "training/candidate_trials.h"
#include "training/cross_validation.h"
#include "training/train_settings.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::training {

/// The winner of a competition with its figures.
struct ChosenModel {
  boost::shared_ptr<math::metamodel::SurrogateBase> model;  ///< built, with errors and single CoPs
  std::wstring text;                                        ///< family, order and transform
  math::metamodel::SubspaceResults results;                 ///< its figures as a candidate
  std::vector<math::metamodel::SubspaceResults> tried;  ///< all candidates in the order of trial
};

/// Lets the models that the settings allow compete for one response, which is not constant.
///
/// Each form (candidate.h) is fitted over each subspace that the filters propose
/// (subspace_filters.h), and then over those around the subspaces of the leaders. The measure is
/// the coefficient of prognosis in the same groups for all. The largest wins, but
///
/// - fewer inputs win over more within toleranceCoP_variables_, then
/// - the simpler model over the more flexible within toleranceCoP_model_,
///
/// as long as the root mean square error grows by less than kLargestGrowth: near 1 a tolerance of
/// the CoP would allow for several times the error.
///
/// The CoP of the winner was one of many: the largest of many is larger than it should be, most so
/// where little can be explained. So where more than a tenth stays unexplained, by up to 300 designs,
/// inputs and parameters of the winner's form are chosen again without each group, and what these
/// models predict of it counts as CoD of test data (CoDtest; NaN elsewhere). Of pure noise in 20
/// inputs and 100 designs the CoP is 0.1 and that is -0.1 on average.
///
/// A model that leaves the range of the response far behind between the designs, or has no
/// prediction there (soundness.h), does not win.
/// @throws TrainingError  no candidate can be built
ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer);

constexpr double kLargestGrowth = 1.1;

/// A constant as a model: a regression without terms. CoP and CoD count as 1.
ChosenModel MakeConstantModel(const ResponseData& data);

}  // namespace corvath::training
