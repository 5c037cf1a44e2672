#include "stochastics/distributions/beta_quantiles.h"

#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

BetaQuantiles::BetaQuantiles(double alpha, double beta)
    : alpha_(alpha),
      beta_(beta),
      log_beta_function_(math::LogGamma(alpha) + math::LogGamma(beta) -
                         math::LogGamma(alpha + beta)) {
  // Of larger shapes the distribution function loses more digits than its inverse.
  if (!(std::min(alpha, beta) >= 1e-3 && std::max(alpha, beta) <= 1e3)) return;
  nodes_.reserve(kIntervals + 1);
  for (int i = 0; i <= kIntervals; ++i) {
    const double u = -kReach + i * kWidth;
    const double y = math::IncompleteBetaInverse(alpha, beta, math::NormalCdf(u));
    nodes_.push_back({y, math::NormalPdf(u) / std::exp(LogDensity(y))});
  }
}

double BetaQuantiles::LogDensity(double y) const {
  return (alpha_ - 1.0) * std::log(y) + (beta_ - 1.0) * std::log1p(-y) - log_beta_function_;
}

double BetaQuantiles::FromGauss(double u) const {
  constexpr int kMaxSteps = 3;
  // After a step of this part of the distance to the bound, what is left is of its third power.
  constexpr double kSmall = 1e-6;
  const double p = math::ClampProbability(math::NormalCdf(u));
  const double position = (std::clamp(u, -kReach, kReach) + kReach) / kWidth;
  if (nodes_.empty() || std::isnan(u)) return math::IncompleteBetaInverse(alpha_, beta_, p);
  const auto interval = std::min(static_cast<std::size_t>(position), nodes_.size() - 2);
  const double t = position - static_cast<double>(interval);
  const Node& left = nodes_[interval];
  const Node& right = nodes_[interval + 1];
  // Cubic with the nodes' values and slopes.
  const double rise = right.y - left.y;
  const double a = kWidth * left.slope - rise;
  const double b = rise - kWidth * right.slope;
  double y = left.y + t * (rise + (1.0 - t) * (a * (1.0 - t) + b * t));
  for (int i = 0; i < kMaxSteps && y > 0.0 && y < 1.0; ++i) {
    // The smaller tail has the digits; 1 - p is exact where it is used.
    const double miss = p <= 0.5 ? math::IncompleteBeta(alpha_, beta_, y) - p
                                 : (1.0 - p) - math::IncompleteBetaComplement(alpha_, beta_, y);
    const double newton = miss * std::exp(-LogDensity(y));
    const double bend = (alpha_ - 1.0) / y - (beta_ - 1.0) / (1.0 - y);
    const double step = newton / (1.0 - 0.5 * newton * bend);
    y -= step;
    if (std::abs(step) <= kSmall * std::min(y, 1.0 - y)) return y;
  }
  return math::IncompleteBetaInverse(alpha_, beta_, p);
}

}  // namespace corvath::algorithm
