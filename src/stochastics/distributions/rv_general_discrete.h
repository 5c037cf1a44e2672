#pragma once

#include "stochastics/distributions/table_parameters.h"
#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// Table of values with their probabilities. The parameters alternate: value, probability, value,
/// ... Probabilities are scaled to the sum 1 (equal ones if all are 0), values are kept sorted.
class RV_GeneralDiscrete
    : public RVType<RV_GeneralDiscrete, enums::RandomVariable::DISCRETE, Support::kInterval, true> {
 public:
  RV_GeneralDiscrete() { RV_GeneralDiscrete::Reset(); }
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
  void Fit(const Eigen::MatrixXd& data) override;
  void Reset() override;

 private:
  friend RVType;
  Eigen::Index NumParameters() const { return WholeTable(RV_Parameter.size()); }

  Eigen::Index NumStates() const { return RV_Parameter.size() / 2; }
  double Value(Eigen::Index i) const { return RV_Parameter(2 * i); }
  double Probability(Eigen::Index i) const { return RV_Parameter(2 * i + 1); }
};

}  // namespace corvath::algorithm
