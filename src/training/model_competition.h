#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "training/candidate.h"
#include "training/cross_validation.h"
#include "training/train_settings.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
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

/// Called before each candidate and now and then inside long ones: its text, and the share of the
/// work that is done. Ends the competition by an exception.
using CompetitionObserver = std::function<void(const std::wstring& candidate, double share)>;

/// Lets the models that the settings allow compete for one response, which is not constant.
///
/// Each form (candidate.h) is fitted over each subspace that the filters propose
/// (subspace_filters.h), and then over those that the leaders' single CoPs suggest. The measure is
/// the coefficient of prognosis in the same groups for all. The largest wins, but
///
/// - fewer inputs win over more within toleranceCoP_variables_, then
/// - the simpler model over the more flexible within toleranceCoP_model_,
///
/// as long as the root mean square error grows by less than kLargestGrowth: near 1 a tolerance of
/// the CoP would allow for several times the error.
///
/// A model that leaves the range of the response far behind between the designs, or has no
/// prediction there, does not win; these are poles of a transform and holes of moving least squares.
/// @throws TrainingError  no candidate can be built from so few designs
ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer);

constexpr double kLargestGrowth = 1.1;

/// A constant as a model: a regression without terms. CoP and CoD count as 1.
ChosenModel MakeConstantModel(const ResponseData& data);

}  // namespace corvath::training
