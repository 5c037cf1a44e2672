#include "literature/published_functions.h"

#include "doe/doe.h"
#include "doe/random_draws.h"
#include "foundation/constants.h"
#include "stochastics/normal_quantile.h"
#include "ten_bar_truss.h"

#include <cmath>

namespace literature {
namespace {

using Point = Eigen::VectorXd;
using corvath::math::kPi;

Eigen::VectorXd Vector(std::initializer_list<double> numbers) {
  Eigen::VectorXd vector(static_cast<Eigen::Index>(numbers.size()));
  std::copy(numbers.begin(), numbers.end(), vector.begin());
  return vector;
}

Eigen::VectorXd Same(Eigen::Index d, double number) {
  return Eigen::VectorXd::Constant(d, number);
}

double Branin(const Point& x) {
  const double bowl = x(1) - 5.1 / (4.0 * kPi * kPi) * x(0) * x(0) + 5.0 / kPi * x(0) - 6.0;
  return bowl * bowl + 10.0 * (1.0 - 1.0 / (8.0 * kPi)) * std::cos(x(0)) + 10.0;
}

double Ishigami(const Point& x) {
  return std::sin(x(0)) + 7.0 * std::pow(std::sin(x(1)), 2) +
         0.1 * std::pow(x(2), 4) * std::sin(x(0));
}

double Friedman1(const Point& x) {
  return 10.0 * std::sin(kPi * x(0) * x(1)) + 20.0 * std::pow(x(2) - 0.5, 2) + 10.0 * x(3) +
         5.0 * x(4);
}

/// Of an alternating current circuit: its reactance, impedance and phase.
double Reactance(const Point& x) {
  return x(1) * x(2) - 1.0 / (x(1) * x(3));
}
double Friedman2(const Point& x) {
  return std::hypot(x(0), Reactance(x));
}
double Friedman3(const Point& x) {
  return std::atan(Reactance(x) / x(0));
}

/// Flow of water through a borehole, m^3 / year.
double Borehole(const Point& x) {
  const double rw = x(0), r = x(1), tu = x(2), hu = x(3), tl = x(4), hl = x(5), l = x(6), kw = x(7);
  const double log = std::log(r / rw);
  return 2.0 * kPi * tu * (hu - hl) / (log * (1.0 + 2.0 * l * tu / (log * rw * rw * kw) + tu / tl));
}

/// g-function with the influences 0, 1, 4.5, 9 and four times 99: 1 and 2 matter most.
double SobolG(const Point& x) {
  const double a[] = {0.0, 1.0, 4.5, 9.0, 99.0, 99.0, 99.0, 99.0};
  double product = 1.0;
  for (Eigen::Index i = 0; i < x.size(); ++i)
    product *= (std::abs(4.0 * x(i) - 2.0) + a[i]) / (1.0 + a[i]);
  return product;
}

/// The first k inputs matter, alone and in pairs.
double Morris(const Point& x, Eigen::Index k) {
  const auto others = static_cast<double>(k - 1);
  const double alpha = std::sqrt(12.0) - 6.0 * std::sqrt(0.1 * others);
  const double beta = 12.0 / std::sqrt(10.0 * others);
  double pairs = 0.0;
  for (Eigen::Index i = 0; i < k; ++i)
    for (Eigen::Index j = i + 1; j < k; ++j) pairs += x(i) * x(j);
  return alpha * x.head(k).sum() + beta * pairs;
}

double DetteCurved(const Point& x) {
  return 4.0 * std::pow(x(0) - 2.0 + 8.0 * x(1) - 8.0 * x(1) * x(1), 2) +
         std::pow(3.0 - 4.0 * x(1), 2) +
         16.0 * std::sqrt(x(2) + 1.0) * std::pow(2.0 * x(2) - 1.0, 2);
}

double LinkletterSine(const Point& x) {
  return std::sin(x(0)) + std::sin(5.0 * x(1));
}

double TrussDisplacement(const Point& areas) {
  sample_projects::Truss truss;
  std::copy(areas.begin(), areas.end(), truss.areas.begin());
  return sample_projects::AnalyseTenBarTruss(truss).displacement;
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
  const std::string screening =
      "M. D. Morris, L. M. Moore, M. D. McKay, Sampling plans based on balanced incomplete block "
      "designs, J. Statistical Planning and Inference 136, 2006; 3 of 20 inputs matter";
  const std::string ben_ari =
      "E. N. Ben-Ari, D. M. Steinberg, Modeling data from computer experiments, Quality "
      "Engineering 19, 2007";
  std::vector<PublishedFunction> f;
  f.push_back({"Branin", "L. C. W. Dixon, G. P. Szego, Towards Global Optimisation 2, 1978",
               Vector({-5.0, 0.0}), Vector({10.0, 15.0}), Branin});
  f.push_back({"Ishigami",
               "T. Ishigami, T. Homma, An importance quantification technique in uncertainty "
               "analysis, ISUMA 1990",
               Same(3, -kPi), Same(3, kPi), Ishigami});
  f.push_back({"Friedman 1", friedman + "; 5 of 10 inputs matter", Same(10, 0.0), Same(10, 1.0),
               Friedman1, 1.0});
  const Eigen::VectorXd low = Vector({0.0, 40.0 * kPi, 0.0, 1.0});
  const Eigen::VectorXd high = Vector({100.0, 560.0 * kPi, 1.0, 11.0});
  f.push_back({"Friedman 3", friedman, low, high, Friedman3, 0.1});
  f.push_back(
      {"Borehole",
       "W. V. Harper, S. K. Gupta, Sensitivity/uncertainty analysis of a borehole scenario, "
       "BMI/ONWI-516, 1983",
       Vector({0.05, 100.0, 63070.0, 990.0, 63.1, 700.0, 1120.0, 9855.0}),
       Vector({0.15, 50000.0, 115600.0, 1110.0, 116.0, 820.0, 1680.0, 12045.0}), Borehole});
  f.push_back({"Sobol g",
               "A. Saltelli, I. M. Sobol', About the use of rank transformation in sensitivity "
               "analysis, Reliability Engineering and System Safety 50, 1995",
               Same(8, 0.0), Same(8, 1.0), SobolG});
  f.push_back({"Morris", screening, Same(20, 0.0), Same(20, 1.0),
               [](const Point& x) { return Morris(x, 3); }});
  f.push_back({"Curved",
               "H. Dette, A. Pepelyshev, Generalized Latin hypercube design for computer "
               "experiments, Technometrics 52, 2010; with 17 inputs that do nothing",
               Same(20, 0.0), Same(20, 1.0), DetteCurved});
  f.push_back({"Sine",
               "C. Linkletter, D. Bingham, N. Hengartner, D. Higdon, K. Q. Ye, Variable selection "
               "for Gaussian process models in computer experiments, Technometrics 48, 2006; 2 of "
               "10 inputs matter",
               Same(10, 0.0), Same(10, 1.0), LinkletterSine, 0.05});
  f.push_back({"Ten-bar truss",
               "V. B. Venkayya, Design of optimum structures, Computers & Structures 1, 1971; "
               "largest displacement",
               Same(10, 5.0), Same(10, 25.0), TrussDisplacement});
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

Sample Evaluate(const PublishedFunction& function, Eigen::MatrixXd unit, std::uint32_t seed) {
  Sample sample;
  sample.points = std::move(unit);
  for (Eigen::Index j = 0; j < sample.points.cols(); ++j)
    sample.points.col(j) =
        function.lower(j) + (function.upper(j) - function.lower(j)) * sample.points.col(j).array();
  sample.values.resize(sample.points.rows());
  corvath::math::Engine noise(seed ^ 0x5bd1e995u);
  for (Eigen::Index i = 0; i < sample.values.size(); ++i) {
    sample.values(i) = function.value(sample.points.row(i).transpose());
    if (function.noise > 0.0)
      sample.values(i) += function.noise * corvath::math::NormalQuantile(
                                               corvath::math::DrawUniform(noise, 1e-12, 1.0));
  }
  return sample;
}

}  // namespace

const std::vector<PublishedFunction>& PublishedFunctions() {
  static const std::vector<PublishedFunction> functions = MakeFunctions();
  return functions;
}

Sample LatinHypercubeSample(const PublishedFunction& function, Eigen::Index n, std::uint32_t seed) {
  corvath::math::DOE doe(static_cast<std::uint64_t>(function.lower.size()), seed);
  doe.Build(corvath::math::kAdvancedLatinHypercube, static_cast<std::uint64_t>(n), false);
  return Evaluate(function, 0.5 * (doe.GetMatrix().array() + 1.0), seed);
}

Sample UniformSample(const PublishedFunction& function, Eigen::Index n, std::uint32_t seed) {
  corvath::math::Engine engine(seed);
  return Evaluate(
      function,
      Eigen::MatrixXd::NullaryExpr(n, function.lower.size(),
                                   [&] { return corvath::math::DrawUniform(engine, 0.0, 1.0); }),
      seed);
}

}  // namespace literature
