#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Weibull distribution of positive values: scale lambda, shape k; F(x) = 1 - exp(-(x / lambda)^k).
/// The coefficient of variation is at most 1e15.
class RV_Weibull : public RVType<RV_Weibull, enums::RandomVariable::WEIBULL, Support::kLowerBound> {
 public:
  RV_Weibull() { RV_Weibull::Reset(); }
  double GetLowerBound() const override;
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

 private:
  /// The parameters with this mean and standard deviation, which are in the domain.
  void TakeStats(double mean, double sd);
};

}  // namespace corvath::algorithm
