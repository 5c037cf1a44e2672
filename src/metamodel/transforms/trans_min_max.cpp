#include "metamodel/transforms/trans_min_max.h"

#include "archive/instantiate.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"

#include <cmath>
#include <stdexcept>

namespace corvath::math::transform {

bool TransMinMax::Build(const Eigen::Ref<const Eigen::MatrixXd>& data) {
  if (data.rows() < 2 || data.cols() < 1)
    throw std::runtime_error("At least two points are required.");
  scaling_ = Eigen::VectorXd::Ones(data.cols());
  offset_forward_.resize(data.cols());
  offset_backward_.resize(data.cols());
  for (Eigen::Index j = 0; j < data.cols(); ++j) {
    const double a = data.col(j).minCoeff();
    const double b = data.col(j).maxCoeff();
    // Below this a column counts as constant: its range is rounding noise.
    constexpr double kRelativeNoise = 1e-12;
    if (b - a > (std::abs(a) + std::abs(b)) * kRelativeNoise)
      scaling_(j) = (max_scaled_ - min_scaled_) / (b - a);
    offset_forward_(j) = min_scaled_ - a * scaling_(j);
    offset_backward_(j) = a - min_scaled_ / scaling_(j);
  }
  need_build_ = false;
  return true;
}

void TransMinMax::RequireColumns(Eigen::Index columns) const {
  RequireBuilt();
  if (scaling_.size() != columns || offset_forward_.size() != columns ||
      offset_backward_.size() != columns)
    throw std::logic_error("TransMinMax was built for " + std::to_string(scaling_.size()) +
                           " columns, not for " + std::to_string(columns));
}

void TransMinMax::ForwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const {
  RequireColumns(data.cols());
  for (Eigen::Index j = 0; j < data.cols(); ++j)
    data.col(j).array() = data.col(j).array() * scaling_(j) + offset_forward_(j);
}

void TransMinMax::BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const {
  RequireColumns(data.cols());
  for (Eigen::Index j = 0; j < data.cols(); ++j)
    data.col(j).array() = data.col(j).array() / scaling_(j) + offset_backward_(j);
}

std::wstring TransMinMax::GetName() const {
  utils::WideTextStream name;
  name << L"MinMax ( " << min_scaled_ << L", " << max_scaled_ << L" )";
  return name.str();
}

bool TransMinMax::Equals(const Transform& other) const {
  if (!Transform::Equals(other)) return false;
  const auto* same = dynamic_cast<const TransMinMax*>(&other);
  return same && min_scaled_ == same->min_scaled_ && max_scaled_ == same->max_scaled_ &&
         SameFigures(scaling_, same->scaling_) &&
         SameFigures(offset_forward_, same->offset_forward_) &&
         SameFigures(offset_backward_, same->offset_backward_);
}

template <class Archive>
void TransMinMax::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("Transform",
                                     boost::serialization::base_object<Transform>(*this));
  ar& BOOST_SERIALIZATION_NVP(min_scaled_) & BOOST_SERIALIZATION_NVP(max_scaled_);
  ar& BOOST_SERIALIZATION_NVP(scaling_) & BOOST_SERIALIZATION_NVP(offset_forward_) &
      BOOST_SERIALIZATION_NVP(offset_backward_);
}

}  // namespace corvath::math::transform

ZEL_INSTANTIATE_SERIALIZE(corvath::math::transform::TransMinMax)
ZEL_EXPORT_IMPLEMENT(corvath::math::transform::TransMinMax)
