#include "all_published_functions.h"

#include "foundation/constants.h"

#include <cmath>

namespace bench {
namespace {

using corvath::math::kPi;
using support::PublishedFunction;
using Point = Eigen::VectorXd;

Eigen::VectorXd Vector(std::initializer_list<double> numbers) {
  return Eigen::Map<const Eigen::VectorXd>(numbers.begin(),
                                           static_cast<Eigen::Index>(numbers.size()));
}

Eigen::VectorXd Same(Eigen::Index d, double number) {
  return Eigen::VectorXd::Constant(d, number);
}

double Friedman2(const Point& x) {
  return std::hypot(x(0), x(1) * x(2) - 1.0 / (x(1) * x(3)));
}

/// Midpoint voltage of an output transformerless push-pull circuit.
double OtlCircuit(const Point& x) {
  const double rb1 = x(0), rb2 = x(1), rf = x(2), rc1 = x(3), rc2 = x(4), beta = x(5);
  const double vb1 = 12.0 * rb2 / (rb1 + rb2);
  const double gain = beta * (rc2 + 9.0);
  return (vb1 + 0.74) * gain / (gain + rf) + 11.35 * rf / (gain + rf) +
         0.74 * rf * gain / ((gain + rf) * rc1);
}

/// Cycle time of a piston in a cylinder, s.
double Piston(const Point& x) {
  const double m = x(0), s = x(1), v0 = x(2), k = x(3), p0 = x(4), ta = x(5), t0 = x(6);
  const double a = p0 * s + 19.62 * m - k * v0 / s;
  const double v = s / (2.0 * k) * (std::sqrt(a * a + 4.0 * k * p0 * v0 / t0 * ta) - a);
  return 2.0 * kPi * std::sqrt(m / (k + s * s * p0 * v0 / t0 * ta / (v * v)));
}

/// Weight of a light aircraft's wing, lb.
double WingWeight(const Point& x) {
  const double sw = x(0), wfw = x(1), a = x(2), sweep = x(3) * kPi / 180.0, q = x(4), taper = x(5),
               tc = x(6), nz = x(7), wdg = x(8), wp = x(9);
  const double c = std::cos(sweep);
  return 0.036 * std::pow(sw, 0.758) * std::pow(wfw, 0.0035) * std::pow(a / (c * c), 0.6) *
             std::pow(q, 0.006) * std::pow(taper, 0.04) * std::pow(100.0 * tc / c, -0.3) *
             std::pow(nz * wdg, 0.49) +
         sw * wp;
}

double Welch(const Point& x) {
  const auto X = [&](int i) { return x(i - 1); };
  return 5.0 * X(12) / (1.0 + X(1)) + 5.0 * std::pow(X(4) - X(20), 2) + X(5) +
         40.0 * std::pow(X(19), 3) - 5.0 * X(19) + 0.05 * X(2) + 0.08 * X(3) - 0.03 * X(6) +
         0.03 * X(7) - 0.09 * X(9) - 0.01 * X(10) - 0.07 * X(11) + 0.25 * std::pow(X(13), 2) -
         0.04 * X(14) + 0.06 * X(15) - 0.01 * X(17) - 0.03 * X(18);
}

std::vector<PublishedFunction> MakeFunctions() {
  const std::string friedman =
      "J. H. Friedman, Multivariate adaptive regression splines, Annals of Statistics 19, 1991";
  const std::string ben_ari =
      "E. N. Ben-Ari, D. M. Steinberg, Modeling data from computer experiments, Quality "
      "Engineering 19, 2007";
  const Eigen::VectorXd low = Vector({0.0, 40.0 * kPi, 0.0, 1.0});
  const Eigen::VectorXd high = Vector({100.0, 560.0 * kPi, 1.0, 11.0});
  std::vector<PublishedFunction> f = support::PublishedFunctions();
  f.push_back({"Friedman 2", friedman, low, high, Friedman2, 125.0});
  f.push_back({"OTL circuit", ben_ari, Vector({50.0, 25.0, 0.5, 1.2, 0.25, 50.0}),
               Vector({150.0, 70.0, 3.0, 2.5, 1.2, 300.0}), OtlCircuit});
  f.push_back({"Piston", ben_ari, Vector({30.0, 0.005, 0.002, 1000.0, 90000.0, 290.0, 340.0}),
               Vector({60.0, 0.020, 0.010, 5000.0, 110000.0, 296.0, 360.0}), Piston});
  f.push_back({"Wing weight",
               "A. Forrester, A. Sobester, A. Keane, Engineering Design via Surrogate Modelling, "
               "2008",
               Vector({150.0, 220.0, 6.0, -10.0, 16.0, 0.5, 0.08, 2.5, 1700.0, 0.025}),
               Vector({200.0, 300.0, 10.0, 10.0, 45.0, 1.0, 0.18, 6.0, 2500.0, 0.08}), WingWeight});
  f.push_back({"Welch",
               "W. J. Welch, R. J. Buck, J. Sacks, H. P. Wynn, T. J. Mitchell, M. D. Morris, "
               "Screening, predicting, and computer experiments, Technometrics 34, 1992",
               Same(20, -0.5), Same(20, 0.5), Welch});
  return f;
}

}  // namespace

const std::vector<PublishedFunction>& AllPublishedFunctions() {
  static const std::vector<PublishedFunction> functions = MakeFunctions();
  return functions;
}

}  // namespace bench
