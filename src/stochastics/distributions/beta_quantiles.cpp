#include "stochastics/distributions/beta_quantiles.h"

#include "foundation/constants.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

/// Largest relative change of a density over an interval of the table that is used.
constexpr double kSmoothChange = 0.2;

/// The cubic through `left` at 0 and `right` at 1 with these slopes there, at t.
double Cubic(double left, double left_slope, double right, double right_slope, double t) {
  const double rise = right - left;
  const double a = left_slope - rise;
  const double b = rise - right_slope;
  return left + t * (rise + (1.0 - t) * (a * (1.0 - t) + b * t));
}

/// The polynomial of degree 5 that has these second derivatives there, too.
double Quintic(double left, double left_slope, double left_bend, double right, double right_slope,
               double right_bend, double t) {
  const double value = right - (left + left_slope + 0.5 * left_bend);
  const double slope = right_slope - left_slope - left_bend;
  const double bend = right_bend - left_bend;
  const double a = 10.0 * value - 4.0 * slope + 0.5 * bend;
  const double b = -15.0 * value + 7.0 * slope - bend;
  const double c = 6.0 * value - 3.0 * slope + 0.5 * bend;
  return left + t * (left_slope + t * (0.5 * left_bend + t * (a + t * (b + t * c))));
}

}  // namespace

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
    const double inverse_density = std::exp(-LogDensity(y));
    const double slope = math::NormalPdf(u) * inverse_density;
    const double inverse_density_slope = -inverse_density * slope * LogDensitySlope(y);
    const double bend = math::NormalPdf(u) * inverse_density_slope - u * slope;
    // Where it changes faster, the cubic is too coarse or no density at all: NaN passes no test.
    const bool is_smooth =
        std::abs(inverse_density_slope) * kWidth <= kSmoothChange * inverse_density;
    nodes_.push_back(
        {y, slope, bend, is_smooth ? inverse_density : math::kNaN, inverse_density_slope});
  }
}

double BetaQuantiles::LogDensity(double y) const {
  return (alpha_ - 1.0) * std::log(y) + (beta_ - 1.0) * std::log1p(-y) - log_beta_function_;
}

double BetaQuantiles::LogDensitySlope(double y) const {
  return (alpha_ - 1.0) / y - (beta_ - 1.0) / (1.0 - y);
}

double BetaQuantiles::FromGauss(double u) const {
  constexpr int kMaxSteps = 3;
  // After a step of this part of the distance to the bound, what is left is of its third power.
  constexpr double kSmall = 1e-6;
  // Of a step up to this part of that distance the table's density gives all digits.
  constexpr double kTiny = 1e-9;
  const double p = math::ClampProbability(math::NormalCdf(u));
  const double position = (std::clamp(u, -kReach, kReach) + kReach) / kWidth;
  if (nodes_.empty() || std::isnan(u)) return math::IncompleteBetaInverse(alpha_, beta_, p);
  const auto interval = std::min(static_cast<std::size_t>(position), nodes_.size() - 2);
  const double t = position - static_cast<double>(interval);
  const Node& left = nodes_[interval];
  const Node& right = nodes_[interval + 1];
  double y = Quintic(left.y, left.slope * kWidth, left.bend * kWidth * kWidth, right.y,
                     right.slope * kWidth, right.bend * kWidth * kWidth, t);
  // Of the first step: its error, up to kSmoothChange^4 / 384, counts with the step's length.
  double inverse_density = Cubic(left.inverse_density, left.inverse_density_slope * kWidth,
                                 right.inverse_density, right.inverse_density_slope * kWidth, t);
  for (int i = 0; i < kMaxSteps && y > 0.0 && y < 1.0; ++i) {
    // The smaller tail has the digits; 1 - p is exact where it is used.
    const double miss = p <= 0.5 ? math::IncompleteBeta(alpha_, beta_, y) - p
                                 : (1.0 - p) - math::IncompleteBetaComplement(alpha_, beta_, y);
    if (i > 0 || !(std::abs(miss * inverse_density) <= kTiny * std::min(y, 1.0 - y)))
      inverse_density = std::exp(-LogDensity(y));
    const double newton = miss * inverse_density;
    const double step = newton / (1.0 - 0.5 * newton * LogDensitySlope(y));
    y -= step;
    if (std::abs(step) <= kSmall * std::min(y, 1.0 - y)) return y;
  }
  return math::IncompleteBetaInverse(alpha_, beta_, p);
}

}  // namespace corvath::algorithm
