#include "project/records/algorithm_info.h"

#include "metamodel/surrogate.h"
#include "project/attached_path.h"
#include "project/records/optimization_information.h"
#include "project/records/reliability_information.h"
#include "project/records/systems_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/plate_project.h"
#include "support/stand_in.h"
#include "support/values.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace {

using namespace corvath::algorithm::datatypes;
using corvath::portable_binary_oarchive;
using support::Load;
using support::MessageOf;
using support::Put;
using support::Save;
using support::StandIn;
using IdSet = boost::unordered_set<DesignId>;
using Groups = std::map<std::wstring, std::pair<IdSet, eDESIGN_TYPE>>;
using Detail = boost::shared_ptr<DetailedInformationBase>;

DesignId Id(std::uint64_t number) {
  return DesignId(number);
}

/// Fields that stand in an algorithm record below class version 4, with nothing in them but what a
/// case gives.
struct OldFields {
  std::map<std::uint64_t, ReliabilityDesignSetInfo> iterations;
  std::map<DesignId, std::pair<std::uint64_t, eALGOINFO_DESIGNTYPE>> designs;
  EntrySequence cv_indexes;
};

template <int Version>
StandIn<struct InfoTag, Version, true> StoredInfo(std::int32_t type, const Detail& detail,
                                                  const OldFields& old = {}) {
  return {[=](portable_binary_oarchive& ar) {
    Put(ar, "algo_type_", type);
    if (Version < 4) {
      Put(ar, "complete_directions_pair_", std::pair<std::uint64_t, std::uint64_t>(1, 2));
      Put(ar, "design_group_map_",
          std::map<std::wstring, std::vector<DesignId>>{{L"group", {Id(1)}}});
    }
    Put(ar, "additional_data_", EntrySequence{{L"extra", CDesignEntry(2.0)}});
    if (Version >= 5)
      Put(ar, "signal_info_container_",
          std::map<std::wstring, SignalInfo>{{L"s2", {}}, {L"s1", {}}});
    if (Version >= 7) Put(ar, "signal_info_names_", std::list<std::wstring>{L"s2", L"s1"});
    if (Version >= 2 && Version < 4) {
      ReliabilityDesignSetInfo total;
      total.method_name_ = L"Adaptive Sampling (AS)";
      Put(ar, "reli_total_infos_", total);
      Put(ar, "reli_iteration_infos_", old.iterations);
      Put(ar, "desig_iteration_map_", old.designs);
      Put(ar, "zel_cv_indexes_", old.cv_indexes);
    }
    if (Version >= 4) Put(ar, "detailed_info_", detail);
  }};
}

/// A base record of class version 0 stores nothing.
StandIn<struct BaseTag, 0, true> EmptyBase() {
  return {[](portable_binary_oarchive&) {}};
}

StandIn<struct BaseTag, 1, true> StoredBase(std::int32_t sampling_type) {
  return {[=](portable_binary_oarchive& ar) { Put(ar, "sampling_type_", sampling_type); }};
}

TEST(AlgorithmInfo, TypeDecidesTheDetailedInformation) {
  const auto name = [](const AlgorithmInfo& info) {
    const auto& detail = *info.GetDetailedInformation();
    return std::string(typeid(detail).name());
  };
  const auto expect = [&](std::initializer_list<std::int32_t> types, const std::type_info& type,
                          std::int32_t sampling) {
    for (const std::int32_t number : types) {
      EXPECT_EQ(name(AlgorithmInfo(number)), type.name()) << number;
      EXPECT_EQ(AlgorithmInfo(number).GetSamplingType(), sampling) << number;
    }
  };
  expect({0, 1, 2, 3, 4, 9, 10, 27}, typeid(OptimizationInformation), 0);
  expect({5, 23}, typeid(SystemsInformation), 1);
  expect({6}, typeid(SystemsInformation), 2);
  expect({8, 12, 13, 14, 15, 16, 17}, typeid(ReliabilityInformation), 0);
  expect({18}, typeid(ZELInformation), 0);
  expect({28}, typeid(ZEL3Information), 0);
  expect({7, 11, 19, 22, 26, 29, -1, 1000}, typeid(SystemsInformation), 0);
  EXPECT_EQ(AlgorithmInfo().GetType(), 22);

  AlgorithmInfo info(18);
  const auto zel = info.GetZELInformation();
  info.SetType(18);
  EXPECT_EQ(info.GetZELInformation(), zel);
  info.SetType(14);
  EXPECT_FALSE(info.GetZELInformation());
  EXPECT_TRUE(info.IsReliability() && info.GetReliabilityInformation());
  EXPECT_TRUE(info.GetSystemsInformation());  // a reliability detail is one
}

