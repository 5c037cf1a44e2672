#include "stochastics/sample_statistics.h"

#include "stochastics/variables.h"
#include "support/testing.h"

namespace {

using namespace corvath::math::statistics;
using Eigen::MatrixXd, Eigen::VectorXd;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

const auto Vector = support::ToVector;

TEST(SampleStatistics, MeanAndVarianceSkipNaNOnlyWhenTold) {
  const VectorXd x = Vector({1.0, kNaN, 2.0, 6.0});
  EXPECT_EQ(Mean(x, true), 3.0);
  EXPECT_EQ(Variance(x, 3.0, true), 7.0);  // (4 + 1 + 9) / 2
  EXPECT_EQ(StandardDeviation(x, 3.0, true), std::sqrt(7.0));
  EXPECT_TRUE(std::isnan(Mean(x, false)));
  EXPECT_TRUE(std::isnan(Variance(x, 3.0, false)));
  EXPECT_TRUE(std::isnan(Mean(Vector({kNaN}), true)));
  EXPECT_TRUE(std::isnan(Variance(Vector({kNaN}), 0.0, true)));

  MatrixXd matrix{{1.0, kNaN}, {2.0, 5.0}, {6.0, 7.0}};
  EXPECT_EQ(ContainsNaN(matrix), std::vector<bool>({false, true}));
  EXPECT_EQ(MeanVector(matrix), Vector({3.0, 6.0}));
  EXPECT_EQ(SigmaVector(matrix, Vector({3.0, 6.0})), Vector({std::sqrt(7.0), std::sqrt(2.0)}));
}

TEST(SampleStatistics, CorrelationMatchesHandComputedValues) {
  const VectorXd x = Vector({1.0, 2.0, 3.0, 4.0});
  const VectorXd y = Vector({2.0, 1.0, 4.0, 3.0});
  // Sums of squares 5 and 5, sum of products 3.
  EXPECT_NEAR(LinearCorrelation(x, y, false, false), 0.6, 1e-15);
  EXPECT_NEAR(LinearCorrelation(x, x, false, false), 1.0, 1e-15);
  EXPECT_NEAR(LinearCorrelation(x, -x, false, false), -1.0, 1e-15);
  EXPECT_EQ(LinearCorrelation(Vector({1.0, -1.0, 1.0, -1.0}), Vector({1.0, 1.0, -1.0, -1.0}), false,
                              false),
            0.0);
  // 1e9 added: the plain sum of products would have lost all digits of the deviations.
  EXPECT_NEAR(LinearCorrelation(x.array() + 1e9, y.array() + 1e9, false, false), 0.6, 1e-12);
}

TEST(SampleStatistics, HolesDropTheirRowFromThePairAlone) {
  MatrixXd matrix{{1.0, 2.0, 1.0}, {2.0, 1.0, kNaN},  {3.0, 4.0, 2.0},
                  {4.0, 3.0, 5.0}, {kNaN, 9.0, kNaN}, {kNaN, -7.0, kNaN}};
  const MatrixXd r = CorrelationMatrix(matrix);
  EXPECT_EQ(r, r.transpose());
  EXPECT_EQ(VectorXd(r.diagonal()), VectorXd::Ones(3));
  EXPECT_NEAR(r(0, 1), 0.6, 1e-15);  // rows 0 to 3, as above
  // Rows 0, 2, 3: x = 1, 3, 4 and z = 1, 2, 5; sums about 8/3: xx 14/3, zz 26/3, xz 17/3.
  EXPECT_NEAR(r(0, 2), 17.0 / std::sqrt(14.0 * 26.0), 1e-15);
  EXPECT_EQ(LinearCorrelation(matrix.col(0), matrix.col(1), true, false), r(0, 1));
  EXPECT_EQ(LinearCorrelation(matrix.col(0), matrix.col(1), false, false), 1.0);  // NaN, clamped

  matrix.col(1) << kNaN, kNaN, kNaN, kNaN, 1.0, 2.0;
  EXPECT_TRUE(std::isnan(CorrelationMatrix(matrix)(0, 1)));  // no row in common
}

TEST(SampleStatistics, DistancesAndNeighbours) {
  MatrixXd points{{0.0, 0.0}, {3.0, 4.0}, {0.0, 0.0}, {0.0, 1.0}};
  MatrixXd expected{{0, 25, 0, 1}, {25, 0, 25, 18}, {0, 25, 0, 1}, {1, 18, 1, 0}};
  EXPECT_EQ(SquaredDistances(points), expected);
  EXPECT_EQ(SmallestSignificant(expected), 1.0);  // two equal points do not make it 0
  EXPECT_EQ(SmallestSignificant(Vector({1e-11, 1e-13, 1.0})), 1e-11);
  EXPECT_EQ(KthNearest(points, 1), VectorXd::Zero(4));
  EXPECT_EQ(KthNearest(points, 0), VectorXd::Zero(4));
  EXPECT_EQ(KthNearest(points, 3), Vector({1.0, 5.0, 1.0, 1.0}));
  EXPECT_EQ(KthNearest(points, 99), Vector({5.0, 5.0, 5.0, std::sqrt(18.0)}));
  // A point that is not finite is infinitely far or nowhere, and the sort survives it.
  points(3, 0) = kNaN;
  EXPECT_EQ(KthNearest(points, 2).head(3), Vector({0.0, 5.0, 0.0}));
  EXPECT_TRUE(std::isnan(KthNearest(points, 2)(3)));
}

TEST(SampleStatistics, SortingKeepsEqualRowsAndGapsFollowTheOrder) {
  MatrixXd matrix{{2.0, 0.0}, {1.0, 1.0}, {2.0, 2.0}, {-3.0, 3.0}};
  MatrixXd sorted{{-3.0, 3.0}, {1.0, 1.0}, {2.0, 0.0}, {2.0, 2.0}};
  EXPECT_EQ(SortRows(matrix, 0), sorted);
  EXPECT_EQ(SortRows(sorted, 1).col(0), matrix.col(0));
  EXPECT_EQ(LargestGaps(matrix), Vector({4.0, 1.0}));
  EXPECT_EQ(SmallestGaps(matrix), Vector({1.0, 1.0}));  // the gap 0 in column 0 does not count
  const MatrixXd constant = MatrixXd::Ones(3, 1);
  EXPECT_EQ(LargestGaps(constant)(0), 0.0);
  EXPECT_EQ(SmallestGaps(constant)(0), std::numeric_limits<double>::max());
}

TEST(SampleStatistics, MisuseIsNamed) {
  const VectorXd none, one = Vector({1.0}), two = Vector({1.0, 2.0});
  const MatrixXd matrix = MatrixXd::Ones(3, 2), empty(0, 2);
  support::ExpectRefusals<std::logic_error>({
      {[&] { PairCorrelation(empty, two, two, 0, 1); }, "Empty design matrix"},
      {[&] { PairCorrelation(matrix, one, two, 0, 1); }, "Sizes of input matrix and mean-vector"},
      {[&] { PairCorrelation(matrix, two, one, 0, 1); }, "Sizes of input matrix and sigma-vector"},
      {[&] { PairCorrelation(matrix, two, two, 2, 1); }, "Indices and sizes of input matrix not"},
      {[&] { PairCorrelation(matrix, two, two, -1, 1); }, "Indices and sizes of input matrix not"},
      {[&] { LinearCorrelation(none, one, true, false); }, "Empty data vector"},
      {[&] { LinearCorrelation(two, one, true, false); }, "Sizes of input vectors for linear"},
      {[&] { Mean(none, true); }, "Empty design vector"},
      {[&] { Variance(none, 0.0, true); }, "Empty design vector"},
      {[&] { MeanVector(matrix, {true}); }, "Sizes of input matrix and Contains-NaN-vector not"},
      {[&] { SigmaVector(matrix, one); }, "Sizes of input matrix and mean-vector not consistent"},
      {[&] { SigmaVector(matrix, two, {true}); }, "mean-vector and/or Contains-NaN-vector not"},
      {[&] { SquaredDistances(empty); }, "Empty data matrix"},
  });
}

}  // namespace
