#include "design/designs/design.h"

#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "design/name_positions.h"
#include "foundation/exception.h"
#include "support/message_of.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cwchar>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using support::MessageOfExactly;
using support::Scalar;
using support::Vec;

}  // namespace

TEST(NamedSequence, FindsTheFirstElementOfAName) {
  EntrySequence sequence = {
      {L"b", CDesignEntry(1)}, {L"a", CDesignEntry(2)}, {L"b", CDesignEntry(3)}};
  EXPECT_EQ(sequence.Get(L"b"), CDesignEntry(1));
  EXPECT_EQ(sequence.FindPosition(L"a"), 1u);
  EXPECT_EQ(sequence.Find(L"B"), nullptr);
  sequence.Set(L"b", CDesignEntry(4));
  sequence.Set(L"c", CDesignEntry(5));
  EXPECT_EQ(sequence[0].second, CDesignEntry(4));
  EXPECT_EQ(sequence[2].second, CDesignEntry(3));
  EXPECT_EQ(sequence[3].first, L"c");
  EXPECT_EQ(MessageOfExactly<corvath::utils::invalid_argument>([] { EntrySequence().Get(L"x y"); }),
            "Key \"x y\" does not exist in this sequence");
}

TEST(NamePositions, AreThoseOfEachSequence) {
  constexpr std::size_t npos = EntrySequence::npos;
  NamePositions<EntrySequence> names({L"a", L"b"});
  using Positions = std::vector<std::size_t>;
  EXPECT_EQ(names.In({}), (Positions{npos, npos}));
  EXPECT_EQ(names.In({{L"b", CDesignEntry(1)}, {L"a", CDesignEntry(2)}}), (Positions{1, 0}));
  EXPECT_EQ(names.In({{L"b", CDesignEntry(3)}, {L"a", CDesignEntry(4)}}), (Positions{1, 0}));
  EXPECT_EQ(names.In({{L"a", CDesignEntry(3)}, {L"a", CDesignEntry(4)}}), (Positions{0, npos}));
  EXPECT_EQ(names.In({{L"a", CDesignEntry(3)}}), (Positions{0, npos}));
}

TEST(Design, KeepsTheNumberOfItsValues) {
  const EntrySequence one = {{L"x", CDesignEntry(1.0)}};
  const EntrySequence two = {{L"x", CDesignEntry(1.0)}, {L"y", CDesignEntry(2.0)}};
  Design design(two, DesignId(1));
  using LogicError = corvath::utils::logic_error;
  EXPECT_EQ(MessageOfExactly<LogicError>([&] { design.SetParameters(one); }),
            "SetParameters: Wrong dimension of parameters (1 / 2).");
  EXPECT_EQ(MessageOfExactly<LogicError>([&] { Design(design, one); }),
            "SetParameters: Wrong dimension of parameters (1 / 2).");
  design.SetResponses(one);
  EXPECT_EQ(MessageOfExactly<LogicError>([&] { design.SetResponses(two); }),
            "SetResponses: Wrong dimension of responses (2 / 1).");
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

TEST(IndexedName, TakesNamesApart) {
  const std::optional<std::int64_t> none;
  const struct {
    const wchar_t* name;
    const wchar_t* base;
    std::optional<std::int64_t> index;
  } cases[] = {
      {L"r[12]", L"r", 12},
      {L"r[+3]", L"r", 3},
      {L"r[-3]", L"r", -3},
      {L"x[mm][0]", L"x[mm]", 0},
      {L"x[mm]", L"x", none},
      {L"r[1] abs", L"r", 1},
      {L"[5]", L"", 5},
      {L"r]2[", L"r]2[", none},
      {L"r", L"r", none},
      {L"r[]", L"r", none},
      {L"r[-]", L"r", none},
      {L"r[1.5]", L"r", none},
      {L"r[ 1]", L"r", none},
      {L"r[9223372036854775807]", L"r", std::numeric_limits<std::int64_t>::max()},
      {L"r[-9223372036854775808]", L"r", std::numeric_limits<std::int64_t>::min()},
      {L"r[9223372036854775808]", L"r", none},
      {L"r[99999999999999999999999]", L"r", none},
  };
  for (const auto& c : cases) {
    const SplitName parts = SplitIndexedName(c.name);
    EXPECT_EQ(parts.base, c.base);
    EXPECT_EQ(parts.GetIndex(), c.index) << std::string(c.name, c.name + std::wcslen(c.name));
  }
  EXPECT_EQ(IndexedName(L"r", 12), L"r[12]");
}

TEST(IndexedResponses, MergeIntoVectorsInPlace) {
  const CDesignEntry text(L"text");
  const EntrySequence merged = MergeIndexedResponses({{L"a", CDesignEntry(1.0)},
                                                      {L"r[2]", CDesignEntry(Scalar(3.0, 1.0))},
                                                      {L"s[0]", CDesignEntry(4)},
                                                      {L"r[0]", CDesignEntry(1.0)},
                                                      {L"r[-1]", CDesignEntry(9.0)},
                                                      {L"t[0]", text},
                                                      {L"u[0]", CDesignEntry(Vec({1.0, 2.0}))},
                                                      {L"v[1048576]", CDesignEntry(5.0)},
                                                      {L"w[1]", CDesignEntry()}});
  const double nan = std::nan("");
  const EntrySequence expected = {{L"a", CDesignEntry(1.0)},
                                  {L"r", CDesignEntry(Vec({1.0, nan, {3.0, 1.0}}))},
                                  {L"s", CDesignEntry(Vec({4.0}))},
                                  {L"r[-1]", CDesignEntry(9.0)},
                                  {L"t[0]", text},
                                  {L"u[0]", CDesignEntry(Vec({1.0, 2.0}))},
                                  {L"v[1048576]", CDesignEntry(5.0)},
                                  {L"w", CDesignEntry(Vec({nan, nan}))}};
  EXPECT_EQ(merged, expected);
}
