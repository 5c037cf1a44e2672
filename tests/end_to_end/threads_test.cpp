#include "end_to_end.h"
#include "support/small_stack.h"

#include <cstring>
#include <thread>

/// Calls from several threads, and calls that use several.
namespace end_to_end {
namespace {

std::vector<double> ManyInputs(unsigned int n) {
  std::vector<double> inputs(std::size_t{kInputs} * n);
  for (std::size_t i = 0; i < inputs.size(); ++i)
    inputs[i] = 0.1 + 0.8 * static_cast<double>(i * 7919 % 10007) / 10007.0;
  return inputs;
}

/// Responses, criteria, densities and errors, then the gradients of "mass".
std::vector<double> SolveAll(const std::string& project, const std::vector<double>& inputs) {
  const auto n = static_cast<unsigned int>(inputs.size() / kInputs);
  std::vector<double> out((6 * kOutputs + kCriteria + kInputs) * std::size_t{n}, -1.0);
  const auto size = static_cast<unsigned int>(out.size());
  const auto count = static_cast<unsigned int>(inputs.size());
  const unsigned int solve_flags = ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES |
                                   ZEL_SOLVE_CRITERIA | ZEL_SOLVE_DENSITIES | ZEL_SOLVE_ERRORS;
  EXPECT_EQ(dzel2_solve(project.c_str(), n, inputs.data(), count, solve_flags, out.data(), size), 0)
      << dzel2_getLastError();
  EXPECT_EQ(dzel2_get_per_response(project.c_str(), n, inputs.data(), count, "mass",
                                   ZEL_RESPONSE_EXTRAPOLATE | ZEL_RESPONSE_GRADIENTS,
                                   out.data() + out.size() - std::size_t{kInputs} * n, kInputs * n),
            0)
      << dzel2_getLastError();
  return out;
}

class Threads : public EndToEnd {
 protected:
  void TearDown() override { unsetenv("ZELSOLVER_NUM_THREADS"); }
};

TEST_F(Threads, TheirNumberDoesNotChangeASingleBit) {
  const auto inputs = ManyInputs(5001);
  setenv("ZELSOLVER_NUM_THREADS", "1", 1);
  const auto alone = SolveAll(Project(), inputs);
  const std::size_t n = inputs.size() / kInputs;
  for (std::size_t d = 0; d < n; d += 97)
    EXPECT_NEAR(alone[d], PlateOutput(0, inputs[d], inputs[n + d], inputs[2 * n + d]), 1e-6);
  for (const char* number : {"2", "3", "4"}) {
    setenv("ZELSOLVER_NUM_THREADS", number, 1);
    const auto shared = SolveAll(Project(), inputs);
    EXPECT_EQ(std::memcmp(shared.data(), alone.data(), alone.size() * sizeof(double)), 0) << number;
  }
}

TEST_F(Threads, WorkOnSmallStacks) {
  if (TEST_SANITIZED) GTEST_SKIP() << "the sanitizers make frames several times as large";
  const auto inputs = ManyInputs(3);
  const auto expected = SolveAll(Project(), inputs);
  dzel2_cleanup();
  std::vector<double> found;
  support::RunOnStack(std::size_t{64} << 10, [&] { found = SolveAll(Project(), inputs); });
  EXPECT_EQ(found, expected);
}

TEST_F(Threads, MayCallAtAnyTimeWhileOthersCloseEverything) {
  setenv("ZELSOLVER_NUM_THREADS", "4", 1);
  const auto few = ManyInputs(3);
  const auto many = ManyInputs(1500);
  const auto expected_few = SolveAll(Project(), few);
  const auto expected_many = SolveAll(Project(), many);
  double bounds[2 * kInputs];
  ASSERT_EQ(dzel2_getInputBounds(Project().c_str(), bounds), 0);

  std::vector<std::thread> callers;
  for (int caller = 0; caller < 4; ++caller)
    callers.emplace_back([&, caller] {
      // All on one project, or on two spellings of it.
      const std::string spelling = caller < 2 ? Project() : Project("./plate.vrdb");
      for (int repetition = 0; repetition < 10; ++repetition) {
        EXPECT_EQ(SolveAll(spelling, few), expected_few);
        EXPECT_EQ(SolveAll(spelling, many), expected_many);
        double* own = nullptr;
        ASSERT_EQ(dzel_allocate_and_getInputBounds(spelling.c_str(), &own), 0);
        const std::string response = "response " + std::to_string(caller);
        double cop[kInputs + 1];
        EXPECT_EQ(dzel2_getCoPValuesPerResponse(spelling.c_str(), response.c_str(), cop), 2);
        EXPECT_NE(std::string(dzel2_getLastError()).find(response), std::string::npos)
            << dzel2_getLastError();
        EXPECT_TRUE(std::equal(own, own + 2 * kInputs, bounds));
        if (repetition % 3 == caller % 3) {
          EXPECT_EQ(dzel2_cleanup(), 0);
        }
      }
    });
  for (auto& caller : callers) caller.join();
}

TEST_F(Threads, SeeTheErrorOfTheLastCallWhereTheyTakeTurns) {
  EXPECT_EQ(dzel2_free(nullptr), 0);
  std::thread([] { EXPECT_EQ(dzel2_hasSurrogate("/no/such/file"), 2); }).join();
  ASSERT_NE(dzel2_getLastError(), nullptr) << "the process's last call failed";
  std::thread([] { EXPECT_EQ(dzel2_free(nullptr), 0); }).join();
  EXPECT_EQ(dzel2_getLastError(), nullptr) << "the process's last call succeeded";
}

}  // namespace
}  // namespace end_to_end