TEST(AlgorithmInfo, ANullDetailIsMadeOnDemandByItsType) {
  const auto load = [](std::int32_t type) {
    return Load<AlgorithmInfo>(Save(StoredInfo<7>(type, Detail())));
  };
  EXPECT_FALSE(load(18).GetDetailedInformation());
  EXPECT_EQ(load(18).GetSamplingType(), 0);
  EXPECT_TRUE(load(18).GetZELInformation());
  EXPECT_FALSE(load(18).GetReliabilityInformation());
  EXPECT_TRUE(load(28).GetZEL3Information());
  EXPECT_TRUE(load(12).GetReliabilityInformation());
  EXPECT_FALSE(load(22).GetZELInformation());
  EXPECT_TRUE(load(18).GetSystemsInformation());  // whatever the type
  EXPECT_EQ(load(6).GetSystemsInformation()->GetSamplingType(), 2);
}

TEST(AlgorithmInfo, IsStoredFieldByFieldWithEveryDetail) {
  for (const std::int32_t type : {0, 5, 8, 18, 28}) {
    AlgorithmInfo info(type);
    info.GetAdditionalData().Append(L"extra", CDesignEntry(2.0));
    info.GetSignalInfos() = {{L"s1", {}}, {L"s2", {}}};
    info.GetSignalInfoNames() = {L"s2", L"s1"};
    const std::string bytes = Save(info);
    EXPECT_EQ(bytes, Save(StoredInfo<7>(type, info.GetDetailedInformation()))) << type;
    const auto loaded = Load<AlgorithmInfo>(bytes);
    EXPECT_EQ(Save(loaded), bytes) << type;
    EXPECT_TRUE(info.GetDetailedInformation()->IsEqual(loaded.GetDetailedInformation())) << type;
  }
}

TEST(AlgorithmInfo, OlderVersionsListSignalsInMapOrder) {
  const std::list<std::wstring> in_map_order{L"s1", L"s2"};
  EXPECT_EQ(Load<AlgorithmInfo>(Save(StoredInfo<6>(22, Detail()))).GetSignalInfoNames(),
            in_map_order);
  EXPECT_TRUE(Load<AlgorithmInfo>(Save(StoredInfo<4>(22, Detail()))).GetSignalInfos().empty());
}

TEST(AlgorithmInfo, Versions4And5TakeTheSamplingTypeFromTheAlgorithm) {
  const std::pair<std::int32_t, std::int32_t> cases[] = {{0, 1}, {27, 1}, {5, 1},  {23, 1},
                                                         {6, 2}, {14, 2}, {18, 0}, {22, 0}};
  for (const auto& [type, sampling] : cases) {
    const Detail detail = AlgorithmInfo(type).GetDetailedInformation();
    detail->SetSamplingType(0);
    EXPECT_EQ(Load<AlgorithmInfo>(Save(StoredInfo<4>(type, detail))).GetSamplingType(), sampling);
    EXPECT_EQ(Load<AlgorithmInfo>(Save(StoredInfo<5>(type, detail))).GetSamplingType(), sampling);
    EXPECT_EQ(Load<AlgorithmInfo>(Save(StoredInfo<6>(type, detail))).GetSamplingType(), 0);
  }
  for (const auto& [type, sampling] : {std::pair{5, 1}, {6, 2}, {23, 0}}) {
    const auto info = Load<AlgorithmInfo>(Save(StoredInfo<5>(type, Detail())));
    EXPECT_EQ(info.GetDetailedInformation() != nullptr, sampling != 0);
    EXPECT_EQ(info.GetSamplingType(), sampling);
  }
}

