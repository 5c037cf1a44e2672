#pragma once

#include "metamodel/transforms/transform.h"

#include <limits>

namespace corvath::math::transform {

/// Clips what a model predicts into [lower, upper]; training values pass unchanged, and so does a
/// NaN.
class TransLimits : public Transform {
 public:
  /// Limits in the user's units; none by default.
  explicit TransLimits(double lower_limit = -std::numeric_limits<double>::infinity(),
                       double upper_limit = std::numeric_limits<double>::infinity())
      : lower_limit_(lower_limit), upper_limit_(upper_limit) {}

  /// Does not look at the data.
  /// @throws std::runtime_error  the lower limit is not below the upper one
  bool Build(const Eigen::Ref<const Eigen::MatrixXd>& data) override;
  void ForwardInPlace(Eigen::Ref<Eigen::MatrixXd>) const override {}
  void BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const override;
  std::vector<double> GetParameters() const override { return {lower_limit_, upper_limit_}; }
  std::wstring GetName() const override;
  TransformType GetType() const override { return TransformType::kLimits; }
  bool Equals(const Transform& other) const override;
  TransLimits* Clone() const override { return new TransLimits(*this); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double lower_limit_;
  double upper_limit_;
};

}  // namespace corvath::math::transform

ZEL_EXPORT_KEY(corvath::math::transform::TransLimits, "corvath::math::transform::TransLimits")
