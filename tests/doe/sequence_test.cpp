#include "doe/doe.h"
#include "doe/random_draws.h"
#include "support/testing.h"

namespace {

using namespace corvath::math;
using Eigen::Index, Eigen::MatrixXd, Eigen::VectorXd;

MatrixXd Build(int type, std::uint64_t n, std::uint64_t d, std::uint32_t seed = 1,
               StateLists lists = {}) {
  DOE doe(d, seed, std::move(lists));
  doe.Build(type, n, false);
  return doe.GetMatrix();
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

TEST(Sequence, LargeSpaceFillingSamplesStayOrthogonal) {
  EXPECT_EQ(Build(kSpaceFillingLatinHypercube, 5000, 2), Build(kOrthogonalLatinHypercube, 5000, 2));
  EXPECT_EQ(Build(kSpaceFillingLatinHypercube, 1, 2), Build(kOrthogonalLatinHypercube, 1, 2));
}

}  // namespace
