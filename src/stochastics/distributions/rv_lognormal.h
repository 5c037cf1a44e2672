#pragma once

#include "stochastics/distributions/rv_normal.h"

namespace corvath::algorithm {

/// Lognormal distribution: ln x is normal with mean mu in [-100, 100] and standard deviation s up
/// to
/// 10. The mean is positive and the coefficient of variation at most 1e20.
class RV_Lognormal
    : public RVType<RV_Lognormal, enums::RandomVariable::LOGNORMAL, Support::kLowerBound> {
 public:
  RV_Lognormal() { RV_Lognormal::Reset(); }
  double GetLowerBound() const override;
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

 private:
  friend RVType;
  template <class Archive>
  void SerializeFurther(Archive& ar);

  /// The parameters with this mean and standard deviation, which are in the domain.
  void TakeStats(double mean, double sd);
  /// Holds mu and s in their domain and sets the inner variable and the moments.
  void TakeParameters(double mu, double s);

  RV_Normal RV_Gauss;  ///< ln x
};

}  // namespace corvath::algorithm
