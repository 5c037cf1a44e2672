#pragma once

#include "metamodel/types.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::math::metamodel {

/// The terms of a polynomial up to order 2, centred and scaled to unit variance, so that one penalty
/// treats all alike: u_j = (x_j - mean_j) / sd_j, then u_j^2 and u_i u_j about their means.
class StandardTerms {
 public:
  /// Bits as in LinearRegressionSettings. An input with a term of order 2 must have its linear one.
  /// @param points     N x m
  /// @param curvature  factor of the terms of order 2: a smaller one penalises them more
  /// @throws std::logic_error  bits that do not fit, or a power above 2
  StandardTerms(const ConstPoints& points, const BitVector& main, const BitVector& interactions,
                double curvature);

  /// N x (P - 1): the constant is no term. A term without variance is 0.
  const Eigen::MatrixXd& GetDesign() const { return design_; }
  /// Coefficients (P) of the plain terms 1, x_j, x_j^2, x_i x_j for the same polynomial.
  /// @param constant  value of the polynomial where all standard terms are 0
  Eigen::VectorXd ToPlain(const Eigen::VectorXd& coefficients, double constant) const;

 private:
  struct Term {
    Eigen::Index first;
    Eigen::Index second;  ///< -1 for a linear term
    double mean;
    double scale;  ///< 0 for a term without variance
  };

  Eigen::RowVectorXd centre_;
  Eigen::RowVectorXd spread_;
  std::vector<Term> terms_;
  std::vector<Eigen::Index> linear_;  ///< plain coefficient of each input's linear term, or -1
  Eigen::MatrixXd design_;
};

/// Ridge regression with a free constant,
///
///     min |y - b0 - Z b|^2 + N p |b|^2,
///
/// for any number of penalties p from one singular value decomposition Z = U D V'. A. E. Hoerl,
/// R. W. Kennard, "Ridge regression", Technometrics 12, 1970, pp. 55-67. The columns of Z have mean
/// 0; there may be more of them than rows.
class RidgeSolver {
 public:
  /// O(N k^2 + k^3) time with k the smaller size of `design` (N x k).
  RidgeSolver(const Eigen::MatrixXd& design, const Eigen::VectorXd& values);

  /// b for the penalty p, not negative: k values.
  Eigen::VectorXd GetCoefficients(double penalty) const;
  double GetConstant() const { return mean_; }
  /// Prediction of each value without its group: exact, from the block of the hat matrix that
  /// belongs to it, (I - H_gg)^-1 (y - f)_g. NaN where the others do not determine it.
  Eigen::VectorXd CrossValidate(double penalty, const IndexVector& groups) const;

 private:
  Eigen::ArrayXd Shrinkage(double penalty) const;

  double mean_;
  Eigen::VectorXd values_;     ///< N, about their mean
  Eigen::MatrixXd left_;       ///< U, N x r
  Eigen::MatrixXd right_;      ///< V, k x r
  Eigen::ArrayXd squared_;     ///< D^2, r
  Eigen::VectorXd projected_;  ///< U'y
};

/// How strongly a regression is penalised.
struct RidgePenalty {
  double penalty = 0.0;    ///< p
  double curvature = 1.0;  ///< see StandardTerms
};

}  // namespace corvath::math::metamodel
