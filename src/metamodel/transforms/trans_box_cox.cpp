#include "metamodel/transforms/trans_box_cox.h"

#include "archive/instantiate.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"

#include <cmath>
#include <stdexcept>

namespace corvath::math::transform {

bool TransBoxCox::Build(const Eigen::Ref<const Eigen::MatrixXd>& data) {
  if (!(lambda_ >= -1.0 && lambda_ <= 1.0))
    throw std::runtime_error("Lambda should be between -1 and 1.");
  if (!(min_scaled_ > 0.0 && max_scaled_ > 0.0))
    throw std::runtime_error("Minimum and maximum for scaling should be larger than zero.");
  if (data.rows() < 2) throw std::runtime_error("At least two values are required.");
  if (data.cols() != 1) throw std::runtime_error("Transformation works only for response vector.");
  trans_minmax_ = TransMinMax(min_scaled_, max_scaled_);
  if (!trans_minmax_.Build(data)) return false;
  need_build_ = false;
  return true;
}

void TransBoxCox::RequireUsable(Eigen::Index columns) const {
  RequireBuilt();
  if (columns > 1) throw std::logic_error("TransBoxCox works only for scalar data");
}

void TransBoxCox::ForwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const {
  RequireUsable(data.cols());
  trans_minmax_.ForwardInPlace(data);
  auto u = data.array();
  if (lambda_inv_ == 1)
    u -= 1.0;
  else if (lambda_inv_ == 0)
    u = u.unaryExpr([](double value) { return std::log(value); });
  else
    u = (u.unaryExpr([this](double value) { return std::pow(value, lambda_); }) - 1.0) / lambda_;
}

void TransBoxCox::BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const {
  RequireUsable(data.cols());
  auto z = data.array();
  if (lambda_inv_ == 1)
    z += 1.0;
  else if (lambda_inv_ == 0)
    z = z.unaryExpr([](double value) { return std::exp(value); });
  else if (lambda_inv_ == 2)
    z = (z * lambda_ + 1.0).square();
  else
    z = (z * lambda_ + 1.0).unaryExpr([k = static_cast<double>(lambda_inv_)](double value) {
      return std::pow(value, k);
    });
  trans_minmax_.BackwardInPlace(data);
}

std::wstring TransBoxCox::GetName() const {
  utils::WideTextStream name;
  name << L"BoxCox (" << lambda_ << L", ";
  if (trans_minmax_.GetScaling().size() == 1) name << trans_minmax_.GetScaling()(0) << L" ";
  for (const Eigen::VectorXd* offset :
       {&trans_minmax_.GetOffsetForward(), &trans_minmax_.GetOffsetBackward()})
    if (offset->size() == 1) name << L", " << (*offset)(0) << L" ";
  name << L")";
  return name.str();
}

bool TransBoxCox::Equals(const Transform& other) const {
  if (!Transform::Equals(other)) return false;
  const auto* same = dynamic_cast<const TransBoxCox*>(&other);
  return same && SameFigure(lambda_, same->lambda_) && lambda_inv_ == same->lambda_inv_ &&
         min_scaled_ == same->min_scaled_ && max_scaled_ == same->max_scaled_ &&
         trans_minmax_.Equals(same->trans_minmax_);
}

template <class Archive>
void TransBoxCox::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("Transform",
                                     boost::serialization::base_object<Transform>(*this));
  ar& BOOST_SERIALIZATION_NVP(lambda_) & BOOST_SERIALIZATION_NVP(lambda_inv_);
  ar& BOOST_SERIALIZATION_NVP(min_scaled_) & BOOST_SERIALIZATION_NVP(max_scaled_);
  ar& BOOST_SERIALIZATION_NVP(trans_minmax_);
}

}  // namespace corvath::math::transform

ZEL_INSTANTIATE_SERIALIZE(corvath::math::transform::TransBoxCox)
ZEL_EXPORT_IMPLEMENT(corvath::math::transform::TransBoxCox)
