#include "doe/space_filling.h"

#include <cmath>

namespace corvath::math {
namespace {

using Eigen::ArrayXd;
using Eigen::Index;
using Eigen::MatrixXd;

/// The parts of the discrepancy that an exchange changes, for points z in [-0.5, 0.5]^d.
class Discrepancy {
 public:
  explicit Discrepancy(const MatrixXd& points)
      : z_(0.5 * points),
        pairs_(MatrixXd::Constant(z_.rows(), z_.rows(), 1.0)),
        squares_(ArrayXd::Ones(z_.rows())),
        singles_(ArrayXd::Ones(z_.rows())),
        ratio_(z_.rows()) {
    const auto n = static_cast<double>(z_.rows());
    square_weight_ = 1.0 / (n * n);
    single_weight_ = 2.0 / n;
    for (Index k = 0; k < z_.cols(); ++k) {
      SelectColumn(k);
      for (Index j = 0; j < z_.rows(); ++j) {
        pairs_.col(j).array() *= Factors(z_(j, k));
        squares_(j) *= SquareFactor(z_(j, k));
        singles_(j) *= SingleFactor(z_(j, k));
      }
    }
    pairs_ *= square_weight_;
    pairs_.diagonal().setZero();  // so that sums over a column skip the point itself
    value_ = std::pow(13.0 / 12.0, static_cast<double>(z_.cols())) + pairs_.sum() +
             square_weight_ * squares_.sum() - single_weight_ * singles_.sum();
  }

  double GetValue() const { return value_; }
  MatrixXd GetPoints() const { return 2.0 * z_; }

  void SelectColumn(Index k) {
    column_ = k;
    base_ = 1.0 + 0.5 * z_.col(k).array().abs();
  }

  /// The discrepancy after an exchange of the entries of rows a and b in the selected column.
  double After(Index a, Index b) {
    const double za = z_(a, column_);
    const double zb = z_(b, column_);
    // The pair (a, b) itself stays as it is.
    const double pair = pairs_(a, b);
    pairs_(a, b) = pairs_(b, a) = 0.0;
    // With the factors f of a row's pairs in this column, pair (a, j) is multiplied by fb / fa,
    // pair (b, j) by fa / fb; one division serves both.
    const auto z = z_.col(column_).array();
    const auto fa = base_ + (0.5 * std::abs(za) - 0.5 * (z - za).abs());
    const auto fb = base_ + (0.5 * std::abs(zb) - 0.5 * (z - zb).abs());
    const double pair_change =
        ((fb - fa) * (pairs_.col(a).array() * fb - pairs_.col(b).array() * fa) / (fa * fb)).sum();
    pairs_(a, b) = pairs_(b, a) = pair;
    const double square = SquareFactor(zb) / SquareFactor(za);
    const double single = SingleFactor(zb) / SingleFactor(za);
    const double square_change = squares_(a) * (square - 1.0) + squares_(b) * (1.0 / square - 1.0);
    const double single_change = singles_(a) * (single - 1.0) + singles_(b) * (1.0 / single - 1.0);
    return value_ + 2.0 * pair_change + square_weight_ * square_change -
           single_weight_ * single_change;
  }

  void Exchange(Index a, Index b, double value) {
    const double za = z_(a, column_);
    const double zb = z_(b, column_);
    const double pair = pairs_(a, b);
    ratio_ = Factors(zb) / Factors(za);
    pairs_.col(a).array() *= ratio_;
    pairs_.col(b).array() /= ratio_;
    pairs_(a, b) = pairs_(b, a) = pair;
    pairs_.row(a) = pairs_.col(a).transpose();
    pairs_.row(b) = pairs_.col(b).transpose();
    const double square = SquareFactor(zb) / SquareFactor(za);
    const double single = SingleFactor(zb) / SingleFactor(za);
    squares_(a) *= square;
    squares_(b) /= square;
    singles_(a) *= single;
    singles_(b) /= single;
    std::swap(z_(a, column_), z_(b, column_));
    base_(a) = 1.0 + 0.5 * std::abs(zb);
    base_(b) = 1.0 + 0.5 * std::abs(za);
    value_ = value;
  }

 private:
  static double SquareFactor(double z) { return 1.0 + std::abs(z); }
  static double SingleFactor(double z) { return 1.0 + 0.5 * std::abs(z) - 0.5 * z * z; }

  /// What the selected column contributes to the pairs of a point with the entry `z`.
  ArrayXd Factors(double z) const {
    return base_ + (0.5 * std::abs(z) - 0.5 * (z_.col(column_).array() - z).abs());
  }

