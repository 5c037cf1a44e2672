#include "end_to_end.h"

#include <numeric>

namespace end_to_end {
namespace {

using testing::Each;

constexpr double kUntouched = -77.0;
constexpr unsigned int kN = kDesigns;

class Solve : public EndToEnd {
 protected:
  /// Solves with an array that is longer than `size` says; the rest must stay. For one response, if
  /// one is named.
  int Call(unsigned int flags, unsigned int size, const std::vector<double>& inputs = kInside,
           const char* response = nullptr) {
    out_.assign(size + 3, kUntouched);
    const auto count = static_cast<unsigned int>(inputs.size());
    const double* const in = inputs.data();
    const int status =
        response == nullptr
            ? dzel2_solve(path_, kN, in, count, flags, out_.data(), size)
            : dzel2_get_per_response(path_, kN, in, count, response, flags, out_.data(), size);
    EXPECT_THAT(Slice(size, 3), Each(kUntouched));
    out_.resize(size);
    return status;
  }
  int CallResponse(const char* response, unsigned int flags, unsigned int size,
                   const std::vector<double>& inputs = kInside) {
    return Call(flags, size, inputs, response);
  }
  std::vector<double> Slice(std::size_t begin, std::size_t size) const {
    return std::vector<double>(out_.begin() + static_cast<long>(begin),
                               out_.begin() + static_cast<long>(begin + size));
  }
  void ExpectResponses(const double* values, const std::vector<double>& inputs = kInside) {
    for (std::size_t k = 0; k < kOutputs; ++k)
      for (std::size_t d = 0; d < kN; ++d)
        EXPECT_NEAR(values[k * kN + d],
                    PlateOutput(k, inputs[d], inputs[kN + d], inputs[2 * kN + d]), kFit);
  }

  std::vector<double> out_;
};

TEST_F(Solve, Responses) {
  EXPECT_EQ(Call(2, 10), 0);
  ExpectResponses(out_.data());

  std::vector<double> longer = kInside;
  longer.resize(20, kUntouched);
  EXPECT_EQ(Call(2, 15, longer), 0) << "more values and more room than needed";
  ExpectResponses(out_.data());
  EXPECT_EQ(out_[10], kUntouched);

  out_.assign(10, kUntouched);
  EXPECT_EQ(dzel_solve(path_, kN, kInside.data(), out_.data()), 0);
  ExpectResponses(out_.data());
  double* buffer = nullptr;
  EXPECT_EQ(dzel_allocate_and_solve(path_, kN, kInside.data(), &buffer), 0);
  ExpectResponses(buffer);
}

TEST_F(Solve, TheArraysMayShareMemory) {
  std::vector<double> expected(50);
  ASSERT_EQ(dzel2_solve(path_, kN, kInside.data(), 6, 2 + 16, expected.data(), 50), 0);
  for (const std::size_t offset : {0u, 3u, 5u}) {
    std::vector<double> shared(56);
    std::copy(kInside.begin(), kInside.end(), shared.begin() + static_cast<long>(offset));
    EXPECT_EQ(dzel2_solve(path_, kN, shared.data() + offset, 6, 2 + 16, shared.data(), 50), 0);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), shared.begin())) << offset;
  }
}

TEST_F(Solve, BlocksStandInOrderWithoutGaps) {
  // Each block alone, then all of them: the same numbers, one after the other.
  std::vector<double> expected;
  for (const auto& [flag, size] : {std::pair(2u, 10u), {4u, 4u}, {8u, 10u}, {16u, 40u}}) {
    EXPECT_EQ(Call(flag, size), 0) << LastError();
    expected.insert(expected.end(), out_.begin(), out_.end());
  }
  EXPECT_EQ(Call(2 + 4 + 8 + 16, 64), 0);
  EXPECT_EQ(out_, expected);
  EXPECT_EQ(Call(8 + 16, 50), 0);
  EXPECT_EQ(Slice(0, 50), std::vector<double>(expected.begin() + 14, expected.end()));
}

TEST_F(Solve, CriteriaFollowDesignByDesign) {
  EXPECT_EQ(Call(2 + 4, 14), 0) << LastError();
  for (std::size_t d = 0; d < kN; ++d) {
    EXPECT_EQ(out_[10 + 2 * d], out_[d]) << "goal: mass";
    EXPECT_EQ(out_[11 + 2 * d], 3.0 - out_[2 * kN + d]) << "limit: stress[0] <= 3";
  }
}

