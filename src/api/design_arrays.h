#pragma once

#include "api/call_frame.h"

#include <Eigen/Core>

namespace corvath::zel::api {

/// The caller's input values seen as a matrix, one row per design and one column per input, in
/// place: value (d, i) stands at [i * n + d].
using InputMatrix = Eigen::Map<const Eigen::MatrixXd>;

/// @param inputs_size  elements of `inputs`, as the caller gave it
/// @throws StatusError            status 41, fewer than `n_designs` * `n_inputs` values
/// @throws std::invalid_argument  values are needed, and `inputs` is null
InputMatrix RequireInputs(const double* inputs, std::uint64_t inputs_size, std::uint64_t n_designs,
                          std::uint64_t n_inputs);

/// Splits groups of five values, local CoP to density as the models' errors have them, into blocks.
/// @param densities  receives the fifth of each group, unless null
/// @param errors     receives the first four of each group, unless null
void SplitErrors(const std::vector<double>& groups, double* densities, double* errors);

}  // namespace corvath::zel::api
