#pragma once

#include "training/candidate_trials.h"

#include <vector>

namespace corvath::training {

/// The best candidate of a form, or the one over all inputs: no choice of inputs owes to luck there.
struct Finalist {
  const Candidate* candidate;
  bool is_whole = false;  ///< over all inputs
};

/// The constant comes first.
using Finalists = std::vector<Finalist>;

}  // namespace corvath::training