TEST_F(Solve, DensitiesAndErrorsStandOutputByOutput) {
  EXPECT_EQ(Call(8 + 16, 50), 0);
  const std::vector<double> all = out_;
  const char* const outputs[] = {"mass", "flat", "stress[0]", "stress[1]", "stress[2]"};
  for (std::size_t k = 0; k < kOutputs; ++k) {
    ASSERT_EQ(CallResponse(outputs[k], 4 + 8, 5 * kN), 0) << LastError();
    EXPECT_EQ(Slice(0, kN), std::vector<double>(all.begin() + static_cast<long>(k * kN),
                                                all.begin() + static_cast<long>((k + 1) * kN)));
    EXPECT_TRUE(std::equal(out_.begin() + kN, out_.end(),
                           all.begin() + static_cast<long>(kOutputs * kN + 4 * kN * k)));
    for (std::size_t d = 0; d < kN; ++d) EXPECT_GT(out_[d], 0.0) << "a density";
    for (std::size_t d = 0; d < kN; ++d) EXPECT_NEAR(out_[kN + 4 * d], 1.0, 1e-9) << "exact fit";
  }
}

TEST_F(Solve, ChecksSizesAndSaysBoth) {
  const std::tuple<unsigned int, unsigned int, const char*> cases[] = {
      {2, 9, "Is 9 and should be 10."},
      {4, 3, "Is 3 and should be 4."},
      {8, 9, "Is 9 and should be 10."},
      {30, 63, "Is 63 and should be 64."},
      {18, 2, "Is 2 and should be 50."}};
  for (const auto& [flags, size, numbers] : cases) {
    EXPECT_EQ(Answer(Call(flags, size)),
              std::string("41 Error in Zelsolver API: The preallocated uint array is too small. ") +
                  numbers);
    EXPECT_THAT(out_, Each(kUntouched));
  }
  EXPECT_EQ(Answer(Call(2, 10, std::vector<double>(5))),
            "41 Error in Zelsolver API: There are too few inputs for the specified amount of "
            "designs. Is 5 and should be 6.");
  EXPECT_THAT(out_, Each(kUntouched));
  EXPECT_EQ(Call(2, 9, kOutside), 2) << "bounds before sizes";
  // 2^32 - 1 designs: the product doesn't wrap.
  EXPECT_EQ(dzel2_solve(path_, 4294967295u, kInside.data(), 6, 2, out_.data(), 10), 41);
  EXPECT_THAT(LastError(), testing::HasSubstr("should be 12884901885."));
}

TEST_F(Solve, NothingAskedForIsNothingDone) {
  for (const unsigned int flags : {0u, 1u, 32u}) {
    EXPECT_EQ(Call(flags, 5, kOutside), 0) << LastError();
    EXPECT_THAT(out_, Each(kUntouched));
  }
  EXPECT_EQ(dzel2_solve(path_, kN, kInside.data(), 6, 0, nullptr, 0), 0);
  EXPECT_EQ(dzel2_solve(path_, 0, nullptr, 0, 2, nullptr, 0), 0);
  EXPECT_EQ(dzel2_solve(path_, kN, kInside.data(), 5, 0, nullptr, 0), 41);
}

TEST_F(Solve, ExtrapolatesOnRequest) {
  for (const unsigned int block : {2u, 4u, 8u, 16u}) {
    EXPECT_EQ(Call(block, 40, kOutside), 2);
    EXPECT_EQ(LastError(), kViolation);
    EXPECT_THAT(out_, Each(kUntouched));
    EXPECT_EQ(Call(block + 1, 40, kOutside), 0);
  }
  out_.assign(10, kUntouched);
  EXPECT_EQ(dzel_solve(path_, kN, kOutside.data(), out_.data()), 1);
  EXPECT_EQ(LastError(), kViolation);
  EXPECT_EQ(dzel_solve_extrapolate(path_, kN, kOutside.data(), out_.data(), 0), 1);
  EXPECT_THAT(out_, Each(kUntouched));
  EXPECT_EQ(dzel_solve_extrapolate(path_, kN, kOutside.data(), out_.data(), 5), 0);
  ExpectResponses(out_.data(), kOutside);
  double* buffer = nullptr;
  EXPECT_EQ(dzel_allocate_and_solve(path_, kN, kOutside.data(), &buffer), 1);
  EXPECT_EQ(buffer, nullptr);
  EXPECT_EQ(dzel_allocate_and_solve_extrapolate(path_, kN, kOutside.data(), &buffer, 1), 0);
  ExpectResponses(buffer, kOutside);
  EXPECT_EQ(Answer(dzel_allocate_and_solve(path_, 0, kInside.data(), &buffer)),
            "1 Approximation failed. No results returned.");
}

