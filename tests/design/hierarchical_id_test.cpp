#include "design/hierarchical_id.h"

#include "support/message_of.h"
#include "support/stored_form.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <utility>
#include <vector>

namespace {

using Id = corvath::utils::CHierachicalId<std::uint64_t>;

Id MakeId(const std::vector<std::uint64_t>& levels) {
  Id id(levels.front());
  for (std::size_t i = 1; i < levels.size(); ++i) id.Append(levels[i]);
  return id;
}

std::wstring Text(const Id& id) {
  std::wostringstream stream;
  stream << id;
  return stream.str();
}

/// The stored form: the levels in a vector, no object id.
std::string Stored(const std::vector<std::uint64_t>& levels) {
  return support::StoredForm<Id, false>(0).Raw("vec", levels).Write(0);
}

}  // namespace

TEST(HierarchicalId, OrdersLevelByLevelAndDeeperBeforeItsPrefix) {
  // In ascending order; every pair is compared both ways.
  const std::uint64_t huge = (std::uint64_t{1} << 63) + 1;
  const std::vector<Id> ascending = {MakeId({0}),           MakeId({1, 2, 5}), MakeId({1, 2}),
                                     MakeId({1, 3}),        MakeId({1}),       MakeId({2}),
                                     MakeId({2, 9}).Leaf(), MakeId({huge, 1}), MakeId({huge})};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << ", " << j;
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << ", " << j;
    }
  EXPECT_LT(MakeId({2, 9}), MakeId({3, 1}));
  EXPECT_NE(MakeId({1}), MakeId({1, 0}));
}

TEST(HierarchicalId, CopiesDeeplyAndMovesItsTail) {
  const Id source = MakeId({7, 0});
  Id copy = source;
  copy.Append(3);
  EXPECT_EQ(source, MakeId({7, 0}));
  EXPECT_EQ(source.Appended(3), copy);
  EXPECT_EQ(Text(copy), L"7.0.3");
  EXPECT_EQ(copy.Leaf(), Id(3));
  const Id moved = std::move(copy);
  EXPECT_EQ(Text(moved), L"7.0.3");
  EXPECT_EQ(copy, Id(7));  // NOLINT: what is left is part of the contract
  copy = moved;
  copy = *copy.GetNext();  // from its own tail
  EXPECT_EQ(Text(copy), L"0.3");
}

TEST(HierarchicalId, HashesAllLevels) {
  // Worked out apart, by the formula of the mixing step.
  EXPECT_EQ(hash_value(Id(0)), 0xe6546b64u);
  EXPECT_EQ(hash_value(Id(12)), 0xed18abc91aca4a9fu);
  EXPECT_EQ(hash_value(MakeId({12, 3, 1})), 0x946a06b7e61d90d0u);
}

TEST(HierarchicalId, StoresItsLevelsWithoutObjectIds) {
  const Id id = MakeId({7, 0, 3});
  EXPECT_EQ(support::Save(id), Stored({7, 0, 3}));
  Id loaded = MakeId({1, 2, 3, 4});
  support::LoadInto(support::Save(id), loaded);
  EXPECT_EQ(loaded, id);
  EXPECT_EQ(support::MessageOf([] { support::Load<Id>(Stored({})); }),
            "The file holds a design id of 0 levels.");
}

TEST(HierarchicalId, DeepChainsNeedNoStack) {
  std::vector<std::uint64_t> levels(65536, 1);
  const Id deep = support::Load<Id>(Stored(levels));
  const Id copy = deep;
  EXPECT_EQ(copy, deep);
  EXPECT_EQ(hash_value(copy), hash_value(deep));
  levels.push_back(1);
  EXPECT_EQ(support::MessageOf([&] { support::Load<Id>(Stored(levels)); }),
            "The file holds a design id of 65537 levels.");
}
