#include "analysis/optimisation/global_search.h"

#include "analysis/optimisation/known_programs.h"
#include "support/testing.h"

namespace {

using namespace corvath::analysis;

GlobalOptimum Solve(const NonlinearProgram& program, std::uint32_t seed) {
  SearchSettings settings;
  settings.seed = seed;
  const Screening screening = Screen(program, Eigen::MatrixXd(0, program.NumInputs()), settings);
  return SearchGlobally(program, ObjectiveForm(program, screening.scales), screening, settings);
}

TEST(GlobalSearch, FindsThePublishedOptimaFromNineteenOfTwentySeeds) {
  constexpr std::uint32_t kSeeds = 100;
  auto programs = support::EngineeringPrograms();
  for (auto& program : support::MultimodalPrograms()) programs.push_back(std::move(program));
  for (const auto& [name, program, optimum, tolerance] : programs) {
    int num_found = 0;
    for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
      const GlobalOptimum found = Solve(program, seed);
      const Evaluated& point = found.best.point;
      EXPECT_TRUE((point.columns.tail(program.num_limits).array() >= 0.0).all()) << name << seed;
      EXPECT_EQ(point.x, program.Admit(point.x)) << name << seed;
      EXPECT_GE(point.columns(0), optimum - tolerance) << name << seed;
      num_found += point.columns(0) <= optimum + tolerance ? 1 : 0;
    }
    EXPECT_GE(num_found, 95) << name;
  }
}

}  // namespace
