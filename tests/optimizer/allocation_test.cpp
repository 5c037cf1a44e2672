#include "literature/collected_run.h"
#include "support/allocations.h"
#include "support/testing.h"

namespace {

using corvath::algorithm::optimizer::NLPQLPInterface;

TEST(NLPQLP, AllocatesNothingInAStep) {
  const long before = num_allocations;
  ASSERT_NE(NLPQLPInterface(2, 0, 0, 1).WA.data(), nullptr);
  ASSERT_GT(num_allocations, before);  // counts

  long in_steps = 0, num_steps = 0;
  for (const int num_parallel : {1, 4})
    for (const literature::CollectedProblem& problem : literature::ChosenHockSchittkowski())
      literature::RunCollected(problem, literature::Gradients::kAnalytic, num_parallel, 1e-7,
                               [&](NLPQLPInterface& core) {
                                 const long at = num_allocations;
                                 core.Step();
                                 in_steps += num_allocations - at;
                                 ++num_steps;
                               });
  EXPECT_GT(num_steps, 1000);
  EXPECT_EQ(in_steps, 0);
}

}  // namespace
