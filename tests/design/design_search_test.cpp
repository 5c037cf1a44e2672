#include "design/designs/design_manager.h"
#include "foundation/closeness.h"
#include "support/message_of.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;

Design MakeDesign(std::uint64_t id, const EntrySequence& parameters) {
  return Design(parameters, DesignId(id));
}

std::vector<std::uint64_t> Search(const DesignManager& designs, const std::vector<Design>& wanted,
                                  bool reverse = false,
                                  const std::set<std::wstring>& ignored = {}) {
  std::vector<std::uint64_t> numbers;
  for (const DesignId& id : designs.ExtractDesignNumbers(wanted, reverse, ignored))
    numbers.push_back(id.GetValue());
  return numbers;
}

using Numbers = std::vector<std::uint64_t>;

/// The container's rule, pair by pair: the ids that the search must give.
Numbers SearchPairByPair(const DesignManager& designs, const std::vector<Design>& wanted) {
  Numbers numbers;
  for (const Design& design : wanted) {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < designs.size() && found == 0; ++i) {
      bool matches = true;
      for (const auto& [name, value] : design.GetParameters())
        matches =
            matches && IsClose(designs[i].GetParameters().Get(name), value, 2.220446049250313e-14);
      if (matches) found = designs[i].GetId().GetValue();
    }
    numbers.push_back(found);
  }
  return numbers;
}

}  // namespace

TEST(DesignSearch, FindsTheFirstOrLastMatch) {
  const auto at = [](std::uint64_t id, double x, double y) {
    return MakeDesign(id, {{L"x", CDesignEntry(x)}, {L"y", CDesignEntry(y)}});
  };
  const DesignManager designs(
      {at(1, 1.0, 0.0), at(2, 2.0, 0.0), at(3, 1.0, 1e-17), at(4, 1.0, 5.0)});
  const std::vector<Design> wanted = {at(0, 2.0, -1e-17), at(0, 1.0 + 1e-14, 0.0), at(0, 3.0, 0.0)};
  EXPECT_EQ(Search(designs, wanted), (Numbers{2, 1, 0}));
  EXPECT_EQ(Search(designs, wanted, /*reverse=*/true), (Numbers{2, 3, 0}));
  EXPECT_EQ(Search(designs, wanted, /*reverse=*/true, {L"y"}), (Numbers{2, 4, 0}));
}

TEST(DesignSearch, ComparesByNameAndType) {
  const auto with = [](std::uint64_t id, const CDesignEntry& a, const CDesignEntry& b) {
    return MakeDesign(id, {{L"a", a}, {L"b", b}});
  };
  const DesignManager designs({with(1, CDesignEntry(L"s"), CDesignEntry()),
                               with(2, CDesignEntry(7), CDesignEntry(Vec({1.0, 2.0}))),
                               with(3, CDesignEntry(true), CDesignEntry(0.5))});
  EXPECT_EQ(Search(designs, {MakeDesign(0, {{L"b", CDesignEntry()}, {L"a", CDesignEntry(L"s")}}),
                             with(0, CDesignEntry(7.0), CDesignEntry(Vec({1.0, 2.0}))),
                             with(0, CDesignEntry(Scalar(1.0)), CDesignEntry(Scalar(0.5))),
                             with(0, CDesignEntry(L"7"), CDesignEntry(Vec({1.0, 2.0}))),
                             MakeDesign(0, {{L"a", CDesignEntry(true)}})}),
            (Numbers{1, 2, 3, 0, 0}));
}

TEST(DesignSearch, AgreesWithAComparisonOfAllPairs) {
  // A few values moved by steps just within the tolerance, so that neighbours chain together; values
  // near zero, infinities and NaN; numbers of all types.
  std::mt19937 random(7);
  const auto pick = [&random](int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
  };
  const auto value = [&] {
    const double bases[] = {0.0, 1.0, -1.0, 3.0, 1e-16, 1e-17, HUGE_VAL, std::nan("")};
    const double number = bases[pick(8)] * (1.0 + 2.1e-14 * pick(3));
    switch (pick(6)) {
      case 0:
        return CDesignEntry(pick(4));
      case 1:
        return CDesignEntry(Scalar(number, pick(2)));
      case 2:
        return CDesignEntry(pick(2) == 0);
      default:
        return CDesignEntry(number);
    }
  };
  const auto design = [&](std::uint64_t id) {
    return MakeDesign(id, {{L"x", value()}, {L"y", value()}});
  };
  DesignManager designs;
  std::vector<Design> wanted;
  for (std::uint64_t id = 1; id <= 300; ++id) {
    designs.Add(design(id));
    wanted.push_back(design(0));
  }
  EXPECT_EQ(Search(designs, wanted), SearchPairByPair(designs, wanted));
}

TEST(DesignSearch, RefusesWhatCannotBeCompared) {
  const Design one = MakeDesign(1, {{L"x", CDesignEntry(1.0)}});
  const auto refusal = [](const DesignManager& designs, const std::vector<Design>& wanted) {
    return MessageOfExactly<std::domain_error>(
        [&] { designs.ExtractDesignNumbers(wanted, false, {}); });
  };
  const std::string empty = "Can't extract designs numbers from an empty design container.";
  EXPECT_EQ(refusal(DesignManager(), {one}), empty);
  EXPECT_EQ(refusal(DesignManager({one}), {}), empty);
  EXPECT_EQ(refusal(DesignManager({one}), {Design()}),
            "Number of parameters in design container doesn't fit to parameter value matrix.");
}
