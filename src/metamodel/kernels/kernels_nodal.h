#pragma once

#include "metamodel/kernels/kernel.h"

namespace corvath::math::metamodel {

/// Kernels whose influence radius follows the distance of the k-th nearest support point.
class KernelNodalInfl : public KernelBase {
 public:
  void Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
               const ConstPoints& points) const override;
  bool IsConstantInfluence() const override { return false; }

 protected:
  /// Replaces an array of squared distances by the weights.
  virtual void ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const = 0;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// exp(ln(0.001) s_i / t) with t the n-th smallest of all squared distances s, n the integer part
/// of the parameter, at most their number. Needs a non-zero distance among the n nearest.
class KernelNodalInflExp : public KernelNodalInfl {
 public:
  KernelNodalInflExp() = default;
  explicit KernelNodalInflExp(const Eigen::VectorXd& parameters) { SetParameters(parameters); }

  Eigen::VectorXd EvaluateDistances(
      const Eigen::Ref<const Eigen::VectorXd>& squared) const override;
  KernelNodalInflExp* Clone() const override { return new KernelNodalInflExp(*this); }
  KernelType GetType() const override { return KernelType::kNodalInflExp; }
  bool IsCorrelation() const override { return true; }
  bool IsKernelOfSurrogate() const override { return true; }
  bool IsIsotropic() const override { return false; }
  std::uint64_t GetParameterCount() const override { return 1; }
  void SetParameters(const Eigen::VectorXd& parameters) override;

 protected:
  void ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const override;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double helper_term_ = 0.0;  ///< ln(0.001)
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::KernelNodalInfl,
               "corvath::math::metamodel::KernelNodalInfl")
ZEL_EXPORT_KEY(corvath::math::metamodel::KernelNodalInflExp,
               "corvath::math::metamodel::KernelNodalInflExp")
