#pragma once

#include "metamodel/surrogate.h"

namespace corvath::math::metamodel {

/// Interpolation by thin plate splines with a linear polynomial, lightly regularised:
///
///     f(x) = c_N + sum_k c_(N+1+k) x_k + sum_i c_i phi(|x - x_i|),   phi(r) = r^2 ln r
///
/// J. Duchon, "Splines minimizing rotation-invariant semi-norms in Sobolev spaces", Lecture Notes
/// in Mathematics 571, 1977, pp. 85-100. The function phi is used in any dimension.
///
/// It has no settings, no selection of inputs and no cross-validation; the value transform and the
/// limits play no part in it.
class SurrogateTPS : public SurrogateBase {
 public:
  SurrogateTPS() = default;  ///< for loading: no support points
  /// @throws corvath::utils::runtime_error  the numbers of points and values differ
  SurrogateTPS(const Eigen::MatrixXd& points, const Eigen::VectorXd& values);

  using SurrogateBase::BuildOptimal;

  /// O((N + m)^3).
  /// @throws corvath::utils::runtime_error  sizes that do not fit, or a singular system
  bool Build() override;
  /// Whether the system can be set up: at the price of a build.
  bool IsSolvable() const override;
  bool IsBuilt() const override;
  /// Works on blocks of rows: O(n N m) time, buffers of a few blocks.
  /// @throws corvath::utils::runtime_error  not built, another number of inputs, or a stored model
  ///                                        whose parts contradict each other
  Eigen::VectorXd Approximate(const ConstPoints& points) const override;
  bool BuildOptimal(const IndexVector& subsets) override;

  std::wstring GetName(bool short_form) const override;
  std::wstring GetDescription() const override { return GetName(false); }
  bool Equals(const SurrogateBase& other) const override;
  SurrogateTPS* Clone() const override { return new SurrogateTPS(*this); }
  void SetSettings(const SurrogateSettingsBase& settings) override;

  /// c: N weights, the constant, m linear coefficients.
  const Eigen::VectorXd& GetCoefficients() const { return coeffs_; }
  /// m x N: a transformed support point per column.
  const Eigen::MatrixXd& GetScaledPoints() const { return scaled_points_; }

  /// The radial function: r^2 ln r above 0, otherwise 0.
  virtual double Phi(double r) const;

 protected:
  const char* GetClassWithoutSettings() const override { return "SurrogateTPS"; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  Eigen::VectorXd coeffs_;         ///< N weights, the constant, m linear coefficients
  Eigen::MatrixXd scaled_points_;  ///< m x N: a transformed support point per column
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::SurrogateTPS, "corvath::math::metamodel::SurrogateTPS")
