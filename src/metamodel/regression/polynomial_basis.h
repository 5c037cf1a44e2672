#pragma once

#include "metamodel/types.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::math::metamodel {

/// The terms of a polynomial in m inputs: 1, then the selected powers of single inputs, then the
/// selected products of two inputs. Bits as in LinearRegressionSettings.
class PolynomialBasis {
 public:
  /// @throws std::logic_error  the interaction bits are neither none nor one per pair of inputs
  PolynomialBasis(Eigen::Index num_inputs, const BitVector& main, const BitVector& interactions);

  Eigen::Index GetNumberInputs() const { return num_inputs_; }
  /// P, the constant included.
  Eigen::Index GetNumberTerms() const {
    return 1 + static_cast<Eigen::Index>(powers_.size() + products_.size());
  }

  /// Writes the values of all terms at the rows of `points` (n x m) into `design` (n x P).
  void Evaluate(const ConstPoints& points, Eigen::Ref<Eigen::MatrixXd> design) const;

  /// values = design * coefficients, without the design matrix: the terms are summed in their
  /// order, so that NaN and infinity pass as in the product. Allocates nothing.
  void Sum(const ConstPoints& points, const Eigen::Ref<const Eigen::VectorXd>& coefficients,
           Eigen::Ref<Eigen::VectorXd> values) const;

 private:
  struct Power {
    Eigen::Index input;
    Eigen::Index exponent;
  };
  struct Product {
    Eigen::Index first;
    Eigen::Index second;
  };

  /// Sum for `Rows` rows from `row` on.
  template <int Rows>
  void SumTile(const ConstPoints& points, Eigen::Index row, const double* coefficient,
               double* values) const;

  Eigen::Index num_inputs_;
  std::vector<Power> powers_;
  std::vector<Product> products_;
};

/// Design matrix of `points` (N x m): N x P.
/// @throws std::logic_error  as PolynomialBasis
Eigen::MatrixXd BuildRegressionMatrix(const ConstPoints& points, const BitVector& main,
                                      const BitVector& interactions);

/// Least-squares coefficients of X c = y by the normal equations; `weights` may be empty. A
/// constant y gives its value as constant term and zeros elsewhere without solving. No rank check.
Eigen::VectorXd SolveRegression(const Eigen::Ref<const Eigen::MatrixXd>& X,
                                const Eigen::Ref<const Eigen::VectorXd>& y,
                                const Eigen::Ref<const Eigen::VectorXd>& weights);

/// X'X, or X' diag(weights) X.
Eigen::MatrixXd NormalMatrix(const Eigen::Ref<const Eigen::MatrixXd>& X,
                             const Eigen::Ref<const Eigen::VectorXd>& weights);

}  // namespace corvath::math::metamodel
