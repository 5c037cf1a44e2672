#pragma once

#include "metamodel/transforms/transform.h"

namespace corvath::math::transform {

/// Scales each column linearly so that the range of its data becomes [min_scaled, max_scaled]. A
/// column of equal values is shifted only, to min_scaled.
class TransMinMax : public Transform {
 public:
  explicit TransMinMax(double min_scaled = 0.0, double max_scaled = 1.0)
      : min_scaled_(min_scaled), max_scaled_(max_scaled) {}

  /// @throws std::runtime_error  fewer than two rows, or no column
  bool Build(const Eigen::Ref<const Eigen::MatrixXd>& data) override;
  void ForwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const override;
  void BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const override;
  std::vector<double> GetParameters() const override { return {min_scaled_, max_scaled_}; }
  std::wstring GetName() const override;
  TransformType GetType() const override { return TransformType::kMinMax; }
  bool Equals(const Transform& other) const override;
  TransMinMax* Clone() const override { return new TransMinMax(*this); }

  const Eigen::VectorXd& GetScaling() const { return scaling_; }
  const Eigen::VectorXd& GetOffsetForward() const { return offset_forward_; }
  const Eigen::VectorXd& GetOffsetBackward() const { return offset_backward_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  void RequireColumns(Eigen::Index columns) const;

  double min_scaled_;
  double max_scaled_;
  Eigen::VectorXd scaling_;          ///< multiplier of each column
  Eigen::VectorXd offset_forward_;   ///< added after multiplying
  Eigen::VectorXd offset_backward_;  ///< added after dividing
};

}  // namespace corvath::math::transform

ZEL_EXPORT_KEY(corvath::math::transform::TransMinMax, "corvath::math::transform::TransMinMax")
