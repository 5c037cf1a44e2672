#include "metamodel/kernels/kernel_block.h"

#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/simd/kernel_sums.h"

#include <stdexcept>

namespace corvath::math::metamodel {

namespace {

simd::ExpKernel MakeJob(const Eigen::MatrixXd& points, Eigen::Index num_points,
                        const ConstPoints& x, const Eigen::VectorXd& factors, bool isotropic) {
  simd::ExpKernel job{};
  job.points = points.data();
  job.points_stride = points.outerStride();
  job.num_points = num_points;
  job.x = x.data();
  job.x_stride = x.outerStride();
  job.num_x = x.rows();
  job.num_inputs = points.cols();
  job.factors = factors.data();
  job.isotropic = isotropic;
  return job;
}

/// Without columns there is no memory that a row could point into.
void CopyRow(const ConstPoints& x, Eigen::Index i, Eigen::VectorXd& point) {
  if (point.size() != 0) point = x.row(i);
}

}  // namespace

KernelBlock::KernelBlock(const KernelBase& kernel, const Eigen::MatrixXd& points)
    : kernel_(kernel), points_(points) {
  if (kernel.GetParameters().size() == 0) throw std::domain_error("Kernel: undefined parameter");
  if (const auto* isotropic = dynamic_cast<const KernelConstInflIsoExp*>(&kernel)) {
    factors_ = Eigen::VectorXd::Constant(1, isotropic->GetHelperTerm());
  } else if (const auto* anisotropic = dynamic_cast<const KernelConstInflExp*>(&kernel)) {
    factors_ = anisotropic->GetHelperTerm();
    if (factors_.size() != points.cols())
      throw std::domain_error("Kernel: Invalid size of parameter vector");
  }
  if (points.cols() == 0) factors_.resize(0);  // the routines walk through the inputs' memory
  if (factors_.size() == 0) weights_.resize(points.rows());
}

void KernelBlock::WeightedSums(const ConstPoints& x, const Eigen::VectorXd& values,
                               Eigen::Ref<Eigen::VectorXd> sums) {
  if (factors_.size() != 0) {
    const simd::ExpKernel job =
        MakeJob(points_, points_.rows(), x, factors_, kernel_.IsIsotropic());
    simd::GetKernelRoutines().weighted_sums(job, values.data(), sums.data());
    return;
  }
  Eigen::VectorXd point(x.cols());
  for (Eigen::Index i = 0; i < x.rows(); ++i) {
    CopyRow(x, i, point);
    kernel_.Weights(weights_, point, points_);
    sums(i) = weights_.dot(values);
  }
}

void KernelBlock::Weights(const ConstPoints& x, Eigen::Ref<Eigen::MatrixXd> weights) const {
  if (factors_.size() != 0) {
    const simd::ExpKernel job =
        MakeJob(points_, weights.rows(), x, factors_, kernel_.IsIsotropic());
    simd::GetKernelRoutines().weights(job, weights.data(), weights.outerStride());
    return;
  }
  Eigen::VectorXd point(x.cols());
  for (Eigen::Index i = 0; i < x.rows(); ++i) {
    CopyRow(x, i, point);
    kernel_.Weights(weights.col(i), point, points_.topRows(weights.rows()));
  }
}

}  // namespace corvath::math::metamodel
