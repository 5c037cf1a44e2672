#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Frechet distribution of positive values: scale s, shape alpha > 2, where the variance exists;
/// F(x) = exp(-(x / s)^-alpha).
class RV_Frechet : public RVType<RV_Frechet, enums::RandomVariable::FRECHET, Support::kLowerBound> {
 public:
  RV_Frechet() { RV_Frechet::Reset(); }
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
