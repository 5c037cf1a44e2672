#include "metamodel/simd/local_systems.h"

#include "metamodel/level_test.h"
#include "support/points.h"
#include "support/testing.h"

#include <Eigen/Cholesky>

using namespace corvath::math::metamodel;

namespace {

using Exact = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;

using LocalSystems = LevelTest<simd::LocalRoutines, simd::GetAllLocalRoutines>;

Eigen::VectorXd Solve(const simd::LocalRoutines& routines, const Eigen::MatrixXd& sums,
                      const Eigen::MatrixXd& at, bool definite) {
  Eigen::VectorXd work(simd::SolveWork(at.cols()));
  Eigen::VectorXd results(at.rows());
  routines.solve({sums.data(), sums.rows(), sums.cols(), at.cols(), at.data(), at.rows()}, definite,
                 work.data(), results.data());
  return results;
}

/// Products of basis functions as sums need them: one column for each point.
Eigen::MatrixXd Products(const Eigen::MatrixXd& basis, const Eigen::VectorXd& values) {
  const Eigen::Index p = basis.cols();
  const Eigen::Index entries = p * (p + 1) / 2 + p;
  Eigen::MatrixXd products = Eigen::MatrixXd::Zero(
      (entries + simd::kSumsMultiple - 1) / simd::kSumsMultiple * simd::kSumsMultiple,
      basis.rows());
  Eigen::Index next = 0;
  for (Eigen::Index j = 0; j < p; ++j)
    for (Eigen::Index i = j; i < p; ++i)
      products.row(next++) = basis.col(i).cwiseProduct(basis.col(j)).transpose();
  for (Eigen::Index j = 0; j < p; ++j)
    products.row(next++) = basis.col(j).cwiseProduct(values).transpose();
  return products;
}

}  // namespace

TEST_P(LocalSystems, AreSummedInOrderAndSolvedAsOnEveryLevel) {
  for (const Eigen::Index p : {1, 2, 6, 16, 21})
    for (const Eigen::Index num : {1, 3, 8, 19}) {
      const Eigen::Index n = 531;
      const Eigen::MatrixXd basis = support::UniformPoints(n, p + 1, 4);
      const Eigen::MatrixXd weights = support::UniformPoints(n, num, 5);
      const Eigen::MatrixXd at = support::UniformPoints(num, p, 6);
      const Eigen::MatrixXd products = Products(basis.leftCols(p), basis.col(p));
      Eigen::MatrixXd sums = Eigen::MatrixXd::Zero(products.rows(), num);
      routines_->add({products.data(), products.rows(), n, weights.data(), n, num}, sums.data(),
                     sums.rows());
      Eigen::MatrixXd in_order = Eigen::MatrixXd::Zero(products.rows(), num);
      for (Eigen::Index k = 0; k < n; ++k)
        for (Eigen::Index s = 0; s < num; ++s)
          in_order.col(s).array() += products.col(k).array() * weights(k, s);
      ASSERT_EQ(sums, in_order);  // to the bit

      sums(0, num - 1) = 0.0;  // the last system is not definite
      const Eigen::VectorXd results = Solve(*routines_, sums, at, true);
      EXPECT_TRUE(std::isnan(results(num - 1))) << p;
      for (const bool definite : {true, false}) {
        const Eigen::VectorXd all = Solve(*routines_, sums, at, definite);
        const Eigen::VectorXd baseline = Solve(simd::kLocalRoutinesBaseline, sums, at, definite);
        for (Eigen::Index s = 0; s < num; ++s) {  // to the bit, and alone as among others
          const Eigen::VectorXd one = Solve(*routines_, sums.col(s), at.row(s), definite);
          EXPECT_TRUE(all(s) == baseline(s) || std::isnan(baseline(s)));
          EXPECT_TRUE(all(s) == one(0) || std::isnan(one(0)));
          EXPECT_EQ(std::isnan(all(s)), definite && s + 1 == num);
        }
      }
      for (Eigen::Index s = 0; s + 1 < num; ++s) {
        const Exact terms = basis.leftCols(p).cast<long double>();
        const Exact weighted = weights.col(s).cast<long double>().asDiagonal() * terms;
        const Exact z = (weighted.transpose() * terms)
                            .ldlt()
                            .solve(weighted.transpose() * basis.col(p).cast<long double>());
        // The condition of these systems is below 1e4.
        EXPECT_NEAR(results(s), static_cast<double>((at.row(s).cast<long double>() * z)(0)), 1e-11);
      }
    }
}

TEST_P(LocalSystems, LeaveOutWhatAVanishingPivotLeavesOpen) {
  // Of the unknowns the second is the first again: the first carries both.
  const Eigen::MatrixXd basis{{1.0, 1.0}, {2.0, 2.0}, {-1.0, -1.0}};
  const Eigen::MatrixXd products = Products(basis, 3.0 * basis.col(0));
  const Eigen::MatrixXd sums = products.rowwise().sum();
  const Eigen::MatrixXd at{{10.0, 1000.0}};
  EXPECT_EQ(Solve(*routines_, sums, at, false)(0), 30.0);
  EXPECT_TRUE(std::isnan(Solve(*routines_, sums, at, true)(0)));
}

INSTANTIATE_TEST_SUITE_P(Level, LocalSystems, testing::Range(0, 3));
