#pragma once

/// Values of n support points and their basis (n x p, by columns).
struct FitLoopData {
  const double* basis;
  const double* values;
  long n, p;  ///< p at most 80
};

/// results[r] = the linear fit of order 1 around query r, whose weights are exp(factor d^2): d inputs
/// by columns, the basis is 1 and the inputs.
void LocalFitLoop(const FitLoopData& data, const double* queries, long num_queries, double factor,
                  double* results);

/// Least squares by the normal equations.
void LeastSquaresLoop(const FitLoopData& data, double* coefficients);
