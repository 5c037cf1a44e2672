#include "design/designs/design_manager.h"

#include "foundation/exception.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;

DesignId Id(std::uint64_t top) {
  return DesignId(top);
}
DesignId Id(std::uint64_t top, std::uint64_t leaf) {
  return DesignId(top).Appended(leaf);
}

Design MakeDesign(const DesignId& id, double x) {
  return Design({{L"x", CDesignEntry(x)}}, id);
}

double X(const Design& design) {
  return design.GetParameters().Get(L"x").ToDouble();
}

Design WithResponse(const CDesignEntry& value) {
  Design design;
  design.SetResponses({{L"r", value}});
  return design;
}

Design WithCriterion(CriterionDescription::eType type, const CDesignEntry& value) {
  Design design;
  Criterion criterion(type, L"", L"r");
  criterion.SetValues(CDesignEntry(), CDesignEntry(), value, false);
  design.SetCriteria({{L"c", criterion}});
  return design;
}

std::string TemplateRefusal(const Design& a, const Design& b) {
  return MessageOfExactly<std::logic_error>([&] { DesignManager({a, b}).BuildTemplate(true); });
}

}  // namespace

TEST(DesignManager, FindsDesignsByIdAndByLeaf) {
  const DesignManager designs(
      {MakeDesign(Id(1), 1.0), MakeDesign(Id(1, 2), 2.0), MakeDesign(Id(5, 2), 3.0)});
  EXPECT_EQ(X(designs.GetDesign(Id(5, 2))), 3.0);
  EXPECT_EQ(designs.Find(Id(2)), nullptr);
  EXPECT_EQ(X(*designs.Find(Id(9, 2), /*by_leaf=*/true)), 2.0);
  EXPECT_EQ(designs.Find(Id(9, 3), /*by_leaf=*/true), nullptr);
  EXPECT_EQ(MessageOfExactly<corvath::utils::runtime_error>([&] { designs.GetDesign(Id(2)); }),
            "No such design");
  const std::vector<Design> some = designs.GetDesigns({Id(5, 2), Id(7), Id(1)});
  ASSERT_EQ(some.size(), 2u);
  EXPECT_EQ(X(some[0]), 3.0);
  EXPECT_EQ(X(some[1]), 1.0);
}

TEST(DesignManager, KeepsItsTablesUpToDate) {
  DesignManager designs({MakeDesign(Id(1), 1.0)});
  EXPECT_EQ(designs.Find(Id(2)), nullptr);  // builds the table
  designs.Add(MakeDesign(Id(2), 2.0));
  EXPECT_EQ(X(designs.GetDesign(Id(2))), 2.0);
  EXPECT_EQ(designs.BuildTemplate(false).GetParameters().size(), 1u);  // builds the template

  const DesignManager copy = designs;
  designs.AddOrReplace(MakeDesign(Id(2), 3.0));
  EXPECT_EQ(X(copy.GetDesign(Id(2))), 2.0);
  EXPECT_EQ(X(designs.GetDesign(Id(2))), 3.0);
  EXPECT_EQ(X(designs.BuildTemplate(false)), 3.0);

  designs.AddOrReplace(MakeDesign(Id(4), 4.0));
  ASSERT_EQ(designs.size(), 3u);
  EXPECT_EQ(X(designs[2]), 4.0);
  designs.ModifyDesigns()[0].SetId(Id(8));
  EXPECT_EQ(designs.Find(Id(1)), nullptr);
  EXPECT_EQ(X(designs.GetDesign(Id(8))), 1.0);

  DesignManager moved = std::move(designs);
  EXPECT_EQ(X(moved.GetDesign(Id(8))), 1.0);
  EXPECT_TRUE(designs.empty());  // NOLINT: left empty, not half alive
  EXPECT_EQ(designs.Find(Id(8)), nullptr);
  moved.Clear();
  EXPECT_EQ(moved.Find(Id(8)), nullptr);
}

TEST(DesignManager, ReplacesByLeafUnderTheOldId) {
  DesignManager designs({MakeDesign(Id(1), 0.0), MakeDesign(Id(1, 2), 1.0)});
  designs.AddOrReplace(MakeDesign(Id(5, 2), 7.0), /*by_leaf=*/true);
  ASSERT_EQ(designs.size(), 2u);
  EXPECT_EQ(X(designs.GetDesign(Id(1, 2))), 7.0);
  EXPECT_EQ(designs.Find(Id(5, 2)), nullptr);
  designs.AddOrReplace(MakeDesign(Id(5, 3), 8.0), /*by_leaf=*/true);
  EXPECT_EQ(X(designs.GetDesign(Id(5, 3))), 8.0);
}

