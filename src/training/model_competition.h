#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "training/candidate_trials.h"
#include "training/cross_validation.h"
#include "training/train_settings.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace corvath::training {

/// The winner of a competition with its figures.
struct ChosenModel {
  boost::shared_ptr<math::metamodel::SurrogateBase> model;  ///< built, with errors and single CoPs
  std::wstring text;                                        ///< family, order and transform
  math::metamodel::SubspaceResults results;  ///< as a candidate; CoDtest is the CoP to be told
  std::vector<math::metamodel::SubspaceResults> tried;  ///< all candidates in the order of trial
  std::vector<Eigen::Index> rows;                       ///< of the data: the model's support points
  /// Families that could not be fitted to all rows: "Isotropic Kriging was fitted to 2000 of ...".
  std::vector<std::wstring> limits;

  /// CoP with the whole choice repeated without each group; between 0 and 1.
  double GetCoP() const { return results.CoDtest; }
  /// CoP of the winner among the candidates: the largest of many is larger than it should be.
  double GetRawCoP() const { return results.CoP; }
};

/// Rows up to which a competition works on all.
constexpr Eigen::Index kMostRows = 1500;

/// Lets the models that the settings allow compete (competition.h) for one response, which is not
/// constant.
///
/// The CoP that is told is that of the whole procedure: the competition, choice of inputs, transform,
/// radii, penalty and family included, is run again without each of a few groups, and its winner
/// predicts the group (M. Stone, "Cross-validatory choice and assessment of statistical
/// predictions", J. Royal Statistical Society B 36, 1974, pp. 111-147). The residuals of these
/// predictions become those of the model, so that its local errors are honest, too. Where they
/// are not better than the mean by more than a standard error, the CoP is told as 0.
///
/// More rows than kMostRows are more than kriging and local models can bear: the competition then
/// runs on rows that stand for all (spread_rows.h). The best of each form is fitted to as many rows as
/// its family can bear, and judged on all: where a row was not used, by the prediction there.
/// The numbers do not depend on the number of threads (foundation/parallel.h).
/// @throws TrainingError  no candidate can be built
ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer);

/// A constant as a model: a regression without terms. CoP and CoD count as 1.
ChosenModel MakeConstantModel(const ResponseData& data);

}  // namespace corvath::training
