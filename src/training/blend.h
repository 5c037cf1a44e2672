#pragma once

#include "training/candidate_trials.h"

#include <vector>

namespace corvath::training {

/// The mean of several models over the same inputs, with shares.
///
/// Where designs are few, no figure tells reliably which of them is the best, and their mean errs
/// less than the one that was chosen (L. Breiman, "Stacked regressions", Machine Learning 24, 1996,
/// pp. 49-64).
struct Blend {
  std::vector<const Candidate*> members;  ///< first the kriging whose radii carry the mean
  Eigen::VectorXd shares;                 ///< one for each member; their sum is 1

  /// As one kriging that follows the mean at the designs, between them, and in their bounds.
  /// @returns null where no kriging with these radii does
  boost::shared_ptr<math::metamodel::SurrogateBase> Build(const CandidateTrials& trials,
                                                          const ResponseData& data) const;
};

/// How likely a form counts before any design is seen, relative to others.
double OddsOf(const CandidateForm& form);

/// Shares for predictions (n x F) of `values` without their groups: Akaike's weights (K. P. Burnham,
/// D. R. Anderson, "Model selection and multimodel inference", Springer, 2002, section 2.9) times
/// `odds` (F), tempered, since errors of few designs are uncertain themselves. What would have next to
/// nothing has nothing.
Eigen::VectorXd SharesOf(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted,
                         const Eigen::VectorXd& odds);

/// The mean of predictions (n x F), the shares for each group from the others. Groups are in
/// ascending order.
Eigen::VectorXd PredictByBlend(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted,
                               const Eigen::VectorXd& odds,
                               const std::vector<std::vector<Eigen::Index>>& groups);

}  // namespace corvath::training
