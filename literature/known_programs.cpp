#include "literature/known_programs.h"

#include "ten_bar_truss.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace literature {
namespace {

using corvath::analysis::NonlinearProgram;
using Row = Eigen::RowVectorXd;

constexpr double kPi = 3.14159265358979323846;

Eigen::VectorXd Vector(std::initializer_list<double> values) {
  return Eigen::Map<const Eigen::VectorXd>(values.begin(),
                                           static_cast<Eigen::Index>(values.size()));
}

Row MakeRow(std::initializer_list<double> values) {
  return Vector(values).transpose();
}

/// K. M. Ragsdell, D. T. Phillips, "Optimal design of a class of welded structures using geometric
/// programming", Journal of Engineering for Industry 98, 1976, pp. 1021-1025; limits and optimum
/// after C. A. C. Coello, Computers in Industry 41, 2000, pp. 113-127, and later authors.
Row WeldedBeam(const Row& x) {
  const double h = x(0), l = x(1), t = x(2), b = x(3);
  const double load = 6000.0, length = 14.0, young = 30e6, shear = 12e6;
  const double r = std::sqrt(l * l / 4.0 + std::pow((h + t) / 2.0, 2));
  const double j = 2.0 * std::sqrt(2.0) * h * l * (l * l / 12.0 + std::pow((h + t) / 2.0, 2));
  const double tau1 = load / (std::sqrt(2.0) * h * l), tau2 = load * (length + l / 2.0) * r / j;
  const double tau = std::sqrt(tau1 * tau1 + tau1 * tau2 * l / r + tau2 * tau2);
  const double buckling = 4.013 * young * std::sqrt(t * t * std::pow(b, 6) / 36.0) /
                          (length * length) *
                          (1.0 - t / (2.0 * length) * std::sqrt(young / (4.0 * shear)));
  return MakeRow({1.10471 * h * h * l + 0.04811 * t * b * (14.0 + l), 13600.0 - tau,
                  30000.0 - 6.0 * load * length / (b * t * t), b - h,
                  5.0 - 0.10471 * h * h - 0.04811 * t * b * (14.0 + l), h - 0.125,
                  0.25 - 4.0 * load * std::pow(length, 3) / (young * t * t * t * b),
                  buckling - load});
}

/// J. S. Arora, "Introduction to Optimum Design", McGraw-Hill 1989.
Row Spring(const Row& x) {
  const double d = x(0), D = x(1), n = x(2);
  return MakeRow({(n + 2.0) * D * d * d, D * D * D * n / (71785.0 * std::pow(d, 4)) - 1.0,
                  1.0 - (4.0 * D * D - d * D) / (12566.0 * (D * d * d * d - std::pow(d, 4))) -
                      1.0 / (5108.0 * d * d),
                  140.45 * d / (D * D * n) - 1.0, 1.0 - (D + d) / 1.5});
}

/// E. Sandgren, "Nonlinear integer and discrete programming in mechanical design optimization",
/// Journal of Mechanical Design 112, 1990, pp. 223-229.
Row PressureVessel(const Row& x) {
  return MakeRow({0.6224 * x(0) * x(2) * x(3) + 1.7781 * x(1) * x(2) * x(2) +
                      3.1661 * x(0) * x(0) * x(3) + 19.84 * x(0) * x(0) * x(2),
                  x(0) - 0.0193 * x(2), x(1) - 0.00954 * x(2),
                  kPi * x(2) * x(2) * x(3) + 4.0 / 3.0 * kPi * std::pow(x(2), 3) - 1296000.0,
                  240.0 - x(3)});
}

/// L. A. Schmit, B. Farshi, AIAA Journal 12, 1974, pp. 692-699: 25 ksi, 2 in, at least 0.1 in^2. The
/// least mass is that of R. T. Haftka, Z. Guerdal, "Elements of Structural Optimization", 1992.
Row TenBarTruss(const Row& x) {
  sample_projects::Truss truss;
  for (std::size_t i = 0; i < truss.areas.size(); ++i)
    truss.areas[i] = x(static_cast<Eigen::Index>(i));
  const auto response = sample_projects::AnalyseTenBarTruss(truss);
  Row row(22);
  row(0) = response.mass;
  row(1) = 2.0 - response.displacement;
  for (std::size_t i = 0; i < truss.areas.size(); ++i) {
    row(2 + 2 * static_cast<Eigen::Index>(i)) = 25.0 - response.stresses[i];
    row(3 + 2 * static_cast<Eigen::Index>(i)) = 25.0 + response.stresses[i];
  }
  return row;
}

// Multimodal functions as in L. C. W. Dixon, G. P. Szegoe (eds.), "Towards Global Optimisation 2",
// North-Holland 1978, and A. Toern, A. Zilinskas, "Global Optimization", Springer 1989.

double Branin(const Row& x) {
  return std::pow(x(1) - 5.1 / (4.0 * kPi * kPi) * x(0) * x(0) + 5.0 / kPi * x(0) - 6.0, 2) +
         10.0 * (1.0 - 1.0 / (8.0 * kPi)) * std::cos(x(0)) + 10.0;
}

double Hartmann(const Row& x) {
  static const double alpha[] = {1.0, 1.2, 3.0, 3.2};
  static const double a[4][6] = {{10, 3, 17, 3.5, 1.7, 8},
                                 {0.05, 10, 17, 0.1, 8, 14},
                                 {3, 3.5, 1.7, 10, 17, 8},
                                 {17, 8, 0.05, 10, 0.1, 14}};
  static const double p[4][6] = {{1312, 1696, 5569, 124, 8283, 5886},
                                 {2329, 4135, 8307, 3736, 1004, 9991},
                                 {2348, 1451, 3522, 2883, 3047, 6650},
                                 {4047, 8828, 8732, 5743, 1091, 381}};
  double sum = 0.0;
  for (int i = 0; i < 4; ++i) {
    double exponent = 0.0;
    for (int j = 0; j < 6; ++j) exponent += a[i][j] * std::pow(x(j) - 1e-4 * p[i][j], 2);
    sum -= alpha[i] * std::exp(-exponent);
  }
  return sum;
}

double Shekel(const Row& x) {
  static const double a[10][4] = {{4, 4, 4, 4}, {1, 1, 1, 1},    {8, 8, 8, 8}, {6, 6, 6, 6},
                                  {3, 7, 3, 7}, {2, 9, 2, 9},    {5, 5, 3, 3}, {8, 1, 8, 1},
                                  {6, 2, 6, 2}, {7, 3.6, 7, 3.6}};
  static const double c[10] = {0.1, 0.2, 0.2, 0.4, 0.4, 0.6, 0.3, 0.7, 0.5, 0.5};
  double sum = 0.0;
  for (int i = 0; i < 10; ++i) {
    double square = c[i];
    for (int j = 0; j < 4; ++j) square += std::pow(x(j) - a[i][j], 2);
    sum -= 1.0 / square;
  }
  return sum;
}

double Rastrigin(const Row& x) {
  return 10.0 * static_cast<double>(x.size()) +
         (x.array().square() - 10.0 * (2.0 * kPi * x.array()).cos()).sum();
}

double Schwefel(const Row& x) {
  return 418.982887272434 * static_cast<double>(x.size()) -
         (x.array() * x.array().abs().sqrt().sin()).sum();
}

double Michalewicz(const Row& x) {
  double sum = 0.0;
  for (Eigen::Index i = 0; i < x.size(); ++i)
    sum -= std::sin(x(i)) * std::pow(std::sin(static_cast<double>(i + 1) * x(i) * x(i) / kPi), 20);
  return sum;
}

double Eggholder(const Row& x) {
  const double y = x(1) + 47.0;
  return -y * std::sin(std::sqrt(std::abs(0.5 * x(0) + y))) -
         x(0) * std::sin(std::sqrt(std::abs(x(0) - y)));
}

/// Z. Michalewicz, M. Schoenauer, "Evolutionary algorithms for constrained parameter optimization
/// problems", Evolutionary Computation 4, 1996, pp. 1-32: their eighth problem.
Row EighthOfMichalewicz(const Row& x) {
  const double f = std::pow(std::sin(2.0 * kPi * x(0)), 3) * std::sin(2.0 * kPi * x(1)) /
                   (std::pow(x(0), 3) * (x(0) + x(1)));
  return MakeRow({-f, x(1) - x(0) * x(0) - 1.0, x(0) - 1.0 - std::pow(x(1) - 4.0, 2)});
}

KnownProgram Function(std::string name, Eigen::Index n, double lower, double upper,
                      double (*function)(const Row&), double optimum, double tolerance) {
  return {std::move(name),
          MakeProgram(Eigen::VectorXd::Constant(n, lower), Eigen::VectorXd::Constant(n, upper), {1},
                      0, [function](const Row& x) { return MakeRow({function(x)}); }),
          optimum, tolerance};
}

}  // namespace

