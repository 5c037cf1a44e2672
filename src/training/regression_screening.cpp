#include "training/regression_screening.h"

#include "stochastics/sample_statistics.h"
#include "training/scaled_points.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;

/// Added to the diagonal of the normal matrix, whose entries are of the size of 1: terms that repeat
/// each other (powers of an input with two values) share their coefficient and cost nothing.
constexpr double kRidge = 1e-8;

/// The `count` inputs of the largest linear correlation with the response.
BitVector MostCorrelated(const ResponseData& data, std::size_t count) {
  const auto m = static_cast<std::size_t>(data.points.cols());
  Eigen::VectorXd correlations(data.points.cols());
  for (Eigen::Index j = 0; j < data.points.cols(); ++j)
    correlations(j) = std::abs(
        math::statistics::LinearCorrelation(data.points.col(j), data.values, false, false));
  std::vector<Eigen::Index> order(m);
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::stable_sort(order.begin(), order.end(), [&](Eigen::Index a, Eigen::Index b) {
    return correlations(a) > correlations(b);
  });
  BitVector bits(m, false);
  for (std::size_t k = 0; k < std::min(count, m); ++k)
    bits[static_cast<std::size_t>(order[k])] = true;
  return bits;
}

}  // namespace

RegressionScreening::RegressionScreening(const ResponseData& data, bool adjusted)
    : num_points_(static_cast<double>(data.values.size())), adjusted_(adjusted) {
  const auto m = static_cast<std::size_t>(data.points.cols());
  const auto most = static_cast<std::size_t>(data.values.size()) / 2;  // coefficients at most
  const bool quadratic = 1 + 2 * m <= most;
  const bool products = 1 + 2 * m + m * (m - 1) / 2 <= most;
  inputs_ =
      1 + m <= most ? BitVector(m, true) : MostCorrelated(data, std::max<std::size_t>(most, 2) - 1);
  for (std::size_t j = 0; j < m; ++j)
    if (inputs_[j]) terms_.push_back({j, m});
  for (std::size_t j = 0; quadratic && j < m; ++j) terms_.push_back({j, j});
  for (std::size_t i = 0; products && i < m; ++i)
    for (std::size_t j = i + 1; j < m; ++j) terms_.push_back({i, j});

  const Eigen::MatrixXd scaled = ScaledPoints(data.points);
  Eigen::MatrixXd design(data.values.size(), static_cast<Eigen::Index>(terms_.size()) + 1);
  design.col(0).setOnes();
  for (std::size_t t = 0; t < terms_.size(); ++t) {
    auto column = design.col(static_cast<Eigen::Index>(t) + 1);
    column = scaled.col(static_cast<Eigen::Index>(terms_[t].first));
    if (terms_[t].second < m)
      column = column.cwiseProduct(scaled.col(static_cast<Eigen::Index>(terms_[t].second)));
  }
  const Eigen::VectorXd centred = data.values.array() - data.values.mean();
  sst_ = centred.squaredNorm() / num_points_;
  normal_ = design.transpose() * design / num_points_;
  normal_.diagonal().array() += kRidge;
  right_ = design.transpose() * centred / num_points_;
  Solve();
}

void RegressionScreening::Solve() {
  const Eigen::LDLT<Eigen::MatrixXd> factors(normal_);
  inverse_ = factors.solve(Eigen::MatrixXd::Identity(normal_.rows(), normal_.cols()));
  coefficients_ = factors.solve(right_);
  sse_ = std::max(0.0, sst_ - coefficients_.dot(right_));
}

double RegressionScreening::Determination(double sse, Eigen::Index num_terms) const {
  const double share = sse / sst_;
  if (!adjusted_) return 1.0 - share;
  const double spare = std::max(num_points_ - static_cast<double>(num_terms), 1.0);
  return 1.0 - share * (num_points_ - 1.0) / spare;
}

std::vector<Eigen::Index> RegressionScreening::TermsWith(std::size_t input) const {
  std::vector<Eigen::Index> columns;
  for (std::size_t t = 0; t < terms_.size(); ++t)
    if (terms_[t].Has(input)) columns.push_back(static_cast<Eigen::Index>(t) + 1);
  return columns;
}

Eigen::VectorXd RegressionScreening::GetLosses() const {
  Eigen::VectorXd losses = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(inputs_.size()));
  for (std::size_t j = 0; j < inputs_.size(); ++j) {
    if (!inputs_[j]) continue;
    const std::vector<Eigen::Index> columns = TermsWith(j);
    const Eigen::VectorXd own = coefficients_(columns);
    const Eigen::MatrixXd block = inverse_(columns, columns);
    const double lost = std::max(0.0, own.dot(block.ldlt().solve(own)));
    const auto num_left = GetNumberTerms() - static_cast<Eigen::Index>(columns.size());
    losses(static_cast<Eigen::Index>(j)) =
        GetDetermination() - Determination(sse_ + lost, num_left);
  }
  return losses;
}

void RegressionScreening::Remove(std::size_t input) {
  std::vector<Eigen::Index> kept{0};
  std::vector<Term> terms;
  for (std::size_t t = 0; t < terms_.size(); ++t) {
    if (terms_[t].Has(input)) continue;
    kept.push_back(static_cast<Eigen::Index>(t) + 1);
    terms.push_back(terms_[t]);
  }
  inputs_[input] = false;
  terms_ = std::move(terms);
  normal_ = Eigen::MatrixXd(normal_(kept, kept));
  right_ = Eigen::VectorXd(right_(kept));
  Solve();
}

}  // namespace corvath::training
