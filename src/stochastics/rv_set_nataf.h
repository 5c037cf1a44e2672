#pragma once

#include "stochastics/rv_set.h"

namespace corvath::algorithm {

/// Correlated variables by the Nataf model: the marginals stay as they are, their dependence is
/// that of a Gaussian copula, whose correlation is adjusted so that the physical variables come out
/// with the correlation that was asked for.
///
/// A. Der Kiureghian, P.-L. Liu, "Structural reliability under incomplete probability information",
/// Journal of Engineering Mechanics 112 (1986), pp. 85-104.
///
/// While no correlation matrix for all n variables is set, the set behaves as an independent one;
/// PDF then says so on the standard output.
class RVSet_Nataf : public RVSet {
 public:
  RVSet_Nataf() : RVSet(L"Nataf set") {}
  Eigen::MatrixXd GetStandardCorrelationMatrix() const override;
  double PDF(const Eigen::VectorXd& x) const override;
  double CDF(const Eigen::VectorXd& x) const override;
  Eigen::MatrixXd ToStandardGauss(const Eigen::MatrixXd& x) const override;
  Eigen::MatrixXd FromStandardGauss(const Eigen::MatrixXd& u) const override;
  Eigen::MatrixXd CorrelateStandardGauss(const Eigen::MatrixXd& u) const override;
  boost::shared_ptr<RVSet> Clone() const override;
  int GetKind() const override { return kNataf; }
  /// Adjusts all pairs and takes the square root of the result. A refusal leaves the set as it was.
  /// @throws corvath::utils::runtime_error  the matrix is not n x n or no correlation matrix, a
  /// pair
  ///   with a discrete variable is correlated by more than 1e-4, the marginals cannot reach a
  ///   correlation, or the adjusted matrix is not positive definite
  void SetCorrelationMatrix(const Eigen::MatrixXd& matrix) override;

  /// Density at z of the n correlated standard normal variables.
  double JointNormalDensity(const Eigen::VectorXd& z) const;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  /// Whether the square root matches the variables; false for a file that is out of step as well.
  bool HasModel() const;
};

}  // namespace corvath::algorithm

ZEL_EXPORT_KEY(corvath::algorithm::RVSet_Nataf, "corvath::algorithm::RVSet_Nataf")
