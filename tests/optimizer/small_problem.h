#pragma once

#include "optimizer/nlpqlp_interface.h"
#include "optimizer/sqp_core.h"

#include <cmath>

namespace support {

/// NLPQLPInterface::Step with another QP solver.
inline void StepWith(corvath::algorithm::optimizer::NLPQLPInterface& c,
                     corvath::algorithm::optimizer::QpSolve solver) {
  const auto size = [](const auto& array) { return static_cast<std::int32_t>(array.size()); };
  corvath::algorithm::optimizer::NLPQLP(
      c.L, c.M, c.ME, c.MMAX, c.N, c.NMAX, c.MNN2, c.X.data(), c.F.data(), c.G.data(), c.DF.data(),
      c.DG.data(), c.U.data(), c.XL.data(), c.XU.data(), c.C.data(), c.D.data(), c.ACC, c.ACCQP,
      c.STPMIN, c.MAXFUN, c.MAXIT, c.MAX_NM, c.TOL_NM, c.IPRINT, c.MODE, c.IOUT, c.IFAIL,
      c.WA.data(), size(c.WA), c.KWA.data(), size(c.KWA), c.ACTIVE.data(), size(c.ACTIVE), c.LQL,
      solver);
}

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
