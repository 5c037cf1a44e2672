#include "stochastics/distributions/rv_multi_uniform.h"

#include "stochastics/distributions/persisted_form.h"
#include "stochastics/distributions/rv_uniform.h"
#include "stochastics/distributions/table_parameters.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

double RV_MultiUniform::GetLowerBound() const {
  return Value(0);
}

double RV_MultiUniform::GetUpperBound() const {
  return Value(NumPoints() - 1);
}

Eigen::Index RV_MultiUniform::Segment(double x) const {
  Eigen::Index first = 0;
  Eigen::Index last = NumPoints() - 1;
  while (last - first > 1) {
    const Eigen::Index middle = (first + last) / 2;
    (Value(middle) <= x ? first : last) = middle;
  }
  return first;
}

double RV_MultiUniform::PDF(double x) const {
  if (!(x >= GetLowerBound() && x <= GetUpperBound())) return std::isnan(x) ? x : 0.0;
  const Eigen::Index i = Segment(x);
  return (Probability(i + 1) - Probability(i)) / (Value(i + 1) - Value(i));
}

double RV_MultiUniform::CDF(double x) const {
  if (x < GetLowerBound()) return 0.0;
  if (x > GetUpperBound()) return 1.0;
  const Eigen::Index i = Segment(x);
  const double slope = (Probability(i + 1) - Probability(i)) / (Value(i + 1) - Value(i));
  return Probability(i) + (x - Value(i)) * slope;
}

double RV_MultiUniform::InverseCDF(double p) const {
  if (p <= 0.0) return GetLowerBound();
  if (p >= 1.0) return GetUpperBound();
  // The first segment that reaches p; it rises, since the one before it ends below p.
  Eigen::Index i = 0;
  while (i + 2 < NumPoints() && Probability(i + 1) < p) ++i;
  return Value(i) +
         (p - Probability(i)) * (Value(i + 1) - Value(i)) / (Probability(i + 1) - Probability(i));
}

std::vector<std::wstring> RV_MultiUniform::GetParameterNames() const {
  return TableParameterNames(NumPoints());
}

void RV_MultiUniform::SetParameters(const Eigen::VectorXd& parameters) {
  RequireTable(parameters.size(), [this](const std::wstring& text) { Raise(text); });
  RequireMagnitude(parameters);
  Eigen::VectorXd table = parameters;
  const Eigen::Index last = table.size() - 2;
  const double first_probability = table(1);
  const double total = table(last + 1) - first_probability;
  bool ascending = total > 0.0;
  for (Eigen::Index i = 0; i < last; i += 2)
    ascending = ascending && table(i) < table(i + 2) && table(i + 1) <= table(i + 3);
  if (!ascending) Raise(L": values and probability must be in ascending order ");
  for (Eigen::Index i = 0; i <= last; i += 2)
    table(i + 1) = (table(i + 1) - first_probability) / total;

  // Every segment holds its share of probability, uniformly.
  double mean = 0.0;
  for (Eigen::Index i = 0; i < last; i += 2)
    mean += (table(i + 3) - table(i + 1)) * (0.5 * table(i) + 0.5 * table(i + 2));
  double variance = 0.0;
  for (Eigen::Index i = 0; i < last; i += 2) {
    const double from = table(i) - mean;
    const double to = table(i + 2) - mean;
    variance += (table(i + 3) - table(i + 1)) * (from * from + from * to + to * to) / 3.0;
  }
  const double sd = std::sqrt(variance);
  if (!(sd >= RaiseToFloor(mean, 0.0)))
    Raise(L": Standard deviation  (" + Format(sd) + L") is close to zero.");
  Store(table, Eigen::Vector2d(mean, sd));
}

void RV_MultiUniform::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  const double mean = moments(0);
  const double sd = moments(1);
  RequireSpread(mean, sd);
  const double half = 0.5 * kUniformLength * sd;
  Store({mean - half, 0.0, mean + half, 1.0}, {mean, sd});
}

void RV_MultiUniform::Fit(const Eigen::MatrixXd& data) {
  const Eigen::VectorXd sorted =
      SortedSample(data, [this](const std::wstring& text) { Raise(text); });
  RequireMagnitude(sorted);
  const auto n = static_cast<double>(sorted.size());
  const double smallest = sorted(0);
  const double largest = sorted(sorted.size() - 1);
  // Sturges' rule
  const auto classes = static_cast<Eigen::Index>(std::floor(3.3 * std::log10(n) + 1.0));
  Eigen::VectorXd table(2 * (classes + 1));
  table.head<2>() << smallest, 0.0;
  for (Eigen::Index i = 1; i <= classes; ++i) {
    // In this order of operations: a sample may lie on a class end, and then the last bit decides.
    const double end =
        smallest + static_cast<double>(i) * (largest - smallest) / static_cast<double>(classes);
    const auto count = std::upper_bound(sorted.begin(), sorted.end(), end) - sorted.begin();
    table.segment<2>(2 * i) << end, static_cast<double>(count) / n;
  }
  SetParameters(table);
}

void RV_MultiUniform::Reset() {
  Store({0.0, 0.0, 1.0, 1.0}, {0.5, 1.0 / kUniformLength});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_MultiUniform)
