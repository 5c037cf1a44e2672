#pragma once

#include "optimizer/nlpqlp_interface.h"

#include <cmath>

namespace support {

/// Two variables, the sum of squares about (1, 2), x1 + x2 <= 2, from (0, 0): the client of the
/// reverse communication.
class SmallProblem {
 public:
  SmallProblem() : core(2, 0, 1, 1) {}
  void SetValues() {
    core.F(0) = std::pow(core.X(0, 0) - 1.0, 2) + std::pow(core.X(1, 0) - 2.0, 2);
    core.G(0, 0) = 2.0 - core.X(0, 0) - core.X(1, 0);
  }
  void SetGradients() {
    core.DF.head(2) << 2.0 * (core.X(0, 0) - 1.0), 2.0 * (core.X(1, 0) - 2.0);
    core.DG.row(0).head(2) << -1.0, -1.0;
  }
  /// Calls the core to the end; `spoil` may change what the client answered.
  template <class Spoil>
  std::int32_t Run(Spoil&& spoil) {
    SetValues();
    SetGradients();
    spoil(0);
    int calls = 0;
    for (core.Step(); core.IFAIL < 0 && calls < 10000; core.Step()) {
      ++calls;
      if (core.IFAIL == -1)
        SetValues();
      else
        SetGradients();
      spoil(calls);
    }
    return core.IFAIL;
  }
  std::int32_t Run() {
    return Run([](int) {});
  }
  corvath::algorithm::optimizer::NLPQLPInterface core;
};

}  // namespace support
