#include "design/design.h"

#include "design/flat_design.h"
#include "design/name_positions.h"
#include "foundation/exception.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using support::MessageOfExactly;
using support::Scalar;

/// A design in which every member differs from its default.
Design FullDesign() {
  Design design({{L"x", CDesignEntry(1.0)}, {L"y", CDesignEntry(L"steel")}},
                DesignId(12).Appended(3));
  design.SetResponses({{L"r", CDesignEntry(Scalar(2.5))}});
  design.GetResponses().SetHeader(9);
  design.SetCriteria({{L"c", Criterion(CriterionDescription::RHS, L"", L"r")}});
  design.GetStatus().Add(RunInfoMeta(RunInfoMeta::UNUSABLE_RESPONSE, L"step", L"r", {L"a", L"b"}));
  design.SetRunState(Design::FINISHED);
  design.SetDuplicates(DesignId(4));
  design.SetActivationState(static_cast<Design::eActivationStatus>(2));
  design.SetApproximated(true);
  design.SetIteration(DesignId(5));
  design.SetWorkflowId(6);
  design.SetType(static_cast<corvath::enums::DesignTypes::eType>(7));
  design.SetAlgoIteration(8);
  return design;
}

/// The record of class version V, filled from a design.
template <unsigned int V>
struct OldDesign {
  explicit OldDesign(const Design& design) : d(design) {}
  Design d;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    using boost::serialization::make_nvp;
    EntrySequence responses = d.GetResponses();
    VariantSequence variants;
    variants.SetHeader(responses.GetHeader());
    for (const auto& [name, value] : responses) variants.Append(name, value.ToVariant());
    std::int32_t code = 502;
    auto run_state = d.GetRunState();
    auto activation = d.GetActivationState();
    bool approximated = d.IsApproximated();
    DesignId duplicates = d.GetDuplicates();
    DesignId id = d.GetId();
    DesignId iteration = d.GetIteration();
    std::int32_t workflow = d.GetWorkflowId();
    auto type = d.GetType();
    ar& make_nvp("parameters_", d.GetParameters());
    if (V < 3)
      ar& make_nvp("responses_", variants);
    else
      ar& make_nvp("responses_", responses);
    if (V == 0) {
      ar& make_nvp("status_", code);
    } else {
      ar& make_nvp("status_", d.GetStatus());
      ar& make_nvp("runstate_", run_state);
    }
    if (V >= 2) ar& make_nvp("duplicates_", duplicates);
    ar& make_nvp("activation_state_", activation);
    ar& make_nvp("criteria_", d.GetCriteria());
    ar& make_nvp("isapproximated_", approximated);
    ar& make_nvp("id_", id);
    if (V >= 4) ar& make_nvp("iteration_", iteration);
    if (V >= 5) ar& make_nvp("workflow_id_", workflow);
    if (V >= 5) ar& make_nvp("type_", type);
  }
};

template <unsigned int V>
Design LoadOld(const Design& design) {
  Design loaded = FullDesign();  // so that a default that is not restored shows
  support::LoadInto(support::Save(OldDesign<V>(design)), loaded);
  return loaded;
}

struct OldSequence {
  std::uint64_t header_ = 3;
  std::list<std::pair<std::wstring, CDesignEntry>> seq_ = {{L"b", CDesignEntry(1)},
                                                           {L"a", CDesignEntry(2)}};
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(header_);
    ar& BOOST_SERIALIZATION_NVP(seq_);
  }
};

}  // namespace

ZEL_CLASS_VERSION(OldDesign<1>, 1)
ZEL_CLASS_VERSION(OldDesign<2>, 2)
ZEL_CLASS_VERSION(OldDesign<3>, 3)
ZEL_CLASS_VERSION(OldDesign<4>, 4)
ZEL_CLASS_VERSION(OldDesign<5>, 5)

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

TEST(NamedSequence, ReadsTheOlderList) {
  const auto loaded = support::Load<EntrySequence>(support::Save(OldSequence()));
  EXPECT_EQ(loaded.GetHeader(), 3u);
  ASSERT_EQ(loaded.size(), 2u);
  EXPECT_EQ(loaded[0].first, L"b");
  EXPECT_EQ(loaded[1].second, CDesignEntry(2));
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

TEST(Design, RoundTripsEveryMember) {
  const Design design = FullDesign();
  const auto loaded = support::Load<Design>(support::Save(design));
  EXPECT_EQ(loaded, design);
  EXPECT_EQ(loaded.GetWorkflowId(), 6);
  EXPECT_EQ(loaded.GetAlgoIteration(), 8u);
  EXPECT_EQ(loaded.GetStatus().GetMessages().front().GetMessage().back(), L"b");
  EXPECT_NE(loaded, Design());
}

TEST(Design, ReadsOlderRecordsWithDefaults) {
  Design expected = FullDesign();
  expected.SetAlgoIteration(0);
  EXPECT_EQ(LoadOld<5>(FullDesign()), expected);
  expected.SetWorkflowId(22);
  expected.SetType(corvath::enums::DesignTypes::UNSPECIFIED);
  EXPECT_EQ(LoadOld<4>(FullDesign()), expected);
  expected.SetIteration(DesignId(0));
  EXPECT_EQ(LoadOld<3>(FullDesign()), expected);
  Design number = FullDesign();  // whose response was no `Variant`
  number.SetResponses({{L"r", CDesignEntry(2.5)}});
  expected.GetResponses().SetHeader(0);
  EXPECT_EQ(LoadOld<2>(number), expected);
  EXPECT_EQ(LoadOld<2>(number).GetResponses().Get(L"r").GetType(),
            corvath::enums::DesignEntry::VARIANT);
  expected.SetDuplicates(DesignId(0));
  EXPECT_EQ(LoadOld<1>(number), expected);
  expected.SetStatus(RunInfoMeta::RUNNING);
  EXPECT_EQ(LoadOld<0>(number), expected);
  EXPECT_EQ(expected.GetRunState(), Design::RUNNING);
  EXPECT_EQ(expected.GetStatus().GetMessages().front().GetRunInfo(), 502);
}

TEST(Design, DerivesTheRunStateFromACode) {
  for (const auto& [code, state] : {std::pair(501, 0), {502, 1}, {0, 2}, {103, 2}}) {
    Design design = FullDesign();
    design.SetStatus(static_cast<RunInfoMeta::eRunInfo>(code));
    EXPECT_EQ(design.GetRunState(), state) << code;
    ASSERT_EQ(design.GetStatus().GetMessages().size(), 1u);
    EXPECT_TRUE(design.GetStatus().GetMessages().front().GetActorName().empty());
  }
}

TEST(FlatDesign, HoldsAllButTheMessages) {
  Design expected = FullDesign();
  expected.GetStatus().Clear();
  const auto loaded = support::Load<SDesign>(support::Save(SDesign(FullDesign())));
  EXPECT_EQ(loaded.ToDesign(), expected);
}
