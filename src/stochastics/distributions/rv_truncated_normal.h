#pragma once

#include "stochastics/distributions/rv_normal.h"

namespace corvath::algorithm {

/// Normal distribution with location mu and scale s, cut to [a, b] and scaled up to the mass 1. The
/// scale does not exceed the length of the interval, and the interval stays near the bulk.
class RV_Truncatednormal : public RVType<RV_Truncatednormal, enums::RandomVariable::TRUNCATEDNORMAL,
                                         Support::kInterval> {
 public:
  RV_Truncatednormal() { RV_Truncatednormal::Reset(); }
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
  friend RVType;
  template <class Archive>
  void SerializeFurther(Archive& ar);

  /// Newton search for the location and scale with this mean and standard deviation on [a, b].
  void TakeStats(double mean, double sd, double a, double b);
  void TakeParameters(double mu, double s, double a, double b);

  RV_Normal RV_Gauss;    ///< without the cut
  double RV_area = 1.0;  ///< 1 / the mass of RV_Gauss in [a, b]
};

}  // namespace corvath::algorithm
