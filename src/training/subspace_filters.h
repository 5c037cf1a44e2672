#pragma once

#include "metamodel/types.h"
#include "project/settings/zel_settings.h"
#include "training/cross_validation.h"

#include <vector>

namespace corvath::training {

/// Subspaces of inputs that are worth a model: first all inputs, then those that the filters of the
/// settings keep at each of their levels, each subspace once. The filters look at the data alone:
///
/// - significance: inputs whose correlation with the response is significant (two-sided t test) at
///   min_significance_, min_significance_ + step_significance_, ... below 1;
/// - correlation: inputs whose correlation reaches 1, 2, ... of num_corr_steps_ parts of the largest;
/// - importance: inputs without which a regression in all inputs explains less by step_CoI_,
///   2 step_CoI_, ... max_CoI_ (coefficient of importance, CoI);
/// - quality: the fewest inputs with which a regression explains at most step_CoD_, 2 step_CoD_, ...
///   max_CoD_ less than the best, found by leaving out the least important one again and again, and
///   by taking in the most important one (forward_selection.h).
///
/// Correlations are linear, or of ranks with use_spearman_; shares of explained variance are those
/// of the richest polynomial up to order 2 that the designs suffice for twice, adjusted for the
/// number of coefficients with use_adj_cod_. The inputs of info_important_ are in all subspaces.
std::vector<math::metamodel::BitVector> ProposeSubspaces(
    const ResponseData& data, const math::metamodel::ZELSettings& settings);

}  // namespace corvath::training
