#include "stochastics/distributions/beta_quantiles.h"

#include "foundation/constants.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

BetaQuantiles::BetaQuantiles(double alpha, double beta)
    : alpha_(alpha),
      beta_(beta),
      log_beta_function_(math::LogGamma(alpha) + math::LogGamma(beta) -
                         math::LogGamma(alpha + beta)),
      reach_(-math::NormalQuantile(math::kProbabilityMin)),
      width_(2.0 * reach_ / kIntervals) {
  // Of larger shapes the distribution function loses more digits than its inverse.
  if (!(std::min(alpha, beta) >= 1e-3 && std::max(alpha, beta) <= 1e3)) return;
  for (int i = 0; i <= kIntervals; ++i) nodes_.push_back(MakeNode(-reach_ + i * width_));
  for (std::size_t i = 1; i < nodes_.size(); ++i) {
    // Their nodes are as good as single quantiles are; more than that apart, one series is wrong.
    constexpr double kApart = 1e-14;
    Node& left = nodes_[i - 1];
    Node& right = nodes_[i];
    const double gap = left.At(0.5 * width_) - right.At(-0.5 * width_);
    if (std::abs(gap) <= kApart * right.scale) continue;
    left.is_exact = right.is_exact = false;
  }
}

double BetaQuantiles::Node::At(double distance) const {
  double sum = coefficients[kDegree];
  for (int k = kDegree - 1; k >= 0; --k) sum = sum * distance + coefficients[k];
  return sum;
}

/// With y' = s = NormalPdf(u) / density(y) and its derivative s' = -s (u + s g), where
/// g = (alpha - 1) / y - (beta - 1) / (1 - y) is the slope of the density's logarithm, term by term.
BetaQuantiles::Node BetaQuantiles::MakeNode(double u) const {
  Node node;
  double* const y = node.coefficients;
  double s[kDegree], g[kDegree], product[kDegree];  // of s and g
  double low[kDegree], high[kDegree];               // 1 / y and 1 / (1 - y)
  const double p = math::NormalCdf(u);
  y[0] = math::IncompleteBetaInverse(alpha_, beta_, p);
  if (p > 0.5) y[0] -= Step(y[0], math::NormalCdf(-u) - (1.0 - p));  // the digits that p has not
  s[0] = math::NormalPdf(u) * std::exp(-LogDensity(y[0]));
  for (int k = 0; k < kDegree; ++k) {
    y[k + 1] = s[k] / (k + 1);
    low[k] = k == 0 ? 1.0 / y[0] : 0.0;
    high[k] = k == 0 ? 1.0 / (1.0 - y[0]) : 0.0;
    for (int i = 1; i <= k; ++i) {
      low[k] -= low[0] * y[i] * low[k - i];
      high[k] += high[0] * y[i] * high[k - i];
    }
    g[k] = (alpha_ - 1.0) * low[k] - (beta_ - 1.0) * high[k];
    product[k] = 0.0;
    for (int i = 0; i <= k; ++i) product[k] += s[i] * g[k - i];
    if (k + 1 == kDegree) break;
    double sum = u * s[k] + (k > 0 ? s[k - 1] : 0.0);
    for (int i = 0; i <= k; ++i) sum += s[i] * product[k - i];
    s[k + 1] = -sum / (k + 1);
  }
  // What the series leaves away is less than its last term, and its slope has the roundings of the
  // density's logarithm. NaN passes no test.
  constexpr double kRounding = 2e-16;
  const double half = 0.5 * width_;
  const double last = y[kDegree] * std::pow(half, kDegree);
  const double log_terms = std::abs((alpha_ - 1.0) * std::log(y[0])) +
                           std::abs((beta_ - 1.0) * std::log1p(-y[0])) +
                           std::abs(log_beta_function_);
  node.scale = y[0] + s[0] / (1.0 + std::abs(u));
  node.is_exact =
      std::abs(last) <= kRounding * node.scale && log_terms * s[0] * half <= 2.0 * node.scale;
  return node;
}

double BetaQuantiles::LogDensity(double y) const {
  return (alpha_ - 1.0) * std::log(y) + (beta_ - 1.0) * std::log1p(-y) - log_beta_function_;
}

double BetaQuantiles::LogDensitySlope(double y) const {
  return (alpha_ - 1.0) / y - (beta_ - 1.0) / (1.0 - y);
}

double BetaQuantiles::Step(double y, double miss) const {
  const double newton = miss * std::exp(-LogDensity(y));
  return newton / (1.0 - 0.5 * newton * LogDensitySlope(y));
}

double BetaQuantiles::FromGauss(double u) const {
  constexpr int kMaxSteps = 3;
  // After a step of this part of the distance to the bound, what is left is of its third power.
  constexpr double kSmall = 1e-6;
  constexpr double kNear = 3.0;
  const double p = math::ClampProbability(math::NormalCdf(u));
  if (nodes_.empty() || std::isnan(u)) return math::IncompleteBetaInverse(alpha_, beta_, p);
  const double held = std::clamp(u, -reach_, reach_);
  const auto nearest = static_cast<int>((held + reach_) / width_ + 0.5);
  const Node& node = nodes_[static_cast<std::size_t>(nearest)];
  double y = node.At(held - (nearest * width_ - reach_));
  // Farther out p has roundings of u^2 units, and the quantile is that of p.
  if (node.is_exact && y < 1.0 && std::abs(u) <= kNear) {
    if (p <= 0.5) return y;
    return y - Step(y, (1.0 - p) - math::NormalCdf(-u));  // p is rounded by more than 1 - p
  }
  for (int i = 0; i < kMaxSteps && y > 0.0 && y < 1.0; ++i) {
    // The smaller tail has the digits; 1 - p is exact where it is used.
    const double miss = p <= 0.5 ? math::IncompleteBeta(alpha_, beta_, y) - p
                                 : (1.0 - p) - math::IncompleteBetaComplement(alpha_, beta_, y);
    const double step = Step(y, miss);
    y -= step;
    if (std::abs(step) <= kSmall * std::min(y, 1.0 - y)) return y;
  }
  return math::IncompleteBetaInverse(alpha_, beta_, p);
}

}  // namespace corvath::algorithm
