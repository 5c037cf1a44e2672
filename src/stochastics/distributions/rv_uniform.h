#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Length of a uniform distribution over its standard deviation: sqrt(12).
constexpr double kUniformLength = 3.4641016151377544;

/// Uniform distribution on [a, b]; bounds in the wrong order are exchanged.
class RV_Uniform : public RVType<RV_Uniform, enums::RandomVariable::UNIFORM, Support::kInterval> {
 public:
  RV_Uniform() { RV_Uniform::Reset(); }
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
