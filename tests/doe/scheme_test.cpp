#include "doe/doe.h"
#include "foundation/text.h"
#include "support/files.h"
#include "support/testing.h"

#include <regex>

namespace {

using namespace corvath::math;
using Eigen::VectorXd;
using support::MessageOfExactly;

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

TEST(Scheme, TextsAndNumbersBelongTogether) {
  EXPECT_EQ(SamplingTypeText(14), L"D-optimal quadratic nomixed");
  for (std::int32_t type = 0; type <= 22; ++type)
    EXPECT_EQ(SamplingTypeFromText(SamplingTypeText(type)), static_cast<eSamplingType>(type));
  for (const int none : {-1, 23, 24}) EXPECT_EQ(SamplingTypeText(none), L"");
  EXPECT_FALSE(SamplingTypeFromText(L""));
  EXPECT_FALSE(SamplingTypeFromText(L"sobol sequence"));
}

VectorXd ReadNumbers(const std::string& text) {
  std::istringstream stream(text);
  const std::vector<double> numbers{std::istream_iterator<double>(stream), {}};
  return Eigen::Map<const VectorXd>(numbers.data(), static_cast<Eigen::Index>(numbers.size()));
}

/// The text of a refusal to build, which changes nothing.
std::string BuildRefusal(int type, std::uint64_t dim, std::uint64_t level,
                         const StateLists& lists) {
  DOE doe(dim, 1, lists);
  doe.Build(kPlainMonteCarlo, 3, false);
  DOE same = doe;
  const std::string text =
      MessageOfExactly<std::domain_error>([&] { doe.Build(type, level, false); });
  for (DOE* object : {&doe, &same}) object->Build(kPlainMonteCarlo, 2, true);
  EXPECT_EQ(doe.GetDesigns(), same.GetDesigns());
  return text;
}

TEST(Scheme, HasTheOutcomesOfTheFile) {
  std::istringstream file(support::ReadFile(TEST_SCHEMES));
  const std::regex form(R"re((\w+) "(.*)" (\d+) (\d+)((?: \{.*?\})*) =>(.*))re"),
      braces(R"(\{(.*?)\})");
  std::smatch parts;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.substr(0, 2) == "//") continue;
    SCOPED_TRACE(line);
    ASSERT_TRUE(std::regex_match(line, parts, form));
    const std::string kind = parts[1], states = parts[5], outcome = parts[6];
    const auto type = *SamplingTypeFromText(corvath::utils::FromUtf8(parts[2].str()));
    const std::uint64_t dim = std::stoull(parts[3]), level = std::stoull(parts[4]);
    StateLists lists;
    for (std::sregex_iterator list(states.begin(), states.end(), braces), end; list != end; ++list)
      lists.push_back(ReadNumbers((*list)[1]));
    if (kind == "points") {
      DOE doe(dim, 1, lists);
      doe.Build(type, level, false);
      std::string points;
      for (const std::vector<double>& design : doe.GetDesigns()) {
        std::ostringstream text;
        for (const double x : design) text << ' ' << x;
        points += (points.empty() ? "" : ",") + text.str();
      }
      EXPECT_EQ(points, outcome);
    } else if (kind == "counts") {
      EXPECT_EQ(NumDesigns(type, dim, level, lists), std::stoull(outcome));
    } else {
      const auto count = [&] { NumDesigns(type, dim, level, lists); };
      EXPECT_EQ(' ' + (kind == "refuses" ? MessageOfExactly<std::domain_error>(count)
                                         : BuildRefusal(type, dim, level, lists)),
                outcome);
    }
  }
}

TEST(Scheme, LargestLevelsAreTheLastThatCount) {
  EXPECT_EQ(MaxLevel(kFullFactorial, 2), 4294967295U);
  EXPECT_EQ(MaxLevel(kFullFactorial, 3), 2642245U);  // its cube is 1.8446724e19
  EXPECT_EQ(MaxLevel(kFullFactorial, 64), 1U);
  EXPECT_EQ(MaxLevel(kAxialPoints, 3), (kMax - 1) / 3);
  EXPECT_EQ(MaxLevel(kStarPoints, 5), kMax / 10);
  EXPECT_EQ(MaxLevel(kCentralComposite, 5), 2U);
  EXPECT_EQ(MaxLevel(kDOptimalLinear, 5), 1U);
  EXPECT_EQ(MaxLevel(kSobolSequence, 5), kMax);
  for (const int type : {kFullFactorial, kAxialPoints, kStarPoints})
    for (const std::uint64_t d : {2U, 3U, 7U}) {
      const std::uint64_t level = MaxLevel(type, d);
      EXPECT_GT(NumDesigns(type, d, level), level);
      EXPECT_ERROR(std::domain_error,
                   "Discretisation level (" + std::to_string(level + 1) +
                       ") does not fit the maximum value for the choosen DOE method (" +
                       std::to_string(level) + ").",
                   NumDesigns(type, d, level + 1));
    }
}

TEST(Scheme, BuildsAtOnceOrRefuses) {
  EXPECT_EQ(NumDesigns(kNoSampling, 2, 1, {}), 0u);
  for (const std::uint64_t count : {std::uint64_t{1} << 40, std::uint64_t{1} << 62, kMax})
    for (std::int32_t type = 0; type <= 23; ++type) {
      // Either there is an answer at once, or a refusal: no memory runs out.
      DOE doe(3, 1);
      try {
        doe.Build(type, count, false);
        EXPECT_LT(doe.GetDesigns().size(), 100U) << type;
      } catch (const std::logic_error&) {  // std::domain_error is one
      }
    }
  for (int type = kDOptimalCustomizable; type <= kDOptimalQuadratic; ++type)
    EXPECT_ERROR(std::logic_error, "Can not build d-optimal in classic DOE",
                 DOE(2, 1).Build(type, 5, false));
  EXPECT_THROW(DOE(2, 1, {VectorXd::LinSpaced(3, -1.0, 1.0)}), std::invalid_argument);
  EXPECT_THROW(DOE(1, 1, {VectorXd::Constant(1, std::nan(""))}), std::invalid_argument);
}

TEST(Scheme, WithoutDimensionsOrWithAnUnknownNumberNothingIsBuilt) {
  DOE none(1);
  for (int type = -1; type <= 24; ++type) none.Build(type, 20, false);
  EXPECT_TRUE(none.GetDesigns().empty());
  DOE doe(2, 1);
  doe.Build(kPlainMonteCarlo, 3, false);
  for (const int type : {-1, 23, 24}) {
    doe.Build(type, 20, true);
    EXPECT_EQ(doe.GetDesigns().size(), 3U);
  }
  doe.Build(99, 20, false);
  EXPECT_TRUE(doe.GetDesigns().empty());
  for (const int type : {7, 8, 9, 10, 11, 18, 20, 22}) doe.Build(type, 0, false);
  EXPECT_TRUE(doe.GetDesigns().empty());
}

}  // namespace
