#include "stochastics/distributions/rv_general_discrete.h"

#include "stochastics/distributions/persisted_form.h"
#include "stochastics/distributions/table_parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace corvath::algorithm {

double RV_GeneralDiscrete::GetLowerBound() const {
  return Value(0);
}

double RV_GeneralDiscrete::GetUpperBound() const {
  return Value(NumStates() - 1);
}

double RV_GeneralDiscrete::PMF(double x) const {
  double sum = 0.0;
  for (Eigen::Index i = 0; i < NumStates(); ++i)
    if (Value(i) == x) sum += Probability(i);
  return sum;
}

double RV_GeneralDiscrete::PDF(double x) const {
  if (std::isnan(x)) return x;
  for (Eigen::Index i = 0; i < NumStates(); ++i)
    if (Value(i) == x) return std::numeric_limits<double>::quiet_NaN();
  return 0.0;
}

Eigen::MatrixXd RV_GeneralDiscrete::GetStates() const {
  return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, 2, Eigen::RowMajor>>(
      RV_Parameter.data(), NumStates(), 2);
}

double RV_GeneralDiscrete::CDF(double x) const {
  if (std::isnan(x)) return x;
  if (x < GetLowerBound()) return 0.0;
  if (x >= GetUpperBound()) return 1.0;
  double sum = 0.0;
  for (Eigen::Index i = 0; i < NumStates() && Value(i) <= x; ++i) sum += Probability(i);
  return sum;
}

double RV_GeneralDiscrete::InverseCDF(double p) const {
  if (std::isnan(p)) return p;
  if (p >= 1.0) return GetUpperBound();
  double sum = 0.0;
  for (Eigen::Index i = 0; i < NumStates(); ++i) {
    sum += Probability(i);
    if (sum >= p) return Value(i);
  }
  return GetUpperBound();  // the sum of all may fall short of 1 by rounding
}

std::vector<std::wstring> RV_GeneralDiscrete::GetParameterNames() const {
  return TableParameterNames(NumStates());
}

void RV_GeneralDiscrete::SetParameters(const Eigen::VectorXd& parameters) {
  RequireTable(parameters.size(), [this](const std::wstring& text) { Raise(text); });
  RequireMagnitude(parameters);
  std::vector<std::pair<double, double>> states;
  double sum = 0.0;
  for (Eigen::Index i = 0; i < parameters.size(); i += 2) {
    const double probability = parameters(i + 1);
    if (probability < 0.0)
      Raise(L": probability values must not be negative " + Format(probability));
    states.emplace_back(parameters(i), probability);
    sum += probability;
  }
  std::stable_sort(states.begin(), states.end(),
                   [](const auto& x, const auto& y) { return x.first < y.first; });

  const auto n = static_cast<Eigen::Index>(states.size());
  Eigen::VectorXd table(2 * n);
  double mean = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    auto [value, probability] = states[static_cast<std::size_t>(i)];
    probability = sum != 0.0 ? probability / sum : 1.0 / static_cast<double>(n);
    table.segment<2>(2 * i) << value, probability;
    mean += value * probability;
  }
  double variance = 0.0;
  for (Eigen::Index i = 0; i < n; ++i)
    variance += (table(2 * i) - mean) * (table(2 * i) - mean) * table(2 * i + 1);
  const double sd = std::sqrt(variance);
  if (!(sd >= RaiseToFloor(mean, 0.0)))
    Raise(L": Standard deviation  (" + Format(sd) + L") is close to zero.");
  Store(table, Eigen::Vector2d(mean, sd));
}

void RV_GeneralDiscrete::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  const double mean = moments(0);
  const double sd = moments(1);
  if (sd < RaiseToFloor(mean, 0.0))
    Raise(L": Standard deviation  (" + Format(sd) + L") is close to zero.");
  Store({mean - sd, 0.5, mean + sd, 0.5}, {mean, sd});
}

void RV_GeneralDiscrete::Fit(const Eigen::MatrixXd& data) {
  const Eigen::VectorXd sorted =
      SortedSample(data, [this](const std::wstring& text) { Raise(text); });
  RequireMagnitude(sorted);
  const auto n = static_cast<double>(sorted.size());
  const double tolerance = (sorted(sorted.size() - 1) - sorted(0)) / (n - 1.0) / 100.0;
  std::vector<double> table = {sorted(0), 1.0};
  for (Eigen::Index i = 1; i < sorted.size(); ++i) {
    if (sorted(i) - sorted(i - 1) > tolerance)
      table.insert(table.end(), {sorted(i), 1.0});
    else
      table.back() += 1.0;
  }
  Eigen::Map<Eigen::VectorXd> parameters(table.data(), static_cast<Eigen::Index>(table.size()));
  for (Eigen::Index i = 1; i < parameters.size(); i += 2) parameters(i) /= n;
  SetParameters(parameters);
}

void RV_GeneralDiscrete::Reset() {
  Store({0.0, 0.5, 1.0, 0.5}, {0.5, 0.5});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_GeneralDiscrete)
