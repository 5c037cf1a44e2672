#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Distribution whose logarithm is uniform: density proportional to 1 / x on [a, b], a > 0. The
/// coefficient of variation is in [1e-5, 3].
class RV_Loguniform
    : public RVType<RV_Loguniform, enums::RandomVariable::LOGUNIFORM, Support::kInterval> {
 public:
  RV_Loguniform() { RV_Loguniform::Reset(); }
  double GetLowerBound() const override;
  double GetUpperBound() const override;
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
