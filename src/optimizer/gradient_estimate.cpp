#include "optimizer/gradient_estimate.h"

#include "optimizer/refuse.h"

#include <Eigen/LU>

#include <cmath>

namespace corvath::algorithm::optimizer {

namespace {

/// Inputs that vary by less than this share of the largest step have no slope.
constexpr double kNoVariation = 1e-6;

double Reference(NumericalDifferences type, const Eigen::Ref<const Eigen::VectorXd>& column) {
  if (type == NumericalDifferences::kForward) return column.minCoeff();
  if (type == NumericalDifferences::kBackward) return column.maxCoeff();
  return 0.5 * column.minCoeff() + 0.5 * column.maxCoeff();
}

}  // namespace

Eigen::MatrixXd PlaneGradients(NumericalDifferences type, const Eigen::MatrixXd& designs,
                               const Eigen::MatrixXd& responses, const std::vector<bool>& success,
                               const Eigen::VectorXd& step) {
  std::vector<Eigen::Index> rows;
  for (std::size_t row = 0; row < success.size(); ++row)
    if (success[row]) rows.push_back(static_cast<Eigen::Index>(row));
  const auto num_rows = static_cast<Eigen::Index>(rows.size());
  const double unit = step.maxCoeff();

  Eigen::MatrixXd f(num_rows, responses.cols());
  for (Eigen::Index k = 0; k < num_rows; ++k)
    f.row(k) = responses.row(rows[static_cast<std::size_t>(k)]);
  f.rowwise() -= f.colwise().mean().eval();

  Eigen::MatrixXd z(num_rows, designs.cols());
  std::vector<Eigen::Index> kept;
  for (Eigen::Index i = 0; i < designs.cols(); ++i) {
    const double reference = Reference(type, designs.col(i));
    auto column = z.col(static_cast<Eigen::Index>(kept.size()));
    for (Eigen::Index k = 0; k < num_rows; ++k)
      column(k) = (designs(rows[static_cast<std::size_t>(k)], i) - reference) / unit;
    if (!(column.maxCoeff() - column.minCoeff() >= kNoVariation)) continue;
    column.array() -= column.mean();
    kept.push_back(i);
  }

  Eigen::MatrixXd gradients = Eigen::MatrixXd::Zero(responses.cols(), designs.cols());
  if (kept.empty()) return gradients;
  const auto used = z.leftCols(static_cast<Eigen::Index>(kept.size()));
  const Eigen::FullPivLU<Eigen::MatrixXd> lu(used.transpose() * used);
  if (lu.rank() < used.cols())
    Refuse(L"Calculation error in NLPQLP: Regression matrix is singular.");
  const Eigen::MatrixXd slopes = lu.solve(used.transpose() * f) / unit;
  for (std::size_t k = 0; k < kept.size(); ++k)
    gradients.col(kept[k]) = slopes.row(static_cast<Eigen::Index>(k)).transpose();
  return gradients;
}

bool FivePointGradient(const Eigen::VectorXd& values, const std::vector<bool>& success,
                       double centre, const Eigen::VectorXd& step, bool lenient,
                       Eigen::VectorXd& gradient) {
  gradient.resize(step.size());
  for (Eigen::Index i = 0; i < step.size(); ++i) {
    const auto f = values.segment(4 * i, 4);
    const double h = step(i);
    const double quotients[] = {(centre - f(0)) / (2.0 * h), (centre - f(1)) / h,
                                (f(2) - centre) / h, (f(3) - centre) / (2.0 * h)};
    double sum = 0.0;
    int count = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      if (!success[4 * static_cast<std::size_t>(i) + k]) continue;
      sum += quotients[k];
      ++count;
    }
    if (count == 4 || !lenient)
      gradient(i) = (2.0 * f(0) - 16.0 * f(1) + 16.0 * f(2) - 2.0 * f(3)) / (24.0 * h);
    else if (count > 0)
      gradient(i) = sum / count;
    else
      return false;
  }
  return true;
}

}  // namespace corvath::algorithm::optimizer
