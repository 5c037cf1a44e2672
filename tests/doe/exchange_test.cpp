// Each sample beside its definition, written down a second time and evaluated anew for every step. The
// same engine makes the same draws, so both must end at the same points.

#include "doe/correlation_exchange.h"
#include "doe/doe.h"
#include "doe/fekete.h"
#include "doe/latin_hypercube.h"
#include "doe/orthogonal.h"
#include "doe/space_filling.h"
#include "stochastics/sample_statistics.h"
#include "support/testing.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

namespace {

using namespace corvath::math;
using Eigen::Index, Eigen::MatrixXd, Eigen::VectorXd;

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

TEST(Exchange, LowersCorrelationsByTheWorstColumnFirst) {
  // Columns as they are chosen, tries as they are drawn; the correlations anew for each of them.
  for (const Index fixed : {0, 4}) {
    const Index n = 12;
    MatrixXd points = Points(n, 3);
    points.col(1) = 0.6 * points.col(0) + 0.4 * points.col(1);
    points.col(2) = points.col(0).reverse() + 0.1 * points.col(2);
    Engine engine(3);
    const MatrixXd result = LowerCorrelations(engine, points, fixed, 0.001);
    const auto squares = [](const MatrixXd& x) -> MatrixXd {
      return (statistics::CorrelationMatrix(x) - MatrixXd::Identity(3, 3)).cwiseAbs2();
    };
    double error = squares(points).sum();
    Eigen::Array3i visits = Eigen::Array3i::Zero();
    for (int pass = 0; pass < 500 && 10.0 * error / 9.0 > 1e-6; ++pass) {
      Index k = 0;
      if ((visits >= 10).all())
        k = DrawInteger(engine, 0, 2);
      else
        (visits >= 10)
            .select(0.0, squares(points).colwise().sum().transpose().array())
            .maxCoeff(&k);
      ++visits(k);
      for (int i = 0; i < 500; ++i) {
        const Index a = DrawInteger(engine, fixed, n - 1);
        const Index b = DrawInteger(engine, fixed, n - 1);
        if (a == b) continue;
        MatrixXd exchanged = points;
        std::swap(exchanged(a, k), exchanged(b, k));
        const double now = squares(exchanged).sum();
        if (now > error - 1e-13) continue;
        points = exchanged;
        error = now;
        visits.setZero();
      }
    }
    EXPECT_EQ(result, points) << fixed;
  }
  const MatrixXd constants = MatrixXd::Constant(5, 2, 3.0);
  EXPECT_EQ(LowerCorrelations(Engine(1), constants, 0, 0.001), constants);
}

/// The orthogonal sample by its definition: correlations from centred columns, decorrelation by
/// solving with the factor, the root by powers of the eigenvalues.
MatrixXd OrthogonalByDefinition(Engine& engine, Index n, Index d, int trials, double tolerance) {
  const auto correlations = [n](const MatrixXd& x) -> MatrixXd {
    const MatrixXd c = x.rowwise() - x.colwise().mean();
    const Eigen::VectorXd s = c.colwise().norm();
    return (c.transpose() * c).array() / (s * s.transpose()).array();
  };
  const auto error = [&](const MatrixXd& x) {
    return (correlations(x) - MatrixXd::Identity(d, d)).cwiseAbs().maxCoeff();
  };
  MatrixXd best;
  double lowest = 2.0;
  for (int i = 0; i < (n < 3 ? 1 : 2 * trials); ++i) {
    Engine local(static_cast<std::uint32_t>(DrawInteger(engine, 0, 1000)));
    const MatrixXd x = LatinHypercube(local, n, d, true);
    if (n >= 3 && !(error(x) < lowest)) continue;
    best = x;
    if (n >= 3) lowest = error(x);
  }
  const Eigen::RowVectorXd mean = best.colwise().mean();
  MatrixXd x = best;
  for (int pass = 0; n > 1 && n > d && pass < 2 * trials && lowest > tolerance; ++pass) {
    std::vector<Index> order;
    for (Index k = 0; k < d; ++k) order.push_back(k);
    if (pass % 2 == 1 && d != 2) Shuffle(engine, order);
    MatrixXd moved = x(Eigen::all, order);
    if (pass % 2 == 1) {
      moved = correlations(moved).llt().matrixU().solve(moved.transpose()).transpose().eval();
    } else {
      const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(correlations(moved));
      moved = moved * solver.eigenvectors() *
              solver.eigenvalues().cwiseSqrt().cwiseInverse().asDiagonal() *
              solver.eigenvectors().transpose();
    }
    for (Index k = 0; k < d; ++k)
      for (Index i = 0; i < n; ++i) {
        const auto below = (moved.col(k).array() < moved(i, k)).count();
        x(i, k) = (2.0 * static_cast<double>(below) + 1.0) / static_cast<double>(n) - 1.0;
      }
    if (error(x) < lowest) {
      lowest = error(x);
      best = x;
    }
  }
  DrawInteger(engine, 0, 1000);
  return best;
}

TEST(Orthogonal, IsThatOfTheDefinitionWithAllItsDraws) {
  for (const auto& [n, d, trials] :
       {std::tuple{1, 3, 5}, {2, 3, 5}, {4, 3, 5}, {9, 2, 5}, {11, 10, 5}, {12, 4, 3}, {30, 5, 20}})
    for (const unsigned seed : {1U, 2U, 3U}) {
      Engine engine(seed);
      Engine other(seed);
      EXPECT_EQ(OrthogonalLatinHypercube(engine, n, d, trials, 0.01),
                OrthogonalByDefinition(other, n, d, trials, 0.01))
          << n << ' ' << d;
      EXPECT_EQ(engine, other);
    }
}

TEST(Fekete, PointsMoveAsTheDefinitionSays) {
  for (const auto& [n, d, seed] :
       {std::tuple{1, 3, 5U}, {3, 2, 1U}, {4, 3, 1U}, {6, 3, 1U}, {9, 4, 5U}}) {
    Engine engine(seed);
    Engine other(seed);
    const MatrixXd result = FeketePoints(engine, n, d);
    MatrixXd p(d, n);
    for (double& x : p.reshaped()) x = DrawUniform(other, -1.0, 1.0);
    p.colwise().normalize();
    EXPECT_EQ(engine, other);
    const auto nearest = [&p]() -> Eigen::VectorXd {
      return statistics::KthNearest(p.transpose(), 2);
    };
    const double better = 1.0 + 1e-8;
    double step = 1.0, since = 0.0, threshold = better * nearest().minCoeff();
    for (int pass = 0; n > 1 && pass < 500; ++pass) {
      since += 1.0;
      for (Index i = 0; i < n; ++i) {
        Eigen::VectorXd force = Eigen::VectorXd::Zero(d);
        for (Index j = 0; j < n; ++j)
          if (j != i) force += p.col(j) / std::pow((p.col(j) - p.col(i)).norm(), 4);
        p.col(i) = ((1.0 + step) * p.col(i) - step * force.normalized()).normalized();
      }
      const Eigen::VectorXd distances = nearest();
      if (distances.minCoeff() > threshold) {
        step /= std::sqrt(since);
        since = 0.0;
        threshold = better * distances.minCoeff();
      }
      if (pass == 50 && step > 0.5) step /= 2.0;
      const double a = distances.minCoeff(), b = distances.maxCoeff();
      if ((b - a) / (b + a) < 0.01 && pass > 100) break;
    }
    EXPECT_LT((result - p).cwiseAbs().maxCoeff(), 1e-7) << n << ' ' << d;
  }
  Engine engine(1);
  const MatrixXd line = FeketePoints(engine, 4, 1);
  EXPECT_EQ(std::abs(line(0, 0)), 1.0);
  for (int i = 1; i < 4; ++i) EXPECT_EQ(line(0, i), -line(0, i - 1));
}

TEST(Scheme, SamplesAreMadeOfTheseParts) {
  // What DOE adds: trials, passes, the rows from before, and what its engine draws next.
  const auto matrix = [](const MatrixXd& top, const MatrixXd& bottom) -> MatrixXd {
    MatrixXd result(top.rows() + bottom.rows(), bottom.cols());
    result << top, bottom;
    return result;
  };
  const VectorXd states{{10.0, 20.0}};
  for (const Index before : {0, 3})
    for (const bool discrete : {false, true})
      for (const Index d : {2, 11, 21})
        for (const Index n : {12, 40, 400}) {
          if (n * d > 1000) continue;
          const auto make = [&, before = before] {
            DOE doe(static_cast<std::uint64_t>(d), 7,
                    discrete ? StateLists(static_cast<std::size_t>(d), states) : StateLists());
            doe.Build(kPlainMonteCarlo, static_cast<std::uint64_t>(before), false);
            return doe;
          };
          const MatrixXd top = make().GetMatrix();
          const auto parts = [&](std::uint64_t trials, double tolerance) {
            Engine engine(7);
            engine.discard(static_cast<unsigned long>(before * d));
            MatrixXd bottom = OrthogonalLatinHypercube(engine, n, d, trials, tolerance);
            if (discrete)
              bottom = bottom.unaryExpr([](double x) { return x < 0.0 ? 10.0 : 20.0; }).eval();
            return std::pair(matrix(top, bottom), engine);
          };
          const auto expect = [&](int type, const MatrixXd& points, Engine engine) {
            DOE doe = make();
            doe.Build(type, static_cast<std::uint64_t>(n), true);
            EXPECT_EQ(doe.GetMatrix(), points) << type << ' ' << before << ' ' << n << ' ' << d;
            doe.Build(kPlainMonteCarlo, 1, true);
            EXPECT_TRUE(discrete || doe.GetDesigns().back()[0] == DrawUniform(engine, -1.0, 1.0));
          };
          const auto [plain, engine] = parts(5, 0.01);
          expect(kOrthogonalLatinHypercube, plain, engine);
          const int passes = n < 400 ? 100 : 31;  // 12500 / n, held to 10 and 100
          MatrixXd filling = plain;
          if (d <= 20)
            filling = before == 0 && !discrete
                          ? LowerDiscrepancy(engine, plain, passes)
                          : LowerEnergy(engine, plain, before, 500 * (n < 400 ? 200 : 125));
          expect(kSpaceFillingLatinHypercube, filling, engine);
          const auto [start, later] = parts(d == 2 ? 50 : 20, 0.001);
          expect(kAdvancedLatinHypercube, LowerCorrelations(later, start, before, 0.001), later);
        }
}

}  // namespace
