#pragma once

#include "metamodel/surrogate_settings.h"

namespace corvath::math::metamodel {

/// Terms of a polynomial in m inputs: main terms x_j^(o + 1) by bit o * m + j, and products
/// x_i x_j (i below j) by one bit per pair, i running slowest.
class LinearRegressionSettings : public SurrogateSettingsBase {
 public:
  explicit LinearRegressionSettings(std::uint64_t ninputs = 0);

  void Check(utils::log::LogBase* logger) const override;
  BitVector GetVariableSelection() const override;
  void SetVariableSelection(const BitVector& bits) override;
  BitVector GetMainTermSelection() const override { return main_term_selection_; }
  BitVector GetInteractionSelection() const override { return interaction_selection_; }
  std::uint64_t GetOrder() const override { return order_; }
  std::uint64_t GetNumberCoefficients() const override;
  std::uint64_t GetNumberParameters() const override;
  std::uint64_t GetComplexity() const override;
  bool Equals(const SurrogateSettingsBase& other) const override;
  LinearRegressionSettings* Clone() const override { return new LinearRegressionSettings(*this); }

  /// Back to the plain linear model in all inputs, with default transforms.
  virtual void ResetToLinear();

  /// All main terms up to `order`; from order 2 on all interactions too, below none.
  void SetOrder(std::uint64_t order);
  void SetMainTermSelection(const BitVector& bits) { main_term_selection_ = bits; }
  /// @throws corvath::utils::runtime_error  neither empty nor one bit per pair of inputs
  void SetInteractionSelection(const BitVector& bits);

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::uint64_t NumberPairs() const;

  std::uint64_t order_ = 1;  ///< highest power of an input
  BitVector main_term_selection_;
  BitVector interaction_selection_;
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::LinearRegressionSettings,
               "::corvath::math::metamodel::LinearRegressionSettings")
