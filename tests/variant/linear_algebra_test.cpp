#include "variant/functions/linear_algebra.h"

#include "support/values.h"

#include <Eigen/Dense>

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

/// Complex entries in the unit square, the same in each run.
Eigen::MatrixXcd RandomMatrix(Eigen::Index rows, Eigen::Index cols, unsigned seed) {
  std::srand(seed);
  return Eigen::MatrixXcd::Random(rows, cols);
}

Value FromEigen(const Eigen::MatrixXcd& m) {
  Value::Matrix result(static_cast<std::size_t>(m.rows()), static_cast<std::size_t>(m.cols()));
  for (std::size_t i = 0; i < result.size1(); ++i)
    for (std::size_t j = 0; j < result.size2(); ++j)
      result(i, j) = m(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j));
  return Value(std::move(result));
}

Eigen::MatrixXcd ToEigen(const Value& v) {
  Eigen::MatrixXcd result(static_cast<Eigen::Index>(v.Size1()),
                          static_cast<Eigen::Index>(v.Size2()));
  for (Eigen::Index i = 0; i < result.rows(); ++i)
    for (Eigen::Index j = 0; j < result.cols(); ++j)
      result(i, j) = v(Scalar(static_cast<double>(i)), Scalar(static_cast<double>(j))).GetScalar();
  return result;
}

TEST(LinearAlgebra, ProductsAgreeWithEigen) {
  const Eigen::MatrixXcd a = RandomMatrix(7, 5, 1), b = RandomMatrix(5, 6, 2);
  Value r;
  fn::matrixmult(r, FromEigen(a), FromEigen(b));
  EXPECT_LT((ToEigen(r) - a * b).norm(), 1e-14);
  const Value v = FromEigen(a).GetRow(Scalar(3)), u = FromEigen(b).GetRow(Scalar(2));
  fn::matrixmult(r, v, FromEigen(b));
  EXPECT_LT((ToEigen(r) - (a.row(3) * b).transpose()).norm(), 1e-14);
  fn::matrixmult(r, FromEigen(a), v);
  EXPECT_LT((ToEigen(r) - a * a.row(3).transpose()).norm(), 1e-14);
  fn::innerprod(r, v, v);
  EXPECT_LT(std::abs(r.GetScalar() - (a.row(3) * a.row(3).transpose())(0)), 1e-15);
  fn::outerprod(r, v, u);
  EXPECT_LT((ToEigen(r) - a.row(3).transpose() * b.row(2)).norm(), 1e-14);
  fn::transpose(r, FromEigen(a));
  EXPECT_EQ(ToEigen(r), a.transpose());
}

TEST(LinearAlgebra, FactorsAndInverseAgreeWithEigen) {
  for (const Eigen::Index n : {1, 2, 9, 30}) {
    // A heavy diagonal, so that the elimination without pivoting is stable too.
    const Eigen::MatrixXcd a =
        RandomMatrix(n, n, 3) + static_cast<double>(n) * Eigen::MatrixXcd::Identity(n, n);
    Value r;
    fn::lufactorize(r, FromEigen(a));
    const Eigen::MatrixXcd z = ToEigen(r);
    const Eigen::MatrixXcd l = z.triangularView<Eigen::UnitLower>();
    const Eigen::MatrixXcd u = z.triangularView<Eigen::Upper>();
    EXPECT_LT((l * u - a).norm(), 1e-14 * a.norm());
    fn::invert(r, FromEigen(a));
    EXPECT_LT((ToEigen(r) - a.inverse()).norm(), 1e-13 * a.inverse().norm());
    const Eigen::MatrixXcd general = RandomMatrix(n, n, 4);
    fn::invert(r, FromEigen(general));
    EXPECT_LT((ToEigen(r) * general - Eigen::MatrixXcd::Identity(n, n)).norm(), 1e-10);
  }
}

TEST(LinearAlgebra, ProductsLargerThanAnyMemoryAreRefused) {
  const Value many(Value::Vector(100000, 1.0));
  EXPECT_BEGINS(Out(fn::outerprod, many, many), "CDimension: Result of 100000 x 100000 numbers");
}

}  // namespace
}  // namespace corvath::math