TEST(AlgorithmInfo, BelowVersion4TheDetailIsBuiltFromFlatRecords) {
  OldFields old;
  old.cv_indexes = {{L"a", CDesignEntry(support::Vec({0.0, 2.0, 1.0}))},
                    {L"b", CDesignEntry(std::int64_t{3})},
                    {L"broken", CDesignEntry(support::Vec({0.5, 1.0}))},
                    {L"text", CDesignEntry(L"none")}};
  auto zel = Load<AlgorithmInfo>(Save(StoredInfo<3>(18, Detail(), old)));
  const std::map<std::wstring, std::vector<std::uint64_t>> expected{
      {L"a", {0, 2, 1}}, {L"b", {3}}, {L"broken", {}}, {L"text", {}}};
  EXPECT_EQ(zel.GetZELInformation()->cv_indexes_, expected);

  old.iterations[1].probability_of_failure_ = 0.25;
  old.iterations[2].reliability_index_ = 3.5;
  old.designs = {{Id(4), {1, {}}}, {Id(5), {2, {}}}, {Id(6), {2, {}}}};
  auto reliability = Load<AlgorithmInfo>(Save(StoredInfo<2>(8, Detail(), old)));
  const auto detail = reliability.GetReliabilityInformation();
  EXPECT_EQ(detail->reli_method_name_, L"Adaptive Sampling (AS)");
  ASSERT_EQ(detail->design_sets_map_.size(), 2u);
  EXPECT_EQ(detail->GetDesignSet(L"Design Set 1").design_ids_, std::set<DesignId>{Id(4)});
  const auto& second =
      dynamic_cast<const ReliabilityDesignSet&>(detail->GetDesignSet(L"Design Set 2"));
  EXPECT_EQ(second.design_ids_, (std::set<DesignId>{Id(5), Id(6)}));
  EXPECT_EQ(second.reliability_index_, 3.5);

  EXPECT_FALSE(Load<AlgorithmInfo>(Save(StoredInfo<1>(5, Detail()))).GetDetailedInformation());
}

TEST(AlgorithmInfo, ACopyOwnsItsModels) {
  VRDB project = support::MakePlateProject();
  const AlgorithmInfo& info = *project.GetAlgorithmInfo();
  const AlgorithmInfo copy(info);
  EXPECT_TRUE(info.GetDetailedInformation()->IsEqual(copy.GetDetailedInformation()));
  copy.GetDetailedInformation()->ResetSupportData(project.GetDesignContainer(),
                                                  project.GetParameterManager());
  EXPECT_FALSE(info.GetDetailedInformation()->IsEqual(copy.GetDetailedInformation()));
  for (const auto& record : support::GetModels(project).GetSurrogateInfos())
    EXPECT_EQ(record.GetSurrogate()->GetPoints().rows(), 40);

  AlgorithmInfo unknown(info);
  unknown.GetDetailedInformation()->SetSamplingType(0);
  unknown.GetDetailedInformation()->ResetSupportData(project.GetDesignContainer(),
                                                     project.GetParameterManager());
  const auto& models = unknown.GetZELInformation()->surrogate_infos_;
  EXPECT_EQ(models.GetSurrogateInfo(L"mass").GetSurrogate()->GetPoints().rows(), 40);
}

