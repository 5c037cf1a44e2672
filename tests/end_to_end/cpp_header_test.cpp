// zelsolver.hpp beside the C functions and the closed forms.

#include "end_to_end.h"

#include <zelsolver/zelsolver.hpp>

#include <type_traits>

namespace end_to_end {
namespace {

class CppHeader : public EndToEnd {};

TEST_F(CppHeader, TellsAndPredictsWhatTheProjectHolds) {
  const zelsolver::Project original(project_);
  const zelsolver::Project project = original;
  EXPECT_EQ(project.GetInputs(), (std::vector<std::string>{"x", "y", kThirdInput}));
  EXPECT_EQ(project.GetOutputs(),
            (std::vector<std::string>{"mass", "flat", "stress[0]", "stress[1]", "stress[2]"}));
  EXPECT_EQ(project.GetCriteria(), (std::vector<std::string>{"goal", "limit"}));
  ASSERT_EQ(project.GetBounds().size(), kInputs);
  EXPECT_EQ(project.GetBounds()[2].lower, 10.0);
  EXPECT_EQ(project.GetBounds("sum").upper, 3.0);  // x + y, no input
  EXPECT_EQ(project.GetReferenceValue("thickness"), 3.0);
  EXPECT_EQ(project.GetCoPs("mass"), (std::vector<double>{0.5, 0.3, 0.1, 0.9}));
  EXPECT_EQ(project.GetFiltered("flat"), (std::vector<bool>{false, true, true}));

  const std::vector<double> out = project.Solve(kInside, ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA);
  ASSERT_EQ(out.size(), kDesigns * (kOutputs + kCriteria));
  std::array<double, kDesigns * kOutputs> responses{};
  project.Solve({kInside.data(), kInside.size()}, ZEL_SOLVE_RESPONSES, responses);
  for (std::size_t d = 0; d < kDesigns; ++d) {
    for (std::size_t k = 0; k < kOutputs; ++k) {
      EXPECT_NEAR(out[k * kDesigns + d],
                  PlateOutput(k, kInside[d], kInside[kDesigns + d], kInside[2 * kDesigns + d]),
                  kFit);
      EXPECT_EQ(responses[k * kDesigns + d], out[k * kDesigns + d]);
    }
    EXPECT_EQ(out[kOutputs * kDesigns + d * kCriteria], out[d]);  // "goal" is the mass
  }
  // Differences of values up to 60 over 1e-4 of the range, see dzel2_get_per_response().
  const auto extras = project.SolveResponse(
      "mass", kInside, ZEL_RESPONSE_GRADIENTS | ZEL_RESPONSE_DENSITIES | ZEL_RESPONSE_ERRORS);
  ASSERT_EQ(extras.size(), kDesigns * (kInputs + 1 + 4));
  EXPECT_NEAR(extras[kInputs + 1], -3.0, 1e-6);  // by y, second design
  EXPECT_EQ(project.Solve(kInside, ZEL_SOLVE_DENSITIES | ZEL_SOLVE_ERRORS).size(),
            kDesigns * 5 * kOutputs);
  EXPECT_TRUE(project.Solve(std::vector<double>()).empty());
  static_assert(!std::is_constructible<zelsolver::Span<double>, const std::vector<double>&>::value,
                "results cannot go into constant memory");
}

TEST_F(CppHeader, SetsTheNumberOfThreads) {
  zelsolver::SetNumThreads(3);
  EXPECT_STREQ(std::getenv("ZELSOLVER_NUM_THREADS"), "3");
  EXPECT_THROW(zelsolver::SetNumThreads(1025), std::invalid_argument);
  zelsolver::SetNumThreads(0);
  EXPECT_EQ(std::getenv("ZELSOLVER_NUM_THREADS"), nullptr);
}

TEST_F(CppHeader, FailsWithTheLibrarysTextAndStatus) {
  const zelsolver::Project project(project_);
  std::vector<double> little(kDesigns * kOutputs - 1, 7.0);
  const auto expect = [](int status, const std::string& text, const auto& call) {
    try {
      call();
      ADD_FAILURE() << "nothing thrown: " << text;
    } catch (const zelsolver::Error& error) {
      EXPECT_EQ(error.GetStatus(), status) << error.what();
      EXPECT_THAT(error.what(), testing::HasSubstr(text));
    }
  };
  expect(ZEL_ERROR, project_ + ": " + kViolation, [&] { project.Solve(kOutside); });
  expect(ZEL_ERROR, "/no/file: Initializing", [] { zelsolver::Project("/no/file"); });
  expect(ZEL_ERROR, "Signature", [&] { zelsolver::Project(project_, std::string(128, '0')); });
  expect(ZEL_ERROR, "weight", [&] { project.GetCoPs("weight"); });
  expect(ZEL_BAD_ARGUMENTS, "4 values are no designs of 3 inputs",
         [&] { project.Solve(std::vector<double>(4)); });
  expect(ZEL_BAD_ARGUMENTS, "9", [&] { project.Solve(kInside, ZEL_SOLVE_RESPONSES, little); });
  EXPECT_EQ(little, std::vector<double>(little.size(), 7.0));
  // No memory is touched before the sizes are seen to be too large.
  const std::size_t huge = std::size_t{3} << 31;
  expect(ZEL_BAD_ARGUMENTS, "too many for one call", [&] {
    project.Solve({kInside.data(), huge}, ZEL_SOLVE_RESPONSES, little);
  });
}

}  // namespace
}  // namespace end_to_end
