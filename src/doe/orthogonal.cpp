#include "doe/orthogonal.h"

#include "doe/latin_hypercube.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/LU>

#include <algorithm>
#include <numeric>
#include <vector>

namespace corvath::math {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;

/// Sample correlations of the columns.
MatrixXd Correlations(const MatrixXd& points) {
  const auto n = static_cast<double>(points.rows());
  const Eigen::VectorXd mean = points.colwise().mean();
  const Eigen::VectorXd sigma = (points.colwise().squaredNorm().transpose().array() / (n - 1.0) -
                                 mean.array().square() * n / (n - 1.0))
                                    .abs()
                                    .sqrt();
  MatrixXd result = MatrixXd::Zero(points.cols(), points.cols());
  result.selfadjointView<Eigen::Lower>().rankUpdate(points.transpose());
  result.triangularView<Eigen::StrictlyUpper>() = result.transpose();
  result.noalias() -= n * mean * mean.transpose();
  result.array() /= ((n - 1.0) * sigma * sigma.transpose()).array();
  return result;
}

/// Largest deviation of the correlations from those of uncorrelated columns.
double LargestCorrelation(const MatrixXd& points) {
  MatrixXd difference = Correlations(points);
  difference.diagonal().array() -= 1.0;
  return difference.cwiseAbs().maxCoeff();
}

/// The columns in a random order, decorrelated by the Cholesky factor of their correlations.
MatrixXd DecorrelateByFactor(Engine& engine, const MatrixXd& points) {
  std::vector<Index> order(static_cast<std::size_t>(points.cols()));
  std::iota(order.begin(), order.end(), Index{0});
  if (points.cols() != 2) Shuffle(engine, order);
  MatrixXd permuted(points.rows(), points.cols());
  for (Index k = 0; k < points.cols(); ++k)
    permuted.col(k) = points.col(order[static_cast<std::size_t>(k)]);
  const MatrixXd upper = Correlations(permuted).llt().matrixU();
  return permuted * Eigen::FullPivLU<MatrixXd>(upper).inverse().transpose();
}

MatrixXd DecorrelateByRoot(const MatrixXd& points) {
  const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(Correlations(points));
  return points * solver.operatorInverseSqrt();
}

/// Turns each column into a permutation of the interval midpoints with the same ranks. Equal
/// numbers keep the order of their rows.
MatrixXd ToMidpoints(const MatrixXd& points) {
  const Index n = points.rows();
  MatrixXd result(n, points.cols());
  std::vector<Index> order(static_cast<std::size_t>(n));
  for (Index k = 0; k < points.cols(); ++k) {
    std::iota(order.begin(), order.end(), Index{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](Index a, Index b) { return points(a, k) < points(b, k); });
    for (Index rank = 0; rank < n; ++rank)
      result(order[static_cast<std::size_t>(rank)], k) = IntervalMidpoint(rank, n);
  }
  return result;
}

MatrixXd BestStart(Engine& engine, Index n, Index d, std::uint64_t trials, double& best_error) {
  MatrixXd best;
  for (std::uint64_t i = 0; i < 2 * trials; ++i) {
    Engine local(static_cast<std::uint32_t>(DrawInteger(engine, 0, 1000)));
    MatrixXd points = LatinHypercube(local, n, d, /*midpoints=*/true);
    if (n < 3) return points;  // no choice of points changes their correlations' magnitude
    const double error = LargestCorrelation(points);
    if (error < best_error) {
      best_error = error;
      best = std::move(points);
    }
  }
  return best;
}

}  // namespace

MatrixXd OrthogonalLatinHypercube(Engine& engine, Index n, Index d, std::uint64_t trials,
                                  double tolerance) {
  double best_error = 2.0;  // above every correlation's deviation
  MatrixXd best = BestStart(engine, n, d, trials, best_error);
  if (n > 1 && n > d) {
    const Eigen::RowVectorXd mean = best.colwise().mean();
    MatrixXd points = best;
    for (std::uint64_t pass = 0; pass < 2 * trials && best_error > tolerance; ++pass) {
      MatrixXd moved =
          pass % 2 == 1 ? DecorrelateByFactor(engine, points) : DecorrelateByRoot(points);
      moved.rowwise() += mean;
      if (!moved.allFinite()) continue;  // columns that depend on each other have no factor
      points = ToMidpoints(moved);
      const double error = LargestCorrelation(points);
      if (error < best_error) {
        best_error = error;
        best = points;
      }
    }
  }
  DrawInteger(engine, 0, 1000);  // a seed that nothing uses; stored generators count it
  return best;
}

}  // namespace corvath::math
