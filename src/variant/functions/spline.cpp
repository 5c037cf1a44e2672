#include "variant/functions/spline.h"

namespace corvath::math {

ClampedSpline::ClampedSpline(const std::vector<double>& x, const std::vector<double>& y, double d0,
                             double d1)
    : x_(x), y_(y), b_(x.size()), c_(x.size()), d_(x.size()) {
  const std::size_t n = x.size() - 1;  // segments
  std::vector<double> h(n);
  std::vector<double> slope(n);
  for (std::size_t i = 0; i < n; ++i) {
    h[i] = x[i + 1] - x[i];
    slope[i] = (y[i + 1] - y[i]) / h[i];
  }
  // Forward elimination of the tridiagonal system for c, then back substitution.
  std::vector<double> u(n + 1);
  std::vector<double> z(n + 1);
  u[0] = 0.5;
  z[0] = (3 * slope[0] - 3 * d0) / (2 * h[0]);
  for (std::size_t i = 1; i < n; ++i) {
    const double l = 2 * (x[i + 1] - x[i - 1]) - h[i - 1] * u[i - 1];
    u[i] = h[i] / l;
    z[i] = (3 * slope[i] - 3 * slope[i - 1] - h[i - 1] * z[i - 1]) / l;
  }
  c_[n] = (3 * d1 - 3 * slope[n - 1] - h[n - 1] * z[n - 1]) / (h[n - 1] * (2 - u[n - 1]));
  for (std::size_t j = n; j-- > 0;) {
    c_[j] = z[j] - u[j] * c_[j + 1];
    b_[j] = slope[j] - h[j] * (c_[j + 1] + 2 * c_[j]) / 3;
    d_[j] = (c_[j + 1] - c_[j]) / (3 * h[j]);
  }
}

}  // namespace corvath::math
