#include "doe/doe.h"
#include "support/testing.h"

namespace {

using namespace corvath::math;
using Eigen::VectorXd;
using support::MessageOfExactly;

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

StateLists Lists(std::initializer_list<int> sizes) {
  StateLists lists;
  for (const int size : sizes) lists.push_back(VectorXd::LinSpaced(size, -1.0, 1.0));
  return lists;
}

TEST(Scheme, TextsAndNumbersBelongTogether) {
  EXPECT_EQ(SamplingTypeText(14), L"D-optimal quadratic nomixed");
  for (std::int32_t type = 0; type <= 22; ++type)
    EXPECT_EQ(SamplingTypeFromText(SamplingTypeText(type)), static_cast<eSamplingType>(type));
  for (const int none : {-1, 23, 24}) EXPECT_EQ(SamplingTypeText(none), L"");
  EXPECT_FALSE(SamplingTypeFromText(L""));
  EXPECT_FALSE(SamplingTypeFromText(L"sobol sequence"));
}

TEST(Scheme, CountsPoints) {
  const StateLists three = Lists({0, 3, 9});
  // Type, dimensions, level, states, points.
  const std::tuple<int, std::uint64_t, std::uint64_t, StateLists, std::uint64_t> cases[] = {
      {kFullFactorial, 3, 4, three, 4 * 3 * 4},
      {kAxialPoints, 2, 0, {}, 1},
      {kAxialPoints, 3, 4, three, 1 + 4 + 2 + 4},
      {kStarPoints, 3, 2, {}, 13},
      {kStarPoints, 3, 2, three, 1 + 4 + 2 + 4},
      {kKoshal, 4, 2, {}, 9 + 6},
      {kKoshalLinear, 4, 9, {}, 5},
      {kKoshalQuadratic, 4, 9, {}, 15},
      {kCentralComposite, 2, 2, {}, 9},
      {kMixedTerms, 5, 2, {}, 10},
      {kSobolSequence, 2, 15, {}, 15},
      {kPlainMonteCarlo, 2, kMax, {}, kMax},
      {kDOptimalLinear, 4, 1, {}, 8},      // 1.5 * 5 = 7.5, rounded up
      {kDOptimalLinear, 1, 1, {}, 2},      // all corners
      {kDOptimalLinear, 200, 1, {}, 302},  // 2^200 corners are more
      {kDOptimalQuadraticNoMixed, 3, 2, {}, 11},
      {kDOptimalQuadratic, 3, 2, {}, 15},
      {kBoxBehnken, 6, 0, {}, 49},
      {kBoxBehnken, 11, 0, {}, 177},
      {kBoxBehnken, 16, 0, {}, 385},
      {kFullCombinatorial, 2, 0, Lists({2, 3}), 6},
      {kFullCombinatorial, 2, 0, {}, 4},
      {kNoSampling, 2, 1, {}, 0}};
  for (const auto& [type, d, level, lists, count] : cases)
    EXPECT_EQ(NumDesigns(type, d, level, lists), count) << type << ' ' << d << ' ' << level;
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

TEST(Scheme, SaysWhatDoesNotFit) {
  const std::string low = "Discretisation level(", high = "Discretisation level (";
  const std::string parameters = "Number of Parameters (";
  const std::string minimum = ") does not fit the minimum value for the choosen DOE method (";
  const std::string maximum = ") does not fit the maximum value for the choosen DOE method (";
  const std::string states = " requires at least 3 states for each parameter.";
  const std::tuple<int, std::uint64_t, std::uint64_t, StateLists, std::string> cases[] = {
      {kFullFactorial, 2, 1, {}, low + "1" + minimum + "2)."},
      {kSobolSequence, 2, 14, {}, low + "14" + minimum + "15)."},
      {kAdvancedLatinHypercube, 2, 9, {}, low + "9" + minimum + "10)."},
      {kKoshal, 2, 3, {}, high + "3" + maximum + "2)."},
      {kDOptimalLinear, 201, 1, {}, parameters + "201" + maximum + "200)."},
      {kDOptimalQuadraticNoMixed, 76, 2, {}, parameters + "76" + maximum + "75)."},
      {kDOptimalQuadratic, 26, 2, {}, parameters + "26" + maximum + "25)."},
      {kCentralComposite, 1, 2, {}, parameters + "1" + minimum + "2)."},
      {kBoxBehnken, 2, 1, {}, parameters + "2" + minimum + "3)."},
      {kKoshalQuadratic, 2, 2, Lists({0, 2}), "Koshal quadratic" + states},
      {kCentralComposite, 2, 2, Lists({0, 2}), "Central composite" + states},
      {kBoxBehnken, 3, 2, Lists({0, 2, 0}), "Box & Behnken" + states},
      {kDOptimalQuadratic, 2, 2, Lists({2, 5}), "D-optimal quadratic" + states},
  };
  for (const auto& [type, d, level, lists, message] : cases)
    EXPECT_EQ(MessageOfExactly<std::domain_error>(
                  [&, t = type, n = d, l = level, &s = lists] { NumDesigns(t, n, l, s); }),
              message);
}

TEST(Scheme, BuildRefusesAndLeavesEverythingAsItWas) {
  constexpr std::uint64_t kTera = 1000000000000;
  const std::string too_large = " in 2 dimensions is too large.";
  const std::tuple<int, std::uint64_t, StateLists, std::string> cases[] = {
      {kKoshal, 3, {}, "Koshal designs not supported for polynomial degree higher than quadratic"},
      {kMixedTerms, 3, {}, "Mixed terms not supported for polynomial degree higher than quadratic"},
      {kKoshal, 2, Lists({1, 3}),
       "Koshal quadratic designs only supported for at least three levels"},
      {kBoxBehnken, 1, {}, "Box-Behnken designs only supported for at least three factors"},
      {kBoxBehnken, 1, Lists({2, 3, 3}),
       "Box-Behnken designs only supported for at least three levels"},
      {kFullFactorial, kTera, {}, "A sample of 2^64 or more points" + too_large},
      {kFullFactorial, 1000000, {}, "A sample of 1000000000000 points" + too_large},
      {kPlainMonteCarlo, kTera, {}, "A sample of 1000000000000 points" + too_large},
  };
  for (const auto& [type, level, lists, message] : cases) {
    DOE doe(lists.empty() ? 2 : lists.size(), 1, lists);
    doe.Build(kPlainMonteCarlo, 3, false);
    DOE same = doe;
    EXPECT_EQ(
        MessageOfExactly<std::domain_error>([&, t = type, l = level] { doe.Build(t, l, false); }),
        message);
    for (DOE* object : {&doe, &same}) object->Build(kPlainMonteCarlo, 2, true);
    EXPECT_EQ(doe.GetDesigns(), same.GetDesigns()) << message;
  }
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
  EXPECT_THROW(DOE(2, 1, Lists({3})), std::invalid_argument);
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
