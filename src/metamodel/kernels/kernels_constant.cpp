#include "metamodel/kernels/kernels_constant.h"

#include "archive/instantiate.h"

#include <cmath>
#include <stdexcept>

namespace corvath::math::metamodel {

namespace {

/// ln(0.001) / D^2.
double HelperTerm(double radius) {
  const double c = InfluenceScale();
  return -1.0 / (radius * radius * c * c);
}

}  // namespace

template <class Archive>
void KernelConstInfl::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelBase",
                                     boost::serialization::base_object<KernelBase>(*this));
}

void KernelConstInflExp::SetParameters(const Eigen::VectorXd& parameters) {
  RequireParameters(parameters);
  if (!(parameters.array() > 0.0).all())
    throw std::domain_error("KernelConstInflExp: parameter must be greater zero");
  StoreParameters(parameters);
  helper_term_ = parameters_.unaryExpr(&HelperTerm);
}

void KernelConstInflExp::Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
                                 const ConstPoints& points) const {
  RequireParameters(parameters_);
  if (helper_term_.size() != points.cols())
    throw std::domain_error("Kernel: Invalid size of parameter vector");
  weights.setZero();
  for (Eigen::Index k = 0; k < points.cols(); ++k)
    weights.array() += helper_term_(k) * (points.col(k).array() - x(k)).square();
  ExpInPlace(weights);
}

double KernelConstInflExp::EvaluateVector(const ConstPoint& d) const {
  RequireParameters(parameters_);
  if (helper_term_.size() != d.size())
    throw std::domain_error("Kernel: Invalid size of parameter vector");
  return std::exp((helper_term_.array() * d.array().square()).sum());
}

template <class Archive>
void KernelConstInflExp::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelConstInfl",
                                     boost::serialization::base_object<KernelConstInfl>(*this));
  ar& BOOST_SERIALIZATION_NVP(helper_term_);
}

void KernelConstInflIso::Weights(Eigen::Ref<Eigen::VectorXd> weights, const ConstPoint& x,
                                 const ConstPoints& points) const {
  SquaredDistancesTo(x, points, weights);
  ToWeights(weights);
}

Eigen::VectorXd KernelConstInflIso::EvaluateDistances(
    const Eigen::Ref<const Eigen::VectorXd>& squared) const {
  Eigen::VectorXd weights = squared;
  ToWeights(weights);
  return weights;
}

template <class Archive>
void KernelConstInflIso::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelConstInfl",
                                     boost::serialization::base_object<KernelConstInfl>(*this));
}

void KernelConstInflIsoExp::SetParameters(const Eigen::VectorXd& parameters) {
  RequireParameters(parameters);
  if (!(parameters(0) > 0.0))
    throw std::domain_error("KernelConstInflIsoExp: parameter must be greater zero");
  StoreParameters(parameters);
  helper_term_ = HelperTerm(parameters_(0));
}

double KernelConstInflIsoExp::EvaluateSquared(double squared) const {
  RequireParameters(parameters_);
  return std::exp(helper_term_ * squared);
}

void KernelConstInflIsoExp::ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const {
  RequireParameters(parameters_);
  squared *= helper_term_;
  ExpInPlace(squared);
}

template <class Archive>
void KernelConstInflIsoExp::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelConstInflIso",
                                     boost::serialization::base_object<KernelConstInflIso>(*this));
  ar& BOOST_SERIALIZATION_NVP(helper_term_);
}

void KernelConstInflIsoReg::SetParameters(const Eigen::VectorXd& parameters) {
  RequireParameters(parameters);
  if (!(parameters(0) > 0.0))
    throw std::domain_error("KernelConstInflIsoReg: parameter must be greater zero");
  StoreParameters(parameters);
  D_squared_ = parameters_(0) * parameters_(0);
  helper_term_ = 1.0 / (1.00001 * 1.00001);
}

double KernelConstInflIsoReg::EvaluateSquared(double squared) const {
  RequireParameters(parameters_);
  const double ratio = squared / D_squared_ + epsilon_;
  // Divided where m is 2, as this library always has it: exports repeat that to the bit.
  const double power = m_ == 2.0 ? 1.0 / (ratio * ratio) : std::pow(ratio, -m_);
  const double weight = power - helper_term_;
  return weight < 0.0 ? 0.0 : weight;  // this way round, NaN passes
}

void KernelConstInflIsoReg::ToWeights(Eigen::Ref<Eigen::VectorXd> squared) const {
  for (double& s : squared) s = KernelConstInflIsoReg::EvaluateSquared(s);
}

template <class Archive>
void KernelConstInflIsoReg::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("KernelConstInflIso",
                                     boost::serialization::base_object<KernelConstInflIso>(*this));
  ar& BOOST_SERIALIZATION_NVP(epsilon_) & BOOST_SERIALIZATION_NVP(m_);
  ar& BOOST_SERIALIZATION_NVP(D_squared_) & BOOST_SERIALIZATION_NVP(helper_term_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelConstInfl)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelConstInflExp)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelConstInflIso)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelConstInflIsoExp)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelConstInflIsoReg)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelConstInfl)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelConstInflExp)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelConstInflIso)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelConstInflIsoExp)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelConstInflIsoReg)
