#include "optimizer/hock_schittkowski.h"

#include "foundation/constants.h"

namespace support {

namespace {

std::vector<CollectedProblem> Collect() {
  using corvath::math::kPi;
  static const double kSqrt2 = std::sqrt(2.0), kSqrt3 = std::sqrt(3.0);
  std::vector<CollectedProblem> problems;
  const auto add = [&](CollectedProblem problem, CollectedProblem::Evaluate evaluate) {
    problem.evaluate = evaluate;
    problems.push_back(problem);
  };
  add({2, 0, 0, {-2, 1}, {-kNone, 1.5}, {}, 0.0504261879},
      [](const Dual* x, Dual*) { return Rosenbrock(x); });
  add({5, 0, 0, {0, 0}, {-1.5, -3}, {4, 3}, -kSqrt3 / 2.0 - kPi / 3.0}, [](const Dual* x, Dual*) {
    return sin(x[1] + x[2]) + Sq(x[1] - x[2]) - 1.5 * x[1] + 2.5 * x[2] + 1.0;
  });
  add({7, 1, 0, {2, 2}, {}, {}, -kSqrt3}, [](const Dual* x, Dual* g) {
    g[1] = Sq(1.0 + Sq(x[1])) + Sq(x[2]) - 4.0;
    return log(1.0 + Sq(x[1])) - x[2];
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
  add({35, 0, 1, {0.5, 0.5, 0.5}, {0}, {}, 1.0 / 9.0}, [](const Dual* x, Dual* g) {
    g[1] = 3.0 - x[1] - x[2] - 2.0 * x[3];
    return 9.0 - 8.0 * x[1] - 6.0 * x[2] - 4.0 * x[3] + 2.0 * Sq(x[1]) + 2.0 * Sq(x[2]) + Sq(x[3]) +
           2.0 * x[1] * x[2] + 2.0 * x[1] * x[3];
  });
  add({38, 0, 0, {-3, -1, -3, -1}, {-10}, {10}, 0.0}, [](const Dual* x, Dual*) {
    return Rosenbrock(x) + 90.0 * Sq(x[4] - Sq(x[3])) + Sq(1.0 - x[3]) +
           10.1 * (Sq(x[2] - 1.0) + Sq(x[4] - 1.0)) + 19.8 * (x[2] - 1.0) * (x[4] - 1.0);
  });
  add({43, 0, 3, {0, 0, 0, 0}, {}, {}, -44.0}, [](const Dual* x, Dual* g) {
    g[1] = 8.0 - Sq(x[1]) - Sq(x[2]) - Sq(x[3]) - Sq(x[4]) - x[1] + x[2] - x[3] + x[4];
    g[2] = 10.0 - Sq(x[1]) - 2.0 * Sq(x[2]) - Sq(x[3]) - 2.0 * Sq(x[4]) + x[1] + x[4];
    g[3] = 5.0 - 2.0 * Sq(x[1]) - Sq(x[2]) - Sq(x[3]) - 2.0 * x[1] + x[2] + x[4];
    return Sq(x[1]) + Sq(x[2]) + 2.0 * Sq(x[3]) + Sq(x[4]) - 5.0 * x[1] - 5.0 * x[2] - 21.0 * x[3] +
           7.0 * x[4];
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
  add({71, 1, 1, {1, 5, 5, 1}, {1}, {5}, 17.0140173}, [](const Dual* x, Dual* g) {
    g[1] = Sq(x[1]) + Sq(x[2]) + Sq(x[3]) + Sq(x[4]) - 40.0;
    g[2] = x[1] * x[2] * x[3] * x[4] - 25.0;
    return x[1] * x[4] * (x[1] + x[2] + x[3]) + x[3];
  });
  add({76, 0, 3, {0.5, 0.5, 0.5, 0.5}, {0}, {}, -4.681818181}, [](const Dual* x, Dual* g) {
    g[1] = 5.0 - x[1] - 2.0 * x[2] - x[3] - x[4];
    g[2] = 4.0 - 3.0 * x[1] - x[2] - 2.0 * x[3] + x[4];
    g[3] = x[2] + 4.0 * x[3] - 1.5;
    return Sq(x[1]) + 0.5 * Sq(x[2]) + Sq(x[3]) + 0.5 * Sq(x[4]) - x[1] * x[3] + x[3] * x[4] -
           x[1] - 3.0 * x[2] + x[3] - x[4];
  });
  add({79, 3, 0, {2, 2, 2, 2, 2}, {}, {}, 0.0787768209}, [](const Dual* x, Dual* g) {
    g[1] = x[1] + Sq(x[2]) + Cube(x[3]) - 2.0 - 3.0 * kSqrt2;
    g[2] = x[2] - Sq(x[3]) + x[4] + 2.0 - 2.0 * kSqrt2;
    g[3] = x[1] * x[5] - 2.0;
    return Sq(x[1] - 1.0) + Sq(x[1] - x[2]) + Sq(x[2] - x[3]) + Fourth(x[3] - x[4]) +
           Fourth(x[4] - x[5]);
  });
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
  return problems;
}

}  // namespace

const std::vector<CollectedProblem>& HockSchittkowski() {
  static const std::vector<CollectedProblem> problems = Collect();
  return problems;
}

}  // namespace support