TEST(ZELInformation, SamplingTypeComesFromTheFlagUntilVersion7) {
  const auto stored = [](auto version, bool deterministic, std::int32_t base) {
    constexpr int kVersion = decltype(version)::value;
    return Save(StandIn<struct ZELTag, kVersion, true>{[=](portable_binary_oarchive& ar) {
      Put(ar, "DetailedInformationBase", StoredBase(base));
      const EntrySequence old{{L"g", CDesignEntry(support::Vec({1.0, 0.0}))}};
      if (kVersion < 4)
        Put(ar, "cv_indexes_", old);
      else
        Put(ar, "cv_indexes_", std::map<std::wstring, std::vector<std::uint64_t>>{{L"g", {1, 0}}});
      Put(ar, "response_to_cv_mapping_", std::map<std::wstring, std::wstring>{{L"r", L"g"}});
      if (kVersion >= 1) Put(ar, "parameter_manager_", ParameterManager());
      if (kVersion >= 2) Put(ar, "surrogate_infos_", SurrogateInfoContainer());
      if (kVersion >= 3 && kVersion < 7) Put(ar, "was_deterministic_sampling_", deterministic);
      if (kVersion >= 5)
        Put(ar, "zel_settings_", boost::optional<corvath::zel::ZELCombinedSettings>());
      if (kVersion >= 6) {
        Put(ar, "num_samples_", std::uint64_t{9});
        Put(ar, "parameter_names_", std::vector<std::wstring>{L"x"});
        Put(ar, "sampling_limits_", std::vector<std::pair<double, double>>{{0.0, 1.0}});
        Put(ar, "defined_limits_", std::vector<std::pair<CDesignEntry, CDesignEntry>>());
        Put(ar, "distribution_settings_", std::vector<RandomProperties>());
        const boost::shared_ptr<ZELInformation::SubspaceResultContainer> none;
        Put(ar, "calculated_models_", none);
        Put(ar, "best_models_", none);
        Put(ar, "function_strings_", std::vector<std::wstring>{L"f"});
        if (kVersion < 9) Put(ar, "polynomial_info_", std::vector<std::wstring>{L"dropped"});
        Put(ar, "relative_freq_of_importance_", std::vector<double>{0.5});
      }
      if (kVersion >= 8)
        Put(ar, "custom_zel_logs_",
            std::vector<std::pair<std::wstring, std::wstring>>{{L"a", L"b"}});
    }});
  };
  const auto check = [&](auto version, bool deterministic, std::int32_t base,
                         std::int32_t expected) {
    const auto info = Load<ZELInformation>(stored(version, deterministic, base));
    EXPECT_EQ(info.GetSamplingType(), expected) << version.value;
    EXPECT_EQ(info.cv_indexes_.at(L"g"), (std::vector<std::uint64_t>{1, 0})) << version.value;
    EXPECT_EQ(info.relative_freq_of_importance_.size(), version.value >= 6 ? 1u : 0u);
    EXPECT_EQ(info.custom_zel_logs_.size(), version.value >= 8 ? 1u : 0u);
  };
  using std::integral_constant;
  check(integral_constant<int, 0>(), false, 1, 1);
  check(integral_constant<int, 3>(), false, 1, 2);
  check(integral_constant<int, 3>(), true, 0, 1);
  check(integral_constant<int, 6>(), true, 2, 1);
  check(integral_constant<int, 7>(), true, 2, 2);
  check(integral_constant<int, 9>(), false, 1, 1);
  // Version 9 as it stands above is what the class writes.
  const std::string bytes = stored(integral_constant<int, 9>(), false, 1);
  EXPECT_EQ(Save(Load<ZELInformation>(bytes)), bytes);
}

TEST(SystemsInformation, OldSetsKeepTheirNamesGroupsAndHistories) {
  using History = std::map<std::wstring, std::deque<std::pair<DesignId, double>>>;
  const std::string bytes =
      Save(StandIn<struct SystemsTag, 4, true>{[](portable_binary_oarchive& ar) {
        Put(ar, "DetailedInformationBase", EmptyBase());
        Put(ar, "history_map_", History{{L"beta", {{Id(2), 0.5}, {Id(9), 0.6}, {Id(1), 0.7}}}});
        Put(ar, "internal_algo_history_names_", std::list<std::wstring>{L"beta"});
        Put(ar, "design_set_map_",
            std::map<std::wstring, IdSet>{{L"plain", IdSet{Id(1), Id(2)}}, {L"both", IdSet{}}});
        Put(ar, "index_id_map_", std::map<std::uint64_t, DesignId>{{0, Id(1)}});
        Put(ar, "design_set_position_map_", std::map<std::wstring, std::uint64_t>{{L"plain", 1}});
        Put(ar, "prefered_design_set_", std::wstring(L"plain"));
        Put(ar, "additional_designs_", std::map<std::wstring, AdditionalDesignContainer>());
        Put(ar, "design_set_map_",
            std::map<std::wstring, Groups>{
                {L"both", {{L"best", {IdSet{Id(9)}, eDESIGN_TYPE{3}}}}},
                {L"groups", {{L"start", {IdSet{Id(7), Id(8)}, eDESIGN_TYPE{1}}}}}});
      }});
  const auto info = Load<SystemsInformation>(bytes);
  ASSERT_EQ(info.design_sets_map_.size(), 3u);
  EXPECT_EQ(info.prefered_design_set_, L"plain");
  EXPECT_EQ(info.GetDesignSet(L"plain").design_ids_, (std::set<DesignId>{Id(1), Id(2)}));
  EXPECT_EQ(info.GetDesignSet(L"groups").design_ids_, (std::set<DesignId>{Id(7), Id(8)}));
  const auto& group = *info.GetDesignSet(L"both").design_specifications_.begin();
  EXPECT_EQ(group.first, 3);
  EXPECT_TRUE(group.second == (DesignGroup{L"best", {Id(9)}}));
  const std::deque<HistoryData> of_plain{{1, Id(2), 0.5}, {3, Id(1), 0.7}};
  EXPECT_EQ(info.GetDesignSet(L"plain").history_map_.at(L"beta"), of_plain);
  EXPECT_TRUE(info.GetDesignSet(L"groups").history_map_.empty());
}

