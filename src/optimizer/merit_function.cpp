#include "optimizer/merit_function.h"

namespace corvath::algorithm::optimizer {

namespace {

bool IsActive(double g, double v, double r) {
  return g <= v / r;
}

double Term(bool active, double g, double v, double r) {
  return active ? -(v - 0.5 * r * g) * g : -0.5 * v * v / r;
}

double Slope(bool active, double g, double v, double r) {
  return active ? -g : -v / r;
}

}  // namespace

double MeritFunction::Value(double f, const Vector& g, const Vector& x, const Vector& u,
                            double alpha) const {
  const Eigen::Index m = g.size(), n = x.size();
  const auto term = [&](bool equality, double value, Eigen::Index k) {
    const double v = v_(k) + alpha * (u(k) - v_(k));
    return Term(equality || IsActive(value, v, r_(k)), value, v, r_(k));
  };
  double sum = f;
  for (Eigen::Index j = 0; j < m; ++j) sum += term(j < num_equalities_, g(j), j);
  for (Eigen::Index i = 0; i < n; ++i) {
    sum += term(false, x(i) - lower_(i), m + i);
    sum += term(false, upper_(i) - x(i), m + n + i);
  }
  return sum;
}

void MeritFunction::Gradient(const Vector& df,
                             const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>>& dg,
                             const Vector& g, const Vector& x, Eigen::Ref<Eigen::VectorXd> weights,
                             Eigen::Ref<Eigen::VectorXd> gradient) const {
  const Eigen::Index m = g.size(), n = x.size();
  const auto weight = [&](bool equality, double value, Eigen::Index k) {
    return equality || IsActive(value, v_(k), r_(k)) ? v_(k) - r_(k) * value : 0.0;
  };
  for (Eigen::Index j = 0; j < m; ++j) weights(j) = weight(j < num_equalities_, g(j), j);
  for (Eigen::Index i = 0; i < n; ++i)
    gradient(i) = df(i) - weights.dot(dg.col(i)) - weight(false, x(i) - lower_(i), m + i) +
                  weight(false, upper_(i) - x(i), m + n + i);
}

double MeritFunction::MultiplierSlope(const Vector& g, const Vector& x, const Vector& u) const {
  const Eigen::Index m = g.size(), n = x.size();
  const auto slope = [&](bool equality, double value, Eigen::Index k) {
    const double change = u(k) - v_(k);
    if (change == 0.0) return 0.0;  // an infinite slack would make it a NaN
    return change * Slope(equality || IsActive(value, v_(k), r_(k)), value, v_(k), r_(k));
  };
  double sum = 0.0;
  for (Eigen::Index j = 0; j < m; ++j) sum += slope(j < num_equalities_, g(j), j);
  for (Eigen::Index i = 0; i < n; ++i) {
    sum += slope(false, x(i) - lower_(i), m + i);
    sum += slope(false, upper_(i) - x(i), m + n + i);
  }
  return sum;
}

}  // namespace corvath::algorithm::optimizer
