#include "doe/latin_hypercube.h"

namespace corvath::math {

Eigen::MatrixXd LatinHypercube(Engine& engine, Eigen::Index n, Eigen::Index d, bool midpoints) {
  const auto size = static_cast<double>(n);
  Eigen::MatrixXd points(n, d);
  std::vector<double> column(static_cast<std::size_t>(n));
  for (Eigen::Index k = 0; k < d; ++k) {
    for (Eigen::Index i = 0; i < n; ++i)
      column[static_cast<std::size_t>(i)] =
          midpoints ? IntervalMidpoint(i, n)
                    : 2.0 * DrawUniform(engine, static_cast<double>(i) / size,
                                        static_cast<double>(i + 1) / size) -
                          1.0;
    Shuffle(engine, column);
    points.col(k) = Eigen::Map<const Eigen::VectorXd>(column.data(), n);
  }
  return points;
}

}  // namespace corvath::math