TEST(SystemsInformation, RefusesUnknownNamesAndForeignMerges) {
  SystemsInformation info;
  EXPECT_EQ(MessageOf([&] { info.AddDesignSet(L""); }),
            "Empty name for design set is not allowed.");
  EXPECT_EQ(MessageOf([&] { info.GetDesignSet(L"a b"); }), "Design set a b does not exist.");
  info.design_sets_map_[L"null"];
  EXPECT_EQ(MessageOf([&] { info.GetDesignSet(L"null"); }), "Design set null does not exist.");
  EXPECT_EQ(MessageOf([] { DesignSet(L"a").Merge(DesignSet(L"b")); }),
            "Design set identifier do not match.");
  AdditionalDesignContainer additional;
  additional.identifier_ = L"a";
  EXPECT_EQ(MessageOf([&] { additional.Merge(AdditionalDesignContainer()); }),
            "Additional designs identifier do not match.");
}

TEST(DesignSet, MergesByNameAndRole) {
  DesignSet a(L"s");
  a.design_ids_ = {Id(1)};
  a.design_specifications_ = {{eDESIGN_TYPE{1}, {L"g", {Id(1)}}}};
  a.surrogate_infos_.AddOrReplace(SurrogateInfo(L"r"));
  DesignSet b(L"s");
  b.design_ids_ = {Id(2)};
  b.design_specifications_ = {{eDESIGN_TYPE{1}, {L"g", {Id(2)}}}, {eDESIGN_TYPE{1}, {L"h", {}}}};
  b.surrogate_infos_.AddOrReplace(SurrogateInfo(L"r"));
  b.surrogate_infos_.AddOrReplace(SurrogateInfo(L"q"));
  b.history_map_[L"beta"] = {{1, Id(2), 0.5}};
  a.Merge(b);
  a.Merge(b);  // adds nothing
  EXPECT_EQ(a.design_ids_, (std::set<DesignId>{Id(1), Id(2)}));
  ASSERT_EQ(a.design_specifications_.size(), 2u);
  EXPECT_TRUE(a.design_specifications_.begin()->second == (DesignGroup{L"g", {Id(1), Id(2)}}));
  EXPECT_EQ(a.surrogate_infos_.GetSurrogateInfos().size(), 2u);
  EXPECT_EQ(a.history_map_, b.history_map_);
}

