#include "doe/doe.h"
#include "doe/fekete.h"
#include "doe/random_draws.h"
#include "doe/space_filling.h"
#include "stochastics/sample_statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace corvath::math;
using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

MatrixXd Build(int type, std::uint64_t n, std::uint64_t d, std::uint32_t seed = 1,
               StateLists lists = {}) {
  DOE doe(d, seed, std::move(lists));
  doe.Build(type, n, false);
  return doe.GetMatrix();
}

double LargestCorrelation(const MatrixXd& points) {
  MatrixXd r = statistics::CorrelationMatrix(points);
  r.diagonal().setZero();
  return r.cwiseAbs().maxCoeff();
}

/// Whether each column has one number in each of n equal intervals, in their middle if so wanted.
void ExpectLatin(const MatrixXd& points, bool midpoints) {
  const auto n = static_cast<double>(points.rows());
  for (Index k = 0; k < points.cols(); ++k) {
    VectorXd column = points.col(k);
    std::sort(column.begin(), column.end());
    for (Index i = 0; i < column.size(); ++i) {
      const double low = 2.0 * static_cast<double>(i) / n - 1.0;
      if (midpoints) {
        EXPECT_NEAR(column(i), low + 1.0 / n, 1e-15);
      } else {
        EXPECT_GE(column(i), low - 1e-15);
        EXPECT_LE(column(i), low + 2.0 / n + 1e-15);
      }
    }
  }
}

TEST(Sequence, MonteCarloTakesTheDrawsOfTheEngineRowByRow) {
  // A draw of 32 bits maps to [-1, 1) by its share of 2^32.
  boost::random::mt19937 engine(5489);
  const MatrixXd points = Build(kPlainMonteCarlo, 4, 3, 5489);
  for (Index i = 0; i < points.rows(); ++i)
    for (Index k = 0; k < points.cols(); ++k)
      EXPECT_NEAR(points(i, k), 2.0 * engine() / 4294967296.0 - 1.0, 1e-15);
}

TEST(Sequence, LatinHypercubesHaveOnePointInEachInterval) {
  for (const std::uint64_t n : {1U, 2U, 4U, 57U}) {
    ExpectLatin(Build(kLatinHypercube, n, 5), false);
    for (const int type : {kLatinHypercubeMidpoint, kOrthogonalLatinHypercube,
                           kSpaceFillingLatinHypercube, kAdvancedLatinHypercube})
      ExpectLatin(Build(type, n, 5), true);
  }
}

TEST(Sequence, ShufflesOverAllButTheLastElement) {
  // The definition, written down a second time over the engine's raw numbers.
  boost::random::mt19937 engine(3);
  std::vector<double> expected = {-0.75, -0.25, 0.25, 0.75};
  for (std::size_t k = 3; k > 0; --k) {
    const double u = engine() / 4294967296.0 * std::nextafter(3.0, 0.0);
    std::swap(expected[k], expected[static_cast<std::size_t>(u)]);
  }
  const MatrixXd points = Build(kLatinHypercubeMidpoint, 4, 1, 3);
  EXPECT_EQ(std::vector<double>(points.data(), points.data() + points.size()), expected);
  for (int i = 0; i < 1000; ++i) {
    const int drawn = DrawInteger(engine, -1, 1);
    EXPECT_TRUE(drawn >= -1 && drawn <= 1);
  }
  EXPECT_EQ(DrawInteger(engine, 7, 7), 7);
  EXPECT_EQ(DrawUniform(engine, 0.5, 0.5), 0.5);
}

TEST(Sequence, DiscreteDimensionsGetStatesInEqualShares) {
  const StateLists lists = {
      VectorXd{{10.0, 20.0}}, {}, VectorXd{{1.0, 2.0, 3.0, 4.0, 5.0}}, VectorXd{{7.0}}};
  for (const int type :
       {kLatinHypercube, kLatinHypercubeMidpoint, kOrthogonalLatinHypercube, kSobolSequence,
        kPlainMonteCarlo, kSpaceFillingLatinHypercube, kAdvancedLatinHypercube}) {
    const MatrixXd points = Build(type, 100, 4, 1, lists);
    ASSERT_EQ(points.rows(), 100);
    for (const int k : {0, 2, 3})
      for (const double state : lists[static_cast<std::size_t>(k)]) {
        const double share = 100.0 / static_cast<double>(lists[static_cast<std::size_t>(k)].size());
        const auto count = static_cast<double>((points.col(k).array() == state).count());
        if (type == kPlainMonteCarlo && k != 3)
          EXPECT_NEAR(count, share, 25.0) << k;  // five standard deviations
        else if (type == kSobolSequence)
          EXPECT_NEAR(count, share, 4.0) << k;
        else
          EXPECT_EQ(count, share) << type << ' ' << k;
      }
  }
  // A 0 or more is the upper of two states, and a continuous coordinate stays.
  const MatrixXd continuous = Build(kLatinHypercube, 9, 2, 4);
  const MatrixXd mapped = Build(kLatinHypercube, 9, 2, 4, {VectorXd{{10.0, 20.0}}, {}});
  for (Index i = 0; i < 9; ++i) EXPECT_EQ(mapped(i, 0), continuous(i, 0) < 0.0 ? 10.0 : 20.0);
  EXPECT_EQ(mapped.col(1), continuous.col(1));
}

