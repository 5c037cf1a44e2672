#pragma once

#include "metamodel/kernels/kernel.h"
#include "metamodel/transforms/transform.h"

#include <boost/shared_ptr.hpp>

#include <vector>

namespace corvath::math::metamodel {

/// A new, unbuilt transform; null for kNone. Parameters that are not of the number that the type
/// takes (kMinMax: lower, upper target; kBoxCox: lambda, lower, upper scaled bound; kLimits: lower,
/// upper limit) give its default.
/// @throws std::logic_error  an unknown type
boost::shared_ptr<transform::Transform> MakeTransform(transform::TransformType type,
                                                      const std::vector<double>& parameters);

/// A new kernel; without parameters one that is not usable yet.
/// @throws std::logic_error   an unknown type
/// @throws std::domain_error  parameters that the kernel refuses
boost::shared_ptr<KernelBase> MakeKernel(KernelType type, const Eigen::VectorXd& parameters);

}  // namespace corvath::math::metamodel
