#include "design/designs/design.h"

#include "design/name_positions.h"
#include "foundation/exception.h"
#include "support/message_of.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using support::MessageOfExactly;

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
