#pragma once

#include "metamodel/error_radii.h"
#include "metamodel/types.h"

#include <memory>

namespace corvath::math::metamodel {

/// Columns of the errors of a prediction.
enum ErrorColumn : Eigen::Index {
  kLocalCoP = 0,
  kRootMeanSquareError = 1,
  kMeanError = 2,
  kMeanAbsoluteError = 3,
  kDensity = 4,
  kNumErrorColumns = 5
};

/// How far to trust a model, from its residuals at the support points: averages weighted by
/// nearness, and the density of support points, of which one at distance h counts 0.01. Knows no
/// model, only what is left of it at the support points, by reference.
class LocalErrors {
 public:
  /// @param support    N x r, in transformed coordinates, N > 0
  /// @param values     N, in the user's units
  /// @param residuals  N: value minus prediction without the point
  LocalErrors(const Eigen::MatrixXd& support, const Eigen::VectorXd& values,
              const Eigen::VectorXd& residuals, const ErrorRadii& radii);
  ~LocalErrors();

  /// Points that Evaluate takes at best: their weights stay in the second-level cache.
  Eigen::Index GetBlockRows() const;
  /// The errors at each row of `x` (n x r, transformed coordinates): n x kNumErrorColumns. O(n N r).
  void Evaluate(const Eigen::MatrixXd& x, Eigen::Ref<Eigen::MatrixXd> errors);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace corvath::math::metamodel