TEST_F(Solve, SaysWhenThereAreNoErrorsToDeliver) {
  // The only model is that of one element of a vector: the response isn't covered.
  const std::string project = Project("one_element.vrdb");
  std::vector<double> out(4, kUntouched);
  EXPECT_EQ(Answer(dzel2_solve(project.c_str(), kN, kInside.data(), 6, 2 + 8, out.data(), 4)),
            "1 Error extracting densities and errors.");
  EXPECT_NEAR(out[0], PlateOutput(3, 0.0, 0.5, 12.0), kFit) << "the responses stay";
  EXPECT_EQ(out[2], kUntouched);
  EXPECT_EQ(dzel2_solve(path_, 0, nullptr, 0, 8, nullptr, 0), 1);
}

TEST_F(Solve, OneResponseAtATime) {
  // stress[2] = 0.1 z^2 - x z: gradients (-z, 0, 0.2 z - x), by central differences over 1e-4 of
  // the range at values near 60.
  const double tolerance = 1e-6;
  ASSERT_EQ(CallResponse("stress[2]", 2 + 4 + 8, 6 + 2 + 8), 0) << LastError();
  const double gradients[] = {-12.0, 0.0, 2.4, -18.0, 0.0, 2.1};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(out_[i], gradients[i], tolerance);
  const std::vector<double> densities = Slice(6, 2);
  const std::vector<double> errors = Slice(8, 8);

  out_.assign(6, kUntouched);
  EXPECT_EQ(dzel_gradients_per_response(path_, kN, kInside.data(), "stress[2]", out_.data()), 0);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(out_[i], gradients[i], tolerance);
  out_.assign(8, kUntouched);
  EXPECT_EQ(dzel_errors_per_response(path_, kN, kInside.data(), "stress[2]", out_.data()), 0);
  EXPECT_EQ(out_, errors);
  out_.assign(2, kUntouched);
  EXPECT_EQ(dzel_density_per_response(path_, kN, kInside.data(), "stress[2]", out_.data(), 2), 0);
  EXPECT_EQ(out_, densities);
  EXPECT_EQ(
      Answer(dzel_density_per_response(path_, kN, kInside.data(), "stress[2]", out_.data(), 1)),
      "1 Error in Zelsolver API: The preallocated response array is too small. Is 1 and should be "
      "2.");

  for (const unsigned int flags : {0u, 1u}) {
    EXPECT_EQ(CallResponse("mass", flags, 4, kOutside), 0);
    EXPECT_THAT(out_, Each(kUntouched));
  }
  EXPECT_EQ(Answer(CallResponse("mass", 12, 9)),
            "41 Error in Zelsolver API: The preallocated response array is too small. Is 9 and "
            "should be 10.");
  EXPECT_EQ(CallResponse("mass", 2, 6, std::vector<double>(5)), 41);
  EXPECT_EQ(Answer(CallResponse("none", 2, 6)),
            "2 Surrogate info with name \"none\" does not exist.");
  EXPECT_EQ(Answer(dzel2_get_per_response(path_, 0, nullptr, 0, "mass", 12, nullptr, 0)),
            "1 Error extracting densities and Errors.");
}

TEST_F(Solve, OneResponseKeepsTheBounds) {
  std::vector<double> out(8, kUntouched);
  for (const unsigned int block : {2u, 4u, 8u}) {
    EXPECT_EQ(CallResponse("mass", block, 8, kOutside), 2);
    EXPECT_EQ(LastError(), kViolation);
    EXPECT_THAT(out_, Each(kUntouched));
    EXPECT_EQ(CallResponse("mass", block + 1, 8, kOutside), 0);
  }
  const double* const in = kOutside.data();
  for (const unsigned int extrapolate : {0u, 1u}) {
    const int expected = extrapolate == 0 ? 1 : 0;
    EXPECT_EQ(
        dzel_gradients_per_response_extrapolate(path_, kN, in, "mass", out.data(), extrapolate),
        expected);
    EXPECT_EQ(dzel_errors_per_response_extrapolate(path_, kN, in, "mass", out.data(), extrapolate),
              expected);
    EXPECT_EQ(
        dzel_density_per_response_extrapolate(path_, kN, in, "mass", out.data(), 2, extrapolate),
        expected);
  }
}

}  // namespace
}  // namespace end_to_end
