#include "analysis/propagation/sample_intervals.h"

#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvath::analysis {
namespace {

using Eigen::Index;

/// Below, the kurtosis of a sample says nothing: that of two values is 1, as if their standard
/// deviation were exact.
constexpr Index kFewestForSpread = 4;

Interval Around(double value, double half_width) {
  return {value, value - half_width, value + half_width};
}

}  // namespace

double TwoSidedNormal(double confidence) {
  return math::NormalQuantile(0.5 + 0.5 * confidence);
}

SampleIntervals::SampleIntervals(Eigen::VectorXd values, double confidence)
    : sorted_(std::move(values)), confidence_(confidence), z_(TwoSidedNormal(confidence)) {
  std::sort(sorted_.data(), sorted_.data() + sorted_.size());
  const auto n = static_cast<double>(sorted_.size());
  mean_ = n > 0.0 ? sorted_.mean() : Interval().value;
  const Eigen::ArrayXd centered = sorted_.array() - mean_;
  deviation_ = n > 1.0 ? std::sqrt(centered.square().sum() / (n - 1.0)) : Interval().value;
  if (!(deviation_ > 0.0)) return;
  skewness_ = (centered / deviation_).cube().sum() / n;
  kurtosis_ = (centered / deviation_).square().square().sum() / n;
}

double SampleIntervals::GetSmallest() const {
  return sorted_.size() > 0 ? sorted_(0) : Interval().value;
}

double SampleIntervals::GetLargest() const {
  return sorted_.size() > 0 ? sorted_(sorted_.size() - 1) : Interval().value;
}

Interval SampleIntervals::Mean() const {
  return Around(mean_, z_ * deviation_ / std::sqrt(static_cast<double>(GetCount())));
}

Interval SampleIntervals::Deviation() const {
  if (GetCount() < kFewestForSpread) return {deviation_, Interval().low, Interval().high};
  const double variance = std::max(kurtosis_ - 1.0, 0.0) / (4.0 * static_cast<double>(GetCount()));
  return Around(deviation_, z_ * deviation_ * std::sqrt(variance));
}

Interval SampleIntervals::Variation() const {
  const double cov = deviation_ / std::abs(mean_);
  if (!std::isfinite(cov)) return {};
  if (GetCount() < kFewestForSpread) return {cov, Interval().low, Interval().high};
  const double skewness = mean_ < 0.0 ? -skewness_ : skewness_;
  const double variance = 0.25 * (kurtosis_ - 1.0) + cov * cov - cov * skewness;
  return Around(cov,
                z_ * cov * std::sqrt(std::max(variance, 0.0) / static_cast<double>(GetCount())));
}

/// @param place  from 0 to n - 1
double SampleIntervals::At(double place) const {
  const auto below = static_cast<Index>(place);
  const Index above = std::min(below + 1, GetCount() - 1);
  return sorted_(below) + (place - static_cast<double>(below)) * (sorted_(above) - sorted_(below));
}

Interval SampleIntervals::Quantile(double p) const {
  if (GetCount() == 0) return {};
  const auto n = static_cast<double>(GetCount());
  Interval result;
  result.value = At(p * (n - 1.0));
  // The order statistic number k of uniform values is beta distributed with k and n + 1 - k.
  const double tail = 0.5 * (1.0 - confidence_);
  const double low = n * math::IncompleteBetaInverse(n * p, n - n * p + 1.0, tail);
  const double high = n * math::IncompleteBetaInverse(n * p + 1.0, n - n * p, 1.0 - tail) + 1.0;
  if (low >= 1.0) result.low = At(low - 1.0);
  if (high <= n) result.high = At(high - 1.0);
  return result;
}

Interval ShareInterval(Index count, Index total, double confidence) {
  if (total == 0) return {};
  const double tail = 0.5 * (1.0 - confidence);
  const auto k = static_cast<double>(count);
  const auto n = static_cast<double>(total);
  return {k / n, count == 0 ? 0.0 : math::IncompleteBetaInverse(k, n - k + 1.0, tail),
          count == total ? 1.0 : math::IncompleteBetaInverse(k + 1.0, n - k, 1.0 - tail)};
}

Interval CorrelationInterval(double r, Index n, double confidence) {
  if (!std::isfinite(r) || n <= 3) return {r, Interval().low, Interval().high};
  const double half_width = TwoSidedNormal(confidence) / std::sqrt(static_cast<double>(n) - 3.0);
  const double z = std::atanh(r);  // infinite at 1, and then so are both ends
  return {r, std::tanh(z - half_width), std::tanh(z + half_width)};
}

}  // namespace corvath::analysis
