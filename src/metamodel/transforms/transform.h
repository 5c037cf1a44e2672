#pragma once

#include "archive/serialization.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::math::transform {

/// Type codes of the transforms, as settings store them. Other numbers may come from a file.
enum class TransformType : std::int32_t { kNone = 0, kMinMax = 1, kBoxCox = 2, kLimits = 3 };

/// Maps data matrices (one row per observation) to the coordinates of a model and back. A transform
/// is built once on data; until then it refuses to map.
class Transform {
 public:
  virtual ~Transform() = default;

  /// Fits the transform to `data`.
  /// @returns whether it can be used from now on
  /// @throws std::runtime_error  the data or the parameters are unusable; NeedBuild() stays true
  virtual bool Build(const Eigen::Ref<const Eigen::MatrixXd>& data) = 0;

  /// Untransformed to transformed, in place. Allocates nothing.
  /// @throws std::logic_error  not built, or a matrix with another number of columns
  virtual void ForwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const = 0;

  /// Transformed to untransformed, in place. Allocates nothing; same errors.
  virtual void BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const = 0;

  /// The parameters from which the factory makes the same transform, unbuilt.
  virtual std::vector<double> GetParameters() const = 0;
  virtual std::wstring GetName() const = 0;
  virtual TransformType GetType() const = 0;

  /// Same class, parameters and state; here the state alone, which derived classes extend.
  virtual bool Equals(const Transform& other) const { return need_build_ == other.need_build_; }

  /// A copy, owned by the caller.
  virtual Transform* Clone() const = 0;

  /// ForwardInPlace() and BackwardInPlace() of a copy: same shape, same errors.
  Eigen::MatrixXd Forward(Eigen::MatrixXd data) const {
    ForwardInPlace(data);
    return data;
  }
  Eigen::MatrixXd Backward(Eigen::MatrixXd data) const {
    BackwardInPlace(data);
    return data;
  }
  bool NeedBuild() const { return need_build_; }

 protected:
  Transform() = default;
  Transform(const Transform&) = default;
  Transform& operator=(const Transform&) = default;

  /// @throws std::logic_error "can not transform - build first"
  void RequireBuilt() const;

  bool need_build_ = true;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::math::transform

ZEL_EXPORT_KEY(corvath::math::transform::Transform, "corvath::math::transform::Transform")
