#include "analysis/optimisation/nonlinear_program.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace corvath::analysis {

Eigen::Index NonlinearProgram::NumTerms() const {
  return std::accumulate(num_terms.begin(), num_terms.end(), Eigen::Index{0});
}

bool NonlinearProgram::HasDiscrete() const {
  return std::any_of(states.begin(), states.end(),
                     [](const auto& list) { return list.size() > 0; });
}

double NonlinearProgram::GetUnit(Eigen::Index input) const {
  constexpr double kNarrow = 1e-2;
  return std::max(upper(input) - lower(input), kNarrow * GetSpan(input));
}

double NonlinearProgram::GetStep(Eigen::Index input) const {
  const double range = upper(input) - lower(input);
  return std::min(difference * std::max(range, GetSpan(input)), range / 3.0);
}

Eigen::VectorXd NonlinearProgram::Objectives(const Eigen::RowVectorXd& columns) const {
  Eigen::VectorXd objectives(NumObjectives());
  Eigen::Index first = 0;
  for (Eigen::Index i = 0; i < objectives.size(); ++i) {
    const Eigen::Index count = num_terms[static_cast<std::size_t>(i)];
    objectives(i) = columns.segment(first, count).maxCoeff<Eigen::PropagateNaN>();
    first += count;
  }
  return objectives;
}

Eigen::RowVectorXd NonlinearProgram::Admit(Eigen::RowVectorXd x) const {
  x = x.cwiseMax(lower.transpose()).cwiseMin(upper.transpose());
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    if (!IsDiscrete(i)) continue;
    const Eigen::VectorXd& list = states[static_cast<std::size_t>(i)];
    Eigen::Index nearest = 0;
    (list.array() - x(i)).abs().minCoeff(&nearest);
    x(i) = list(nearest);
  }
  return x;
}

void NonlinearProgram::Check() const {
  const Eigen::Index n = NumInputs();
  const auto has_size = [&](std::size_t size) {
    return size == 0 || size == static_cast<std::size_t>(n);
  };
  if (n == 0 || upper.size() != n || !has_size(states.size()) || !has_size(unordered.size()) ||
      !has_size(static_cast<std::size_t>(spans.size())))
    throw std::logic_error("NonlinearProgram: bounds and states are not of one number of inputs.");
  if (!lower.allFinite() || !upper.allFinite() || (lower.array() > upper.array()).any())
    throw std::logic_error("NonlinearProgram: bounds must be finite, the lower one below.");
  if (num_terms.empty() || *std::min_element(num_terms.begin(), num_terms.end()) < 1)
    throw std::logic_error("NonlinearProgram: an objective needs a term.");
  if (num_limits < 0 || !values) throw std::logic_error("NonlinearProgram: nothing to evaluate.");
}

Evaluated EvaluateAt(const NonlinearProgram& program, const Eigen::RowVectorXd& x) {
  return {x, program.values(x)};
}

Eigen::VectorXd ColumnScales(const Eigen::MatrixXd& values) {
  Eigen::VectorXd scales(values.cols());
  for (Eigen::Index k = 0; k < values.cols(); ++k) {
    double sum = 0.0, squares = 0.0, count = 0.0;
    for (const double value : values.col(k)) {
      if (!std::isfinite(value)) continue;
      ++count;
      const double step = value - sum;  // Welford: far from 0 the difference of squares cancels
      sum += step / count;
      squares += step * (value - sum);
    }
    const double deviation = count > 1.0 ? std::sqrt(squares / (count - 1.0)) : 0.0;
    const double least = 1e-8 * std::abs(sum);
    scales(k) = deviation > least ? deviation : std::max(std::abs(sum), 1e-100);
    if (!(scales(k) > 1e-100)) scales(k) = 1.0;  // a column of zeros
  }
  return scales;
}

Breach LargestBreach(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                     const Eigen::RowVectorXd& columns) {
  Breach breach;
  const Eigen::Index first = program.NumTerms();
  for (Eigen::Index j = 0; j < program.num_limits; ++j) {
    const double excess = -columns(first + j) / scales(first + j);
    if (std::isnan(excess)) return {std::numeric_limits<double>::infinity(), j};
    if (excess > breach.relative) breach = {excess, j};
  }
  return breach;
}

}  // namespace corvath::analysis
