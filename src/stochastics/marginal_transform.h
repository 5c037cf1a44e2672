#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// The standard normal value that stands for the value `x` of `variable`: equal in probability; for
/// a state of a Bernoulli or tabulated discrete variable the middle of its step. Within
/// about 6.3613 of 0 except for normal and lognormal variables, whose map is linear in x and ln x.
double MarginalToGauss(const RV& variable, double x);

/// The value of `variable` for the standard normal value `u`.
double MarginalFromGauss(const RV& variable, double u);

/// The same for each value of row `i` of `samples` into that row of `result`. Of a beta distribution
/// and at least kManyValues by BetaQuantiles, which agrees within rounding.
void MarginalsFromGauss(const RV& variable, Eigen::Index i, const Eigen::MatrixXd& samples,
                        Eigen::MatrixXd& result);
constexpr Eigen::Index kManyValues = 4096;

}  // namespace corvath::algorithm
