#include "metamodel/surrogate.h"

#include <algorithm>
#include <stdexcept>

namespace corvath::math::metamodel {

Eigen::MatrixXd SurrogateBase::ApproximateGradients(const ConstPoints& points) const {
  RequireInputs(points.cols());
  if (points_.rows() == 0) throw std::logic_error("Surrogate: support point data is missing");
  constexpr double kRelativeStep = 0.0001;   // of the range of the support points
  constexpr Eigen::Index kBlockRows = 4096;  // bounds the memory of the moved copies
  const BitVector selection = GetVariableSelection();
  const Eigen::VectorXd step =
      (points_.colwise().maxCoeff() - points_.colwise().minCoeff()) * kRelativeStep;
  Eigen::MatrixXd gradients = Eigen::MatrixXd::Zero(points.rows(), points.cols());
  Eigen::MatrixXd moved;
  for (Eigen::Index begin = 0; begin < points.rows(); begin += kBlockRows) {
    const Eigen::Index rows = std::min(kBlockRows, points.rows() - begin);
    moved = points.middleRows(begin, rows);
    for (Eigen::Index j = 0; j < points.cols(); ++j) {
      // Without a range of support points there is no slope to speak of: 0, as for unused inputs.
      if (!selection.at(static_cast<std::size_t>(j)) || step(j) == 0.0) continue;
      const auto original = points.col(j).segment(begin, rows).array();
      moved.col(j) = original - step(j);
      const Eigen::VectorXd below = Approximate(moved);
      moved.col(j) = original + step(j);
      const Eigen::VectorXd above = Approximate(moved);
      gradients.col(j).segment(begin, rows) = (above - below) / step(j) * 0.5;
      moved.col(j) = original;
    }
  }
  return gradients;
}

}  // namespace corvath::math::metamodel
