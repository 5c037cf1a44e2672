#pragma once

#include "training/candidate_trials.h"

namespace corvath::training {

/// The mean of an anisotropic kriging and a ridge regression of order 1 over the same inputs.
///
/// Where designs are few, no figure tells reliably which of the two is better, and their mean errs
/// less than the one that was chosen (L. Breiman, "Stacked regressions", Machine Learning 24, 1996,
/// pp. 49-64).
struct Blend {
  const Candidate* kriging;
  const Candidate* plane;
  double share;  ///< of the plane, from 0 to 1

  /// As one kriging that passes through the mean at the designs.
  /// @returns null where no kriging with these radii follows the mean: at the designs, or at points
  ///          between them, where short radii let it fall
  boost::shared_ptr<math::metamodel::SurrogateBase> Build(const CandidateTrials& trials,
                                                          const ResponseData& data) const;
};

/// The share for predictions of `values` without their groups: Akaike's weights (K. P. Burnham,
/// D. R. Anderson, "Model selection and multimodel inference", Springer, 2002, section 2.9), tempered,
/// since errors of few designs are uncertain themselves. 1 where the plane is the better one plainly.
double ShareOfPlane(const Eigen::VectorXd& values, const Eigen::VectorXd& of_kriging,
                    const Eigen::VectorXd& of_plane);

/// The mean of predictions, the share of each group from the others. Groups are in ascending order.
Eigen::VectorXd PredictByBlend(const Eigen::VectorXd& values, const Eigen::VectorXd& of_kriging,
                               const Eigen::VectorXd& of_plane,
                               const std::vector<std::vector<Eigen::Index>>& groups);

}  // namespace corvath::training
