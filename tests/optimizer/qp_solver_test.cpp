#include "optimizer/qp_solver.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <random>

using corvath::algorithm::optimizer::QL;

namespace {

struct Program {
  Program(int n, int m, int me)
      : num_equalities(me),
        c(Eigen::MatrixXd::Identity(n, n)),
        d(Eigen::VectorXd::Zero(n)),
        a(Eigen::MatrixXd::Zero(std::max(m, 1), n)),
        b(Eigen::VectorXd::Zero(m)),
        lower(Eigen::VectorXd::Constant(n, -1e300)),
        upper(Eigen::VectorXd::Constant(n, 1e300)) {}
  int num_equalities;
  Eigen::MatrixXd c;
  Eigen::VectorXd d;
  Eigen::MatrixXd a;
  Eigen::VectorXd b, lower, upper;
};

struct Solution {
  int ifail = -1;
  Eigen::VectorXd x, u;
  Eigen::MatrixXd c;  ///< what C holds afterwards
};

Solution Solve(const Program& p, int mode = 1, int lwar_missing = 0) {
  const int n = static_cast<int>(p.d.size()), m = static_cast<int>(p.b.size());
  const int mmax = static_cast<int>(p.a.rows());
  Solution s;
  s.x = Eigen::VectorXd::Constant(n, 99.0);
  s.u = Eigen::VectorXd::Constant(m + 2 * n, 99.0);
  s.c = p.c;
  std::vector<double> war(static_cast<std::size_t>(m + 3 * n * n / 2 + 11 * n + 1 + mmax), 0.0);
  std::vector<int> iwar(static_cast<std::size_t>(n));
  QL(m, p.num_equalities, mmax, n, n, m + 2 * n, s.c.data(), p.d.data(), p.a.data(), p.b.data(),
     p.lower.data(), p.upper.data(), s.x.data(), s.u.data(), 1e-11, mode, 1, s.ifail, 0, war.data(),
     m + 3 * n * n / 2 + 10 * n + 1 + mmax - lwar_missing, iwar.data(), n);
  return s;
}

/// Largest residual of the optimality conditions, relative to the size of the terms.
double OptimalityError(const Program& p, const Solution& s) {
  const Eigen::Index n = p.d.size(), m = p.b.size();
  const Eigen::VectorXd u = s.u.head(m), lower = s.u.segment(m, n), upper = s.u.tail(n);
  const Eigen::MatrixXd a = p.a.topRows(m);
  const Eigen::VectorXd g = a * s.x + p.b;
  const double size = std::max({1.0, s.u.lpNorm<Eigen::Infinity>(), p.d.lpNorm<Eigen::Infinity>()});
  double error =
      (p.c * s.x + p.d - a.transpose() * u - lower + upper).lpNorm<Eigen::Infinity>() / size;
  for (Eigen::Index j = 0; j < m; ++j) {
    const bool equality = j < p.num_equalities;
    error = std::max(error, equality ? std::abs(g(j)) : std::max(-g(j), -u(j)));
    if (!equality) error = std::max(error, std::abs(u(j) * g(j)) / size);
  }
  for (Eigen::Index i = 0; i < n; ++i) {
    const double above = s.x(i) - p.lower(i), below = p.upper(i) - s.x(i);
    error = std::max({error, -above, -below, -lower(i), -upper(i)});
    if (lower(i) != 0.0) error = std::max(error, lower(i) * above / size);
    if (upper(i) != 0.0) error = std::max(error, upper(i) * below / size);
  }
  return std::isfinite(error) ? error : 1e300;
}

/// A strictly convex program whose constraints hold at a point within its bounds, some of them
/// with equality: degenerate vertices are frequent.
Program RandomProgram(int n, int m, int me, std::mt19937& generator) {
  std::normal_distribution<double> normal;
  const auto draw = [&](double) { return normal(generator); };
  Program p(n, m, me);
  const Eigen::MatrixXd root = Eigen::MatrixXd::Zero(n, n).unaryExpr(draw);
  p.c = root * root.transpose() + 0.1 * Eigen::MatrixXd::Identity(n, n);
  p.d = 10.0 * Eigen::VectorXd::Zero(n).unaryExpr(draw);
  p.a = Eigen::MatrixXd::Zero(std::max(m, 1), n).unaryExpr(draw);
  const Eigen::VectorXd inside = Eigen::VectorXd::Zero(n).unaryExpr(draw);
  for (int j = 0; j < m; ++j) {
    const double slack = j < me || j % 3 == 0 ? 0.0 : std::abs(normal(generator));
    p.b(j) = slack - p.a.row(j).dot(inside);
  }
  for (int i = 0; i < n; ++i) {
    if (i % 2 == 0) p.lower(i) = inside(i) - (i % 4 == 0 ? 0.0 : 1.0);
    if (i % 3 == 0) p.upper(i) = inside(i) + 0.5;
  }
  return p;
}

TEST(QL, MeetsTheOptimalityConditionsOfRandomPrograms) {
  std::mt19937 generator(7);
  for (int n = 2; n <= 60; n += n < 12 ? 1 : 6)
    for (const int m : {0, n / 2, n, 2 * n})
      for (const int me : {0, std::min(m, n / 3)}) {
        const Program p = RandomProgram(n, m, me, generator);
        const Solution s = Solve(p);
        EXPECT_EQ(s.ifail, 0) << n << " variables, " << m << " rows, " << me << " equalities";
        EXPECT_LT(OptimalityError(p, s), 1e-9) << n << ' ' << m << ' ' << me;
      }
}

TEST(QL, TakesRowsThatRepeatScaleOrOppose) {
  std::mt19937 generator(11);
  for (int n = 4; n <= 20; ++n) {
    Program p = RandomProgram(n, 2 * n, 2, generator);
    p.a.row(1) = -3.0 * p.a.row(0);  // the same equality once more
    p.b(1) = -3.0 * p.b(0);
    for (int j = 2; j + 1 < 2 * n; j += 4) {
      p.a.row(j + 1) = 1e4 * p.a.row(j);
      p.b(j + 1) = 1e4 * p.b(j);
    }
    p.a.row(2 * n - 1) = -p.a.row(6);  // with its opposite an equality
    p.b(2 * n - 1) = -p.b(6);
    const Solution s = Solve(p);
    EXPECT_EQ(s.ifail, 0) << n;
    // The rows of 1e4 carry their own rounding.
    EXPECT_LT(OptimalityError(p, s), 1e-7) << n;
  }
}

TEST(QL, NamesTheConstraintThatIsNotConsistent) {
  // x1 + x2 = 1, and in turn: the same with another constant; an opposite inequality out of reach;
  // bounds that exclude it; rows of zeros with constants that no x satisfies.
  Program equal(2, 2, 2);
  equal.a << 1, 1, 1, 1;
  equal.b << -1, -2;
  const int answer = Solve(equal).ifail;
  EXPECT_TRUE(answer == 101 || answer == 102) << answer;

  Program opposite(2, 2, 1);
  opposite.a << 1, 1, -1, -1;
  opposite.b << -1, 0.5;
  EXPECT_EQ(Solve(opposite).ifail, 102);

  Program bounded(2, 1, 1);
  bounded.a << 1, 1;
  bounded.b << -1;
  bounded.upper << 0.25, 0.5;
  EXPECT_GT(Solve(bounded).ifail, 100);

  Program crossed(2, 0, 0);
  crossed.lower << 1, 0;
  crossed.upper << 0, 1;
  EXPECT_GT(Solve(crossed).ifail, 100);

  Program zero(2, 2, 1);
  zero.b << 0, -1e-300;
  EXPECT_EQ(Solve(zero).ifail, 102);
  zero.b << 1e-300, 0;
  EXPECT_EQ(Solve(zero).ifail, 101);
  zero.b << 0, 5;
  EXPECT_EQ(Solve(zero).ifail, 0);
}

TEST(QL, EnlargesAMatrixThatIsNotPositiveDefinite) {
  // Within bounds an indefinite C still yields a point of the bounds and multipliers that belong to
  // some enlarged matrix C + t I; t follows from the free variables.
  for (const double lowest : {0.0, -1.0, -1e6}) {
    Program p(2, 0, 0);
    p.c << lowest, 0.0, 0.0, 4.0;
    p.d << -1.0, -4.0;
    p.lower << -1, -1;
    p.upper << 1, 3;
    const Solution s = Solve(p);
    EXPECT_EQ(s.ifail, 0);
    const double t = 4.0 / s.x(1) - 4.0;
    EXPECT_GE(t, -lowest);
    EXPECT_LE(t, 4.0 * std::max(1.0, -lowest));
    EXPECT_NEAR((lowest + t) * s.x(0) - 1.0 + s.u(2), 0.0, 1e-9);
  }
}

TEST(QL, KeepsTheLowerTriangleAndTakesAFactorBack) {
  std::mt19937 generator(3);
  Program p = RandomProgram(9, 6, 2, generator);
  const Solution first = Solve(p);
  for (int k = 0; k < 9; ++k)
    for (int i = k + 1; i < 9; ++i) EXPECT_EQ(first.c(i, k), p.c(i, k));
  const Eigen::MatrixXd r = first.c.triangularView<Eigen::Upper>();
  EXPECT_LT((r.transpose() * r - p.c).norm(), 1e-12 * p.c.norm());
  Program factored = p;
  factored.c = first.c;
  const Solution second = Solve(factored, /*mode=*/0);
  EXPECT_EQ(second.ifail, 0);
  EXPECT_EQ(second.x, first.x);
}

TEST(QL, RefusesShortArraysAndNumbersThatAreNotFinite) {
  Program p(3, 1, 0);
  EXPECT_EQ(Solve(p).ifail, 0);
  EXPECT_EQ(Solve(p, 1, /*lwar_missing=*/1).ifail, 5);
  for (double* const number : {&p.c(1, 1), &p.c(2, 0), &p.d(1)}) {
    const double before = *number;
    *number = std::nan("");
    EXPECT_EQ(Solve(p).ifail, 3);
    *number = before;
  }
  p.a << 1, 1, 1;
  p.b << -std::numeric_limits<double>::infinity();
  EXPECT_NE(Solve(p).ifail, 0);
}

}  // namespace
