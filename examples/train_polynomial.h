#pragma once

#include "metamodel/linear_regression.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace examples {

/// A chosen model with its quality figures.
struct TrainedModel {
  boost::shared_ptr<corvath::math::metamodel::LinearRegression> model;
  std::vector<bool> subspace;   ///< the inputs that it uses
  double cop = 0.0;             ///< 1 - SSE / SST of the cross-validated predictions
  double cod = 0.0;             ///< the same of the fitted values
  double cod_adjusted = 0.0;    ///< for the number of coefficients
  Eigen::VectorXd single_cops;  ///< m: loss of CoP without the input; 0 for one that is not used
};

/// Polynomials of order 1 and 2, with and without interactions, with and without a Box-Cox
/// transform of the response compete by CoP; a simpler one wins within a tolerance. Inputs whose
/// removal costs less than the same tolerance are left out.
/// @param points  n x m
/// @param values  n
/// @param groups  n: cross-validation group of each point
TrainedModel TrainPolynomial(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                             const corvath::math::metamodel::IndexVector& groups);

}  // namespace examples
