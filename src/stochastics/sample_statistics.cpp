#include "stochastics/sample_statistics.h"

#include "foundation/closeness.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace corvath::math::statistics {

namespace {

/// Entries below this fraction of the largest one count as 0: coinciding points or values.
constexpr double kSignificant = 1e-12;

void Require(bool condition, const char* message) {
  if (!condition) throw std::logic_error(message);
}

/// A strict weak ordering for every double, so that no sort runs astray: NaN behind all numbers.
bool Ascending(double x, double y) {
  return x < y || (std::isnan(y) && !std::isnan(x));
}

/// Sum and number of f(x) over the elements that count.
template <class Function>
std::pair<double, Eigen::Index> SumOf(const VectorRef& vector, bool has_nan, Function f) {
  double sum = 0.0;
  Eigen::Index used = 0;
  for (const double x : vector) {
    if (has_nan && std::isnan(x)) continue;
    sum += f(x);
    ++used;
  }
  return {sum, used};
}

void RequirePair(const VectorRef& x, const VectorRef& y) {
  Require(x.size() > 0 && y.size() > 0, "Empty data vector");
  Require(x.size() == y.size(), "Sizes of input vectors for linear correlation not consistent");
}

/// Differences of neighbours in sorted order, ascending by position; NaN elements left out.
Eigen::ArrayXd SortedGaps(const VectorRef& column) {
  std::vector<double> sorted;
  sorted.reserve(static_cast<std::size_t>(column.size()));
  std::copy_if(column.begin(), column.end(), std::back_inserter(sorted),
               [](double x) { return !std::isnan(x); });
  std::sort(sorted.begin(), sorted.end());
  if (sorted.size() < 2) return {};
  const auto n = static_cast<Eigen::Index>(sorted.size()) - 1;
  const Eigen::Map<const Eigen::ArrayXd> values(sorted.data(), n + 1);
  return values.tail(n) - values.head(n);
}

/// Squared distances of row `row` to all rows. Differences first: the expanded square cancels.
void DistancesTo(const MatrixRef& matrix, Eigen::Index row, Eigen::ArrayXd& squared) {
  squared.setZero(matrix.rows());
  for (Eigen::Index k = 0; k < matrix.cols(); ++k)
    squared += (matrix.col(k).array() - matrix(row, k)).square();
}

}  // namespace

double Mean(const VectorRef& vector, bool has_nan) {
  Require(vector.size() > 0, "Empty design vector");
  const auto [sum, used] = SumOf(vector, has_nan, [](double x) { return x; });
  return used > 0 ? sum / static_cast<double>(used) : std::numeric_limits<double>::quiet_NaN();
}

double Variance(const VectorRef& vector, double mean, bool has_nan) {
  Require(vector.size() > 0, "Empty design vector");
  const auto [sum, used] =
      SumOf(vector, has_nan, [mean](double x) { return (x - mean) * (x - mean); });
  return used > 0 ? sum / static_cast<double>(used - 1) : std::numeric_limits<double>::quiet_NaN();
}

double StandardDeviation(const VectorRef& vector, double mean, bool has_nan) {
  return std::sqrt(Variance(vector, mean, has_nan));
}

std::vector<bool> ContainsNaN(const MatrixRef& matrix) {
  std::vector<bool> result(static_cast<std::size_t>(matrix.cols()));
  for (Eigen::Index j = 0; j < matrix.cols(); ++j)
    result[static_cast<std::size_t>(j)] = matrix.col(j).array().isNaN().any();
  return result;
}

Eigen::VectorXd MeanVector(const MatrixRef& matrix, const std::vector<bool>& contains_nan) {
  Require(static_cast<Eigen::Index>(contains_nan.size()) == matrix.cols(),
          "Sizes of input matrix and Contains-NaN-vector not consistent");
  Eigen::VectorXd result(matrix.cols());
  for (Eigen::Index j = 0; j < matrix.cols(); ++j)
    result(j) = Mean(matrix.col(j), contains_nan[static_cast<std::size_t>(j)]);
  return result;
}

Eigen::VectorXd MeanVector(const MatrixRef& matrix) {
  return MeanVector(matrix, ContainsNaN(matrix));
}

Eigen::VectorXd SigmaVector(const MatrixRef& matrix, const VectorRef& mean,
                            const std::vector<bool>& contains_nan) {
  Require(mean.size() == matrix.cols() &&
              static_cast<Eigen::Index>(contains_nan.size()) == matrix.cols(),
          "Sizes of input matrix and mean-vector and/or Contains-NaN-vector not consistent");
  Eigen::VectorXd result(matrix.cols());
  for (Eigen::Index j = 0; j < matrix.cols(); ++j)
    result(j) =
        StandardDeviation(matrix.col(j), mean(j), contains_nan[static_cast<std::size_t>(j)]);
  return result;
}

Eigen::VectorXd SigmaVector(const MatrixRef& matrix, const VectorRef& mean) {
  Require(mean.size() == matrix.cols(), "Sizes of input matrix and mean-vector not consistent");
  return SigmaVector(matrix, mean, ContainsNaN(matrix));
}

double PairCorrelation(const MatrixRef& matrix, const VectorRef& mean, const VectorRef& sigma,
                       Eigen::Index i, Eigen::Index j) {
  Require(matrix.rows() > 0, "Empty design matrix");
  Require(mean.size() == matrix.cols(), "Sizes of input matrix and mean-vector not consistent");
  Require(sigma.size() == matrix.cols(), "Sizes of input matrix and sigma-vector not consistent");
  Require(i >= 0 && i < matrix.cols() && j >= 0 && j < matrix.cols(),
          "Indices and sizes of input matrix not consistent");
  // Centred before multiplying: sum x y - n mean mean cancels when the means are large.
  const double covariance =
      ((matrix.col(i).array() - mean(i)) * (matrix.col(j).array() - mean(j))).sum();
  double r = covariance / (static_cast<double>(matrix.rows() - 1) * sigma(i) * sigma(j));
  if (r < -1.0) r = -1.0;
  if (!(r <= 1.0)) r = 1.0;  // NaN as well
  return std::abs(r) < kEps ? 0.0 : r;
}

