#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Generalised lambda distribution, defined by its quantile function
///
///     Q(p) = l1 + ((p^l3 - 1) / l3 - ((1 - p)^l4 - 1) / l4) / l2
///
/// M. Freimer et al., "A study of the generalized Tukey lambda family", Communications in
/// Statistics
/// - Theory and Methods 17 (1988), pp. 3547-3567. The shapes exceed -1/4, where the kurtosis
/// exists. Skewness is held in [-2, 2]. The bounds are the quantiles of 1e-10 and 1 - 1e-10.
class RV_Lambda : public RVType<RV_Lambda, enums::RandomVariable::LAMBDA, Support::kInterval> {
 public:
  RV_Lambda() { RV_Lambda::Reset(); }
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
  double Quantile(double p) const;
};

}  // namespace corvath::algorithm
