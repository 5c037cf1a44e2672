#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Beta distribution with shapes alpha and beta, stretched from a to b. Skewness and excess
/// kurtosis that no beta distribution has are moved to the nearest ones that do.
class RV_Beta : public RVType<RV_Beta, enums::RandomVariable::BETA, Support::kInterval> {
 public:
  RV_Beta() { RV_Beta::Reset(); }
  double GetLowerBound() const override;
  double GetUpperBound() const override;
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetMomentNames() const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

 private:
  /// The parameters with these moments, which are in the domain.
  void TakeStats(double mean, double sd, double skewness, double kurtosis);
  void TakeParameters(double a, double b, double alpha, double beta);
};

}  // namespace corvath::algorithm
