#pragma once

#include "literature/hock_schittkowski.h"

namespace bench {

/// A run of another SQP code over a collected problem.
struct YardstickRun {
  int num_calls = 0;        ///< of the function; each gives its gradient too where asked for
  int calls_to_target = 0;  ///< up to the first point that meets the target; 0: none
  double f = 0.0, violation = 0.0;  ///< where it ends
};

/// Whether this build has the other code.
bool HasYardstick();

/// SLSQP of D. Kraft, "A software package for sequential quadratic programming", DFVLR-FB 88-28,
/// 1988, as NLopt carries it, with analytic gradients and tolerances of 1e-10.
YardstickRun RunYardstick(const literature::CollectedProblem& problem);

}  // namespace bench
