#pragma once

#include "stochastics/random_variable.h"

namespace corvath::algorithm {

/// The standard normal value that stands for the value `x` of `variable`: equal in probability; for
/// a state of a Bernoulli or tabulated discrete variable the middle of its step. Within
/// about 6.3613 of 0 except for normal and lognormal variables, whose map is linear in x and ln x.
double MarginalToGauss(const RV& variable, double x);

/// The value of `variable` for the standard normal value `u`.
double MarginalFromGauss(const RV& variable, double u);

}  // namespace corvath::algorithm
