#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Number of events of which lambda are expected. Moments are the mean, or mean and standard
/// deviation, of which the latter is ignored.
class RV_Poisson
    : public RVType<RV_Poisson, enums::RandomVariable::POISSON, Support::kLowerBound, true> {
 public:
  RV_Poisson() { RV_Poisson::Reset(); }
  double GetLowerBound() const override;
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
