#include "optimizer/hock_schittkowski.h"
#include "optimizer/nlpqlp_interface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

extern "C" void* __libc_malloc(std::size_t size);

namespace {
long num_allocations = 0;
}

/// In this program, in place of the C library's: Eigen and operator new come here, too.
extern "C" void* malloc(std::size_t size) {
  ++num_allocations;
  return __libc_malloc(size);
}

namespace {

using corvath::algorithm::optimizer::NLPQLPInterface;

TEST(NLPQLP, AllocatesNothingInAStep) {
  const long before = num_allocations;
  ASSERT_NE(NLPQLPInterface(2, 0, 0, 1).WA.data(), nullptr);
  ASSERT_GT(num_allocations, before);  // counts

  long in_steps = 0, num_steps = 0;
  for (const int num_parallel : {1, 4})
    for (const support::CollectedProblem& problem : support::HockSchittkowski()) {
      NLPQLPInterface core(problem.NumVariables(), problem.num_equalities, problem.num_inequalities,
                           num_parallel);
      for (int i = 0; i < core.N; ++i) {
        core.XL(i) = problem.Lower(i);
        core.XU(i) = problem.Upper(i);
        core.X(i, 0) =
            std::clamp(problem.start[static_cast<std::size_t>(i)], core.XL(i), core.XU(i));
      }
      support::Dual g[support::kMaxConstraints + 1];
      do {
        for (int column = 0; column < num_parallel; ++column) {
          const support::Dual f = EvaluateAt(problem, core.X.col(column).data(), g);
          core.F(column) = f.value;
          for (int j = 0; j < core.M; ++j) core.G(j, column) = g[j + 1].value;
          if (column > 0 || core.IFAIL == -1) continue;
          for (int i = 0; i < core.N; ++i) {
            core.DF(i) = f.slope[static_cast<std::size_t>(i)];
            for (int j = 0; j < core.M; ++j)
              core.DG(j, i) = g[j + 1].slope[static_cast<std::size_t>(i)];
          }
        }
        const long at = num_allocations;
        core.Step();
        in_steps += num_allocations - at;
        ++num_steps;
      } while (core.IFAIL < 0);
    }
  EXPECT_GT(num_steps, 2000);
  EXPECT_EQ(in_steps, 0);
}

}  // namespace
