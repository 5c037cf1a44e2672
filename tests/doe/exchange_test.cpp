// Each exchange beside its definition, evaluated anew for every exchange. The same engine makes the
// same draws, so both must end at the same points.

#include "doe/correlation_exchange.h"
#include "doe/latin_hypercube.h"
#include "doe/space_filling.h"
#include "stochastics/sample_statistics.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace corvath::math;
using Eigen::Index;
using Eigen::MatrixXd;

/// F. J. Hickernell 1998, equation for the squared centered discrepancy, over [0, 1]^d.
double DiscrepancyByDefinition(const MatrixXd& points) {
  const MatrixXd u = 0.5 * (points.array() + 1.0);
  const auto n = static_cast<double>(u.rows());
  double singles = 0.0;
  double pairs = 0.0;
  for (Index i = 0; i < u.rows(); ++i) {
    double product = 1.0;
    for (Index k = 0; k < u.cols(); ++k) {
      const double c = std::abs(u(i, k) - 0.5);
      product *= 1.0 + 0.5 * c - 0.5 * c * c;
    }
    singles += product;
    for (Index j = 0; j < u.rows(); ++j) {
      product = 1.0;
      for (Index k = 0; k < u.cols(); ++k)
        product *= 1.0 + 0.5 * std::abs(u(i, k) - 0.5) + 0.5 * std::abs(u(j, k) - 0.5) -
                   0.5 * std::abs(u(i, k) - u(j, k));
      pairs += product;
    }
  }
  return std::pow(13.0 / 12.0, static_cast<double>(u.cols())) - 2.0 / n * singles + pairs / (n * n);
}

double EnergyByDefinition(const MatrixXd& points) {
  double energy = 0.0;
  for (Index i = 0; i < points.rows(); ++i)
    for (Index j = 0; j < points.rows(); ++j)
      if (i != j) energy += 1.0 / ((points.row(i) - points.row(j)).squaredNorm() + 1e-10);
  return energy;
}

MatrixXd Points(Index n, Index d, std::uint32_t seed = 1) {
  Engine engine(seed);
  return LatinHypercube(engine, n, d, /*midpoints=*/false);
}

TEST(Exchange, DiscrepancyIsThatOfTheDefinition) {
  EXPECT_NEAR(CenteredDiscrepancy(MatrixXd::Zero(1, 1)), 1.0 / 12.0, 1e-15);
  for (const int d : {1, 2, 7, 20}) {
    const MatrixXd points = Points(13, d);
    const double expected = DiscrepancyByDefinition(points);
    EXPECT_NEAR(CenteredDiscrepancy(points), expected, 1e-13 * std::pow(1.25, d));
  }
}

TEST(Exchange, LowersTheDiscrepancyByTheBestOfFiftyDraws) {
  for (const Index d : {2, 3}) {  // in one dimension all exchanges are equal
    const Index n = 11;
    MatrixXd points = Points(n, d);
    Engine engine(7);
    const MatrixXd result = LowerDiscrepancy(engine, points, 1);
    double value = DiscrepancyByDefinition(points);
    for (int step = 1; step <= 100; ++step) {
      const Index column = step % d;
      MatrixXd best = points;
      double lowest = value;
      for (int draw = 0; draw < 50; ++draw) {
        const Index a = DrawInteger(engine, 0, n - 1);
        const Index b = DrawInteger(engine, 0, n - 1);
        if (a == b) continue;
        MatrixXd exchanged = points;
        std::swap(exchanged(a, column), exchanged(b, column));
        const double now = DiscrepancyByDefinition(exchanged);
        if (now < lowest - 1e-14) {  // an equal set of points differs by rounding
          lowest = now;
          best = exchanged;
        }
      }
      DrawUniform(engine, 0.0, 1.0);
      points = best;
      value = lowest;
    }
    EXPECT_EQ(result, points) << d;
  }
}

TEST(Exchange, LowersTheEnergyOfAllPointsAndMovesTheFreeOnes) {
  const Index n = 12;
  const Index d = 3;
  for (const Index fixed : {0, 5}) {
    MatrixXd points = Points(n, d);
    points.row(3) = points.row(9);  // coinciding points repel with 1e10
    Engine engine(7);
    const MatrixXd result = LowerEnergy(engine, points, fixed, 400);
    EXPECT_EQ(result.topRows(fixed), points.topRows(fixed));
    for (int i = 0; i < 400; ++i) {
      const Index column = DrawInteger(engine, 0, d - 1);
      const Index a = DrawInteger(engine, fixed, n - 1);
      const Index b = DrawInteger(engine, fixed, n - 1);
      if (a == b || std::abs(points(a, column) - points(b, column)) < 1e-10) continue;
      MatrixXd exchanged = points;
      std::swap(exchanged(a, column), exchanged(b, column));
      if (EnergyByDefinition(exchanged) < EnergyByDefinition(points)) points = exchanged;
    }
    EXPECT_EQ(result, points) << fixed;
  }
}

TEST(Exchange, LowersCorrelationsAndLeavesFixedRowsAndConstants) {
  for (const Index fixed : {0, 6}) {
    MatrixXd points = Points(30, 4);
    points.col(1) = 0.5 * (points.col(0) + points.col(1));
    points.col(3).setConstant(7.25);
    const MatrixXd result = LowerCorrelations(Engine(7), points, fixed, 0.001);
    EXPECT_EQ(result.topRows(fixed), points.topRows(fixed));
    EXPECT_EQ(result.col(3), points.col(3));
    for (Index k = 0; k < 3; ++k) {
      Eigen::VectorXd before = points.col(k);
      Eigen::VectorXd after = result.col(k);
      std::sort(before.begin(), before.end());
      std::sort(after.begin(), after.end());
      EXPECT_EQ(before, after);  // a permutation, to the last bit
    }
    const MatrixXd r = statistics::CorrelationMatrix(result.leftCols(3));
    EXPECT_LE(10.0 * (r - MatrixXd::Identity(3, 3)).squaredNorm() / 16.0, 1.01e-6);
  }
  const MatrixXd constants = MatrixXd::Constant(5, 2, 3.0);
  EXPECT_EQ(LowerCorrelations(Engine(1), constants, 0, 0.001), constants);
}

TEST(Exchange, ATryOfCorrelationsIsThatOfTheDefinition) {
  // Two columns: whichever is chosen, an exchange stays if it lowers the one correlation.
  const Index n = 10;
  MatrixXd points = Points(n, 2);
  points.col(1) = points.col(0).reverse() + 0.1 * points.col(1);
  Engine engine(3);
  const MatrixXd result = LowerCorrelations(engine, points, 0, 0.001);
  const auto correlation = [](const MatrixXd& x) { return statistics::CorrelationMatrix(x)(0, 1); };
  int visits[2] = {0, 0};
  for (int pass = 0; pass < 500 && 5.0 * std::pow(correlation(points), 2) > 1e-6; ++pass) {
    Index k = visits[0] < 10 ? 0 : 1;
    if (visits[0] >= 10 && visits[1] >= 10) k = DrawInteger(engine, 0, 1);
    ++visits[k];
    for (int i = 0; i < 500; ++i) {
      const Index a = DrawInteger(engine, 0, n - 1);
      const Index b = DrawInteger(engine, 0, n - 1);
      if (a == b) continue;
      MatrixXd exchanged = points;
      std::swap(exchanged(a, k), exchanged(b, k));
      if (std::abs(correlation(exchanged)) < std::abs(correlation(points)) - 1e-14) {
        points = exchanged;
        visits[0] = visits[1] = 0;
      }
    }
  }
  EXPECT_EQ(result, points);
}

}  // namespace
