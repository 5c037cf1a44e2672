#include "design/designs/design.h"

#include "design/criterion.h"
#include "design/designs/indexed_responses.h"
#include "design/hierarchical_id.h"
#include "design/indexed_name.h"
#include "design/name_positions.h"
#include "foundation/exception.h"
#include "support/stored_form.h"
#include "support/values.h"

namespace {

using namespace corvath::algorithm::datatypes;
using Entry = CDesignEntry;
using support::Scalar, support::Vec;

TEST(NamedSequence, FindsTheFirstElementOfAName) {
  EntrySequence sequence = {{L"b", Entry(1)}, {L"a", Entry(2)}, {L"b", Entry(3)}};
  EXPECT_EQ(sequence.Get(L"b"), Entry(1));
  EXPECT_EQ(sequence.FindPosition(L"a"), 1u);
  EXPECT_EQ(sequence.Find(L"B"), nullptr);
  sequence.Set(L"b", Entry(4));
  sequence.Set(L"c", Entry(5));
  EXPECT_EQ(sequence[0].second, Entry(4));
  EXPECT_EQ(sequence[2].second, Entry(3));
  EXPECT_EQ(sequence[3].first, L"c");
  EXPECT_ERROR(corvath::utils::invalid_argument, "Key \"x y\" does not exist in this sequence",
               EntrySequence().Get(L"x y"));
}

TEST(NamePositions, AreThoseOfEachSequence) {
  constexpr std::size_t npos = EntrySequence::npos;
  NamePositions<EntrySequence> names({L"a", L"b"});
  using Positions = std::vector<std::size_t>;
  EXPECT_EQ(names.In({}), (Positions{npos, npos}));
  EXPECT_EQ(names.In({{L"b", Entry(1)}, {L"a", Entry(2)}}), (Positions{1, 0}));
  EXPECT_EQ(names.In({{L"b", Entry(3)}, {L"a", Entry(4)}}), (Positions{1, 0}));
  EXPECT_EQ(names.In({{L"a", Entry(3)}, {L"a", Entry(4)}}), (Positions{0, npos}));
  EXPECT_EQ(names.In({{L"a", Entry(3)}}), (Positions{0, npos}));
}

TEST(Design, KeepsTheNumberOfItsValues) {
  const EntrySequence one = {{L"x", Entry(1.0)}};
  const EntrySequence two = {{L"x", Entry(1.0)}, {L"y", Entry(2.0)}};
  Design design(two, DesignId(1));
  using LogicError = corvath::utils::logic_error;
  EXPECT_ERROR(LogicError, "SetParameters: Wrong dimension of parameters (1 / 2).",
               design.SetParameters(one));
  EXPECT_ERROR(LogicError, "SetParameters: Wrong dimension of parameters (1 / 2).",
               Design(design, one));
  design.SetResponses(one);
  EXPECT_ERROR(LogicError, "SetResponses: Wrong dimension of responses (2 / 1).",
               design.SetResponses(two));
  EXPECT_EQ(design.GetParameters(), two);
  EXPECT_EQ(Design(Design(), one).GetParameters(), one);
}

TEST(Design, DerivesTheRunStateFromACode) {
  for (const auto& [code, state] : {std::pair(501, 0), {502, 1}, {0, 2}, {103, 2}}) {
    Design design;
    design.GetStatus().Add(RunInfoMeta(RunInfoMeta::UNUSABLE_RESPONSE, L"step", L"r", {}));
    design.SetStatus(static_cast<RunInfoMeta::eRunInfo>(code));
    EXPECT_EQ(design.GetRunState(), state) << code;
    ASSERT_EQ(design.GetStatus().GetMessages().size(), 1u);
    EXPECT_TRUE(design.GetStatus().GetMessages().front().GetActorName().empty());
  }
}

TEST(IndexedName, JoinsBaseAndIndex) {
  EXPECT_EQ(IndexedName(L"r", 12), L"r[12]");
}

TEST(IndexedResponses, MergeIntoVectorsInPlace) {
  const CDesignEntry text(L"text");
  const EntrySequence merged = MergeIndexedResponses({{L"a", Entry(1.0)},
                                                      {L"r[2]", Entry(Scalar(3.0, 1.0))},
                                                      {L"s[0]", Entry(4)},
                                                      {L"r[0]", Entry(1.0)},
                                                      {L"r[-1]", Entry(9.0)},
                                                      {L"t[0]", text},
                                                      {L"u[0]", Entry(Vec({1.0, 2.0}))},
                                                      {L"v[1048576]", Entry(5.0)},
                                                      {L"w[1]", Entry()}});
  const double nan = std::nan("");
  const EntrySequence expected = {{L"a", Entry(1.0)},
                                  {L"r", Entry(Vec({1.0, nan, {3.0, 1.0}}))},
                                  {L"s", Entry(Vec({4.0}))},
                                  {L"r[-1]", Entry(9.0)},
                                  {L"t[0]", text},
                                  {L"u[0]", Entry(Vec({1.0, 2.0}))},
                                  {L"v[1048576]", Entry(5.0)},
                                  {L"w", Entry(Vec({nan, nan}))}};
  EXPECT_EQ(merged, expected);
}

Criterion Make(int type, const std::wstring& lhs, const std::wstring& rhs) {
  return Criterion(static_cast<CriterionDescription::eType>(type), lhs, rhs);
}

/// A criterion of `type` whose value is `value`.
Criterion WithValue(int type, const CDesignEntry& value) {
  Criterion criterion = Make(type, L"", L"");
  criterion.SetValues(Entry(), Entry(), value, /*combine=*/false);
  return criterion;
}

TEST(Criterion, ExpressionAndValueFollowTheType) {
  // The value is that with 10 on the left and 3 on the right.
  const std::pair<const wchar_t*, double> types[] = {
      {L"(b)", 3.0},     {L"(b)", 3.0},     {L"-(b)", -3.0},    {L"(b)-(a)", -7.0},
      {L"(a)-(b)", 7.0}, {L"(a)-(b)", 7.0}, {L"(b)-(a)", -7.0}, {L"(a)-(b)", 7.0}};
  for (int type = 0; type < 8; ++type) {
    Criterion criterion = Make(type, L"a", L"b");
    EXPECT_EQ(criterion.GetExpression(), types[type].first) << type;
    criterion.SetValues(Entry(Scalar(10.0)), Entry(Scalar(3.0)), Entry(0.5),
                        /*combine=*/true);
    EXPECT_EQ(criterion.GetValue(), Entry(types[type].second)) << type;
    EXPECT_FALSE(criterion.NeedsEvaluation());
    criterion.SetValues(Entry(), Entry(), Entry(0.5), /*combine=*/false);
    EXPECT_EQ(criterion.GetValue(), Entry(0.5)) << type;
  }
  EXPECT_EQ(Make(1, L"", L"").GetExpression(), L"(0)");
  EXPECT_EQ(Make(3, L"", L"%1% x").GetExpression(), L"(%1% x)-(0)");
  for (const int type : {-1, 8})
    EXPECT_ERROR(std::logic_error, "Unhandled type to get expression",
                 Make(type, L"a", L"b").GetExpression());
}

TEST(Criterion, KeepsItsValuesWhenTheSidesDoNotCombine) {
  Criterion criterion = Make(4, L"a", L"b");
  criterion.SetValues(Entry(1.0), Entry(2.0), Entry(), true);
  const Criterion before = criterion;
  EXPECT_THROW(criterion.SetValues(Entry(Vec({1.0})), Entry(Vec({1.0, 2.0})), Entry(), true),
               std::exception);
  EXPECT_EQ(criterion, before);
  Criterion negative = Make(2, L"", L"b");
  negative.SetValues(Entry(), Entry(), Entry(1.0), true);
  EXPECT_TRUE(negative.GetValue().IsUninitialized());
  negative.Invalidate();
  EXPECT_TRUE(negative.NeedsEvaluation());
  EXPECT_EQ(negative.GetRhs(), L"b");
}

TEST(Criterion, JudgesEvaluatedValuesOnly) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Whether it is invalid, and violated as a limit.
  const std::tuple<CDesignEntry, bool, bool> cases[] = {{Entry(), true, false},
                                                        {Entry(Scalar(nan)), true, false},
                                                        {Entry(-HUGE_VAL), true, true},
                                                        {Entry(L"text"), true, false},
                                                        {Entry(-1), false, true},
                                                        {Entry(Scalar(-1.0)), false, true},
                                                        {Entry(-1e-16), false, false},
                                                        {Entry(0.5), false, false},
                                                        {Entry(Vec({-1.0, -2.0})), false, false}};
  for (const auto& [value, is_invalid, is_violated] : cases) {
    SCOPED_TRACE(static_cast<int>(value.GetType()));
    EXPECT_EQ(WithValue(0, value).IsValueInvalid(), is_invalid);
    for (int type = 0; type < 8; ++type)
      EXPECT_EQ(WithValue(type, value).IsViolated(), type >= 6 && is_violated);
    Criterion stale = WithValue(6, value);
    stale.Invalidate();
    EXPECT_FALSE(stale.IsValueInvalid());
    EXPECT_FALSE(stale.IsViolated());
  }
}

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
  EXPECT_MESSAGE("The file holds a design id of 0 levels.", support::Load<Id>(Stored({})));
}

TEST(HierarchicalId, DeepChainsNeedNoStack) {
  std::vector<std::uint64_t> levels(65536, 1);
  const Id deep = support::Load<Id>(Stored(levels));
  const Id copy = deep;
  EXPECT_EQ(copy, deep);
  EXPECT_EQ(hash_value(copy), hash_value(deep));
  levels.push_back(1);
  EXPECT_MESSAGE("The file holds a design id of 65537 levels.", support::Load<Id>(Stored(levels)));
}

}  // namespace
