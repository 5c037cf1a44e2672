#include "design/parameters/discrete_states.h"

#include "support/message_of.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace corvath::algorithm::datatypes;
using Type = corvath::enums::DesignEntry;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

template <class T>
std::vector<CDesignEntry> Entries(std::initializer_list<T> values) {
  std::vector<CDesignEntry> result;
  for (const T& value : values) result.emplace_back(value);
  return result;
}

}  // namespace

TEST(DiscreteStates, RoundsHalfAwayFromZeroWithinTheIntegers) {
  const std::pair<double, std::int64_t> cases[] = {
      {1.5, 2},           {2.5, 3},
      {-0.5, -1},         {-1.4, -1},
      {0.0, 0},           {1e300, kMax},
      {-1e300, kMin},     {kInfinity, kMax},
      {-kInfinity, kMin}, {std::nan(""), kMin},
      {0x1p63, kMax},     {0x1p63 - 1024.0, kMax - 1023}};
  for (const auto& [value, expected] : cases) EXPECT_EQ(RoundToInteger(value), expected) << value;
}

TEST(DiscreteStates, FindsTheNearestStateAndTheUpperOneOfATie) {
  const auto reals = Entries({4.0, 1.0, 2.0});
  const auto integers = Entries({3, 1});
  const auto truth = Entries({false, true});
  struct {
    CDesignEntry value;
    const std::vector<CDesignEntry>& states;
    CDesignEntry expected;
  } const cases[] = {
      {CDesignEntry(2.9), reals, CDesignEntry(2.0)},
      {CDesignEntry(3.0), reals, CDesignEntry(4.0)},
      {CDesignEntry(100.0), reals, CDesignEntry(4.0)},
      {CDesignEntry(kInfinity), reals, CDesignEntry(4.0)},
      {CDesignEntry(-1.0), reals, CDesignEntry(1.0)},
      {CDesignEntry(std::nan("")), reals, CDesignEntry(1.0)},
      {CDesignEntry(1.6), integers, CDesignEntry(3)},  // rounds to 2, and the tie goes up
      {CDesignEntry(1.49), integers, CDesignEntry(1)},
      {CDesignEntry(2), integers, CDesignEntry(3)},
      {CDesignEntry(0.5), truth, CDesignEntry(true)},
      {CDesignEntry(1.49), truth, CDesignEntry(true)},
      {CDesignEntry(1.5), truth, CDesignEntry(false)},
      {CDesignEntry(0.4), truth, CDesignEntry(false)},
      {CDesignEntry(1.0), Entries({true}), CDesignEntry(true)},
  };
  for (const auto& [value, states, expected] : cases) {
    const CDesignEntry nearest = NearestDiscreteState(value, states);
    EXPECT_EQ(nearest.GetType(), expected.GetType()) << value.ToDouble();
    EXPECT_EQ(nearest, expected) << value.ToDouble();
  }
  // Differences that no 64-bit number holds.
  const std::vector<CDesignEntry> far{CDesignEntry(kMin), CDesignEntry(kMax)};
  EXPECT_EQ(NearestDiscreteState(CDesignEntry(1), far), CDesignEntry(kMax));
  EXPECT_EQ(NearestDiscreteState(CDesignEntry(-1e6), far), CDesignEntry(kMin));
}

TEST(DiscreteStates, AgreesWithAWalkOverAllStates) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> uniform(-10.0, 10.0);
  for (int round = 0; round < 50; ++round) {
    std::vector<CDesignEntry> states;
    for (int i = 0; i <= round; ++i) states.emplace_back(std::round(uniform(random)));
    const StatesByValue table(states);
    for (int i = 0; i < 20; ++i) {
      const double value = std::round(4.0 * uniform(random)) / 4.0;  // many ties
      double nearest = states.front().ToDouble();
      for (const CDesignEntry& entry : states) {
        const double state = entry.ToDouble();
        const double gain = std::abs(nearest - value) - std::abs(state - value);
        if (gain > 0.0 || (gain == 0.0 && state > nearest)) nearest = state;
      }
      EXPECT_EQ(table.Nearest(CDesignEntry(value)), CDesignEntry(nearest)) << value;
    }
  }
}

TEST(DiscreteStates, RefusesWhatHasNoNearestState) {
  const auto refusal = [](const CDesignEntry& value, const std::vector<CDesignEntry>& states) {
    return support::MessageOf([&] { NearestDiscreteState(value, states); });
  };
  EXPECT_EQ(refusal(CDesignEntry(1.0), {}), "Can not handle empty list of discrete states");
  EXPECT_EQ(refusal(CDesignEntry(L"a"), Entries({L"a"})),
            "Can not handle string to be ordinal discrete by value");
  EXPECT_EQ(refusal(CDesignEntry(1.0), {CDesignEntry(corvath::math::Variant<double>(1.0))}),
            "Can not handle variant to be ordinal discrete by value");
  EXPECT_EQ(refusal(CDesignEntry(true), Entries({false, true})),
            "Error when handling ordinal discrete parameter by value: Entry is not of type REAL.");
  const std::string unequal =
      "Error when handling ordinal discrete parameter by value: Inequal domain types.";
  EXPECT_EQ(refusal(CDesignEntry(1), Entries({1.0})), unequal);
  EXPECT_EQ(refusal(CDesignEntry(true), Entries({1})), unequal);
}

TEST(DiscreteStates, FindsPositionsInTheOrderGiven) {
  const StatesByIndex texts(Entries({L"a", L"b", L"c"}));
  EXPECT_EQ(texts.Find(CDesignEntry(L"b")), 1u);
  EXPECT_FALSE(texts.Find(CDesignEntry(L"bb")));
  EXPECT_FALSE(texts.Find(CDesignEntry(1.0)));
  const std::pair<double, const wchar_t*> cells[] = {
      {1.4, L"b"}, {1.5, L"c"}, {-3.0, L"a"}, {17.0, L"c"}, {1e300, L"c"}, {std::nan(""), L"a"}};
  for (const auto& [cell, expected] : cells)
    EXPECT_EQ(texts.At(cell), CDesignEntry(expected)) << cell;

  const StatesByIndex unsorted(Entries({3.0, 1.0, 2.0}));
  EXPECT_EQ(unsorted.Find(CDesignEntry(1.0)), 1u);
  EXPECT_EQ(unsorted.At(0.0), CDesignEntry(3.0));

  const StatesByIndex sorted(Entries({1.0, 2.0, 3.0}));
  EXPECT_EQ(sorted.Find(CDesignEntry(std::nextafter(3.0, 4.0))), 2u);
  EXPECT_EQ(sorted.Find(CDesignEntry(std::nextafter(3.0, 2.0))), 2u);
  EXPECT_EQ(sorted.Find(CDesignEntry(3)), 2u);  // as numbers
  EXPECT_FALSE(sorted.Find(CDesignEntry(L"3")));
  EXPECT_FALSE(sorted.Find(CDesignEntry(4.0)));
  EXPECT_FALSE(StatesByIndex().Find(CDesignEntry(1.0)));
  EXPECT_EQ(support::MessageOf([] { StatesByIndex().At(0.0); }),
            "Can not handle empty list of discrete states");
}