TEST(DesignSet, ReadsTheOlderForms) {
  const auto load = [](auto version) {
    constexpr int kVersion = decltype(version)::value;
    const std::string bytes =
        Save(StandIn<struct SetTag, kVersion, true>{[](portable_binary_oarchive& ar) {
          using OrderedGroups = std::map<std::wstring, std::pair<std::set<DesignId>, eDESIGN_TYPE>>;
          Put(ar, "identifier_", std::wstring(L"s"));
          if (kVersion < 2) {
            Put(ar, "design_ids_", IdSet{Id(3), Id(1)});
            Put(ar, "design_specifications_", Groups{{L"g", {IdSet{Id(1)}, eDESIGN_TYPE{2}}}});
          } else {
            Put(ar, "design_ids_", std::set<DesignId>{Id(3), Id(1)});
            Put(ar, "design_specifications_", OrderedGroups{{L"g", {{Id(1)}, eDESIGN_TYPE{2}}}});
          }
          if (kVersion < 3) Put(ar, "history_names_", std::list<std::wstring>{L"beta"});
          if (kVersion >= 1) {
            SurrogateInfoContainer models;
            models.AddOrReplace(SurrogateInfo(L"r"));
            Put(ar, "surrogate_infos_", models);
          }
          if (kVersion >= 3) Put(ar, "history_map_", HistoryMap{{L"beta", {{1, Id(3), 2.0}}}});
        }});
    return Load<DesignSet>(bytes);
  };
  const auto check = [](const DesignSet& set, std::size_t num_models, std::size_t num_histories) {
    EXPECT_EQ(set.identifier_, L"s");
    EXPECT_EQ(set.design_ids_, (std::set<DesignId>{Id(1), Id(3)}));
    ASSERT_EQ(set.design_specifications_.size(), 1u);
    EXPECT_EQ(set.design_specifications_.begin()->first, 2);
    EXPECT_TRUE(set.design_specifications_.begin()->second == (DesignGroup{L"g", {Id(1)}}));
    EXPECT_EQ(set.surrogate_infos_.GetSurrogateInfos().size(), num_models);
    EXPECT_EQ(set.history_map_.size(), num_histories);
  };
  check(load(std::integral_constant<int, 0>()), 0, 0);
  check(load(std::integral_constant<int, 1>()), 1, 0);
  check(load(std::integral_constant<int, 2>()), 1, 0);
  check(load(std::integral_constant<int, 3>()), 1, 1);
}

TEST(ReliabilityInformation, OldFiguresBecomeDesignSets) {
  ReliabilityDesignSetInfo info;
  info.probability_of_failure_ = 0.125;
  info.history_map_ = {};
  const auto load = [&](auto version) {
    constexpr int kVersion = decltype(version)::value;
    return Load<ReliabilityInformation>(
        Save(StandIn<struct ReliabilityTag, kVersion, true>{[&](portable_binary_oarchive& ar) {
          SystemsInformation base;
          base.AddDesignSet(L"first").design_ids_ = {Id(1)};
          // The archive knows objects by their addresses: this one is written once.
          Put(ar, "SystemsInformation", base);
          ReliabilityDesignSetInfo total;
          total.method_name_ = L"m";
          Put(ar, "complete_directions_pair_", std::pair<std::uint64_t, std::uint64_t>(1, 2));
          Put(ar, "reli_total_infos_", total);
          Put(ar, "stndrd_reli_infos_", ReliabilityDesignSetInfo(total));
          const std::map<std::wstring, ReliabilityDesignSetInfo> infos{{L"first", info},
                                                                       {L"second", info}};
          const std::map<DesignId, eALGOINFO_DESIGNTYPE> types{{Id(1), {}}};
          Put(ar, kVersion < 2 ? "reli_iteration_infos_" : "reli_design_set_infos_", infos);
          Put(ar, kVersion < 2 ? "design_iteration_map_" : "design_type_map_", types);
        }}));
  };
  const auto check = [](const ReliabilityInformation& loaded) {
    EXPECT_EQ(loaded.reli_method_name_, L"m");
    ASSERT_EQ(loaded.design_sets_map_.size(), 2u);
    const auto& first = dynamic_cast<const ReliabilityDesignSet&>(loaded.GetDesignSet(L"first"));
    EXPECT_EQ(first.design_ids_, std::set<DesignId>{Id(1)});
    EXPECT_EQ(first.probability_of_failure_, 0.125);
    EXPECT_TRUE(loaded.GetDesignSet(L"second").design_ids_.empty());
  };
  check(load(std::integral_constant<int, 0>()));
  check(load(std::integral_constant<int, 2>()));
}