TEST(Sequence, OrthogonalAndAdvancedSamplesAreNearlyUncorrelated) {
  // Correlations of a random hypercube have the standard deviation 1 / sqrt(n - 1).
  for (const std::uint32_t seed : {1U, 2U, 3U}) {
    EXPECT_LT(LargestCorrelation(Build(kOrthogonalLatinHypercube, 100, 5, seed)), 0.02);
    EXPECT_LT(LargestCorrelation(Build(kAdvancedLatinHypercube, 50, 6, seed)), 0.003);
  }
  DOE doe(3, 1);
  doe.Build(kPlainMonteCarlo, 20, false);
  const MatrixXd before = doe.GetMatrix();
  doe.Build(kAdvancedLatinHypercube, 40, true);
  EXPECT_EQ(doe.GetMatrix().topRows(20), before);
  EXPECT_LT(LargestCorrelation(doe.GetMatrix()), 0.002);
  for (const int type : {kOrthogonalLatinHypercube, kAdvancedLatinHypercube})
    for (const std::uint64_t d : {1U, 2U, 12U})
      for (const std::uint64_t n : {1U, 2U, 3U, 12U, 13U})
        EXPECT_EQ(Build(type, n, d).rows(), static_cast<Index>(n));
}

TEST(Sequence, SobolAndSpaceFillingSamplesBeatMonteCarlo) {
  // The expected squared discrepancy of n independent uniform points in d dimensions.
  const auto expected = [](int n, int d) {
    return (std::pow(1.25, d) - std::pow(13.0 / 12.0, d)) / n;
  };
  double mean = 0.0;
  constexpr int kSamples = 300;
  for (std::uint32_t seed = 0; seed < kSamples; ++seed)
    mean += CenteredDiscrepancy(Build(kPlainMonteCarlo, 40, 3, seed)) / kSamples;
  EXPECT_NEAR(mean, expected(40, 3), 0.1 * expected(40, 3));
  for (const int d : {2, 3, 6}) {
    const int n = 10 * d;
    const double orthogonal = CenteredDiscrepancy(Build(
        kOrthogonalLatinHypercube, static_cast<std::uint64_t>(n), static_cast<std::uint64_t>(d)));
    const double filling = CenteredDiscrepancy(Build(
        kSpaceFillingLatinHypercube, static_cast<std::uint64_t>(n), static_cast<std::uint64_t>(d)));
    EXPECT_LT(filling, 0.9 * orthogonal) << d;
    EXPECT_LT(filling, 0.5 * expected(n, d)) << d;
  }
  // With the dimensions, the advantage of a given number of points shrinks.
  for (const auto& [d, share] : {std::pair{2, 0.01}, {5, 0.1}, {10, 0.5}, {20, 1.0}, {40, 1.0}})
    EXPECT_LT(CenteredDiscrepancy(Build(kSobolSequence, 1024, static_cast<std::uint64_t>(d))),
              share * expected(1024, d))
        << d;
}

TEST(Sequence, SpaceFillingKeepsEarlierDesignsAndItsLimits) {
  DOE doe(2, 1);
  doe.Build(kPlainMonteCarlo, 5, false);
  const MatrixXd before = doe.GetMatrix();
  doe.Build(kSpaceFillingLatinHypercube, 15, true);
  EXPECT_EQ(doe.GetMatrix().topRows(5), before);
  ExpectLatin(doe.GetMatrix().bottomRows(15), true);
  EXPECT_EQ(Build(kSpaceFillingLatinHypercube, 5000, 2), Build(kOrthogonalLatinHypercube, 5000, 2));
  EXPECT_EQ(Build(kSpaceFillingLatinHypercube, 30, 21), Build(kOrthogonalLatinHypercube, 30, 21));
  EXPECT_EQ(Build(kSpaceFillingLatinHypercube, 1, 2), Build(kOrthogonalLatinHypercube, 1, 2));
  // The exchanges draw from a copy of the engine: what follows is what follows plain hypercubes.
  DOE orthogonal(2, 9);
  DOE filling(2, 9);
  orthogonal.Build(kOrthogonalLatinHypercube, 12, false);
  filling.Build(kSpaceFillingLatinHypercube, 12, false);
  EXPECT_NE(orthogonal.GetDesigns(), filling.GetDesigns());
  for (DOE* object : {&orthogonal, &filling}) object->Build(kPlainMonteCarlo, 3, false);
  EXPECT_EQ(orthogonal.GetDesigns(), filling.GetDesigns());
}

TEST(Sequence, FeketePointsSpreadOverTheSphere) {
  Engine engine(1);
  const MatrixXd line = FeketePoints(engine, 4, 1);
  EXPECT_EQ(std::abs(line(0, 0)), 1.0);
  for (int i = 1; i < 4; ++i) EXPECT_EQ(line(0, i), -line(0, i - 1));
  // The regular bodies that solve the problem: their nearest distances. Passes end when these
  // agree within one percent of their sum, or later.
  const struct {
    int n, d;
    double distance;
  } bodies[] = {{3, 2, std::sqrt(3.0)}, {4, 3, std::sqrt(8.0 / 3.0)}, {6, 3, std::sqrt(2.0)}};
  for (const auto& [n, d, distance] : bodies) {
    const MatrixXd points =
        Build(kFeketePoints, static_cast<std::uint64_t>(n), static_cast<std::uint64_t>(d));
    EXPECT_LT((points.rowwise().norm().array() - 1.0).abs().maxCoeff(), 1e-14);
    const VectorXd nearest = statistics::KthNearest(points, 2);
    EXPECT_NEAR(nearest.minCoeff(), distance, 0.05 * distance) << n << ' ' << d;
  }
  EXPECT_NEAR(Build(kFeketePoints, 1, 3).norm(), 1.0, 1e-15);
}

}  // namespace
