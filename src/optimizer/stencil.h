#pragma once

#include "optimizer/settings_nlpqlp.h"

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// The designs whose responses give a gradient at one point by numerical differences. A step that
/// would leave the bounds is turned inside; for the one-sided types the base point moves with it,
/// which is why they evaluate it anew each time.
class Stencil {
 public:
  /// Vectors of n entries; `step` is positive.
  Stencil(NumericalDifferences type, const Eigen::VectorXd& step, const Eigen::VectorXd& lower,
          const Eigen::VectorXd& upper)
      : type_(type), step_(step), lower_(lower), upper_(upper) {}

  /// Number of designs; `with_start` adds the centre where the type does not hold it already.
  /// @throws utils::runtime_error  the type is none of the four
  Eigen::Index Size(bool with_start) const;

  /// The designs around `centre`, one row each. The centre, where it is asked for, comes first.
  Eigen::MatrixXd Designs(const Eigen::VectorXd& centre, bool with_start) const;

  /// Whether the gaps between the designs of each input are the steps asked for, up to half of one
  /// step.
  bool Fits(const Eigen::MatrixXd& designs, bool with_start) const;

 private:
  bool HasCentre() const;

  NumericalDifferences type_;
  const Eigen::VectorXd& step_;
  const Eigen::VectorXd& lower_;
  const Eigen::VectorXd& upper_;
};

}  // namespace corvath::algorithm::optimizer
