#pragma once

#include "metamodel/kernels/kernel.h"
#include "metamodel/surrogate_settings.h"

namespace corvath::math::metamodel {

/// Polynomial order, terms and kernel of a moving least squares model. Main terms x_j^(o + 1) by
/// bit o * m + j; for order 0 one bit per input selects what the distances use.
class MovingLeastSquaresSettings : public SurrogateSettingsBase {
 public:
  explicit MovingLeastSquaresSettings(std::uint64_t ninputs = 0)
      : SurrogateSettingsBase(ninputs), main_term_selection_(ninputs, true) {}

  void Check(utils::log::LogBase* logger) const override;
  BitVector GetVariableSelection() const override;
  void SetVariableSelection(const BitVector& bits) override;
  BitVector GetMainTermSelection() const override { return main_term_selection_; }
  /// Always empty: the model has no interactions.
  BitVector GetInteractionSelection() const override { return {}; }
  std::uint64_t GetOrder() const override { return order_; }
  std::uint64_t GetNumberCoefficients() const override;
  std::uint64_t GetNumberParameters() const override;
  std::uint64_t GetComplexity() const override { return order_ + 10; }
  bool Equals(const SurrogateSettingsBase& other) const override;
  MovingLeastSquaresSettings* Clone() const override {
    return new MovingLeastSquaresSettings(*this);
  }

  /// Back to the linear model in all inputs with the default kernel and default transforms.
  virtual void ResetToLinear();

  /// All terms up to `order`.
  void SetOrder(std::uint64_t order);
  KernelType GetKernelType() const { return kernel_type_; }
  /// Sets the kernel and drops its parameters.
  void SetKernelType(KernelType type);
  const Eigen::VectorXd& GetKernelParameter() const { return kernel_parameter_; }
  void SetKernelParameter(const Eigen::VectorXd& parameter) { kernel_parameter_ = parameter; }
  void SetMainTermSelection(const BitVector& bits) { main_term_selection_ = bits; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::uint64_t order_ = 1;
  BitVector main_term_selection_;
  KernelType kernel_type_ = KernelType::kConstInflIsoExp;
  Eigen::VectorXd kernel_parameter_;  ///< empty until chosen
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::MovingLeastSquaresSettings,
               "::corvath::math::metamodel::MovingLeastSquaresSettings")
