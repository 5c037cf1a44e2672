#pragma once

/// Matrices by columns: num_points x num_inputs and num_x x num_inputs.
struct KernelLoopData {
  const double* points;
  const double* values;
  const double* x;
  long num_points, num_x, num_inputs;
  double factor;  ///< of the squared distance
};

/// sums[r] = sum_i values[i] exp(factor |x_r - p_i|^2), or with one of `factors` per input in place
/// of the common one. num_points must be a multiple of 32.
void KernelLoop(const KernelLoopData& data, const double* factors, double* sums);
