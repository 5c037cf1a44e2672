#pragma once

#include "stochastics/distributions/rv_normal.h"

namespace corvath::algorithm {

/// Gaussian kernel density over n samples, which are its parameters, with the kernel width sd /
/// sqrt(n). Cannot be set by moments. Samples without spread can be held, but PDF, CDF and
/// InverseCDF refuse them. Quantiles are good to about 1e-4 standard deviations; InverseCDF refuses
/// those that its search does not find, such as next to one sample far from all others.
class RV_Kernel : public RVType<RV_Kernel, enums::RandomVariable::KERNEL, Support::kLine> {
 public:
  RV_Kernel() { RV_Kernel::Reset(); }
  double PDF(double x) const override;
  double CDF(double x) const override;
  double InverseCDF(double p) const override;
  std::vector<std::wstring> GetParameterNames() const override;
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void SetStats(const Eigen::VectorXd& moments) override;
  void Reset() override;

 private:
  friend RVType;
  template <class Archive>
  void SerializeFurther(Archive& ar);
  Eigen::Index NumParameters() const;

  void RequireWidth() const;

  RV_Normal RV_Gauss;         ///< the kernel, standard normal
  double Kernel_width = 0.0;  ///< standard deviation of one kernel
};

}  // namespace corvath::algorithm
