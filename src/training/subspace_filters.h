#pragma once

#include "metamodel/types.h"
#include "training/cross_validation.h"
#include "training/train_settings.h"

#include <vector>

namespace corvath::training {

/// Subspaces of inputs that are worth a model: first all inputs, then those that the filters
/// keep at each of their levels, each subspace once. The filters look at the data alone:
///
/// - significance: inputs whose correlation with the response is significant (two-sided t test) at
///   `min_significance` and in steps of `significance_step` below 1;
/// - correlation: inputs whose correlation reaches 1, 2, ... of `correlation_steps` parts of the largest;
/// - importance: inputs without which a regression in all inputs explains less by one of the
///   levels (coefficient of importance, CoI);
/// - quality: the fewest inputs with which a regression explains less than the best by at most
///   one of the levels, found by leaving out the least important one again and again, and
///   by taking in the most important one (forward_selection.h).
///
/// Correlations are linear, or of ranks with `rank_correlation`; shares of explained variance are those
/// of the richest polynomial up to order 2 that the designs suffice for twice, adjusted for the
/// number of coefficients with `adjusted_determination`. The inputs of `always` are in all subspaces.
std::vector<math::metamodel::BitVector> ProposeSubspaces(const ResponseData& data,
                                                         const InputFilters& filters);

}  // namespace corvath::training