TEST(ReliabilityDesignSetInfo, ReadsOneFlagUnderTwoKeys) {
  const auto stored = [](auto version) {
    constexpr int kVersion = decltype(version)::value;
    return Save(StandIn<struct FiguresTag, kVersion, true>{[](portable_binary_oarchive& ar) {
      std::uint64_t number = 10;
      for (const char* name : {"safe_domain_designs_", "unsafe_domain_designs_", "failed_strings_",
                               "unsuccessful_designs_", "total_designs_"})
        Put(ar, name, ++number);
      Put(ar, kVersion < 6 ? "iteration_complete_" : "design_set_complete_", true);
      Put(ar, "most_probable_failure_point_id_", Id(4));
      double figure = 0.0;
      for (const char* name :
           {"probability_of_failure_", "standard_deviation_error_", "reliability_index_",
            "probability_of_failure_form_", "reliability_index_form_"})
        Put(ar, name, figure += 0.5);
      Put(ar, "method_name_", std::wstring(L"m"));
      Put(ar, "error_r2_", std::vector<double>{1.0});
      Put(ar, "error_loo_", std::vector<double>{2.0});
      if (kVersion < 5) Put(ar, "history_map_", OldHistoryMap{{L"Step", {{Id(1), 2.0}}}});
      if (kVersion >= 2) {
        Put(ar, "arsm_ds_map_",
            std::map<std::wstring, Eigen::MatrixXd>{{L"in", Eigen::MatrixXd::Ones(2, 1)}});
        Put(ar, "arsm_ds_types_", std::map<std::uint64_t, eALGOINFO_DESIGNTYPE>{{1, {}}});
      }
      if (kVersion >= 3) Put(ar, "has_valid_data_", true);
    }});
  };
  const auto check = [&](auto version) {
    const auto info = Load<ReliabilityDesignSetInfo>(stored(version));  // a wrong key throws
    EXPECT_TRUE(info.design_set_complete_);
    EXPECT_EQ(info.total_designs_, 15u);
    EXPECT_EQ(info.reliability_index_form_, 2.5);
    EXPECT_EQ(info.history_map_.size(), version.value < 5 ? 1u : 0u);
    EXPECT_EQ(info.arsm_ds_map_.size(), version.value >= 2 ? 1u : 0u);
    EXPECT_EQ(info.has_valid_data_, version.value >= 3);
  };
  check(std::integral_constant<int, 0>());
  check(std::integral_constant<int, 2>());
  check(std::integral_constant<int, 5>());
  check(std::integral_constant<int, 6>());
  const std::string current = stored(std::integral_constant<int, 6>());
  EXPECT_EQ(Save(Load<ReliabilityDesignSetInfo>(current)), current);
}

TEST(DetailedInformation, DerivedSetsSurviveAsWhatTheyAre) {
  AlgorithmInfo info(0);
  auto& set =
      dynamic_cast<OptimizationDesignSet&>(info.GetSystemsInformation()->AddDesignSet(L"Pareto"));
  set.lower_upper_bounds_map_[L"x"][Id(3)] = {CDesignEntry(0.0), CDesignEntry(1.0)};
  auto& detail = dynamic_cast<OptimizationInformation&>(*info.GetDetailedInformation());
  detail.best_design_ids_ = {Id(3)};
  AdditionalDesignContainer& additional = detail.additional_designs_[L"extra"];
  additional.designs_.Add(Design({{L"x", CDesignEntry(2.0)}}, Id(8)));
  additional.design_sets_[L"d"] = boost::make_shared<DesignSet>(L"d");

  const auto loaded = Load<AlgorithmInfo>(Save(info));
  EXPECT_TRUE(detail.IsEqual(loaded.GetDetailedInformation()));
  EXPECT_TRUE(detail.IsEqual(detail.Clone()));
  EXPECT_FALSE(detail.IsEqual(nullptr));
  EXPECT_FALSE(detail.IsEqual(boost::make_shared<SystemsInformation>(detail)));
  const AlgorithmInfo copy(info);
  set.lower_upper_bounds_map_[L"x"][Id(3)].second = CDesignEntry(2.0);
  EXPECT_FALSE(detail.IsEqual(copy.GetDetailedInformation()));
}

