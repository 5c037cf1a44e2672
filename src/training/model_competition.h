#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
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

/// Called before each candidate and inside long ones: its text, work done and in all. Ends the
/// competition by an exception.
using CompetitionObserver =
    std::function<void(const std::wstring& candidate, std::uint64_t done, std::uint64_t total)>;

/// Lets the models that the settings allow compete for one response by their coefficient of
/// prognosis. The response is not constant.
/// @throws TrainingError  no candidate can be built from so few designs
ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer);

/// A constant as a model: a regression without terms. CoP and CoD count as 1.
ChosenModel MakeConstantModel(const ResponseData& data);

}  // namespace corvath::training
