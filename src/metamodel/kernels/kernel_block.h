#pragma once

#include "metamodel/kernels/kernel.h"

#include <Eigen/Core>

namespace corvath::math::metamodel {

/// The weights of one kernel towards fixed support points, for many points at a time. Exponential
/// kernels of constant influence run through the routines of this processor (metamodel/simd),
/// others point by point. Refers to its arguments, which must outlive it.
class KernelBlock {
 public:
  /// @param points  N x r, in the kernel's coordinates
  /// @throws std::domain_error  the kernel has no parameters, or not one per input where it needs
  /// it
  KernelBlock(const KernelBase& kernel, const Eigen::MatrixXd& points);

  /// sums(i) = the weights of the support points at row i of `x` (n x r) times `values` (N). A NaN
  /// in a row makes its sum NaN. Allocates nothing; not for two threads at once.
  void WeightedSums(const ConstPoints& x, const Eigen::VectorXd& values,
                    Eigen::Ref<Eigen::VectorXd> sums);

  /// Column i of `weights` (k x n): the weights of the first k support points at row i of `x`
  /// (n x r).
  void Weights(const ConstPoints& x, Eigen::Ref<Eigen::MatrixXd> weights) const;

 private:
  const KernelBase& kernel_;
  const Eigen::MatrixXd& points_;
  Eigen::VectorXd factors_;  ///< of the squared differences; empty where the routines do not serve
  Eigen::VectorXd weights_;  ///< N, of the row at hand; empty where the routines serve
};

}  // namespace corvath::math::metamodel
