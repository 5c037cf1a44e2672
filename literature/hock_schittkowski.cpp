#include "literature/hock_schittkowski.h"

#include "foundation/constants.h"

#include <algorithm>

namespace literature {
namespace {

using corvath::math::kPi;
const double kSqrt2 = std::sqrt(2.0), kSqrt3 = std::sqrt(3.0);

Dual Rosenbrock(const Dual* x) {
  return 100.0 * Sq(x[2] - Sq(x[1])) + Sq(1.0 - x[1]);
}

/// Constraints of problems 78, 80, 81.
void PowellConstraints(const Dual* x, Dual* g) {
  g[1] = Sq(x[1]) + Sq(x[2]) + Sq(x[3]) + Sq(x[4]) + Sq(x[5]) - 10.0;
  g[2] = x[2] * x[3] - 5.0 * x[4] * x[5];
  g[3] = Cube(x[1]) + Cube(x[2]) + 1.0;
}

Dual Network(const Dual* x, Dual* g, double a) {  // 74, 75
  g[4] = x[4] - x[3] + a;
  g[5] = x[3] - x[4] + a;
  g[1] = 1000.0 * sin(-x[3] - 0.25) + 1000.0 * sin(-x[4] - 0.25) + 894.8 - x[1];
  g[2] = 1000.0 * sin(x[3] - 0.25) + 1000.0 * sin(x[3] - x[4] - 0.25) + 894.8 - x[2];
  g[3] = 1000.0 * sin(x[4] - 0.25) + 1000.0 * sin(x[4] - x[3] - 0.25) + 1294.8;
  return 3.0 * x[1] + 1e-6 * Cube(x[1]) + 2.0 * x[2] + 2e-6 / 3.0 * Cube(x[2]);
}

Dual Mixture(const Dual* x, Dual* g, double b1, double b2, double b3, double b4) {  // 95, 96
  g[1] = 17.1 * x[1] + 38.2 * x[2] + 204.2 * x[3] + 212.3 * x[4] + 623.4 * x[5] + 1495.5 * x[6] -
         169.0 * x[1] * x[3] - 3580.0 * x[3] * x[5] - 3810.0 * x[4] * x[5] - 18500.0 * x[4] * x[6] -
         24300.0 * x[5] * x[6] - b1;
  g[2] = 17.9 * x[1] + 36.8 * x[2] + 113.9 * x[3] + 169.7 * x[4] + 337.8 * x[5] + 1385.2 * x[6] -
         139.0 * x[1] * x[3] - 2450.0 * x[4] * x[5] - 16600.0 * x[4] * x[6] -
         17200.0 * x[5] * x[6] - b2;
  g[3] = -273.0 * x[2] - 70.0 * x[4] - 819.0 * x[5] + 26000.0 * x[4] * x[5] - b3;
  g[4] = 159.9 * x[1] - 311.0 * x[2] + 587.0 * x[4] + 391.0 * x[5] + 2198.0 * x[6] -
         14000.0 * x[1] * x[6] - b4;
  return 4.3 * x[1] + 31.8 * x[2] + 63.3 * x[3] + 15.8 * x[4] + 68.5 * x[5] + 4.7 * x[6];
}

/// Free energies of the ten compounds of problems 111 and 112.
const double kEnergies[] = {-6.089,  -17.164, -34.054, -5.914,  -24.721,
                            -14.986, -24.100, -10.708, -26.662, -22.179};

Dual Equilibrium(const Dual* x, Dual* g) {  // of the amounts
  Dual total = 0.0;
  for (int i = 1; i <= 10; ++i) total += x[i];
  Dual energy = 0.0;
  for (int i = 1; i <= 10; ++i) energy += x[i] * (kEnergies[i - 1] + log(x[i] / total));
  g[1] = x[1] + 2.0 * x[2] + 2.0 * x[3] + x[6] + x[10] - 2.0;
  g[2] = x[4] + 2.0 * x[5] + x[6] + x[7] - 1.0;
  g[3] = x[3] + x[7] + x[8] + 2.0 * x[9] + x[10] - 1.0;
  return energy;
}

Dual Colville1(const Dual* x, Dual* g) {
  static const double e[] = {-15, -27, -36, -18, -12}, d[] = {4, 8, 10, 6, 2};
  static const double c[5][5] = {{30, -20, -10, 32, -10},
                                 {-20, 39, -6, -31, 32},
                                 {-10, -6, 10, -6, -10},
                                 {32, -31, -6, 39, -20},
                                 {-10, 32, -10, -20, 30}};
  static const double a[10][5] = {{-16, 2, 0, 1, 0},    {0, -2, 0, 0.4, 2},   {-3.5, 0, 2, 0, 0},
                                  {0, -2, 0, -4, -1},   {0, -9, -2, 1, -2.8}, {2, 0, -4, 0, 0},
                                  {-1, -1, -1, -1, -1}, {-1, -2, -3, -2, -1}, {1, 2, 3, 4, 5},
                                  {1, 1, 1, 1, 1}};
  static const double b[] = {-40, -2, -0.25, -4, -4, -1, -40, -60, 5, 1};
  Dual f = 0.0;
  for (int i = 0; i < 5; ++i) {
    f += e[i] * x[i + 1] + d[i] * Cube(x[i + 1]);
    for (int j = 0; j < 5; ++j) f += c[i][j] * x[i + 1] * x[j + 1];
  }
  for (int k = 0; k < 10; ++k) {
    g[k + 1] = -b[k];
    for (int j = 0; j < 5; ++j) g[k + 1] += a[k][j] * x[j + 1];
  }
  return f;
}

std::vector<CollectedProblem> Collect() {
  const double a56 = std::asin(std::sqrt(1.0 / 4.2)), b56 = std::asin(std::sqrt(5.0 / 7.2));
  std::vector<CollectedProblem> problems;
  const auto add = [&](CollectedProblem problem, CollectedProblem::Evaluate evaluate) {
    problem.evaluate = evaluate;
    problems.push_back(problem);
  };
  add({1, 0, 0, {-2, 1}, {-kNone, -1.5}, {}, 0.0},
      [](const Dual* x, Dual*) { return Rosenbrock(x); });
  add({2, 0, 0, {-2, 1}, {-kNone, 1.5}, {}, 0.0504261879},
      [](const Dual* x, Dual*) { return Rosenbrock(x); });
  add({3, 0, 0, {10, 1}, {-kNone, 0}, {}, 0.0},
      [](const Dual* x, Dual*) { return x[2] + 1e-5 * Sq(x[2] - x[1]); });
  add({4, 0, 0, {1.125, 0.125}, {1, 0}, {}, 8.0 / 3.0},
      [](const Dual* x, Dual*) { return Cube(x[1] + 1.0) / 3.0 + x[2]; });
  add({5, 0, 0, {0, 0}, {-1.5, -3}, {4, 3}, -kSqrt3 / 2.0 - kPi / 3.0}, [](const Dual* x, Dual*) {
    return sin(x[1] + x[2]) + Sq(x[1] - x[2]) - 1.5 * x[1] + 2.5 * x[2] + 1.0;
  });
  add({6, 1, 0, {-1.2, 1}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = 10.0 * (x[2] - Sq(x[1]));
    return Sq(1.0 - x[1]);
  });
  add({7, 1, 0, {2, 2}, {}, {}, -kSqrt3}, [](const Dual* x, Dual* g) {
    g[1] = Sq(1.0 + Sq(x[1])) + Sq(x[2]) - 4.0;
    return log(1.0 + Sq(x[1])) - x[2];
  });
  add({8, 2, 0, {2, 1}, {}, {}, -1.0}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) + Sq(x[2]) - 25.0;
    g[2] = x[1] * x[2] - 9.0;
    return Dual(-1.0);
  });
  add({9, 1, 0, {0, 0}, {}, {}, -0.5}, [](const Dual* x, Dual* g) {
    g[1] = 4.0 * x[1] - 3.0 * x[2];
    return sin(kPi * x[1] / 12.0) * cos(kPi * x[2] / 16.0);
  });
  add({10, 0, 1, {-10, 10}, {}, {}, -1.0}, [](const Dual* x, Dual* g) {
    g[1] = -3.0 * Sq(x[1]) + 2.0 * x[1] * x[2] - Sq(x[2]) + 1.0;
    return x[1] - x[2];
  });
  add({11, 0, 1, {4.9, 0.1}, {}, {}, -8.498464223}, [](const Dual* x, Dual* g) {
    g[1] = -Sq(x[1]) + x[2];
    return Sq(x[1] - 5.0) + Sq(x[2]) - 25.0;
  });
  add({12, 0, 1, {0, 0}, {}, {}, -30.0}, [](const Dual* x, Dual* g) {
    g[1] = 25.0 - 4.0 * Sq(x[1]) - Sq(x[2]);
    return 0.5 * Sq(x[1]) + Sq(x[2]) - x[1] * x[2] - 7.0 * x[1] - 7.0 * x[2];
  });
  add({13, 0, 1, {-2, -2}, {0}, {}, 1.0}, [](const Dual* x, Dual* g) {
    g[1] = Cube(1.0 - x[1]) - x[2];
    return Sq(x[1] - 2.0) + Sq(x[2]);
  });
  add({14, 1, 1, {2, 2}, {}, {}, 9.0 - 2.875 * std::sqrt(7.0)}, [](const Dual* x, Dual* g) {
    g[1] = x[1] - 2.0 * x[2] + 1.0;
    g[2] = -0.25 * Sq(x[1]) - Sq(x[2]) + 1.0;
    return Sq(x[1] - 2.0) + Sq(x[2] - 1.0);
  });
  add({15, 0, 2, {-2, 1}, {}, {0.5, kNone}, 306.5}, [](const Dual* x, Dual* g) {
    g[1] = x[1] * x[2] - 1.0;
    g[2] = x[1] + Sq(x[2]);
    return Rosenbrock(x);
  });
  add({16, 0, 2, {-2, 1}, {-0.5, -kNone}, {0.5, 1}, 0.25}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + Sq(x[2]);
    g[2] = Sq(x[1]) + x[2];
    return Rosenbrock(x);
  });
  add({17, 0, 2, {-2, 1}, {-0.5, -kNone}, {0.5, 1}, 1.0}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[2]) - x[1];
    g[2] = Sq(x[1]) - x[2];
    return Rosenbrock(x);
  });
  add({18, 0, 2, {2, 2}, {2, 0}, {50, 50}, 5.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] * x[2] - 25.0;
    g[2] = Sq(x[1]) + Sq(x[2]) - 25.0;
    return 0.01 * Sq(x[1]) + Sq(x[2]);
  });
  add({19, 0, 2, {20.1, 5.84}, {13, 0}, {100, 100}, -6961.81381}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1] - 5.0) + Sq(x[2] - 5.0) - 100.0;
    g[2] = -Sq(x[2] - 5.0) - Sq(x[1] - 6.0) + 82.81;
    return Cube(x[1] - 10.0) + Cube(x[2] - 20.0);
  });
  add({20, 0, 3, {-2, 1}, {-0.5, -kNone}, {0.5, kNone}, 81.5 - 25.0 * kSqrt3},
      [](const Dual* x, Dual* g) {
        g[1] = x[1] + Sq(x[2]);
        g[2] = Sq(x[1]) + x[2];
        g[3] = Sq(x[1]) + Sq(x[2]) - 1.0;
        return Rosenbrock(x);
      });
  add({21, 0, 1, {-1, -1}, {2, -50}, {50, 50}, -99.96}, [](const Dual* x, Dual* g) {
    g[1] = 10.0 * x[1] - x[2] - 10.0;
    return 0.01 * Sq(x[1]) + Sq(x[2]) - 100.0;
  });
  add({22, 0, 2, {2, 2}, {}, {}, 1.0}, [](const Dual* x, Dual* g) {
    g[1] = -x[1] - x[2] + 2.0;
    g[2] = -Sq(x[1]) + x[2];
    return Sq(x[1] - 2.0) + Sq(x[2] - 1.0);
  });
  add({23, 0, 5, {3, 1}, {-50}, {50}, 2.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + x[2] - 1.0;
    g[2] = Sq(x[1]) + Sq(x[2]) - 1.0;
    g[3] = 9.0 * Sq(x[1]) + Sq(x[2]) - 9.0;
    g[4] = Sq(x[1]) - x[2];
    g[5] = Sq(x[2]) - x[1];
    return Sq(x[1]) + Sq(x[2]);
  });
  add({24, 0, 3, {1, 0.5}, {0}, {}, -1.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] / kSqrt3 - x[2];
    g[2] = x[1] + kSqrt3 * x[2];
    g[3] = -x[1] - kSqrt3 * x[2] + 6.0;
    return (Sq(x[1] - 3.0) - 9.0) * Cube(x[2]) / (27.0 * kSqrt3);
  });
  add({26, 1, 0, {-2.6, 2, 2}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = (1.0 + Sq(x[2])) * x[1] + Fourth(x[3]) - 3.0;
    return Sq(x[1] - x[2]) + Fourth(x[2] - x[3]);
  });
  add({27, 1, 0, {2, 2, 2}, {}, {}, 0.04}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + Sq(x[3]) + 1.0;
    return 0.01 * Sq(x[1] - 1.0) + Sq(x[2] - Sq(x[1]));
  });
  add({28, 1, 0, {-4, 1, 1}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 2.0 * x[2] + 3.0 * x[3] - 1.0;
    return Sq(x[1] + x[2]) + Sq(x[2] + x[3]);
  });
  add({29, 0, 1, {1, 1, 1}, {}, {}, -16.0 * kSqrt2}, [](const Dual* x, Dual* g) {
    g[1] = -Sq(x[1]) - 2.0 * Sq(x[2]) - 4.0 * Sq(x[3]) + 48.0;
    return -x[1] * x[2] * x[3];
  });
  add({30, 0, 1, {1, 1, 1}, {1, -10, -10}, {10}, 1.0}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) + Sq(x[2]) - 1.0;
    return Sq(x[1]) + Sq(x[2]) + Sq(x[3]);
  });
  add({31, 0, 1, {1, 1, 1}, {-10, 1, -10}, {10, 10, 1}, 6.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] * x[2] - 1.0;
    return 9.0 * Sq(x[1]) + Sq(x[2]) + 9.0 * Sq(x[3]);
  });
  add({32, 1, 1, {0.1, 0.7, 0.2}, {0}, {}, 1.0}, [](const Dual* x, Dual* g) {
    g[1] = 1.0 - x[1] - x[2] - x[3];
    g[2] = 6.0 * x[2] + 4.0 * x[3] - Cube(x[1]) - 3.0;
    return Sq(x[1] + 3.0 * x[2] + x[3]) + 4.0 * Sq(x[1] - x[2]);
  });
  add({33, 0, 2, {0, 0, 3}, {0}, {kNone, kNone, 5}, kSqrt2 - 6.0}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[3]) - Sq(x[2]) - Sq(x[1]);
    g[2] = Sq(x[1]) + Sq(x[2]) + Sq(x[3]) - 4.0;
    return (x[1] - 1.0) * (x[1] - 2.0) * (x[1] - 3.0) + x[3];
  });
  add({34, 0, 2, {0, 1.05, 2.9}, {0}, {100, 100, 10}, -std::log(std::log(10.0))},
      [](const Dual* x, Dual* g) {
        g[1] = x[2] - exp(x[1]);
        g[2] = x[3] - exp(x[2]);
        return -x[1];
      });
  add({35, 0, 1, {0.5, 0.5, 0.5}, {0}, {}, 1.0 / 9.0}, [](const Dual* x, Dual* g) {
    g[1] = 3.0 - x[1] - x[2] - 2.0 * x[3];
    return 9.0 - 8.0 * x[1] - 6.0 * x[2] - 4.0 * x[3] + 2.0 * Sq(x[1]) + 2.0 * Sq(x[2]) + Sq(x[3]) +
           2.0 * x[1] * x[2] + 2.0 * x[1] * x[3];
  });
  add({36, 0, 1, {10, 10, 10}, {0}, {20, 11, 42}, -3300.0}, [](const Dual* x, Dual* g) {
    g[1] = 72.0 - x[1] - 2.0 * x[2] - 2.0 * x[3];
    return -x[1] * x[2] * x[3];
  });
  add({37, 0, 2, {10, 10, 10}, {0}, {42}, -3456.0}, [](const Dual* x, Dual* g) {
    g[1] = 72.0 - x[1] - 2.0 * x[2] - 2.0 * x[3];
    g[2] = x[1] + 2.0 * x[2] + 2.0 * x[3];
    return -x[1] * x[2] * x[3];
  });
  add({38, 0, 0, {-3, -1, -3, -1}, {-10}, {10}, 0.0}, [](const Dual* x, Dual*) {
    return Rosenbrock(x) + 90.0 * Sq(x[4] - Sq(x[3])) + Sq(1.0 - x[3]) +
           10.1 * (Sq(x[2] - 1.0) + Sq(x[4] - 1.0)) + 19.8 * (x[2] - 1.0) * (x[4] - 1.0);
  });
  add({39, 2, 0, {2, 2, 2, 2}, {}, {}, -1.0}, [](const Dual* x, Dual* g) {
    g[1] = x[2] - Cube(x[1]) - Sq(x[3]);
    g[2] = Sq(x[1]) - x[2] - Sq(x[4]);
    return -x[1];
  });
  add({40, 3, 0, {0.8, 0.8, 0.8, 0.8}, {}, {}, -0.25}, [](const Dual* x, Dual* g) {
    g[1] = Cube(x[1]) + Sq(x[2]) - 1.0;
    g[2] = Sq(x[1]) * x[4] - x[3];
    g[3] = Sq(x[4]) - x[2];
    return -x[1] * x[2] * x[3] * x[4];
  });
  add({41, 1, 0, {2, 2, 2, 2}, {0}, {1, 1, 1, 2}, 52.0 / 27.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 2.0 * x[2] + 2.0 * x[3] - x[4];
    return 2.0 - x[1] * x[2] * x[3];
  });
  add({42, 2, 0, {1, 1, 1, 1}, {}, {}, 28.0 - 10.0 * kSqrt2}, [](const Dual* x, Dual* g) {
    g[1] = x[1] - 2.0;
    g[2] = Sq(x[3]) + Sq(x[4]) - 2.0;
    return Sq(x[1] - 1.0) + Sq(x[2] - 2.0) + Sq(x[3] - 3.0) + Sq(x[4] - 4.0);
  });
  add({43, 0, 3, {0, 0, 0, 0}, {}, {}, -44.0}, [](const Dual* x, Dual* g) {
    g[1] = 8.0 - Sq(x[1]) - Sq(x[2]) - Sq(x[3]) - Sq(x[4]) - x[1] + x[2] - x[3] + x[4];
    g[2] = 10.0 - Sq(x[1]) - 2.0 * Sq(x[2]) - Sq(x[3]) - 2.0 * Sq(x[4]) + x[1] + x[4];
    g[3] = 5.0 - 2.0 * Sq(x[1]) - Sq(x[2]) - Sq(x[3]) - 2.0 * x[1] + x[2] + x[4];
    return Sq(x[1]) + Sq(x[2]) + 2.0 * Sq(x[3]) + Sq(x[4]) - 5.0 * x[1] - 5.0 * x[2] - 21.0 * x[3] +
           7.0 * x[4];
  });
  add({44, 0, 6, {0, 0, 0, 0}, {0}, {}, -15.0}, [](const Dual* x, Dual* g) {
    g[1] = 8.0 - x[1] - 2.0 * x[2];
    g[2] = 12.0 - 4.0 * x[1] - x[2];
    g[3] = 12.0 - 3.0 * x[1] - 4.0 * x[2];
    g[4] = 8.0 - 2.0 * x[3] - x[4];
    g[5] = 8.0 - x[3] - 2.0 * x[4];
    g[6] = 5.0 - x[3] - x[4];
    return x[1] - x[2] - x[3] - x[1] * x[3] + x[1] * x[4] + x[2] * x[3] - x[2] * x[4];
  });
  add({45, 0, 0, {2, 2, 2, 2, 2}, {0}, {1, 2, 3, 4, 5}, 1.0},
      [](const Dual* x, Dual*) { return 2.0 - x[1] * x[2] * x[3] * x[4] * x[5] / 120.0; });
  add({46, 2, 0, {kSqrt2 / 2.0, 1.75, 0.5, 2, 2}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) * x[4] + sin(x[4] - x[5]) - 1.0;
    g[2] = x[2] + Fourth(x[3]) * Sq(x[4]) - 2.0;
    return Sq(x[1] - x[2]) + Sq(x[3] - 1.0) + Fourth(x[4] - 1.0) + Sq(Cube(x[5] - 1.0));
  });
  add({48, 2, 0, {3, 5, -3, 2, -2}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + x[2] + x[3] + x[4] + x[5] - 5.0;
    g[2] = x[3] - 2.0 * (x[4] + x[5]) + 3.0;
    return Sq(x[1] - 1.0) + Sq(x[2] - x[3]) + Sq(x[4] - x[5]);
  });
  add({49, 2, 0, {10, 7, 2, -3, 0.8}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + x[2] + x[3] + 4.0 * x[4] - 7.0;
    g[2] = x[3] + 5.0 * x[5] - 6.0;
    return Sq(x[1] - x[2]) + Sq(x[3] - 1.0) + Fourth(x[4] - 1.0) + Sq(Cube(x[5] - 1.0));
  });
  add({50, 3, 0, {35, -31, 11, 5, -5}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 2.0 * x[2] + 3.0 * x[3] - 6.0;
    g[2] = x[2] + 2.0 * x[3] + 3.0 * x[4] - 6.0;
    g[3] = x[3] + 2.0 * x[4] + 3.0 * x[5] - 6.0;
    return Sq(x[1] - x[2]) + Sq(x[2] - x[3]) + Fourth(x[3] - x[4]) + Sq(x[4] - x[5]);
  });
  add({51, 3, 0, {2.5, 0.5, 2, -1, 0.5}, {}, {}, 0.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 3.0 * x[2] - 4.0;
    g[2] = x[3] + x[4] - 2.0 * x[5];
    g[3] = x[2] - x[5];
    return Sq(x[1] - x[2]) + Sq(x[2] + x[3] - 2.0) + Sq(x[4] - 1.0) + Sq(x[5] - 1.0);
  });
  add({52, 3, 0, {2, 2, 2, 2, 2}, {}, {}, 1859.0 / 349.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 3.0 * x[2];
    g[2] = x[3] + x[4] - 2.0 * x[5];
    g[3] = x[2] - x[5];
    return Sq(4.0 * x[1] - x[2]) + Sq(x[2] + x[3] - 2.0) + Sq(x[4] - 1.0) + Sq(x[5] - 1.0);
  });
  add({53, 3, 0, {2, 2, 2, 2, 2}, {-10}, {10}, 176.0 / 43.0}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + 3.0 * x[2];
    g[2] = x[3] + x[4] - 2.0 * x[5];
    g[3] = x[2] - x[5];
    return Sq(x[1] - x[2]) + Sq(x[2] + x[3] - 2.0) + Sq(x[4] - 1.0) + Sq(x[5] - 1.0);
  });
  add({55, 6, 0, {1, 2, 0, 0, 0, 2}, {0}, {1, kNone, kNone, 1, kNone, kNone}, 19.0 / 3.0},
      [](const Dual* x, Dual* g) {
        g[1] = x[1] + 2.0 * x[2] + 5.0 * x[5] - 6.0;
        g[2] = x[1] + x[2] + x[3] - 3.0;
        g[3] = x[4] + x[5] + x[6] - 2.0;
        g[4] = x[1] + x[4] - 1.0;
        g[5] = x[2] + x[5] - 2.0;
        g[6] = x[3] + x[6] - 2.0;
        return x[1] + 2.0 * x[2] + 4.0 * x[5] + exp(x[1] * x[4]);
      });
  add({56, 4, 0, {1, 1, 1, a56, a56, a56, b56}, {}, {}, -3.456}, [](const Dual* x, Dual* g) {
    g[1] = x[1] - 4.2 * Sq(sin(x[4]));
    g[2] = x[2] - 4.2 * Sq(sin(x[5]));
    g[3] = x[3] - 4.2 * Sq(sin(x[6]));
    g[4] = x[1] + 2.0 * x[2] + 2.0 * x[3] - 7.2 * Sq(sin(x[7]));
    return -x[1] * x[2] * x[3];
  });
  add({60, 1, 0, {2, 2, 2}, {-10}, {10}, 0.03256820025}, [](const Dual* x, Dual* g) {
    g[1] = x[1] * (1.0 + Sq(x[2])) + Fourth(x[3]) - 4.0 - 3.0 * kSqrt2;
    return Sq(x[1] - 1.0) + Sq(x[1] - x[2]) + Fourth(x[2] - x[3]);
  });
  add({61, 2, 0, {0, 0, 0}, {}, {}, -143.6461422}, [](const Dual* x, Dual* g) {
    g[1] = 3.0 * x[1] - 2.0 * Sq(x[2]) - 7.0;
    g[2] = 4.0 * x[1] - Sq(x[3]) - 11.0;
    return 4.0 * Sq(x[1]) + 2.0 * Sq(x[2]) + 2.0 * Sq(x[3]) - 33.0 * x[1] + 16.0 * x[2] -
           24.0 * x[3];
  });
  add({62, 1, 0, {0.7, 0.2, 0.1}, {0}, {1}, -26272.51448}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + x[2] + x[3] - 1.0;
    return -32.174 *
           (255.0 * log((x[1] + x[2] + x[3] + 0.03) / (0.09 * x[1] + x[2] + x[3] + 0.03)) +
            280.0 * log((x[2] + x[3] + 0.03) / (0.07 * x[2] + x[3] + 0.03)) +
            290.0 * log((x[3] + 0.03) / (0.13 * x[3] + 0.03)));
  });
  add({63, 2, 0, {2, 2, 2}, {0}, {}, 961.7151721}, [](const Dual* x, Dual* g) {
    g[1] = 8.0 * x[1] + 14.0 * x[2] + 7.0 * x[3] - 56.0;
    g[2] = Sq(x[1]) + Sq(x[2]) + Sq(x[3]) - 25.0;
    return 1000.0 - Sq(x[1]) - 2.0 * Sq(x[2]) - Sq(x[3]) - x[1] * x[2] - x[1] * x[3];
  });
  add({64, 0, 1, {1, 1, 1}, {1e-5}, {}, 6299.842428}, [](const Dual* x, Dual* g) {
    g[1] = 1.0 - 4.0 / x[1] - 32.0 / x[2] - 120.0 / x[3];
    return 5.0 * x[1] + 50000.0 / x[1] + 20.0 * x[2] + 72000.0 / x[2] + 10.0 * x[3] +
           144000.0 / x[3];
  });
  add({65, 0, 1, {-5, 5, 0}, {-4.5, -4.5, -5}, {4.5, 4.5, 5}, 0.9535288567},
      [](const Dual* x, Dual* g) {
        g[1] = 48.0 - Sq(x[1]) - Sq(x[2]) - Sq(x[3]);
        return Sq(x[1] - x[2]) + Sq(x[1] + x[2] - 10.0) / 9.0 + Sq(x[3] - 5.0);
      });
  add({66, 0, 2, {0, 1.05, 2.9}, {0}, {100, 100, 10}, 0.5181632741}, [](const Dual* x, Dual* g) {
    g[1] = x[2] - exp(x[1]);
    g[2] = x[3] - exp(x[2]);
    return 0.2 * x[3] - 0.8 * x[1];
  });
  add({71, 1, 1, {1, 5, 5, 1}, {1}, {5}, 17.0140173}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) + Sq(x[2]) + Sq(x[3]) + Sq(x[4]) - 40.0;
    g[2] = x[1] * x[2] * x[3] * x[4] - 25.0;
    return x[1] * x[4] * (x[1] + x[2] + x[3]) + x[3];
  });
  add({72, 0, 2, {1, 1, 1, 1}, {0.001}, {4e5, 3e5, 2e5, 1e5}, 727.67937},
      [](const Dual* x, Dual* g) {
        g[1] = 0.0401 - 4.0 / x[1] - 2.25 / x[2] - 1.0 / x[3] - 0.25 / x[4];
        g[2] = 0.010085 - 0.16 / x[1] - 0.36 / x[2] - 0.64 / x[3] - 0.64 / x[4];
        return 1.0 + x[1] + x[2] + x[3] + x[4];
      });
  add({73, 1, 2, {1, 1, 1, 1}, {0}, {}, 29.894378}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + x[2] + x[3] + x[4] - 1.0;
    g[2] = 2.3 * x[1] + 5.6 * x[2] + 11.1 * x[3] + 1.3 * x[4] - 5.0;
    g[3] = 12.0 * x[1] + 11.9 * x[2] + 41.8 * x[3] + 52.1 * x[4] - 21.0 -
           1.645 * sqrt(0.28 * Sq(x[1]) + 0.19 * Sq(x[2]) + 20.5 * Sq(x[3]) + 0.62 * Sq(x[4]));
    return 24.55 * x[1] + 26.75 * x[2] + 39.0 * x[3] + 40.5 * x[4];
  });
  add({74, 3, 2, {0, 0, 0, 0}, {0, 0, -0.55, -0.55}, {1200, 1200, 0.55, 0.55}, 5126.4981},
      [](const Dual* x, Dual* g) { return Network(x, g, 0.55); });
  add({75, 3, 2, {0, 0, 0, 0}, {0, 0, -0.48, -0.48}, {1200, 1200, 0.48, 0.48}, 5174.4129},
      [](const Dual* x, Dual* g) { return Network(x, g, 0.48); });
  add({76, 0, 3, {0.5, 0.5, 0.5, 0.5}, {0}, {}, -4.681818181}, [](const Dual* x, Dual* g) {
    g[1] = 5.0 - x[1] - 2.0 * x[2] - x[3] - x[4];
    g[2] = 4.0 - 3.0 * x[1] - x[2] - 2.0 * x[3] + x[4];
    g[3] = x[2] + 4.0 * x[3] - 1.5;
    return Sq(x[1]) + 0.5 * Sq(x[2]) + Sq(x[3]) + 0.5 * Sq(x[4]) - x[1] * x[3] + x[3] * x[4] -
           x[1] - 3.0 * x[2] + x[3] - x[4];
  });
  add({77, 2, 0, {2, 2, 2, 2, 2}, {}, {}, 0.24150513}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) * x[4] + sin(x[4] - x[5]) - 2.0 * kSqrt2;
    g[2] = x[2] + Fourth(x[3]) * Sq(x[4]) - 8.0 - kSqrt2;
    return Sq(x[1] - 1.0) + Sq(x[1] - x[2]) + Sq(x[3] - 1.0) + Fourth(x[4] - 1.0) +
           Sq(Cube(x[5] - 1.0));
  });
  add({78, 3, 0, {-2, 1.5, 2, -1, -1}, {}, {}, -2.91970041}, [](const Dual* x, Dual* g) {
    PowellConstraints(x, g);
    return x[1] * x[2] * x[3] * x[4] * x[5];
  });
  add({79, 3, 0, {2, 2, 2, 2, 2}, {}, {}, 0.0787768209}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + Sq(x[2]) + Cube(x[3]) - 2.0 - 3.0 * kSqrt2;
    g[2] = x[2] - Sq(x[3]) + x[4] + 2.0 - 2.0 * kSqrt2;
    g[3] = x[1] * x[5] - 2.0;
    return Sq(x[1] - 1.0) + Sq(x[1] - x[2]) + Sq(x[2] - x[3]) + Fourth(x[3] - x[4]) +
           Fourth(x[4] - x[5]);
  });
  add({80,
       3,
       0,
       {-2, 2, 2, -1, -1},
       {-2.3, -2.3, -3.2, -3.2, -3.2},
       {2.3, 2.3, 3.2, 3.2, 3.2},
       0.0539498478},
      [](const Dual* x, Dual* g) {
        PowellConstraints(x, g);
        return exp(x[1] * x[2] * x[3] * x[4] * x[5]);
      });
  add({81,
       3,
       0,
       {-2, 2, 2, -1, -1},
       {-2.3, -2.3, -3.2, -3.2, -3.2},
       {2.3, 2.3, 3.2, 3.2, 3.2},
       0.0539498478},
      [](const Dual* x, Dual* g) {
        PowellConstraints(x, g);
        return exp(x[1] * x[2] * x[3] * x[4] * x[5]) - 0.5 * Sq(Cube(x[1]) + Cube(x[2]) + 1.0);
      });
  add({83, 0, 6, {78, 33, 27, 27, 27}, {78, 33, 27, 27, 27}, {102, 45, 45, 45, 45}, -30665.53867},
      [](const Dual* x, Dual* g) {
        const Dual first =
            85.334407 + 0.0056858 * x[2] * x[5] + 0.0006262 * x[1] * x[4] - 0.0022053 * x[3] * x[5];
        const Dual second = 80.51249 + 0.0071317 * x[2] * x[5] + 0.0029955 * x[1] * x[2] +
                            0.0021813 * Sq(x[3]) - 90.0;
        const Dual third = 9.300961 + 0.0047026 * x[3] * x[5] + 0.0012547 * x[1] * x[3] +
                           0.0019085 * x[3] * x[4] - 20.0;
        g[1] = first;
        g[2] = second;
        g[3] = third;
        g[4] = 92.0 - first;
        g[5] = 20.0 - second;
        g[6] = 5.0 - third;
        return 5.3578547 * Sq(x[3]) + 0.8356891 * x[1] * x[5] + 37.293239 * x[1] - 40792.141;
      });
  add({86, 0, 10, {0, 0, 0, 0, 1}, {0}, {}, -32.34867897}, Colville1);
  add({93, 0, 2, {5.54, 4.4, 12.02, 11.82, 0.702, 0.852}, {0}, {}, 135.075961},
      [](const Dual* x, Dual* g) {
        const Dual p = x[1] * x[4] * (x[1] + x[2] + x[3]);
        const Dual q = x[2] * x[3] * (x[1] + 1.57 * x[2] + x[4]);
        g[1] = 0.001 * x[1] * x[2] * x[3] * x[4] * x[5] * x[6] - 2.07;
        g[2] = 1.0 - 0.00062 * p * Sq(x[5]) - 0.00058 * q * Sq(x[6]);
        return 0.0204 * p + 0.0187 * q + 0.0607 * p * Sq(x[5]) + 0.0437 * q * Sq(x[6]);
      });
  add({95, 0, 4, {0, 0, 0, 0, 0, 0}, {0}, {0.31, 0.046, 0.068, 0.042, 0.028, 0.0134}, 0.015619514},
      [](const Dual* x, Dual* g) { return Mixture(x, g, 4.97, -1.88, -29.08, -78.02); });
  add({96, 0, 4, {0, 0, 0, 0, 0, 0}, {0}, {0.31, 0.046, 0.068, 0.042, 0.028, 0.0134}, 0.015619514},
      [](const Dual* x, Dual* g) { return Mixture(x, g, 4.97, -1.88, -69.08, -118.02); });
  add({100, 0, 4, {1, 2, 0, 4, 0, 1, 1}, {}, {}, 680.6300573}, [](const Dual* x, Dual* g) {
    g[1] = 127.0 - 2.0 * Sq(x[1]) - 3.0 * Fourth(x[2]) - x[3] - 4.0 * Sq(x[4]) - 5.0 * x[5];
    g[2] = 282.0 - 7.0 * x[1] - 3.0 * x[2] - 10.0 * Sq(x[3]) - x[4] + x[5];
    g[3] = 196.0 - 23.0 * x[1] - Sq(x[2]) - 6.0 * Sq(x[6]) + 8.0 * x[7];
    g[4] =
        -4.0 * Sq(x[1]) - Sq(x[2]) + 3.0 * x[1] * x[2] - 2.0 * Sq(x[3]) - 5.0 * x[6] + 11.0 * x[7];
    return Sq(x[1] - 10.0) + 5.0 * Sq(x[2] - 12.0) + Fourth(x[3]) + 3.0 * Sq(x[4] - 11.0) +
           10.0 * Sq(Cube(x[5])) + 7.0 * Sq(x[6]) + Fourth(x[7]) - 4.0 * x[6] * x[7] - 10.0 * x[6] -
           8.0 * x[7];
  });
  add({104, 0, 6, {6, 3, 0.4, 0.2, 6, 6, 1, 0.5}, {0.1}, {10}, 3.9511634396}, [](const Dual* x,
                                                                                 Dual* g) {
    const Dual f = 0.4 * pow(x[1], 0.67) * pow(x[7], -0.67) +
                   0.4 * pow(x[2], 0.67) * pow(x[8], -0.67) + 10.0 - x[1] - x[2];
    g[1] = 1.0 - 0.0588 * x[5] * x[7] - 0.1 * x[1];
    g[2] = 1.0 - 0.0588 * x[6] * x[8] - 0.1 * x[1] - 0.1 * x[2];
    g[3] =
        1.0 - 4.0 * x[3] / x[5] - 2.0 * pow(x[3], -0.71) / x[5] - 0.0588 * pow(x[3], -1.3) * x[7];
    g[4] =
        1.0 - 4.0 * x[4] / x[6] - 2.0 * pow(x[4], -0.71) / x[6] - 0.0588 * pow(x[4], -1.3) * x[8];
    g[5] = f - 1.0;
    g[6] = 4.2 - f;
    return f;
  });
  add({110, 0, 0, {9, 9, 9, 9, 9, 9, 9, 9, 9, 9}, {2.001}, {9.999}, -45.77846971},
      [](const Dual* x, Dual*) {
        Dual sum = 0.0, product = 1.0;
        for (int i = 1; i <= 10; ++i) {
          sum += Sq(log(x[i] - 2.0)) + Sq(log(10.0 - x[i]));
          product *= x[i];
        }
        return sum - pow(product, 0.2);
      });
  add({111,
       3,
       0,
       {-2.3, -2.3, -2.3, -2.3, -2.3, -2.3, -2.3, -2.3, -2.3, -2.3},
       {-100},
       {100},
       -47.76109026},
      [](const Dual* x, Dual* g) {
        Dual amounts[11];
        for (int i = 1; i <= 10; ++i) amounts[i] = exp(x[i]);
        return Equilibrium(amounts, g);
      });
  add({112, 3, 0, {0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1}, {1e-6}, {}, -47.76109026},
      Equilibrium);
  add({113, 0, 8, {2, 3, 5, 5, 1, 2, 7, 3, 6, 10}, {}, {}, 24.3062091}, [](const Dual* x, Dual* g) {
    g[1] = 105.0 - 4.0 * x[1] - 5.0 * x[2] + 3.0 * x[7] - 9.0 * x[8];
    g[2] = -10.0 * x[1] + 8.0 * x[2] + 17.0 * x[7] - 2.0 * x[8];
    g[3] = 8.0 * x[1] - 2.0 * x[2] - 5.0 * x[9] + 2.0 * x[10] + 12.0;
    g[4] = -3.0 * Sq(x[1] - 2.0) - 4.0 * Sq(x[2] - 3.0) - 2.0 * Sq(x[3]) + 7.0 * x[4] + 120.0;
    g[5] = -5.0 * Sq(x[1]) - 8.0 * x[2] - Sq(x[3] - 6.0) + 2.0 * x[4] + 40.0;
    g[6] = -0.5 * Sq(x[1] - 8.0) - 2.0 * Sq(x[2] - 4.0) - 3.0 * Sq(x[5]) + x[6] + 30.0;
    g[7] = -Sq(x[1]) - 2.0 * Sq(x[2] - 2.0) + 2.0 * x[1] * x[2] - 14.0 * x[5] + 6.0 * x[6];
    g[8] = 3.0 * x[1] - 6.0 * x[2] - 12.0 * Sq(x[9] - 8.0) + 7.0 * x[10];
    return Sq(x[1]) + Sq(x[2]) + x[1] * x[2] - 14.0 * x[1] - 16.0 * x[2] + Sq(x[3] - 10.0) +
           4.0 * Sq(x[4] - 5.0) + Sq(x[5] - 3.0) + 2.0 * Sq(x[6] - 1.0) + 5.0 * Sq(x[7]) +
           7.0 * Sq(x[8] - 11.0) + 2.0 * Sq(x[9] - 10.0) + Sq(x[10] - 7.0) + 45.0;
  });
  return problems;
}

std::vector<CollectedProblem> Choose() {
  constexpr int kNumbers[] = {2, 5, 7, 12, 13, 14, 35, 38, 43, 63, 64, 71, 76, 79, 100};
  std::vector<CollectedProblem> chosen;
  for (const CollectedProblem& problem : HockSchittkowski())
    if (std::count(std::begin(kNumbers), std::end(kNumbers), problem.number) > 0)
      chosen.push_back(problem);
  return chosen;
}

}  // namespace

const std::vector<CollectedProblem>& HockSchittkowski() {
  static const std::vector<CollectedProblem> problems = Collect();
  return problems;
}

const std::vector<CollectedProblem>& ChosenHockSchittkowski() {
  static const std::vector<CollectedProblem> problems = Choose();
  return problems;
}

}  // namespace literature
