#include "metamodel/simd/dense_products.h"

#include "metamodel/level_test.h"
#include "support/points.h"
#include "support/testing.h"

#include <Eigen/Cholesky>

using namespace corvath::math::metamodel;

namespace {

using Exact = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

using DenseProducts = LevelTest<simd::DenseRoutines, simd::GetAllDenseRoutines>;

Exact Lower(const Eigen::MatrixXd& matrix, Eigen::Index n) {
  return matrix.topRows(n).cast<long double>().triangularView<Eigen::Lower>();
}

}  // namespace

// Against work in long double: relative errors of norms, by the bounds of N. J. Higham,
// "Accuracy and Stability of Numerical Algorithms", 2nd edition, SIAM, 2002, chapters 8 and 10.
TEST_P(DenseProducts, FactoriseSolveAndInvertWithinTheBoundsOfRounding) {
  Eigen::VectorXd work(simd::kProductWork);
  for (const Eigen::Index n : {1, 2, 5, 31, 32, 33, 97, 203, 300}) {
    const Eigen::MatrixXd half = support::UniformPoints(n, n, 3);
    const Eigen::Index stride = n + 3;
    Eigen::MatrixXd l = Eigen::MatrixXd::Constant(stride, n, 7.0);
    l.topRows(n) = half * half.transpose() + Eigen::MatrixXd::Identity(n, n);
    Exact a = Lower(l, n);
    a = Exact(a.selfadjointView<Eigen::Lower>());
    l.topRows(n).triangularView<Eigen::StrictlyUpper>().setConstant(7.0);
    const double bound = 4.0 * static_cast<double>(n + 1) * kEpsilon;

    ASSERT_TRUE(routines_->cholesky(l.data(), stride, n, work.data()));
    const Exact root = Lower(l, n);
    EXPECT_LT((root * root.transpose() - a).norm(), bound * a.norm()) << n;

    Eigen::MatrixXd x = half.leftCols(std::min<Eigen::Index>(n, 3));
    routines_->solve(l.data(), stride, n, x.data(), n, x.cols());
    const Exact residual = a * x.cast<long double>() - half.leftCols(x.cols()).cast<long double>();
    EXPECT_LT(residual.norm(), bound * a.norm() * x.norm()) << n;

    Eigen::MatrixXd inverse = l;
    routines_->invert_lower(inverse.data(), stride, n, work.data());
    const Exact inverse_root = Lower(inverse, n);
    const Exact unit = Exact::Identity(n, n);
    EXPECT_LT((inverse_root * root - unit).norm(), bound * inverse_root.norm() * root.norm()) << n;

    routines_->square_lower(inverse.data(), stride, n, work.data());
    const Exact square = inverse_root.transpose() * inverse_root;
    EXPECT_LT((Lower(inverse, n) - Exact(square.triangularView<Eigen::Lower>())).norm(),
              bound * square.norm());
    for (const Eigen::MatrixXd* matrix : {&l, &inverse}) {  // the rest is not touched
      EXPECT_TRUE((matrix->bottomRows(3).array() == 7.0).all()) << n;
      for (Eigen::Index j = 1; j < n; ++j) EXPECT_EQ((*matrix)(j - 1, j), 7.0) << n;
    }
  }
  for (const double bad : {-1.0, 0.0, std::nan("")}) {
    Eigen::MatrixXd a = Eigen::MatrixXd::Identity(70, 70);
    a(65, 65) = bad;
    EXPECT_FALSE(routines_->cholesky(a.data(), 70, 70, work.data())) << bad;
  }
}

INSTANTIATE_TEST_SUITE_P(Level, DenseProducts, testing::Range(0, 3));
