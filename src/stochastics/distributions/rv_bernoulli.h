#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// 1 with the probability p, else 0. Moments are the mean, or mean and standard deviation, of which
/// the latter is ignored.
class RV_Bernoulli
    : public RVType<RV_Bernoulli, enums::RandomVariable::BERNOULLI, Support::kInterval, true> {
 public:
  RV_Bernoulli() { RV_Bernoulli::Reset(); }
  double GetLowerBound() const override;
  double GetUpperBound() const override;
  double PDF(double x) const override;
  double CDF(double x) const override;
  double PMF(double x) const override;
  Eigen::MatrixXd GetStates() const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;
};

}  // namespace corvath::algorithm
