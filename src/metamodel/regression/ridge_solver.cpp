#include "metamodel/regression/ridge_solver.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>

namespace corvath::math::metamodel {

StandardTerms::StandardTerms(const ConstPoints& points, const BitVector& main,
                             const BitVector& interactions, double curvature) {
  const Eigen::Index n = points.rows();
  const Eigen::Index m = points.cols();
  const auto pairs = static_cast<std::size_t>(m * (m - 1) / 2);
  if (main.size() % static_cast<std::size_t>(m) != 0 ||
      main.size() / static_cast<std::size_t>(m) > 2 ||
      !(interactions.empty() || interactions.size() == pairs))
    throw std::logic_error("StandardTerms: these terms are not of order 1 or 2");
  centre_ = points.colwise().mean();
  spread_ =
      ((points.rowwise() - centre_).colwise().squaredNorm() / static_cast<double>(n)).cwiseSqrt();
  linear_.assign(static_cast<std::size_t>(m), -1);
  for (std::size_t t = 0; t < main.size(); ++t) {
    if (!main[t]) continue;
    const auto j = static_cast<Eigen::Index>(t) % m;
    const bool is_linear = static_cast<Eigen::Index>(t) < m;
    terms_.push_back({j, is_linear ? -1 : j, 0.0, 0.0});
    if (is_linear) linear_[static_cast<std::size_t>(j)] = static_cast<Eigen::Index>(terms_.size());
  }
  std::size_t bit = 0;
  for (Eigen::Index i = 0; i + 1 < m && !interactions.empty(); ++i)
    for (Eigen::Index j = i + 1; j < m; ++j)
      if (interactions[bit++]) terms_.push_back({i, j, 0.0, 0.0});

  constexpr double kConstant = 1e-12;  // spread of a column that is rounding
  const auto standard = [&](Eigen::Index j) -> Eigen::VectorXd {
    if (!(spread_(j) > kConstant)) return Eigen::VectorXd::Zero(n);
    return (points.col(j).array() - centre_(j)) / spread_(j);
  };
  design_.resize(n, static_cast<Eigen::Index>(terms_.size()));
  for (std::size_t k = 0; k < terms_.size(); ++k) {
    Term& term = terms_[k];
    auto column = design_.col(static_cast<Eigen::Index>(k));
    column = standard(term.first);
    if (term.second >= 0) {
      if (linear_[static_cast<std::size_t>(term.first)] < 0 ||
          linear_[static_cast<std::size_t>(term.second)] < 0)
        throw std::logic_error("StandardTerms: a term of order 2 without its linear terms");
      column = column.cwiseProduct(standard(term.second)).eval();
    }
    term.mean = column.mean();
    column.array() -= term.mean;
    const double spread = std::sqrt(column.squaredNorm() / static_cast<double>(n));
    term.scale = spread > kConstant ? (term.second >= 0 ? curvature : 1.0) / spread : 0.0;
    column *= term.scale;
  }
}

Eigen::VectorXd StandardTerms::ToPlain(const Eigen::VectorXd& coefficients, double constant) const {
  Eigen::VectorXd plain = Eigen::VectorXd::Zero(coefficients.size() + 1);
  plain(0) = constant;
  for (std::size_t k = 0; k < terms_.size(); ++k) {
    const Term& term = terms_[k];
    const auto position = static_cast<Eigen::Index>(k) + 1;
    double factor = coefficients(position - 1) * term.scale;
    if (factor == 0.0) continue;
    plain(0) -= factor * term.mean;
    factor /= spread_(term.first);
    if (term.second < 0) {
      plain(position) += factor;
      plain(0) -= factor * centre_(term.first);
      continue;
    }
    factor /= spread_(term.second);  // (x_i - c_i)(x_j - c_j), multiplied out
    plain(position) += factor;
    plain(linear_[static_cast<std::size_t>(term.first)]) -= factor * centre_(term.second);
    plain(linear_[static_cast<std::size_t>(term.second)]) -= factor * centre_(term.first);
    plain(0) += factor * centre_(term.first) * centre_(term.second);
  }
  return plain;
}

RidgeSolver::RidgeSolver(const Eigen::MatrixXd& design, const Eigen::VectorXd& values)
    : mean_(values.mean()), values_(values.array() - mean_) {
  left_.resize(design.rows(), 0);
  right_.resize(design.cols(), 0);
  if (design.size() == 0) return;  // the mean alone
  // By the smaller of Z'Z and ZZ', whose eigenvalues are D^2: squaring loses half of the digits, but
  // only in directions that a penalty all but removes.
  constexpr double kDependent = 1e-13;  // of the largest eigenvalue
  const bool is_tall = design.rows() >= design.cols();
  Eigen::MatrixXd gram;
  if (is_tall)
    gram = design.transpose() * design;
  else
    gram = design * design.transpose();
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(gram);
  const Eigen::Index k = gram.rows();
  Eigen::Index rank = 0;
  while (rank < k && eigen.eigenvalues()(k - 1 - rank) > kDependent * eigen.eigenvalues()(k - 1))
    ++rank;
  squared_ = eigen.eigenvalues().tail(rank);
  const Eigen::MatrixXd vectors = eigen.eigenvectors().rightCols(rank);
  Eigen::MatrixXd others;
  if (is_tall)
    others = design * vectors;
  else
    others = design.transpose() * vectors;
  others.array().rowwise() /= squared_.sqrt().transpose();
  left_ = is_tall ? others : vectors;
  right_ = is_tall ? vectors : others;
  projected_ = left_.transpose() * values_;
}

Eigen::ArrayXd RidgeSolver::Shrinkage(double penalty) const {
  return squared_ / (squared_ + penalty * static_cast<double>(values_.size()));
}

Eigen::VectorXd RidgeSolver::GetCoefficients(double penalty) const {
  return right_ * (projected_.array() * Shrinkage(penalty) / squared_.sqrt()).matrix();
}

Eigen::VectorXd RidgeSolver::CrossValidate(double penalty, const IndexVector& groups) const {
  const Eigen::ArrayXd shrinkage = Shrinkage(penalty);
  const Eigen::MatrixXd half = left_ * shrinkage.sqrt().matrix().asDiagonal();
  const Eigen::VectorXd residuals = values_ - left_ * (projected_.array() * shrinkage).matrix();
  std::map<std::uint64_t, std::vector<Eigen::Index>> members;
  for (Eigen::Index i = 0; i < groups.size(); ++i) members[groups(i)].push_back(i);
  const double of_constant = 1.0 / static_cast<double>(values_.size());
  Eigen::VectorXd predicted(values_.size());
  constexpr double kUndetermined = 1e-9;  // pivot of I - H_gg, between 0 and 1
  for (const auto& [group, rows] : members) {
    if (rows.size() == 1) {
      // Without terms there is no row to refer to.
      const double of_terms = half.cols() == 0 ? 0.0 : half.row(rows[0]).squaredNorm();
      const double rest = 1.0 - of_constant - of_terms;
      predicted(rows[0]) = rest > kUndetermined
                               ? values_(rows[0]) - residuals(rows[0]) / rest + mean_
                               : std::numeric_limits<double>::quiet_NaN();
      continue;
    }
    const Eigen::MatrixXd own = half(rows, Eigen::all);
    Eigen::MatrixXd block = -(own * own.transpose());
    block.array() -= of_constant;
    block.diagonal().array() += 1.0;
    const Eigen::LDLT<Eigen::MatrixXd> factor(block);
    const Eigen::VectorXd own_residuals = residuals(rows);
    Eigen::VectorXd left_out = factor.solve(own_residuals);
    if (!(factor.vectorD().minCoeff() > kUndetermined))
      left_out.setConstant(std::numeric_limits<double>::quiet_NaN());
    const Eigen::VectorXd own_values = values_(rows);
    predicted(rows) = ((own_values - left_out).array() + mean_).matrix();
  }
  return predicted;
}

}  // namespace corvath::math::metamodel
