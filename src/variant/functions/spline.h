#pragma once

#include <vector>

namespace corvath::math {

/// Clamped cubic spline through (x, y):
///
///     f(t) = y_j + b_j D + c_j D^2 + d_j D^3,   D = t - x_j,   between knots j and j + 1
///
/// with f' = d0 at the first knot and d1 at the last. R. L. Burden, J. D. Faires, "Numerical
/// Analysis", algorithm 3.5. Outside the knots the cubics of the end segments go on.
class ClampedSpline {
 public:
  /// @param x  at least 2 knots, strictly ascending
  ClampedSpline(const std::vector<double>& x, const std::vector<double>& y, double d0, double d1);

  /// f(t) by the cubic of `segment`, the one between knots `segment` and `segment` + 1.
  double Evaluate(std::size_t segment, double t) const {
    const double distance = t - x_[segment];
    return y_[segment] +
           distance * (b_[segment] + distance * (c_[segment] + distance * d_[segment]));
  }

 private:
  std::vector<double> x_;
  std::vector<double> y_;
  std::vector<double> b_;
  std::vector<double> c_;
  std::vector<double> d_;
};

}  // namespace corvath::math