NonlinearProgram MakeProgram(const Eigen::VectorXd& lower, const Eigen::VectorXd& upper,
                             std::vector<Eigen::Index> num_terms, Eigen::Index num_limits,
                             RowFunction function) {
  NonlinearProgram program;
  program.lower = lower;
  program.upper = upper;
  program.num_terms = std::move(num_terms);
  program.num_limits = num_limits;
  program.values = [columns = program.NumColumns(),
                    function = std::move(function)](const Eigen::MatrixXd& x) {
    Eigen::MatrixXd values(x.rows(), columns);
    for (Eigen::Index k = 0; k < x.rows(); ++k) values.row(k) = function(x.row(k));
    return values;
  };
  return program;
}

std::vector<KnownProgram> EngineeringPrograms() {
  NonlinearProgram vessel =
      MakeProgram(Vector({0.0625, 0.0625, 10.0, 10.0}), Vector({6.1875, 6.1875, 200.0, 200.0}), {1},
                  4, PressureVessel);
  const Eigen::VectorXd plates = 0.0625 * Eigen::VectorXd::LinSpaced(99, 1.0, 99.0);
  vessel.states = {plates, plates, Eigen::VectorXd(), Eigen::VectorXd()};
  return {
      {"welded beam",
       MakeProgram(Vector({0.1, 0.1, 0.1, 0.1}), Vector({2.0, 10.0, 10.0, 2.0}), {1}, 7,
                   WeldedBeam),
       1.724852, 5e-7},
      {"spring", MakeProgram(Vector({0.05, 0.25, 2.0}), Vector({2.0, 1.3, 15.0}), {1}, 4, Spring),
       0.0126652, 5e-8},
      {"pressure vessel", vessel, 6059.7143, 5e-5},
      {"ten-bar truss",
       MakeProgram(Eigen::VectorXd::Constant(10, 0.1), Eigen::VectorXd::Constant(10, 35.0), {1}, 21,
                   TenBarTruss),
       5060.85, 5e-3},
  };
}

