#include "metamodel/moving_least_squares/local_fits.h"

#include "foundation/constants.h"
#include "metamodel/simd/local_systems.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

namespace corvath::math::metamodel {

namespace {

/// Numbers of a whole table of products at most: 8 MB. A larger one is made part by part.
constexpr Eigen::Index kMaxTable = Eigen::Index{1} << 20;
/// Numbers of such a part: 1 MB.
constexpr Eigen::Index kTablePart = Eigen::Index{1} << 17;
/// Weights of one block: 512 KB stay in the second-level cache while they are multiplied.
constexpr Eigen::Index kBlockWeights = Eigen::Index{1} << 16;
constexpr Eigen::Index kMaxBlock = 256;
/// A support point with a weight up to this is out of reach.
constexpr double kReach = 1e-5;

using math::kNaN;

/// Whether at least `least` support points are within reach.
bool Reaches(const Eigen::Ref<const Eigen::VectorXd>& weights, Eigen::Index least) {
  for (const double weight : weights)
    if (weight > kReach && --least == 0) return true;
  return false;
}

/// Numbers of one system: its lower triangle and its right side. Without terms two sums make a mean.
Eigen::Index NumberEntries(Eigen::Index p) {
  return p == 0 ? 2 : p * (p + 1) / 2 + p;
}

Eigen::Index NumberSums(Eigen::Index p) {
  const Eigen::Index entries = NumberEntries(p);
  return (entries + simd::kSumsMultiple - 1) / simd::kSumsMultiple * simd::kSumsMultiple;
}

/// Where entry (i, j), i >= j, of a symmetric matrix of size p stands in its packed lower triangle.
Eigen::Index PackedIndex(Eigen::Index i, Eigen::Index j, Eigen::Index p) {
  return j * (2 * p - j - 1) / 2 + i;
}

}  // namespace

LocalFits::LocalFits(const Eigen::MatrixXd& basis, const Eigen::VectorXd& values)
    : basis_(basis), values_(values) {
  const Eigen::Index n = values.size();
  const Eigen::Index p = basis.cols();
  constant_ = p > 0 && (values.array() == values(0)).all();
  const Eigen::Index num_sums = NumberSums(p);
  const Eigen::Index rows =
      n <= kMaxTable / num_sums ? n : std::max<Eigen::Index>(kTablePart / num_sums, 1);
  products_.resize(num_sums, rows);
  if (rows == n && !constant_) FillProducts(0, n);
  work_.resize(simd::SolveWork(p));
}

void LocalFits::FillProducts(Eigen::Index first, Eigen::Index count) {
  const Eigen::Index p = basis_.cols();
  const Eigen::Index entries = NumberEntries(p);
  products_.bottomRows(products_.rows() - entries).setZero();
  Eigen::VectorXd terms(p);  // of one support point, side by side
  for (Eigen::Index i = 0; i < count; ++i) {
    double* product = products_.col(i).data();
    const double value = values_(first + i);
    if (p == 0) {
      product[0] = value;
      product[1] = 1.0;
      continue;
    }
    terms = basis_.row(first + i);
    for (Eigen::Index column = 0; column < p; product += p - column, ++column)
      Eigen::Map<Eigen::VectorXd>(product, p - column) = terms.tail(p - column) * terms(column);
    Eigen::Map<Eigen::VectorXd>(product, p) = terms * value;
  }
}

Eigen::Index LocalFits::GetBlockSize() const {
  const Eigen::Index numbers = std::max<Eigen::Index>(values_.size(), products_.rows());
  return std::clamp<Eigen::Index>(kBlockWeights / std::max<Eigen::Index>(numbers, 1), 1, kMaxBlock);
}

void LocalFits::FormSums(const Eigen::Ref<const Eigen::MatrixXd>& weights) {
  sums_.setZero(products_.rows(), weights.cols());
  const Eigen::Index n = values_.size();
  const Eigen::Index part = std::max<Eigen::Index>(products_.cols(), 1);
  for (Eigen::Index first = 0; first < n; first += part) {
    const Eigen::Index count = std::min(part, n - first);
    if (count < n) FillProducts(first, count);
    simd::GetLocalRoutines().add({products_.data(), products_.rows(), count, weights.data() + first,
                                  weights.outerStride(), weights.cols()},
                                 sums_.data(), sums_.rows());
  }
}

double LocalFits::SolvePivoted(const double* sums, const Eigen::Ref<const Eigen::RowVectorXd>& at) {
  const Eigen::Index p = basis_.cols();
  std::vector<Eigen::Index> order(static_cast<std::size_t>(p));
  std::iota(order.begin(), order.end(), 0);
  const auto diagonal = [&](Eigen::Index i) { return std::abs(sums[PackedIndex(i, i, p)]); };
  for (auto next = order.begin(); next != order.end(); ++next)
    std::iter_swap(next, std::max_element(next, order.end(), [&](Eigen::Index a, Eigen::Index b) {
                     return diagonal(a) < diagonal(b);
                   }));
  Eigen::VectorXd sorted(p * (p + 1) / 2 + p);
  double* to = sorted.data();
  for (Eigen::Index j = 0; j < p; ++j)
    for (Eigen::Index i = j; i < p; ++i) {
      const auto [row, column] =
          std::minmax(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)],
                      std::greater<Eigen::Index>());
      *to++ = sums[PackedIndex(row, column, p)];
    }
  Eigen::VectorXd at_sorted(p);
  for (Eigen::Index i = 0; i < p; ++i) {
    *to++ = sums[p * (p + 1) / 2 + order[static_cast<std::size_t>(i)]];
    at_sorted(i) = at(order[static_cast<std::size_t>(i)]);
  }
  double result = 0.0;
  simd::GetLocalRoutines().solve({sorted.data(), sorted.size(), 1, p, at_sorted.data(), 1},
                                 /*definite=*/false, work_.data(), &result);
  return result;
}

void LocalFits::Predict(const Eigen::Ref<const Eigen::MatrixXd>& weights,
                        const Eigen::Ref<const Eigen::MatrixXd>& basis_at, bool require_reach,
                        Eigen::Ref<Eigen::VectorXd> results) {
  const Eigen::Index p = basis_.cols();
  if (!constant_) FormSums(weights);
  if (p == 0) {
    results = (sums_.row(0).array() / sums_.row(1).array()).transpose();  // 0 / 0 out of reach
    return;
  }
  if (!constant_)
    simd::GetLocalRoutines().solve(
        {sums_.data(), sums_.rows(), sums_.cols(), p, basis_at.data(), basis_at.outerStride()},
        /*definite=*/true, work_.data(), results.data());
  for (Eigen::Index i = 0; i < weights.cols(); ++i) {
    if (require_reach && !Reaches(weights.col(i), p))
      results(i) = kNaN;
    else if (constant_)  // the constant term alone, as SolveRegression has it
      results(i) = basis_at(i, 0) * values_(0);
    else if (std::isnan(results(i)))
      results(i) = SolvePivoted(sums_.col(i).data(), basis_at.row(i));
  }
}

}  // namespace corvath::math::metamodel
