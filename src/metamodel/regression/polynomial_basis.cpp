#include "metamodel/regression/polynomial_basis.h"

#include "metamodel/simd/dense_products.h"

#include <Eigen/Cholesky>

#include <cmath>
#include <stdexcept>

namespace corvath::math::metamodel {

PolynomialBasis::PolynomialBasis(Eigen::Index num_inputs, const BitVector& main,
                                 const BitVector& interactions)
    : num_inputs_(num_inputs) {
  const auto m = static_cast<std::size_t>(num_inputs);
  if (!interactions.empty() && (m == 0 || interactions.size() != m * (m - 1) / 2))
    throw std::logic_error("size of interaction vector is not consistent to regression dimension");
  if (!main.empty() && m == 0)
    throw std::logic_error("size of main term vector is not consistent to regression dimension");
  for (std::size_t t = 0; t < main.size(); ++t)
    if (main[t])
      powers_.push_back({static_cast<Eigen::Index>(t % m), static_cast<Eigen::Index>(t / m + 1)});
  if (interactions.empty()) return;
  std::size_t pair = 0;
  for (Eigen::Index i = 0; i < num_inputs; ++i)
    for (Eigen::Index j = i + 1; j < num_inputs; ++j)
      if (interactions[pair++]) products_.push_back({i, j});
}

void PolynomialBasis::Evaluate(const ConstPoints& points,
                               Eigen::Ref<Eigen::MatrixXd> design) const {
  design.col(0).setOnes();
  Eigen::Index column = 1;
  for (const auto& [input, exponent] : powers_) {
    const auto x = points.col(input).array();
    auto term = design.col(column++).array();
    if (exponent == 1)
      term = x;
    else if (exponent == 2)
      term = x.square();
    else
      term = x.unaryExpr(
          [e = static_cast<double>(exponent)](double value) { return std::pow(value, e); });
  }
  for (const auto& [first, second] : products_)
    design.col(column++).array() = points.col(first).array() * points.col(second).array();
}

template <int Rows>
void PolynomialBasis::SumTile(const ConstPoints& points, Eigen::Index row,
                              const double* coefficient, double* values) const {
  using Tile = Eigen::Array<double, Rows, 1>;
  using ConstTile = Eigen::Map<const Tile>;
  const auto column = [&](Eigen::Index input) {
    return ConstTile(points.data() + input * points.outerStride() + row);
  };
  Tile sum = Tile::Constant(*coefficient++);
  for (const auto& [input, exponent] : powers_) {
    const ConstTile x = column(input);
    const double c = *coefficient++;
    if (exponent == 1)
      sum += c * x;
    else if (exponent == 2)
      sum += c * x.square();
    else
      for (Eigen::Index i = 0; i < Rows; ++i)
        sum(i) += c * std::pow(x(i), static_cast<double>(exponent));
  }
  for (const auto& [first, second] : products_)
    sum += *coefficient++ * (column(first) * column(second));
  Eigen::Map<Tile>(values + row) = sum;
}

void PolynomialBasis::Sum(const ConstPoints& points,
                          const Eigen::Ref<const Eigen::VectorXd>& coefficients,
                          Eigen::Ref<Eigen::VectorXd> values) const {
  // A tile of rows keeps its sums in registers over all terms.
  constexpr int kTileRows = 16;
  const double* coefficient = coefficients.data();
  Eigen::Index row = 0;
  for (; row + kTileRows <= points.rows(); row += kTileRows)
    SumTile<kTileRows>(points, row, coefficient, values.data());
  for (; row < points.rows(); ++row) SumTile<1>(points, row, coefficient, values.data());
}

Eigen::MatrixXd BuildRegressionMatrix(const ConstPoints& points, const BitVector& main,
                                      const BitVector& interactions) {
  const PolynomialBasis basis(points.cols(), main, interactions);
  Eigen::MatrixXd design(points.rows(), basis.GetNumberTerms());
  basis.Evaluate(points, design);
  return design;
}

Eigen::MatrixXd NormalMatrix(const Eigen::Ref<const Eigen::MatrixXd>& X,
                             const Eigen::Ref<const Eigen::VectorXd>& weights) {
  Eigen::MatrixXd weighted;
  if (weights.size() > 0) weighted = weights.asDiagonal() * X;
  const bool is_weighted = weights.size() > 0;
  Eigen::MatrixXd normal(X.cols(), X.cols());
  simd::GetDenseRoutines().cross_products(
      X.cols(), X.cols(), X.rows(), is_weighted ? weighted.data() : X.data(),
      is_weighted ? weighted.rows() : X.outerStride(), X.data(), X.outerStride(), normal.data(),
      normal.rows(), /*lower=*/true);
  normal.triangularView<Eigen::StrictlyUpper>() = normal.transpose();
  return normal;
}

Eigen::VectorXd SolveRegression(const Eigen::Ref<const Eigen::MatrixXd>& X,
                                const Eigen::Ref<const Eigen::VectorXd>& y,
                                const Eigen::Ref<const Eigen::VectorXd>& weights) {
  if (y.size() == 0 || (y.array() == y(0)).all()) {
    Eigen::VectorXd coefficients = Eigen::VectorXd::Zero(X.cols());
    if (y.size() > 0) coefficients(0) = y(0);
    return coefficients;
  }
  const Eigen::LDLT<Eigen::MatrixXd> factors(NormalMatrix(X, weights));
  if (weights.size() == 0) return factors.solve(X.transpose() * y);
  return factors.solve(X.transpose() * (weights.array() * y.array()).matrix());
}

}  // namespace corvath::math::metamodel
