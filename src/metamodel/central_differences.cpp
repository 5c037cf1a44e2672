#include "metamodel/central_differences.h"

#include <algorithm>

namespace corvath::math::metamodel {

Eigen::MatrixXd CentralDifferences(const std::function<Eigen::VectorXd(const ConstPoints&)>& f,
                                   const ConstPoints& points, const Eigen::VectorXd& steps) {
  constexpr Eigen::Index kBlockRows = 4096;
  Eigen::MatrixXd gradients = Eigen::MatrixXd::Zero(points.rows(), points.cols());
  Eigen::MatrixXd moved;
  for (Eigen::Index begin = 0; begin < points.rows(); begin += kBlockRows) {
    const Eigen::Index rows = std::min(kBlockRows, points.rows() - begin);
    moved = points.middleRows(begin, rows);
    for (Eigen::Index j = 0; j < points.cols(); ++j) {
      if (steps(j) == 0.0) continue;
      const auto original = points.col(j).segment(begin, rows).array();
      moved.col(j) = original - steps(j);
      const Eigen::VectorXd below = f(moved);
      moved.col(j) = original + steps(j);
      const Eigen::VectorXd above = f(moved);
      gradients.col(j).segment(begin, rows) = (above - below) / steps(j) * 0.5;
      moved.col(j) = original;
    }
  }
  return gradients;
}

}  // namespace corvath::math::metamodel
