#include "metamodel/factories.h"

#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"

#include <boost/make_shared.hpp>

#include <cmath>
#include <stdexcept>

namespace corvath::math::metamodel {

namespace {

/// The integer k of the family lambda = 1 / k. A tenth is added before rounding down, so that a
/// stored 1 / k gives k again.
std::int64_t InverseLambda(double lambda) {
  if (lambda == 0.0) return 0;
  const double k = std::floor(1.0 / lambda + 0.1);
  constexpr double kLargest = 1e15;  // beyond, 1 / k is 0 for every purpose; NaN fails too
  if (!(std::abs(k) <= kLargest)) throw std::logic_error("Box-Cox lambda is out of range.");
  return static_cast<std::int64_t>(k);
}

template <class Kernel>
boost::shared_ptr<KernelBase> NewKernel(const Eigen::VectorXd& parameters) {
  if (parameters.size() == 0) return boost::make_shared<Kernel>();
  return boost::make_shared<Kernel>(parameters);
}

}  // namespace

boost::shared_ptr<transform::Transform> MakeTransform(transform::TransformType type,
                                                      const std::vector<double>& parameters) {
  using namespace transform;
  const auto& p = parameters;
  switch (type) {
    case TransformType::kNone:
      return nullptr;
    case TransformType::kMinMax:
      return p.size() == 2 ? boost::make_shared<TransMinMax>(p[0], p[1])
                           : boost::make_shared<TransMinMax>();
    case TransformType::kBoxCox:
      return p.size() == 3 ? boost::make_shared<TransBoxCox>(InverseLambda(p[0]), p[1], p[2])
                           : boost::make_shared<TransBoxCox>();
    case TransformType::kLimits:
      return p.size() == 2 ? boost::make_shared<TransLimits>(p[0], p[1])
                           : boost::make_shared<TransLimits>();
  }
  throw std::logic_error("Unknown transformation type.");
}

boost::shared_ptr<KernelBase> MakeKernel(KernelType type, const Eigen::VectorXd& parameters) {
  switch (type) {
    case KernelType::kConstInflExp:
      return NewKernel<KernelConstInflExp>(parameters);
    case KernelType::kConstInflIsoExp:
      return NewKernel<KernelConstInflIsoExp>(parameters);
    case KernelType::kConstInflIsoReg:
      return NewKernel<KernelConstInflIsoReg>(parameters);
    case KernelType::kNodalInflExp:
      return NewKernel<KernelNodalInflExp>(parameters);
  }
  throw std::logic_error("Unknown kernel type.");
}

}  // namespace corvath::math::metamodel
