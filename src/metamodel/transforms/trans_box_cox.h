#pragma once

#include "metamodel/transforms/trans_min_max.h"

namespace corvath::math::transform {

/// Power transform of a response, scaled to [min_scaled, max_scaled] before:
///
///     z = (u^lambda - 1) / lambda,   z = ln u for lambda = 0,   lambda = 1 / k, k an integer
///
/// G. E. P. Box and D. R. Cox, "An analysis of transformations", J. R. Stat. Soc. B 26, 1964,
/// pp. 211-252. k = 1 stays affine; k = 0 stands for the logarithm.
class TransBoxCox : public Transform {
 public:
  /// @param lambda_inv              k
  /// @param min_scaled, max_scaled  range of u, both positive
  explicit TransBoxCox(std::int64_t lambda_inv = 1, double min_scaled = 0.1,
                       double max_scaled = 10.1)
      : lambda_(lambda_inv == 0 ? 0.0 : 1.0 / static_cast<double>(lambda_inv)),
        lambda_inv_(lambda_inv),
        min_scaled_(min_scaled),
        max_scaled_(max_scaled) {}

  /// @throws std::runtime_error  |lambda| above 1, a bound that is not positive, fewer than two
  ///                             rows, or more than one column
  bool Build(const Eigen::Ref<const Eigen::MatrixXd>& data) override;
  void ForwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const override;
  void BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const override;
  std::vector<double> GetParameters() const override { return {lambda_, min_scaled_, max_scaled_}; }
  std::wstring GetName() const override;
  TransformType GetType() const override { return TransformType::kBoxCox; }
  bool Equals(const Transform& other) const override;
  TransBoxCox* Clone() const override { return new TransBoxCox(*this); }

  /// k; 0 for the logarithm.
  std::int64_t GetInverseLambda() const { return lambda_inv_; }
  /// The scaling before; not built until this is.
  const TransMinMax& GetScaling() const { return trans_minmax_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  void RequireUsable(Eigen::Index columns) const;

  double lambda_;
  std::int64_t lambda_inv_;
  double min_scaled_;
  double max_scaled_;
  TransMinMax trans_minmax_;
};

}  // namespace corvath::math::transform

ZEL_EXPORT_KEY(corvath::math::transform::TransBoxCox, "corvath::math::transform::TransBoxCox")
