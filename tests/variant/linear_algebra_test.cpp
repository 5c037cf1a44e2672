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
  const Value leading_zero = Mat({{0, 2}, {4, 0}});
  EXPECT_EQ(Out(fn::lufactorize, leading_zero), "CVariant: Error within LU-Factorisation.");
  EXPECT_EQ(Out(fn::invert, leading_zero), Text(Mat({{0, 0.25}, {0.5, 0}})));
  EXPECT_EQ(Out(fn::invert, Mat({{1, 2}, {2, 4}})), "CVariant: Error within LU-Factorisation.");
  EXPECT_EQ(Out(fn::lufactorize, Mat({{1, 2}, {2, 4}})),
            "CVariant: Error within LU-Factorisation.");
}

TEST(LinearAlgebra, OtherKindsInvertOrAreRefused) {
  const Value v = Vec({2, {0, 1}}), m = Mat({{1, 2}});
  EXPECT_EQ(Out(fn::invert, Value(true)), Text(Value(false)));
  EXPECT_EQ(Out(fn::invert, Scalar(0, 2)), Text(Scalar(0, -0.5)));
  EXPECT_EQ(Out(fn::invert, v), Text(Vec({0.5, {0, -1}})));
  EXPECT_EQ(Out(fn::invert, m), "CVariant: Matrix Inverse only defined for quadratic matricees.");
  EXPECT_EQ(Out(fn::invert, XY({0}, {1})), "CType: Input object has invalid datatype.");
  EXPECT_BEGINS(Out(fn::lufactorize, v), "CType: LU Factorization only possible if input is of");
  EXPECT_EQ(Out(fn::lufactorize, m), "CDimension: Matrix must be quadratic for LU factorization.");
  EXPECT_BEGINS(Out(fn::transpose, v), "CType: Invalid type. Only type MATRIX allowed for");
  EXPECT_EQ(Out(fn::innerprod, v, m), "CType: inner product: Inputs must be of type vector.");
  EXPECT_BEGINS(Out(fn::innerprod, v, Vec({1})), "CDimension: inner product: Vector dimensions");
  EXPECT_EQ(Out(fn::outerprod, m, v), "CType: outer product: Inputs must be of type vector.");
  const Value many(Value::Vector(100000, 1.0));
  EXPECT_BEGINS(Out(fn::outerprod, many, many), "CDimension: Result of 100000 x 100000 numbers");
  const std::string prefix = "CDimension: matrix multiplication: ";
  EXPECT_EQ(Out(fn::matrixmult, v, m),
            prefix + "Size of vector does not match number of rows in matrix.");
  EXPECT_EQ(Out(fn::matrixmult, m, Vec({1})),
            prefix + "Number of columns in matrix does not match size of vector.");
  EXPECT_EQ(
      Out(fn::matrixmult, m, m),
      prefix + "Number of columns in first matrix does not match number of rows in second matrix.");
  EXPECT_BEGINS(Out(fn::matrixmult, v, v), "CType: matrix multiplication: Inputs have invalid");
}

}  // namespace
}  // namespace corvath::math
