#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Triangular distribution from a to b with the mode c; parameters are kept sorted.
class RV_Triangular
    : public RVType<RV_Triangular, enums::RandomVariable::TRIANGULAR, Support::kInterval> {
 public:
  RV_Triangular() { RV_Triangular::Reset(); }
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
  /// The triangle with these moments; the skewness is held in the family's range.
  void TakeStats(double mean, double sd, double skewness);
  void TakeParameters(double a, double c, double b);
};

}  // namespace corvath::algorithm