Eigen::MatrixXd RemoveNaNPairs(const VectorRef& x, const VectorRef& y) {
  RequirePair(x, y);
  Eigen::MatrixXd result(x.size(), 2);
  Eigen::Index used = 0;
  for (Eigen::Index row = 0; row < x.size(); ++row) {
    if (std::isnan(x(row)) || std::isnan(y(row))) continue;
    result(used, 0) = x(row);
    result(used, 1) = y(row);
    ++used;
  }
  return result.topRows(used);
}

double LinearCorrelation(const VectorRef& x, const VectorRef& y, bool x_has_nan, bool y_has_nan) {
  RequirePair(x, y);
  Eigen::MatrixXd pairs;
  if (x_has_nan || y_has_nan) {
    pairs = RemoveNaNPairs(x, y);
    if (pairs.rows() == 0) return std::numeric_limits<double>::quiet_NaN();
  } else {
    pairs.resize(x.size(), 2);
    pairs << x, y;
  }
  const std::vector<bool> whole(2, false);
  const Eigen::VectorXd mean = MeanVector(pairs, whole);
  return PairCorrelation(pairs, mean, SigmaVector(pairs, mean, whole), 0, 1);
}

Eigen::MatrixXd CorrelationMatrix(const MatrixRef& matrix) {
  const Eigen::Index d = matrix.cols();
  Eigen::MatrixXd result = Eigen::MatrixXd::Identity(d, d);
  if (d < 2) return result;
  Require(matrix.rows() > 0, "Empty data vector");
  const std::vector<bool> holes = ContainsNaN(matrix);
  // Once per column; used by the pairs without holes.
  const std::vector<bool> whole(holes.size(), false);
  const Eigen::VectorXd mean = MeanVector(matrix, whole);
  const Eigen::VectorXd sigma = SigmaVector(matrix, mean, whole);
  for (Eigen::Index i = 0; i < d; ++i) {
    for (Eigen::Index j = i + 1; j < d; ++j) {
      const bool hole_i = holes[static_cast<std::size_t>(i)];
      const bool hole_j = holes[static_cast<std::size_t>(j)];
      result(i, j) = result(j, i) =
          hole_i || hole_j ? LinearCorrelation(matrix.col(i), matrix.col(j), hole_i, hole_j)
                           : PairCorrelation(matrix, mean, sigma, i, j);
    }
  }
  return result;
}

Eigen::MatrixXd SquaredDistances(const MatrixRef& matrix) {
  Require(matrix.rows() > 0, "Empty data matrix");
  Eigen::MatrixXd result(matrix.rows(), matrix.rows());
  Eigen::ArrayXd squared;
  for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
    DistancesTo(matrix, row, squared);
    result.col(row) = squared;
    result(row, row) = 0.0;  // also for a row that is not finite
  }
  return result;
}

double SmallestSignificant(const MatrixRef& squared_distances) {
  Require(squared_distances.size() > 0, "Empty data matrix");
  const double largest = squared_distances.maxCoeff<Eigen::PropagateNumbers>();
  const double threshold = kSignificant * largest;
  double result = largest;
  for (const auto& column : squared_distances.colwise())
    for (const double entry : column)
      if (entry >= threshold) result = std::min(result, entry);
  return result;
}

Eigen::VectorXd KthNearest(const MatrixRef& matrix, Eigen::Index k) {
  Require(matrix.rows() > 0, "Empty data matrix");
  const Eigen::Index n = matrix.rows();
  const Eigen::Index position = std::clamp<Eigen::Index>(k - 1, 0, n - 1);
  Eigen::VectorXd result(n);
  Eigen::ArrayXd squared;  // a row at a time: the full table of distances is not needed
  for (Eigen::Index row = 0; row < n; ++row) {
    DistancesTo(matrix, row, squared);
    squared(row) = 0.0;
    std::nth_element(squared.begin(), squared.begin() + position, squared.end(), Ascending);
    result(row) = std::sqrt(squared(position));
  }
  return result;
}

Eigen::MatrixXd SortRows(const MatrixRef& matrix, Eigen::Index column) {
  Require(column >= 0 && column < matrix.cols(),
          "Indices and sizes of input matrix not consistent");
  std::vector<Eigen::Index> order(static_cast<std::size_t>(matrix.rows()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::stable_sort(order.begin(), order.end(), [&](Eigen::Index a, Eigen::Index b) {
    return Ascending(matrix(a, column), matrix(b, column));
  });
  return matrix(order, Eigen::all);
}

Eigen::VectorXd LargestGaps(const MatrixRef& matrix) {
  Eigen::VectorXd result = Eigen::VectorXd::Zero(matrix.cols());
  for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
    const Eigen::ArrayXd gaps = SortedGaps(matrix.col(j));
    if (gaps.size() > 0) result(j) = gaps.maxCoeff();
  }
  return result;
}

Eigen::VectorXd SmallestGaps(const MatrixRef& matrix) {
  Eigen::VectorXd result(matrix.cols());
  for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
    const Eigen::ArrayXd gaps = SortedGaps(matrix.col(j));
    const double threshold = kSignificant * gaps.sum();  // the gaps add up to the range
    result(j) = std::numeric_limits<double>::max();
    for (const double gap : gaps)
      if (gap > threshold) result(j) = std::min(result(j), gap);
  }
  return result;
}

}  // namespace corvath::math::statistics
