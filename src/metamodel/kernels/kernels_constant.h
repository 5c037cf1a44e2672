#pragma once

#include "metamodel/kernels/kernel.h"

namespace corvath::math::metamodel {

/// Kernels whose influence radius is the same everywhere.
class KernelConstInfl : public KernelBase {
 public:
  /// Weight at displacement `d` from a support point.
  virtual double EvaluateVector(const ConstPoint& d) const = 0;
  bool IsConstantInfluence() const override { return true; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// exp(ln(0.001) sum_j (d_j / D_j)^2) with one radius D_j per input.
class KernelConstInflExp : public KernelConstInfl {
 public:
  KernelConstInflExp() = default;
  explicit KernelConstInflExp(const Eigen::VectorXd& parameters) { SetParameters(parameters); }

  void Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
               const ConstPoints& points) const override;
  /// @throws std::domain_error  another number of inputs than radii
  double EvaluateVector(const ConstPoint& d) const override;
  KernelConstInflExp* Clone() const override { return new KernelConstInflExp(*this); }
  KernelType GetType() const override { return KernelType::kConstInflExp; }
  bool IsCorrelation() const override { return true; }
  bool IsKernelOfSurrogate() const override { return true; }
  bool IsIsotropic() const override { return false; }
  std::uint64_t GetParameterCount() const override {
    return static_cast<std::uint64_t>(parameters_.size());
  }
  void SetParameters(const Eigen::VectorXd& parameters) override;
  /// ln(0.001) / D_j^2 of each input.
  const Eigen::VectorXd& GetHelperTerm() const { return helper_term_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  Eigen::VectorXd helper_term_;  ///< ln(0.001) / D_j^2
};

/// Kernels of the Euclidean distance with one radius.
class KernelConstInflIso : public KernelConstInfl {
 public:
  /// Weight at squared distance `squared`.
  virtual double EvaluateSquared(double squared) const = 0;

  void Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
               const ConstPoints& points) const override;
  double EvaluateVector(const ConstPoint& d) const override {
    return EvaluateSquared(d.squaredNorm());
  }
  Eigen::VectorXd EvaluateDistances(
      const Eigen::Ref<const Eigen::VectorXd>& squared) const override;
  double EvaluateDistance(double squared) const override { return EvaluateSquared(squared); }
  bool IsIsotropic() const override { return true; }
  std::uint64_t GetParameterCount() const override { return 1; }

  /// Replaces an array of squared distances by the weights.
  virtual void ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const = 0;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// exp(ln(0.001) s / D^2) at squared distance s.
class KernelConstInflIsoExp : public KernelConstInflIso {
 public:
  KernelConstInflIsoExp() = default;
  explicit KernelConstInflIsoExp(const Eigen::VectorXd& parameters) { SetParameters(parameters); }

  double EvaluateSquared(double squared) const override;
  KernelConstInflIsoExp* Clone() const override { return new KernelConstInflIsoExp(*this); }
  KernelType GetType() const override { return KernelType::kConstInflIsoExp; }
  bool IsCorrelation() const override { return true; }
  bool IsKernelOfSurrogate() const override { return true; }
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const override;

  /// ln(0.001) / D^2: what a caller with its own loop over squared distances needs.
  double GetHelperTerm() const { return helper_term_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double helper_term_ = 0.0;  ///< ln(0.001) / D^2
};

/// max(0, (s / D^2 + epsilon)^-m - (1 + epsilon)^-m) at squared distance s: very peaked at the
/// point (about 1e10), exactly 0 from the radius on.
class KernelConstInflIsoReg : public KernelConstInflIso {
 public:
  KernelConstInflIsoReg() = default;
  explicit KernelConstInflIsoReg(const Eigen::VectorXd& parameters) { SetParameters(parameters); }

  double EvaluateSquared(double squared) const override;
  KernelConstInflIsoReg* Clone() const override { return new KernelConstInflIsoReg(*this); }
  KernelType GetType() const override { return KernelType::kConstInflIsoReg; }
  bool IsCorrelation() const override { return false; }
  bool IsKernelOfSurrogate() const override { return true; }
  void SetParameters(const Eigen::VectorXd& parameters) override;
  void ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const override;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double epsilon_ = 1e-5;
  double m_ = 2.0;
  double D_squared_ = 0.0;
  double helper_term_ = 0.0;  ///< (1 + epsilon)^-m
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::KernelConstInfl,
               "corvath::math::metamodel::KernelConstInfl")
ZEL_EXPORT_KEY(corvath::math::metamodel::KernelConstInflExp,
               "corvath::math::metamodel::KernelConstInflExp")
ZEL_EXPORT_KEY(corvath::math::metamodel::KernelConstInflIso,
               "corvath::math::metamodel::KernelConstInflIso")
ZEL_EXPORT_KEY(corvath::math::metamodel::KernelConstInflIsoExp,
               "corvath::math::metamodel::KernelConstInflIsoExp")
ZEL_EXPORT_KEY(corvath::math::metamodel::KernelConstInflIsoReg,
               "corvath::math::metamodel::KernelConstInflIsoReg")
