// Numbers for the routines of every processor level that this machine has: kernels agree to the bit
// with the baseline, whatever the numbers; products and factorisations up to rounding.

#include "metamodel/simd/dense_products.h"
#include "metamodel/simd/kernel_sums.h"
#include "number_source.h"

#include <Eigen/Core>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

namespace simd = corvath::math::metamodel::simd;
using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

void Require(bool holds) {
  if (!holds) std::abort();
}

bool SameBits(const MatrixXd& a, const MatrixXd& b) {
  return ((a.array() == b.array()) || (a.array().isNaN() && b.array().isNaN())).all();
}

void CompareKernels(fuzz::NumberSource& source, bool wild) {
  const Index num_inputs = source.Size(12);
  const MatrixXd points = source.Matrix(source.Size(140), num_inputs, wild);
  const MatrixXd x = source.Matrix(source.Size(9), num_inputs, wild);
  const bool isotropic = source.Flag();
  const VectorXd factors = -source.Matrix(isotropic ? 1 : num_inputs, 1, wild).cwiseAbs();
  const VectorXd values = source.Matrix(points.rows(), 1, wild);
  const simd::ExpKernel kernel{points.data(), points.rows(), points.rows(),  x.data(), x.rows(),
                               x.rows(),      num_inputs,    factors.data(), isotropic};
  const auto run = [&](const simd::KernelRoutines& routines) {
    MatrixXd results(points.rows() + 2, x.rows());
    VectorXd sums(x.rows());
    VectorXd powers = values;
    routines.weights(kernel, results.data(), results.rows());
    routines.weighted_sums(kernel, values.data(), sums.data());
    routines.exp(powers.data(), powers.size());
    results.bottomRows(2).setZero();
    results.row(points.rows()) = sums.transpose();
    results.row(points.rows() + 1).setConstant(powers.sum());
    return results;
  };
  int count = 0;
  const simd::KernelRoutines* const* all = simd::GetAllKernelRoutines(&count);
  const MatrixXd expected = run(simd::kRoutinesBaseline);
  for (int i = 0; i < count; ++i) Require(SameBits(run(*all[i]), expected));
}

void CompareDense(fuzz::NumberSource& source) {
  const Index k = source.Size(60);
  const MatrixXd a = source.Matrix(k, source.Size(60), false);
  const MatrixXd b = source.Matrix(k, source.Size(20), false);
  const Index n = a.cols();
  // Eigenvalues lie between 1 and 1 + n k.
  const MatrixXd definite = a.transpose() * a + MatrixXd::Identity(n, n);
  const double bound = 100.0 * static_cast<double>(n + k) * static_cast<double>(n * k) *
                       std::numeric_limits<double>::epsilon();
  const MatrixXd products = a.transpose() * b;
  const auto near = [&](const MatrixXd& actual, const MatrixXd& expected) {
    return (actual - expected).norm() <= bound * (1.0 + expected.norm());
  };
  int count = 0;
  const simd::DenseRoutines* const* all = simd::GetAllDenseRoutines(&count);
  VectorXd work(simd::kProductWork);
  for (int i = 0; i < count; ++i) {
    const simd::DenseRoutines& routines = *all[i];
    MatrixXd c(n, b.cols());
    routines.cross_products(n, b.cols(), k, a.data(), k, b.data(), k, c.data(), n, false);
    Require(near(c, products));
    MatrixXd l = definite;
    Require(routines.cholesky(l.data(), n, n, work.data()));
    routines.solve(l.data(), n, n, c.data(), n, c.cols());
    Require(near(definite * c, products));
    routines.invert_lower(l.data(), n, n, work.data());
    routines.square_lower(l.data(), n, n, work.data());
    const MatrixXd inverse = l.selfadjointView<Eigen::Lower>();
    Require(near(inverse * definite, MatrixXd::Identity(n, n)));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  fuzz::NumberSource source(data, size);
  const std::uint8_t kind = source.Byte();
  if (kind % 4 == 3)
    CompareDense(source);
  else
    CompareKernels(source, kind % 4 != 0);
  return 0;
}
