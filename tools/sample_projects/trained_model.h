#pragma once

#include "metamodel/surrogate.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace sample_projects {

/// The data of one response and how predictions of it are judged.
struct TrainingData {
  const Eigen::MatrixXd& points;                        ///< n x m
  const Eigen::VectorXd& values;                        ///< n
  const corvath::math::metamodel::IndexVector& groups;  ///< n: cross-validation groups

  /// 1 - SSE / SST.
  double Determination(const Eigen::VectorXd& predictions) const {
    const double total = (values.array() - values.mean()).square().sum();
    return 1.0 - (values - predictions).squaredNorm() / total;
  }
};

/// A chosen model with its quality figures.
struct TrainedModel {
  boost::shared_ptr<corvath::math::metamodel::SurrogateBase> model;
  std::vector<bool> subspace;   ///< the inputs that it uses
  double cop = 0.0;             ///< 1 - SSE / SST of the cross-validated predictions
  double cod = 0.0;             ///< the same of the fitted values
  double cod_adjusted = 0.0;    ///< for the number of coefficients
  Eigen::VectorXd single_cops;  ///< m: loss of CoP without the input; empty if not worked out
};

/// Polynomials of order 1 and 2, with and without interactions, with and without a Box-Cox
/// transform of the response compete by CoP; a simpler one wins within a tolerance. Inputs whose
/// removal costs less than the same tolerance are left out.
TrainedModel TrainPolynomial(const TrainingData& data);

/// Moving least squares of order 1 and 2 compete by CoP; the radius is chosen by BuildOptimal.
TrainedModel TrainMovingLeastSquares(const TrainingData& data);

/// Kriging with one correlation radius, or with one radius per input; radii and nugget are chosen by
/// BuildOptimal, by their likelihood.
TrainedModel TrainKriging(const TrainingData& data, bool anisotropic);

/// Thin plate splines. The family has no cross-validation of its own: its CoP comes from fits
/// without each group.
TrainedModel TrainThinPlateSplines(const TrainingData& data);

}  // namespace sample_projects
