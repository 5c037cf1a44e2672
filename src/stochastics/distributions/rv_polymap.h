#pragma once

#include "stochastics/distributions/rv_normal.h"

namespace corvath::algorithm {

/// Cubic polynomial of a standard normal u, x = mean + sd (b u - c + c u^2 + d u^3), with the
/// coefficients from skewness and excess kurtosis; plain normal where no monotone one fits.
///
/// A. I. Fleishman, "A method for simulating non-normal distributions", Psychometrika 43 (1978),
/// pp. 521-532.
///
/// SetParameters takes the four moments, like SetStats, or its own five parameters.
class RV_Polymap : public RVType<RV_Polymap, enums::RandomVariable::POLYMAP, Support::kLine> {
 public:
  RV_Polymap() { RV_Polymap::Reset(); }
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetMomentNames() const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

 private:
  friend RVType;
  template <class Archive>
  void SerializeFurther(Archive& ar);

  /// Sets parameters and moments of a monotone polynomial.
  void TakeCoefficients(double mean, double sd, const Eigen::Vector3d& coefficients);
  /// The u that is mapped to x.
  double ToGauss(double x) const;

  RV_Normal RV_Gauss;  ///< u
};

}  // namespace corvath::algorithm
