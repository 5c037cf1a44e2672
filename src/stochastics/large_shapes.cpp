#include "stochastics/large_shapes.h"

#include "stochastics/normal_quantile.h"

#include <cmath>

namespace corvath::math {

namespace {

/// Beyond, a tail is 0 in double precision.
constexpr double kReach = 40.0;

/// With h(t) = t - ln(1 + t), by which the logarithm of a gamma density falls at the relative
/// distance t: (2 h(t) / t^2 - 1) / t. Within kReach, |t| is below 0.024.
double Skew(double t) {
  double sum = 0.0;
  for (int m = 12; m >= 3; --m) sum = 2.0 / m - t * sum;
  return -sum;
}

/// A place seen from the mean. Neither member loses digits next to it.
struct Place {
  double v;      ///< in standard deviations
  double ratio;  ///< (w^2 / v^2 - 1) / v

  bool IsFar() const { return !(std::abs(v) <= kReach); }
  /// w / v
  double Root() const { return std::sqrt(1.0 + ratio * v); }
  double W() const { return v * Root(); }
  /// phi(w) (1 / v - 1 / w)
  double Correction() const { return NormalPdf(W()) * ratio / (Root() * (1.0 + Root())); }
  double Lower() const { return IsFar() ? (v > 0.0 ? 1.0 : 0.0) : NormalCdf(W()) - Correction(); }
  double Upper() const { return IsFar() ? (v > 0.0 ? 0.0 : 1.0) : NormalCdf(-W()) + Correction(); }
};

Place GammaPlace(double a, double x) {
  const double t = (x - a) / a;
  return {t * std::sqrt(a), Skew(t) / std::sqrt(a)};
}

/// The beta distribution's `Place` at the distance `v` standard deviations.
class BetaScale {
 public:
  BetaScale(double a, double b)
      : mean_(a / (a + b)), rest_(b / (a + b)), sd_(std::sqrt(mean_ * rest_ / (a + b))) {}

  Place At(double v) const {
    const double distance = v * sd_;
    return {v, sd_ * (rest_ / mean_ * Skew(distance / mean_) -
                      mean_ / rest_ * Skew(-distance / rest_))};
  }
  /// x and 1 - x weigh against each other without a loss of digits at either end.
  double Distance(double x) const { return (x * rest_ - (1.0 - x) * mean_) / sd_; }
  double X(double v) const { return mean_ + v * sd_; }

 private:
  double mean_, rest_, sd_;
};

}  // namespace

double GammaUpperOfLargeShape(double a, double x) {
  return GammaPlace(a, x).Upper();
}

// Stirling's series for G(a) leaves 1 / (12 a).
double GammaDensityOfLargeShape(double a, double x) {
  const Place place = GammaPlace(a, x);
  if (place.IsFar()) return 0.0;
  return NormalPdf(place.W()) * std::sqrt(a) / x * std::exp(-1.0 / (12.0 * a));
}

double BetaLowerOfLargeShapes(double a, double b, double x) {
  const BetaScale scale(a, b);
  return scale.At(scale.Distance(x)).Lower();
}

double BetaDensityOfLargeShapes(double a, double b, double x) {
  const BetaScale scale(a, b);
  const Place place = scale.At(scale.Distance(x));
  if (place.IsFar()) return 0.0;
  return NormalPdf(place.W()) * std::sqrt(a / (a + b)) * std::sqrt(b) / (x * (1.0 - x)) *
         std::exp((1.0 / (a + b) - 1.0 / a - 1.0 / b) / 12.0);
}

// Newton's method for v from the normal distribution's: the slope is phi(w) within shape^-1/2, so
// that each step gains three digits.
double BetaQuantileOfLargeShapes(double a, double b, double p) {
  constexpr int kSteps = 8;
  const BetaScale scale(a, b);
  double v = NormalQuantile(p);
  for (int i = 0; i < kSteps; ++i) {
    const Place place = scale.At(v);
    v -= (p <= 0.5 ? place.Lower() - p : (1.0 - p) - place.Upper()) / NormalPdf(place.W());
  }
  return scale.X(v);
}

}  // namespace corvath::math
