#pragma once

#include <Eigen/Core>

#include <vector>

/// Statistics of samples: one row per sample, one column per variable. A NaN is a hole, which is
/// skipped only where the caller says that there may be one; otherwise it passes through.
/// Correlations are linear (Pearson). All functions are pure; misuse raises std::logic_error.
namespace corvath::math::statistics {

using VectorRef = Eigen::Ref<const Eigen::VectorXd>;
using MatrixRef = Eigen::Ref<const Eigen::MatrixXd>;

/// Arithmetic mean; with `has_nan` that of the elements that are not NaN, and NaN if none is left.
/// @throws std::logic_error "Empty design vector"
double Mean(const VectorRef& vector, bool has_nan);

/// Sum of (x - mean)^2 over n - 1, with the same rule for NaN. One value alone gives 0 / 0.
/// @throws std::logic_error "Empty design vector"
double Variance(const VectorRef& vector, double mean, bool has_nan);

/// Root of Variance.
double StandardDeviation(const VectorRef& vector, double mean, bool has_nan);

/// One bit per column: whether it holds at least one NaN.
std::vector<bool> ContainsNaN(const MatrixRef& matrix);

/// Mean of each column, with the bits of ContainsNaN.
/// @throws std::logic_error  sizes differ
Eigen::VectorXd MeanVector(const MatrixRef& matrix, const std::vector<bool>& contains_nan);
Eigen::VectorXd MeanVector(const MatrixRef& matrix);

/// Standard deviation of each column about `mean`, with the bits of ContainsNaN.
/// @throws std::logic_error  sizes differ
Eigen::VectorXd SigmaVector(const MatrixRef& matrix, const VectorRef& mean,
                            const std::vector<bool>& contains_nan);
Eigen::VectorXd SigmaVector(const MatrixRef& matrix, const VectorRef& mean);

/// Correlation of columns i and j of a matrix without holes, from the means and standard deviations
/// of its columns. In [-1, 1]; below 2^-52 in magnitude it is 0. Without meaning (1, if the
/// quotient is NaN) when a column is constant or has one row only.
/// @throws std::logic_error  no rows, or inconsistent sizes or indices
double PairCorrelation(const MatrixRef& matrix, const VectorRef& mean, const VectorRef& sigma,
                       Eigen::Index i, Eigen::Index j);

/// The rows of (x, y) in which neither is NaN: a matrix of two columns.
/// @throws std::logic_error  an empty vector, or different lengths
Eigen::MatrixXd RemoveNaNPairs(const VectorRef& x, const VectorRef& y);

/// Correlation of two samples. With either flag, rows with a NaN in x or y drop out of both, and
/// the result is NaN if none is left.
/// @throws std::logic_error  an empty vector, or different lengths
double LinearCorrelation(const VectorRef& x, const VectorRef& y, bool x_has_nan, bool y_has_nan);

/// LinearCorrelation of all pairs of columns: symmetric, the diagonal exactly 1. Each pair uses the
/// rows that are whole in these two columns, so the result need not be positive semidefinite.
Eigen::MatrixXd CorrelationMatrix(const MatrixRef& matrix);

/// Squared Euclidean distance of each pair of rows: n x n, symmetric, the diagonal exactly 0.
/// @throws std::logic_error "Empty data matrix"
Eigen::MatrixXd SquaredDistances(const MatrixRef& matrix);

/// The smallest entry that is at least 1e-12 times the largest; so equal points do not count.
/// @throws std::logic_error "Empty data matrix"
double SmallestSignificant(const MatrixRef& squared_distances);

/// For each row the distance to its k-th nearest row, itself counted as the first. k = 0 is taken
/// as 1, k above n as n.
/// @throws std::logic_error "Empty data matrix"
Eigen::VectorXd KthNearest(const MatrixRef& matrix, Eigen::Index k);

/// A copy whose rows ascend in `column`; equal keys keep their order, NaN goes last.
/// @throws std::logic_error  no such column
Eigen::MatrixXd SortRows(const MatrixRef& matrix, Eigen::Index column);

/// Per column the largest difference of neighbours in sorted order; 0 for fewer than two values.
Eigen::VectorXd LargestGaps(const MatrixRef& matrix);

/// Per column the smallest difference of neighbours in sorted order above 1e-12 times the column's
/// range; the largest double if there is none.
Eigen::VectorXd SmallestGaps(const MatrixRef& matrix);

}  // namespace corvath::math::statistics
