#include "design/designs/design_manager.h"

#include "foundation/closeness.h"
#include "foundation/exception.h"
#include "support/archive_round_trip.h"
#include "support/points.h"
#include "support/testing.h"
#include "support/values.h"

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;
using Entry = CDesignEntry;

DesignId Id(std::uint64_t top) {
  return DesignId(top);
}
DesignId Id(std::uint64_t top, std::uint64_t leaf) {
  return DesignId(top).Appended(leaf);
}

Design MakeDesign(const DesignId& id, double x) {
  return Design({{L"x", Entry(x)}}, id);
}

double X(const Design& design) {
  return design.GetParameters().Get(L"x").ToDouble();
}

Design WithResponses(const EntrySequence& responses) {
  Design design;
  design.SetResponses(responses);
  return design;
}

Design WithCriterion(CriterionDescription::eType type, const CDesignEntry& value) {
  Design design;
  Criterion criterion(type, L"", L"r");
  criterion.SetValues(Entry(), Entry(), value, false);
  design.SetCriteria({{L"c", criterion}});
  return design;
}

std::string TemplateRefusal(const Design& a, const Design& b) {
  return MessageOfExactly<std::logic_error>([&] { DesignManager({a, b}).BuildTemplate(true); });
}

TEST(DesignManager, FindsDesignsByIdAndByLeaf) {
  const DesignManager designs(
      {MakeDesign(Id(1), 1.0), MakeDesign(Id(1, 2), 2.0), MakeDesign(Id(5, 2), 3.0)});
  EXPECT_EQ(X(designs.GetDesign(Id(5, 2))), 3.0);
  EXPECT_EQ(designs.Find(Id(2)), nullptr);
  EXPECT_EQ(X(*designs.Find(Id(9, 2), /*by_leaf=*/true)), 2.0);
  EXPECT_EQ(designs.Find(Id(9, 3), /*by_leaf=*/true), nullptr);
  EXPECT_ERROR(corvath::utils::runtime_error, "No such design", designs.GetDesign(Id(2)));
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

TEST(DesignManager, ReplacesByLeafUnderTheOldIdAndWholeByReading) {
  DesignManager designs({MakeDesign(Id(1), 0.0), MakeDesign(Id(1, 2), 1.0)});
  designs.AddOrReplace(MakeDesign(Id(5, 2), 7.0), /*by_leaf=*/true);
  ASSERT_EQ(designs.size(), 2u);
  EXPECT_EQ(X(designs.GetDesign(Id(1, 2))), 7.0);
  EXPECT_EQ(designs.Find(Id(5, 2)), nullptr);
  designs.AddOrReplace(MakeDesign(Id(5, 3), 8.0), /*by_leaf=*/true);
  EXPECT_EQ(X(designs.GetDesign(Id(5, 3))), 8.0);
  LoadInto(Save(DesignManager({MakeDesign(Id(3), 1.0)})), designs);
  EXPECT_EQ(designs.Find(Id(1)), nullptr);
  EXPECT_EQ(X(designs.GetDesign(Id(3))), 1.0);
}

TEST(DesignManager, TheTemplateHasEveryName) {
  Design first({{L"x", Entry(1.0)}, {L"y", Entry(2.0)}}, Id(1));
  first.SetResponses({{L"r", Entry()}, {L"s", Entry(1.0)}});
  Design second({{L"y", Entry(3.0)}, {L"z", Entry(4.0)}}, Id(2));
  second.SetResponses({{L"s", Entry(9.0)}, {L"t", Entry(3)}, {L"r", Entry(5.0)}});
  for (const bool check : {false, true}) {
    const Design pattern = DesignManager({first, second, first}).BuildTemplate(check);
    EXPECT_EQ(pattern.GetParameters(),
              (EntrySequence{{L"x", Entry(1.0)}, {L"y", Entry(2.0)}, {L"z", Entry(4.0)}}));
    EXPECT_EQ(pattern.GetResponses(),
              (EntrySequence{{L"r", Entry(5.0)}, {L"s", Entry(1.0)}, {L"t", Entry(3)}}));
  }
}

TEST(DesignManager, ACheckedTemplateRefusesOtherTypes) {
  constexpr auto kType = CriterionDescription::RHS;
  const std::string type = "different variant type.", data = "incompatible data type.";
  const std::tuple<CDesignEntry, CDesignEntry, std::string> cases[] = {
      {Entry(1.0), Entry(2), ""},
      {Entry(1.0), Entry(), ""},
      {Entry(1.0), Entry(Scalar(1.0)), ""},
      {Entry(Vec({1.0})), Entry(Vec({1.0, 2.0})), ""},
      {Entry(Scalar(1.0)), Entry(Vec({1.0})), type},
      {Entry(1.0), Entry(Vec({1.0, 2.0})), data}};
  for (const auto& [a, b, text] : cases) {
    const std::string found = text.empty() ? "<no exception>" : " with same name but " + text;
    EXPECT_EQ(TemplateRefusal(WithResponses({{L"r", a}}), WithResponses({{L"r", b}})),
              (text.empty() ? "" : "Found response") + found);
    EXPECT_EQ(TemplateRefusal(WithCriterion(kType, a), WithCriterion(kType, b)),
              (text.empty() ? "" : "Found criterion") + found);
  }
  EXPECT_EQ(TemplateRefusal(WithCriterion(kType, Entry()),
                            WithCriterion(CriterionDescription::RHS_ANY, Entry())),
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
Numbers SearchPairByPair(const DesignManager& designs, const std::vector<Design>& wanted,
                         bool reverse, const std::set<std::wstring>& ignored) {
  Numbers numbers;
  for (const Design& design : wanted) {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < designs.size() && (reverse || found == 0); ++i) {
      bool matches = true;
      for (const auto& [name, value] : design.GetParameters())
        matches = matches &&
                  (ignored.count(name) > 0 ||
                   IsClose(designs[i].GetParameters().Get(name), value, 2.220446049250313e-14));
      if (matches) found = designs[i].GetId().GetValue();
    }
    numbers.push_back(found);
  }
  return numbers;
}

TEST(DesignSearch, FindsTheFirstOrLastMatchOfAllPairs) {
  // A few values moved by steps just within the tolerance, so that neighbours chain together; values
  // near zero, infinities and NaN; numbers of all types.
  std::mt19937 random(7);
  std::vector<int> kinds;
  const auto pick = [&random](int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
  };
  const auto value = [&] {
    const double bases[] = {0.0, 1.0, -1.0, 3.0, 1e-16, 1e-17, HUGE_VAL, std::nan("")};
    const double number = bases[pick(8)] * (1.0 + 2.1e-14 * pick(3));
    switch (kinds[static_cast<std::size_t>(pick(static_cast<int>(kinds.size())))]) {
      case 3:
        return Entry();
      case 4:
        return Entry(pick(2) == 0 ? L"1" : L"s");
      case 5:
        return Entry(Vec({1.0, double(pick(2))}));
      case 0:
        return Entry(pick(4));
      case 1:
        return Entry(Scalar(number, pick(2)));
      case 2:
        return Entry(pick(2) == 0);
      default:
        return Entry(number);
    }
  };
  const auto design = [&](std::uint64_t id) {
    if (id == 0 && pick(2) == 0) return Design({{L"y", value()}, {L"x", value()}}, Id(id));
    return Design({{L"x", value()}, {L"y", value()}}, Id(id));
  };
  // All kinds, numbers alone and texts alone: the search has a key for columns of one sort.
  for (const std::vector<int>& some :
       std::vector<std::vector<int>>{{0, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, 2, 6, 7, 8}, {4}}) {
    kinds = some;
    DesignManager designs;
    std::vector<Design> wanted;
    for (std::uint64_t id = 1; id <= 300; ++id) {
      designs.Add(design(id));
      wanted.push_back(design(0));
    }
    for (const bool reverse : {false, true})
      for (const std::set<std::wstring>& ignored : {std::set<std::wstring>(), {L"y"}})
        EXPECT_EQ(Search(designs, wanted, reverse, ignored),
                  SearchPairByPair(designs, wanted, reverse, ignored));
  }
}

TEST(DesignManager, RefusesWhatCannotBeSearched) {
  const Design one = MakeDesign(Id(1), 1.0);
  const std::string empty = "Can't extract designs numbers from an empty design container.";
  ExpectRefusals<std::domain_error>(
      {{[&] { Search({}, {one}); }, empty},
       {[&] { Search(DesignManager({one}), {}); }, empty},
       {[&] { Search(DesignManager({one}), {Design()}); },
        "Number of parameters in design container doesn't fit to parameter value matrix."},
       {[] { DesignManager().GetLimitStateNames(); },
        "Can't extract limit state names from an empty design container"}});
}

/// A container of one response "x", which has these values.
DesignManager Container(const std::vector<CDesignEntry>& values) {
  DesignManager designs;
  for (const CDesignEntry& value : values) designs.Add(WithResponses({{L"x", value}}));
  return designs;
}

const CDesignEntry kNone;
const CDesignEntry kSignal(Sig({0.0, 1.0}, {{1.0, 2.0}}));

CDesignEntry VectorOf(std::size_t size) {
  return Entry(Vec(std::vector<support::Complex>(size, 1.0)));
}

TEST(DesignTable, WidthsFollowTheValuesInOrder) {
  constexpr int kGone = -9;
  // Values, and the width with the largest kept, strictly and of models; kGone where none is listed.
  const std::tuple<std::vector<CDesignEntry>, int, int, int> cases[] = {
      {{Entry(1.0), Entry(2)}, 0, 0, 0},
      {{Entry(Value(true)), Entry(L"text")}, 0, 0, 0},
      {{kNone, Entry(Vec({})), Entry(Value())}, -1, -1, kGone},
      {{kNone, VectorOf(3)}, 3, 3, 3},
      {{VectorOf(3), kNone, VectorOf(3)}, 3, 3, 3},
      {{VectorOf(3), VectorOf(2)}, 3, kGone, 3},
      {{VectorOf(2), VectorOf(3), VectorOf(2)}, 3, kGone, 3},
      {{Entry(1.0), VectorOf(1)}, 1, kGone, 1},
      {{Entry(Mat({{1.0, 2.0}, {3.0, 4.0}}))}, 4, 4, kGone},
      {{VectorOf(3), kSignal}, -1, -1, kGone},
      {{VectorOf(3), kSignal, VectorOf(2)}, 2, 2, 2},
  };
  for (const auto& [values, keep_largest, strict, model] : cases) {
    SCOPED_TRACE(values.size());
    const DesignManager designs = Container(values);
    const auto width = [](const ResponseWidths& widths) {
      return widths.empty() ? kGone : static_cast<int>(widths[0].second);
    };
    EXPECT_EQ(width(designs.GetResponseWidths(true)), keep_largest);
    EXPECT_EQ(width(designs.GetResponseWidths(false)), strict);
    EXPECT_EQ(width(designs.GetModelResponseWidths()), model);
  }
}

TEST(DesignTable, ColumnsAreNamedByPosition) {
  EXPECT_EQ(DesignManager::GetResponseNames({{L"a", 0}, {L"s", -1}, {L"v", 3}, {L"w", 1}}),
            (std::vector<std::wstring>{L"a", L"v[0]", L"v[1]", L"v[2]", L"w[0]"}));
}

TEST(DesignTable, NumbersStandInTheColumnsOfTheirNames) {
  const DesignManager designs(
      {WithResponses({{L"a", Entry(1.5)},
                      {L"v", Entry(Vec({1.0, {2.0, 5.0}, 3.0}))},
                      {L"m", Entry(Mat({{1.0, 2.0}, {3.0, 4.0}}))}}),
       WithResponses(
           {{L"m", Entry(Value(true))}, {L"v", Entry(Vec({7.0, 8.0}))}, {L"a", Entry(L"2.5")}}),
       WithResponses({{L"v", Entry(Scalar(6.0, 1.0))}, {L"a", Entry(L"text")}, {L"m", kSignal}}),
       WithResponses({{L"a", kNone}})});
  const Eigen::MatrixXd matrix =
      designs.GetResponseMatrix({{L"a", 0}, {L"s", -1}, {L"v", 3}, {L"m", 4}});
  const double nan = std::nan("");
  const Eigen::MatrixXd expected{{1.5, 1, 2, 3, 1, 2, 3, 4},
                                 {2.5, 7, 8, nan, 1, nan, nan, nan},
                                 {nan, 6, nan, nan, nan, nan, nan, nan},
                                 {nan, nan, nan, nan, nan, nan, nan, nan}};
  EXPECT_EQ(Deviation(matrix, expected), 0.0);
  // A width that is too small for a value cuts it off; no neighbour is touched.
  const Eigen::MatrixXd narrow = designs.GetResponseMatrix({{L"m", 2}, {L"a", 0}});
  EXPECT_EQ(narrow(0, 1), 2.0);
  EXPECT_EQ(narrow(0, 2), 1.5);
}

}  // namespace
