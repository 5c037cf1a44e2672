#pragma once

#include "stochastics/distributions/table_parameters.h"
#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Piecewise linear distribution function through a table. The parameters alternate: value,
/// cumulative probability, value, ...; values ascend strictly, probabilities do not descend and are
/// scaled to run from 0 to 1.
class RV_MultiUniform
    : public RVType<RV_MultiUniform, enums::RandomVariable::MULTIUNIFORM, Support::kInterval> {
 public:
  RV_MultiUniform() { RV_MultiUniform::Reset(); }
  double GetLowerBound() const override;
  double GetUpperBound() const override;
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Fit(const Eigen::MatrixXd& data) override;
  void Reset() override;

 private:
  friend RVType;
  Eigen::Index NumParameters() const { return WholeTable(RV_Parameter.size()); }

  Eigen::Index NumPoints() const { return RV_Parameter.size() / 2; }
  double Value(Eigen::Index i) const { return RV_Parameter(2 * i); }
  double Probability(Eigen::Index i) const { return RV_Parameter(2 * i + 1); }
  /// The last i with Value(i) <= x that begins a segment; x inside the support.
  Eigen::Index Segment(double x) const;
};

}  // namespace corvath::algorithm
