// The hand-written loops that fits are measured against: the formulas for one size, left to the
// compiler's vectors, for the processor of this machine.
#include "fit_loops_native.h"

#include <math.h>

namespace {

constexpr long kMostTerms = 80;
constexpr long kMostPoints = 1024;

/// z = A^-1 z by the Cholesky factor, of the lower triangle of A.
void Solve(double (&a)[kMostTerms][kMostTerms], double* z, long p) {
  for (long j = 0; j < p; ++j) {
    for (long k = 0; k < j; ++k) a[j][j] -= a[j][k] * a[j][k];
    a[j][j] = sqrt(a[j][j]);
    for (long i = j + 1; i < p; ++i) {
      for (long k = 0; k < j; ++k) a[i][j] -= a[i][k] * a[j][k];
      a[i][j] /= a[j][j];
    }
    for (long k = 0; k < j; ++k) z[j] -= a[j][k] * z[k];
    z[j] /= a[j][j];
  }
  for (long j = p - 1; j >= 0; --j) {
    for (long i = j + 1; i < p; ++i) z[j] -= a[i][j] * z[i];
    z[j] /= a[j][j];
  }
}

/// Four columns of products at a time, so that each weight is loaded once for them.
void Dots4(const double* w, const double* const* columns, long n, double* sums) {
  const double *a = columns[0], *b = columns[1], *c = columns[2], *d = columns[3];
  double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
  for (long i = 0; i < n; ++i) {
    s0 += w[i] * a[i];
    s1 += w[i] * b[i];
    s2 += w[i] * c[i];
    s3 += w[i] * d[i];
  }
  sums[0] = s0, sums[1] = s1, sums[2] = s2, sums[3] = s3;
}

}  // namespace

void LocalFitLoop(const FitLoopData& data, const double* queries, long num_queries, double factor,
                  double* results) {
  const long n = data.n, p = data.p;
  static double table[64][kMostPoints];
  const double* columns[64];
  long num = 0;
  for (long j = 0; j < p; ++j)
    for (long i = j; i < p; ++i, ++num)
      for (long k = 0; k < n; ++k) table[num][k] = data.basis[i * n + k] * data.basis[j * n + k];
  for (long j = 0; j < p; ++j, ++num)
    for (long k = 0; k < n; ++k) table[num][k] = data.basis[j * n + k] * data.values[k];
  for (long q = 0; q < 64; ++q) columns[q] = table[q < num ? q : num - 1];
  for (long r = 0; r < num_queries; ++r) {
    double w[kMostPoints] = {};
    for (long j = 1; j < p; ++j)
      for (long k = 0; k < n; ++k) {
        const double d = queries[(j - 1) * num_queries + r] - data.basis[j * n + k];
        w[k] += d * d;
      }
    for (long k = 0; k < n; ++k) w[k] = exp(factor * w[k]);
    double sums[64];
    for (long q = 0; q < num; q += 4) Dots4(w, columns + q, n, sums + q);
    double a[kMostTerms][kMostTerms];
    const double* sum = sums;
    for (long j = 0; j < p; ++j)
      for (long i = j; i < p; ++i) a[i][j] = *sum++;
    double z[kMostTerms];
    for (long j = 0; j < p; ++j) z[j] = *sum++;
    Solve(a, z, p);
    results[r] = z[0];
    for (long j = 1; j < p; ++j) results[r] += z[j] * queries[(j - 1) * num_queries + r];
  }
}

void LeastSquaresLoop(const FitLoopData& data, double* coefficients) {
  const long n = data.n, p = data.p;
  static double a[kMostTerms][kMostTerms];
  const double* columns[kMostTerms + 4];
  for (long j = 0; j < p + 4; ++j) columns[j] = data.basis + (j < p ? j : p - 1) * n;
  for (long j = 0; j < p; ++j) {
    double sums[kMostTerms + 4];
    for (long i = j; i < p; i += 4) Dots4(columns[j], columns + i, n, sums + i);
    for (long i = j; i < p; ++i) a[i][j] = sums[i];
    coefficients[j] = 0;
    for (long k = 0; k < n; ++k) coefficients[j] += columns[j][k] * data.values[k];
  }
  Solve(a, coefficients, p);
}
