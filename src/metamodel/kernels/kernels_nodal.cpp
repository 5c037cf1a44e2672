#include "metamodel/kernels/kernels_nodal.h"

#include "archive/instantiate.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace corvath::math::metamodel {

void KernelNodalInfl::Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
                              const ConstPoints& points) const {
  SquaredDistancesTo(x, points, weights);
  ToWeights(weights);
}

template <class Archive>
void KernelNodalInfl::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelBase",
                                     boost::serialization::base_object<KernelBase>(*this));
}

void KernelNodalInflExp::SetParameters(const Eigen::VectorXd& parameters) {
  RequireParameters(parameters);
  if (!(parameters(0) >= 1.0))
    throw std::domain_error("KernelNodalInflExp: parameter must be greater or equal one");
  StoreParameters(parameters);
  const double c = InfluenceScale();
  helper_term_ = -1.0 / (c * c);
}

Eigen::VectorXd KernelNodalInflExp::EvaluateDistances(
    const Eigen::Ref<const Eigen::VectorXd>& squared) const {
  Eigen::VectorXd weights = squared;
  ToWeights(weights);
  return weights;
}

void KernelNodalInflExp::ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const {
  RequireParameters(parameters_);
  if (squared.size() == 0) return;
  // Compared as doubles: the parameter may be beyond any integer.
  const double count = std::min(parameters_(0), static_cast<double>(squared.size()));
  std::vector<double> sorted(squared.begin(), squared.end());
  const auto nearest = sorted.begin() + (static_cast<std::ptrdiff_t>(count) - 1);
  std::nth_element(sorted.begin(), nearest, sorted.end(), [](double a, double b) {
    return a < b || (std::isnan(b) && !std::isnan(a));  // NaN last keeps the order total
  });
  squared = squared * helper_term_ / *nearest;
  ExpInPlace(squared);
}

template <class Archive>
void KernelNodalInflExp::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelNodalInfl",
                                     boost::serialization::base_object<KernelNodalInfl>(*this));
  ar& BOOST_SERIALIZATION_NVP(helper_term_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelNodalInfl)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelNodalInflExp)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelNodalInfl)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelNodalInflExp)
