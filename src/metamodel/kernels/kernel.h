#pragma once

#include "archive/serialization.h"
#include "metamodel/types.h"

#include <Eigen/Core>

#include <cmath>
#include <cstdint>
#include <list>
#include <string>

namespace corvath::math::metamodel {

/// Type codes of the kernels, as settings store them. Other numbers may come from a file.
enum class KernelType : std::int32_t {
  kConstInflExp = 1,
  kConstInflIsoExp = 101,
  kConstInflIsoReg = 102,
  kNodalInflExp = 201
};

/// Squared Euclidean distances from `x` (d) to the rows of `points` (N x d): N. By differences, so
/// that a point is at distance exactly 0 from itself.
void SquaredDistancesTo(const ConstPoint& x, const ConstPoints& points,
                        Eigen::Ref<Eigen::VectorXd> squared);

/// exp of each entry; exp(-inf) is 0 and NaN passes.
void ExpInPlace(Eigen::Ref<Eigen::VectorXd> values);

/// c = 1 / sqrt(-ln 0.001): exp(-d^2 / (c D)^2) is 0.001 at the influence radius D.
inline double InfluenceScale() {
  return 1.0 / std::sqrt(-std::log(0.001));
}

/// Turns distances to support points into weights. An exponential kernel weighs 1 at the point and
/// 0.001 at its influence radius. A kernel without parameters is not usable yet.
class KernelBase {
 public:
  virtual ~KernelBase() = default;

  /// `weights` (N) of the support points `points` (N x d) seen from `x` (d).
  virtual void Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
                       const ConstPoints& points) const = 0;

  /// Weights of an array of squared distances.
  /// @throws std::domain_error  the kernel is not isotropic
  virtual Eigen::VectorXd EvaluateDistances(const Eigen::Ref<const Eigen::VectorXd>& squared) const;

  /// Weight of one squared distance.
  /// @throws std::domain_error  the kernel does not have a constant isotropic influence
  virtual double EvaluateDistance(double squared) const;

  /// A copy, owned by the caller.
  virtual KernelBase* Clone() const = 0;

  virtual KernelType GetType() const = 0;
  /// Whether it can serve as a correlation function.
  virtual bool IsCorrelation() const = 0;
  virtual bool IsKernelOfSurrogate() const { return false; }
  virtual bool IsConstantInfluence() const = 0;  ///< the same radii at every support point
  virtual bool IsIsotropic() const = 0;          ///< a function of the Euclidean distance alone
  virtual std::list<std::wstring> GetParameterNames() const { return {L"Influence radius"}; }
  virtual std::uint64_t GetParameterCount() const = 0;

  /// Takes new parameters over; they are checked before anything changes.
  /// @throws std::domain_error  no parameter, one that is out of range, or a wrong number of them
  virtual void SetParameters(const Eigen::VectorXd& parameters) = 0;

  const Eigen::VectorXd& GetParameters() const { return parameters_; }

 protected:
  KernelBase() = default;
  KernelBase(const KernelBase&) = default;
  KernelBase& operator=(const KernelBase&) = default;

  /// The part of SetParameters that all classes share: size check and copy.
  void StoreParameters(const Eigen::VectorXd& parameters);
  /// @throws std::domain_error  `parameters` is empty
  static void RequireParameters(const Eigen::VectorXd& parameters);

  Eigen::VectorXd parameters_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::KernelBase, "corvath::math::metamodel::KernelBase")
