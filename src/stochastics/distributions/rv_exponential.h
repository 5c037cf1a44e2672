#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Exponential distribution with mean distance beta, shifted to begin at epsilon.
class RV_Exponential
    : public RVType<RV_Exponential, enums::RandomVariable::EXPONENTIAL, Support::kLowerBound> {
 public:
  RV_Exponential() { RV_Exponential::Reset(); }
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
