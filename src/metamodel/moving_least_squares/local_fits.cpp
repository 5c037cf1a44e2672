#include "metamodel/moving_least_squares/local_fits.h"

#include "foundation/constants.h"
#include "metamodel/simd/dense_products.h"

#include <algorithm>
#include <cmath>

namespace corvath::math::metamodel {

namespace {

/// Entries of the table of products at most: 8 MB.
constexpr Eigen::Index kMaxTable = Eigen::Index{1} << 20;
/// Weights of one block: 512 KB stay in the second-level cache while they are multiplied.
constexpr Eigen::Index kBlockWeights = Eigen::Index{1} << 16;
constexpr Eigen::Index kMaxBlock = 256;
/// Rows of the basis that are weighted at once without a table.
constexpr Eigen::Index kChunkRows = 256;
/// A support point with a weight up to this is out of reach.
constexpr double kReach = 1e-5;

using math::kNaN;

/// Whether at least `least` support points are within reach.
bool Reaches(const Eigen::Ref<const Eigen::VectorXd>& weights, Eigen::Index least) {
  for (const double weight : weights)
    if (weight > kReach && --least == 0) return true;
  return false;
}

}  // namespace

LocalFits::LocalFits(const Eigen::MatrixXd& basis, const Eigen::VectorXd& values)
    : basis_(basis), values_(values) {
  const Eigen::Index n = basis.rows();
  const Eigen::Index p = basis.cols();
  if (p == 0) return;
  constant_ = (values.array() == values(0)).all();
  normal_.setZero(p, p);
  right_.resize(p);
  solution_.resize(p);
  const Eigen::Index num_products = p * (p + 1) / 2 + p;
  if (n > kMaxTable / num_products) return;
  products_.resize(n, num_products);
  Eigen::Index next = 0;
  for (Eigen::Index column = 0; column < p; ++column)
    for (Eigen::Index row = column; row < p; ++row)
      products_.col(next++) = basis.col(row).cwiseProduct(basis.col(column));
  for (Eigen::Index row = 0; row < p; ++row)
    products_.col(next++) = basis.col(row).cwiseProduct(values);
}

Eigen::Index LocalFits::GetBlockSize() const {
  return std::clamp<Eigen::Index>(kBlockWeights / std::max<Eigen::Index>(values_.size(), 1), 1,
                                  kMaxBlock);
}

void LocalFits::UnpackSystem(const double* sums) {
  for (Eigen::Index column = 0; column < normal_.cols(); ++column)
    for (Eigen::Index row = column; row < normal_.rows(); ++row) normal_(row, column) = *sums++;
  for (double& entry : right_) entry = *sums++;
}

void LocalFits::FormSystem(const Eigen::Ref<const Eigen::VectorXd>& weights) {
  normal_.setZero();
  right_.setZero();
  for (Eigen::Index begin = 0; begin < basis_.rows(); begin += kChunkRows) {
    const Eigen::Index rows = std::min(kChunkRows, basis_.rows() - begin);
    const auto chunk = basis_.middleRows(begin, rows);
    weighted_ = weights.segment(begin, rows).asDiagonal() * chunk;
    normal_.triangularView<Eigen::Lower>() += weighted_.transpose() * chunk;
    right_.noalias() += weighted_.transpose() * values_.segment(begin, rows);
  }
}

void LocalFits::Average(const Eigen::Ref<const Eigen::MatrixXd>& weights,
                        Eigen::Ref<Eigen::VectorXd> results) const {
  // 0 / 0 is the NaN of a point that no support point reaches.
  results = (weights.transpose() * values_).array() / weights.colwise().sum().transpose().array();
}

void LocalFits::FormSystems(const Eigen::Ref<const Eigen::MatrixXd>& weights) {
  sums_.resize(products_.cols(), weights.cols());
  simd::GetDenseRoutines().cross_products(products_.cols(), weights.cols(), products_.rows(),
                                          products_.data(), products_.rows(), weights.data(),
                                          weights.outerStride(), sums_.data(), sums_.rows(),
                                          /*lower=*/false);
}

void LocalFits::SolveSystems(const Eigen::Ref<const Eigen::MatrixXd>& basis_at,
                             Eigen::Ref<Eigen::VectorXd> results) const {
  simd::SmallSystems systems{};
  systems.sums = sums_.data();
  systems.sums_stride = sums_.rows();
  systems.num_systems = sums_.cols();
  systems.num_terms = basis_.cols();
  systems.at = basis_at.data();
  systems.at_stride = basis_at.outerStride();
  simd::GetDenseRoutines().solve_systems(systems, results.data());
}

void LocalFits::Predict(const Eigen::Ref<const Eigen::MatrixXd>& weights,
                        const Eigen::Ref<const Eigen::MatrixXd>& basis_at, bool require_reach,
                        Eigen::Ref<Eigen::VectorXd> results) {
  const Eigen::Index p = basis_.cols();
  if (p == 0) return Average(weights, results);
  const bool has_table = products_.size() > 0 && !constant_;
  results.setConstant(kNaN);
  if (has_table) {
    FormSystems(weights);
    if (p <= simd::kMostTerms) SolveSystems(basis_at, results);
  }
  for (Eigen::Index i = 0; i < weights.cols(); ++i) {
    if (require_reach && !Reaches(weights.col(i), p)) {
      results(i) = kNaN;
      continue;
    }
    if (!std::isnan(results(i))) continue;
    if (constant_) {  // the constant term alone, as SolveRegression has it
      results(i) = basis_at(i, 0) * values_(0);
      continue;
    }
    if (has_table)
      UnpackSystem(sums_.col(i).data());
    else
      FormSystem(weights.col(i));
    factors_.compute(normal_);
    solution_ = factors_.solve(right_);
    results(i) = basis_at.row(i).dot(solution_);
  }
}

}  // namespace corvath::math::metamodel
