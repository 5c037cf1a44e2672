#pragma once

#include "metamodel/kernels/kernel.h"
#include "metamodel/surrogate_settings.h"

namespace corvath::math::metamodel {

/// Correlation kernel, nugget and inputs of a kriging model.
class OrdinaryKrigingSettings : public SurrogateSettingsBase {
 public:
  explicit OrdinaryKrigingSettings(std::uint64_t ninputs = 0)
      : SurrogateSettingsBase(ninputs), selection_(ninputs, true) {}

  /// Beside the base's check: the kernel must be a correlation function and, where it has a radius
  /// per input, have one for each selected input.
  void Check(utils::log::LogBase* logger) const override;

  BitVector GetVariableSelection() const override { return selection_; }
  void SetVariableSelection(const BitVector& bits) override { selection_ = bits; }
  BitVector GetMainTermSelection() const override { return {}; }
  BitVector GetInteractionSelection() const override { return {}; }
  std::uint64_t GetOrder() const override { return 0; }
  std::uint64_t GetNumberCoefficients() const override { return 1; }
  std::uint64_t GetNumberParameters() const override;
  std::uint64_t GetComplexity() const override;
  bool Equals(const SurrogateSettingsBase& other) const override;
  OrdinaryKrigingSettings* Clone() const override { return new OrdinaryKrigingSettings(*this); }

  /// All members to their defaults, the number of inputs excepted.
  virtual void ResetToLinear();

  KernelType GetKernelType() const { return kernel_type_; }
  /// Sets the kernel and drops its parameters.
  void SetKernelType(KernelType type);
  const Eigen::VectorXd& GetKernelParameter() const { return kernel_parameter_; }
  void SetKernelParameter(const Eigen::VectorXd& parameter) { kernel_parameter_ = parameter; }
  double GetNugget() const { return nugget_; }
  void SetNugget(double nugget) { nugget_ = nugget; }
  /// Objective of the isotropic fit: the likelihood, or else the cross-validation error.
  bool UsesLikelihood() const { return use_likelihood_; }
  void SetUseLikelihood(bool use) { use_likelihood_ = use; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double nugget_ = 1e-6;  ///< added to the diagonal of the correlation matrix
  bool use_likelihood_ = true;
  KernelType kernel_type_ = KernelType::kConstInflIsoExp;
  Eigen::VectorXd kernel_parameter_;  ///< empty until chosen
  BitVector selection_;               ///< m bits: inputs that the distances use
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::OrdinaryKrigingSettings,
               "::corvath::math::metamodel::OrdinaryKrigingSettings")
