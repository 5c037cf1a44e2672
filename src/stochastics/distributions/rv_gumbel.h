#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Gumbel distribution of the largest value: mode mu, scale beta; F(x) = exp(-exp(-(x - mu) /
/// beta)).
class RV_Gumbel : public RVType<RV_Gumbel, enums::RandomVariable::GUMBEL, Support::kLine> {
 public:
  RV_Gumbel() { RV_Gumbel::Reset(); }
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
