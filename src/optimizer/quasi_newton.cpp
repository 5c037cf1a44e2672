#include "optimizer/quasi_newton.h"

#include "optimizer/small_product.h"

namespace corvath::algorithm::optimizer {

namespace {

/// Smallest curvature along s, relative to that of B.
constexpr double kDamping = 0.2;

}  // namespace

bool UpdateDampedBfgs(Eigen::Ref<Eigen::MatrixXd> b, const VectorView& step,
                      Eigen::Ref<Eigen::VectorXd> y, Eigen::Ref<Eigen::VectorXd> work) {
  Multiply(b, step, work);
  const double sbs = step.dot(work);
  if (sbs <= 0.0) return true;
  double sy = step.dot(y);
  if (sy < kDamping * sbs) {
    const double theta = (1.0 - kDamping) * sbs / (sbs - sy);
    y = theta * y + (1.0 - theta) * work;
    sy = kDamping * sbs;
  }
  if (sy == 0.0) return false;
  for (Eigen::Index k = 0; k < b.cols(); ++k) b.col(k) += (y(k) / sy) * y - (work(k) / sbs) * work;
  return true;
}

}  // namespace corvath::algorithm::optimizer