TEST(DetailedInformation, RecoversTheDesignsOfModels) {
  VRDB project = support::MakePlateProject();
  auto& models = support::GetModels(project);
  const auto ids = models.GetSurrogateInfo(L"mass").GetUsedHids();
  models.Update([](SurrogateInfo& info) { info.SetUsedHids({}); });
  const auto recover = [&](DetailedInformationBase& detail) {
    detail.RecoverUsedDesigns(project.GetDesignContainer(), project.GetParameterManager());
  };

  // The designs hold the constant parameter beside the models' inputs, so that only a search that
  // completes the support points can find them.
  recover(*project.GetAlgorithmInfo()->GetDetailedInformation());
  EXPECT_TRUE(models.GetSurrogateInfo(L"mass").GetUsedHids().empty());

  SystemsInformation systems;
  systems.SetSamplingType(1);
  systems.AddDesignSet(L"s").surrogate_infos_ = models;
  Design twin = project.GetDesignContainer()[5];
  twin.SetId(Id(100));
  project.GetDesignContainer().Add(twin);
  recover(systems);
  const auto& found = systems.GetDesignSet(L"s").surrogate_infos_;
  for (const std::wstring& name : support::kPlateOutputs) {
    auto expected = ids;
    expected[5] = Id(100);  // of equal designs the last
    EXPECT_EQ(found.GetSurrogateInfo(name).GetUsedHids(), expected);
  }
}

TEST(SmallRecords, ReadTheirFirstVersions) {
  const auto additional = Load<AdditionalDesignContainer>(
      Save(StandIn<struct AdditionalTag, 0, true>{[](portable_binary_oarchive& ar) {
        Put(ar, "identifier_", std::wstring(L"extra"));
        Put(ar, "designs_", DesignManager({Design({}, Id(4))}));
        Put(ar, "similar_to_system_designs_", true);
        Put(ar, "design_sets_",
            std::map<std::wstring, Groups>{{L"s", {{L"g", {IdSet{Id(4)}, eDESIGN_TYPE{2}}}}}});
        Put(ar, "design_set_position_map_", std::map<std::wstring, std::uint64_t>{{L"s", 1}});
      }}));
  EXPECT_EQ(additional.design_sets_.at(L"s")->design_ids_, std::set<DesignId>{Id(4)});
  EXPECT_EQ(additional.design_set_position_map_.at(L"s"), 1u);

  // Without stored names, those of the map in its order.
  const auto signal =
      Load<SignalInfo>(Save(StandIn<struct SignalTag, 0, true>{[](portable_binary_oarchive& ar) {
        const StandIn<struct PartTag, 0, true> data{[](portable_binary_oarchive& inner) {
          Put(inner, "data_part_map_",
              std::map<std::wstring, std::vector<double>>{{L"re", {1.0}}, {L"im", {2.0}}});
        }};
        const StandIn<struct ChannelTag, 0, true> channel{[&](portable_binary_oarchive& inner) {
          Put(inner, "data_info_map_", std::map<std::wstring, decltype(data)>{{L"d", data}});
        }};
        Put(ar, "x_data_", std::vector<double>{0.5});
        Put(ar, "channel_info_map_", std::map<std::wstring, decltype(channel)>{{L"c", channel}});
      }}));
  EXPECT_EQ(signal.channel_info_names_, std::list<std::wstring>{L"c"});
  const DataInfo& data = signal.channel_info_map_.at(L"c").data_info_map_.at(L"d");
  EXPECT_EQ(data.data_part_names_, (std::list<std::wstring>{L"im", L"re"}));
  EXPECT_EQ(data.data_part_map_.at(L"re"), std::vector<double>{1.0});

  const auto path = [](auto version) {
    return Load<VRDBAttachedPath>(Save(
        StandIn<struct PathTag, decltype(version)::value, true>{[](portable_binary_oarchive& ar) {
          Put(ar, "path_", boost::filesystem::path("p"));
          Put(ar, "title_", std::wstring(L"t"));
          Put(ar, "isPathFix_", true);
          if (decltype(version)::value >= 1) Put(ar, "arguments_", std::wstring(L"a"));
        }}));
  };
  EXPECT_EQ(path(std::integral_constant<int, 0>()).arguments_, L"");
  EXPECT_EQ(path(std::integral_constant<int, 1>()).arguments_, L"a");
  EXPECT_TRUE(path(std::integral_constant<int, 1>()).autoInsertPlaceholders_);
  EXPECT_TRUE(path(std::integral_constant<int, 0>()).isPathFix_);
}

}  // namespace
