#include "metamodel/kernels/kernel.h"

#include "archive/instantiate.h"
#include "metamodel/simd/kernel_sums.h"

#include <cmath>
#include <stdexcept>

namespace corvath::math::metamodel {

void SquaredDistancesTo(const ConstPoint& x, const ConstPoints& points,
                        Eigen::Ref<Eigen::VectorXd> squared) {
  // Differences, not |x|^2 - 2 x.p + |p|^2: a support point is at distance exactly 0 from itself.
  squared.setZero();
  for (Eigen::Index k = 0; k < points.cols(); ++k)
    squared.array() += (points.col(k).array() - x(k)).square();
}

void ExpInPlace(Eigen::Ref<Eigen::VectorXd> values) {
  // Not Eigen's vector exponential, which never reaches 0: weights that vanish must be 0.
  simd::GetKernelRoutines().exp(values.data(), values.size());
}

Eigen::VectorXd KernelBase::EvaluateDistances(const Eigen::Ref<const Eigen::VectorXd>&) const {
  throw std::domain_error("EvaluateDistances works only for isotropic kernels");
}

double KernelBase::EvaluateDistance(double) const {
  throw std::domain_error("EvaluateDistance works only for isotropic kernels");
}

void KernelBase::RequireParameters(const Eigen::VectorXd& parameters) {
  // One wording for all classes.
  if (parameters.size() == 0) throw std::domain_error("KernelConstInflExp: undefined parameter");
}

void KernelBase::StoreParameters(const Eigen::VectorXd& parameters) {
  if (IsIsotropic() && static_cast<std::uint64_t>(parameters.size()) != GetParameterCount())
    throw std::domain_error("Kernel: Invalid size of parameter vector");
  parameters_ = parameters;
}

template <class Archive>
void KernelBase::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(parameters_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::KernelBase)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::KernelBase)