  MatrixXd z_;        ///< n x d
  MatrixXd pairs_;    ///< n x n, weighted products over the columns; the diagonal is 0
  ArrayXd squares_;   ///< prod_k (1 + |z|) of each point
  ArrayXd singles_;   ///< prod_k (1 + |z| / 2 - z^2 / 2) of each point
  ArrayXd ratio_;     ///< a buffer of n numbers
  Index column_ = 0;  ///< in which entries are exchanged
  ArrayXd base_;      ///< 1 + |z| / 2 in that column
  double square_weight_ = 0.0;
  double single_weight_ = 0.0;
  double value_ = 0.0;
};

/// 1 / (squared distance + this): equal points repel strongly, but not without limit.
constexpr double kSoftening = 1e-10;

class Repulsion {
 public:
  Repulsion(const MatrixXd& points, Index fixed)
      : x_(points), fixed_(fixed), squared_(x_.rows(), x_.rows() - fixed) {
    for (Index a = fixed_; a < x_.rows(); ++a)
      squared_.col(a - fixed_) = (x_.rowwise() - x_.row(a)).rowwise().squaredNorm();
    // Pairs of fixed points never change and are left out. Pairs of two free points stand twice
    // in the table, those of a free and a fixed one once.
    const auto free = squared_.bottomRows(x_.rows() - fixed_).array() + kSoftening;
    const auto mixed = squared_.topRows(fixed_).array() + kSoftening;
    energy_ = free.inverse().sum() - static_cast<double>(x_.rows() - fixed_) / kSoftening +
              2.0 * mixed.inverse().sum();
  }

  const MatrixXd& GetPoints() const { return x_; }

  /// Exchanges two entries of a column if that lowers the energy.
  void Try(Index column, Index a, Index b) {
    const double xa = x_(a, column);
    const double xb = x_(b, column);
    if (a == b || std::abs(xa - xb) < kEqual) return;
    const auto x = x_.col(column).array();
    const auto old_a = squared_.col(a - fixed_).array();
    const auto old_b = squared_.col(b - fixed_).array();
    moved_ = (x - xb).square() - (x - xa).square();
    new_a_ = old_a + moved_;
    new_b_ = old_b - moved_;
    const double between = squared_(b, a - fixed_);  // stays as it is
    new_a_(a) = new_b_(b) = 0.0;
    new_a_(b) = new_b_(a) = between;
    const double change = ((new_a_ + kSoftening).inverse() - (old_a + kSoftening).inverse() +
                           (new_b_ + kSoftening).inverse() - (old_b + kSoftening).inverse())
                              .sum();
    if (!(energy_ + 2.0 * change < energy_)) return;
    energy_ += 2.0 * change;
    std::swap(x_(a, column), x_(b, column));
    Store(a, new_a_);
    Store(b, new_b_);
  }

 private:
  static constexpr double kEqual = 1e-10;

  void Store(Index row, const ArrayXd& distances) {
    squared_.col(row - fixed_) = distances;
    squared_.row(row) = distances.tail(x_.rows() - fixed_).transpose();
  }

  MatrixXd x_;
  Index fixed_;
  MatrixXd squared_;  ///< distances of all points (rows) to each free one (columns)
  double energy_ = 0.0;
  ArrayXd moved_, new_a_, new_b_;  ///< buffers
};

}  // namespace

MatrixXd LowerDiscrepancy(Engine engine, const MatrixXd& points, int passes) {
  constexpr int kSteps = 100;
  constexpr int kDraws = 50;
  const Index n = points.rows();
  Discrepancy discrepancy(points);
  for (int pass = 0; pass < passes; ++pass)
    for (int step = 1; step <= kSteps; ++step) {
      discrepancy.SelectColumn(step % points.cols());
      double lowest = discrepancy.GetValue();
      Index best_a = 0;
      Index best_b = 0;
      for (int draw = 0; draw < kDraws; ++draw) {
        const Index a = DrawInteger(engine, 0, n - 1);
        const Index b = DrawInteger(engine, 0, n - 1);
        if (a == b) continue;
        const double value = discrepancy.After(a, b);
        if (value < lowest) {
          lowest = value;
          best_a = a;
          best_b = b;
        }
      }
      DrawUniform(engine, 0.0, 1.0);  // no effect but on what is drawn after it
      // Only exchanges that help are made, so the present points are always the best so far.
      if (best_a != best_b) discrepancy.Exchange(best_a, best_b, lowest);
    }
  return discrepancy.GetPoints();
}

MatrixXd LowerEnergy(Engine engine, const MatrixXd& points, Index fixed, int iterations) {
  Repulsion repulsion(points, fixed);
  for (int i = 0; i < iterations; ++i) {
    const Index column = DrawInteger(engine, 0, points.cols() - 1);
    const Index a = DrawInteger(engine, fixed, points.rows() - 1);
    const Index b = DrawInteger(engine, fixed, points.rows() - 1);
    repulsion.Try(column, a, b);
  }
  return repulsion.GetPoints();
}

}  // namespace corvath::math
