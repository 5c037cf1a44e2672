#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Normal distribution: mean mu, standard deviation s. The floors of s hold in SetParameters
/// itself.
class RV_Normal : public RVType<RV_Normal, enums::RandomVariable::NORMAL, Support::kLine> {
 public:
  RV_Normal() { RV_Normal::Reset(); }
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

  /// For a type that holds the parameters of its inner normal itself: s > 0 without the floors,
  /// which are those of a physical quantity and would take a narrow distribution off its moments.
  void SetExact(double mu, double s) { Store({mu, s}, {mu, s}); }
};

}  // namespace corvath::algorithm