std::vector<KnownProgram> MultimodalPrograms() {
  KnownProgram branin = Function("Branin", 2, 0.0, 15.0, Branin, 0.397887, 5e-7);
  branin.program.lower(0) = -5.0;
  branin.program.upper(0) = 10.0;
  return {
      branin,
      Function("Hartmann 6", 6, 0.0, 1.0, Hartmann, -3.32237, 5e-6),
      Function("Shekel 10", 4, 0.0, 10.0, Shekel, -10.5364, 5e-5),
      Function("Rastrigin 6", 6, -5.12, 5.0, Rastrigin, 0.0, 1e-6),
      Function("Michalewicz 5", 5, 0.0, kPi, Michalewicz, -4.687658, 5e-7),
      Function("Eggholder", 2, -512.0, 512.0, Eggholder, -959.6407, 5e-5),
      Function("Schwefel 2", 2, -500.0, 500.0, Schwefel, 0.0, 1e-6),
      {"Michalewicz 8",
       MakeProgram(Vector({1e-3, 1e-3}), Vector({10.0, 10.0}), {1}, 2, EighthOfMichalewicz),
       -0.095825, 5e-7},
  };
}

NonlinearProgram ZitzlerDebThiele(int number) {
  constexpr Eigen::Index kInputs = 30;
  NonlinearProgram program;
  program.lower = Eigen::VectorXd::Zero(kInputs);
  program.upper = Eigen::VectorXd::Ones(kInputs);
  program.num_terms = {1, 1};
  program.values = [number](const Eigen::MatrixXd& x) {
    const Eigen::ArrayXd f1 = x.col(0),
                         g = 1.0 + 9.0 * x.rightCols(kInputs - 1).rowwise().mean().array();
    const Eigen::ArrayXd share = f1 / g;
    Eigen::ArrayXd h = 1.0 - (number == 2 ? share.square().eval() : share.sqrt().eval());
    if (number == 3) h -= share * (10.0 * kPi * f1).sin();
    Eigen::MatrixXd values(x.rows(), 2);
    values << f1, g * h;
    return values;
  };
  return program;
}

double ZitzlerDebThieleFront(int number, double f1) {
  const double root = 1.0 - (number == 2 ? f1 * f1 : std::sqrt(f1));
  return number == 3 ? root - f1 * std::sin(10.0 * kPi * f1) : root;
}

double Hypervolume(Eigen::MatrixXd points, const Eigen::VectorXd& reference) {
  const Eigen::Index last = reference.size() - 1;
  std::vector<Eigen::Index> order;
  for (Eigen::Index k = 0; k < points.rows(); ++k)
    if ((points.row(k).transpose().array() < reference.array()).all()) order.push_back(k);
  std::sort(order.begin(), order.end(),
            [&](Eigen::Index a, Eigen::Index b) { return points(a, last) < points(b, last); });
  if (last == 0) return order.empty() ? 0.0 : reference(0) - points(order.front(), 0);
  // Slices along the last objective, each with the area of the points below it.
  double volume = 0.0;
  Eigen::MatrixXd below(0, last);
  for (std::size_t k = 0; k < order.size(); ++k) {
    below.conservativeResize(below.rows() + 1, Eigen::NoChange);
    below.row(below.rows() - 1) = points.row(order[k]).head(last);
    const double top = k + 1 < order.size() ? points(order[k + 1], last) : reference(last);
    if (top > points(order[k], last))
      volume += (top - points(order[k], last)) * Hypervolume(below, reference.head(last));
  }
  return volume;
}

}  // namespace literature