TEST(DesignManager, TheTemplateHasEveryName) {
  Design first({{L"x", CDesignEntry(1.0)}, {L"y", CDesignEntry(2.0)}}, Id(1));
  first.SetResponses({{L"r", CDesignEntry()}, {L"s", CDesignEntry(1.0)}});
  Design second({{L"y", CDesignEntry(3.0)}, {L"z", CDesignEntry(4.0)}}, Id(2));
  second.SetResponses(
      {{L"s", CDesignEntry(9.0)}, {L"t", CDesignEntry(3)}, {L"r", CDesignEntry(5.0)}});
  for (const bool check : {false, true}) {
    const Design pattern = DesignManager({first, second, first}).BuildTemplate(check);
    EXPECT_EQ(pattern.GetParameters(), (EntrySequence{{L"x", CDesignEntry(1.0)},
                                                      {L"y", CDesignEntry(2.0)},
                                                      {L"z", CDesignEntry(4.0)}}));
    EXPECT_EQ(pattern.GetResponses(),
              (EntrySequence{
                  {L"r", CDesignEntry(5.0)}, {L"s", CDesignEntry(1.0)}, {L"t", CDesignEntry(3)}}));
  }
}

TEST(DesignManager, ACheckedTemplateRefusesOtherTypes) {
  const auto response = [](const CDesignEntry& a, const CDesignEntry& b) {
    return TemplateRefusal(WithResponse(a), WithResponse(b));
  };
  const std::string agrees = "<no exception>";
  EXPECT_EQ(response(CDesignEntry(1.0), CDesignEntry(2)), agrees);
  EXPECT_EQ(response(CDesignEntry(1.0), CDesignEntry()), agrees);
  EXPECT_EQ(response(CDesignEntry(1.0), CDesignEntry(Scalar(1.0))), agrees);
  EXPECT_EQ(response(CDesignEntry(Vec({1.0})), CDesignEntry(Vec({1.0, 2.0}))), agrees);
  EXPECT_EQ(response(CDesignEntry(Scalar(1.0)), CDesignEntry(Vec({1.0}))),
            "Found response with same name but different variant type.");
  EXPECT_EQ(response(CDesignEntry(1.0), CDesignEntry(Vec({1.0, 2.0}))),
            "Found response with same name but incompatible data type.");

  constexpr auto kType = CriterionDescription::RHS;
  const auto criterion = [](const CDesignEntry& a, const CDesignEntry& b) {
    return TemplateRefusal(WithCriterion(kType, a), WithCriterion(kType, b));
  };
  EXPECT_EQ(criterion(CDesignEntry(1.0), CDesignEntry(2.0)), agrees);
  EXPECT_EQ(criterion(CDesignEntry(Scalar(1.0)), CDesignEntry(Vec({1.0}))),
            "Found criterion with same name but different variant type.");
  EXPECT_EQ(criterion(CDesignEntry(Vec({1.0, 2.0})), CDesignEntry(1.0)),
            "Found criterion with same name but incompatible data type.");
  EXPECT_EQ(TemplateRefusal(WithCriterion(kType, CDesignEntry()),
                            WithCriterion(CriterionDescription::RHS_ANY, CDesignEntry())),
            "Found criterion with same name but different criterion type.");
}

TEST(DesignManager, NamesItsLimitStates) {
  Design design;
  for (int type = 0; type < 8; ++type)
    design.GetCriteria().Append(
        L"c" + std::to_wstring(type),
        Criterion(static_cast<CriterionDescription::eType>(type), L"a", L"b"));
  const DesignManager designs({Design(), design});
  EXPECT_EQ(designs.GetLimitStateNames(), (std::vector<std::wstring>{L"c6", L"c7"}));
  EXPECT_EQ(designs.GetCriteriaTemplate(), design.GetCriteria());
  EXPECT_EQ(MessageOfExactly<std::domain_error>([] { DesignManager().GetLimitStateNames(); }),
            "Can't extract limit state names from an empty design container");
}

TEST(DesignManager, ReadingDropsTheTablesOfTheOldDesigns) {
  DesignManager manager({MakeDesign(Id(7), 0.0)});
  EXPECT_NE(manager.Find(Id(7)), nullptr);
  support::LoadInto(support::Save(DesignManager({MakeDesign(Id(3), 1.0)})), manager);
  EXPECT_EQ(manager.Find(Id(7)), nullptr);
  EXPECT_EQ(X(manager.GetDesign(Id(3))), 1.0);
}
