// The stored forms of an algorithm's records, of every class version, and what old ones become.

#include "project/attached_path.h"
#include "project/records/algorithm_info.h"
#include "project/records/optimization_information.h"
#include "project/records/reliability_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"
#include "support/stored_form.h"
#include "support/values.h"

#include <deque>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;
using Text = std::wstring;
using Names = std::list<Text>;
using IdSet = boost::unordered_set<DesignId>;
template <class Ids>
using Groups = std::map<Text, std::pair<Ids, eDESIGN_TYPE>>;
using Detail = boost::shared_ptr<DetailedInformationBase>;
using Figures = ReliabilityDesignSetInfo;

const auto kEqual = [](const auto& a, const auto& b) { return a == b; };
const auto kEqualSets = [](const auto& a, const auto& b) { return a.IsEqual(b); };
const auto kEqualDetails = [](const auto& a, const auto& b) { return a.IsEqual(b.Clone()); };

DesignId Id(std::uint64_t number) {
  return DesignId(number);
}

SurrogateInfoContainer Models() {
  SurrogateInfoContainer models;
  models.AddOrReplace(SurrogateInfo(L"r"));
  return models;
}

// ---- signals and paths ----

StoredForm<DataInfo> DataForm() {
  StoredForm<DataInfo> form(1);
  form.Field(ZEL_MEMBER(DataInfo, data_part_map_), {{L"re", {1.0}}, {L"im", {2.0}}});
  form.Field(ZEL_MEMBER(DataInfo, data_part_names_), {L"re", L"im"}, Since(1), {L"im", L"re"});
  return form;
}

StoredForm<ChannelInfo> ChannelForm() {
  StoredForm<ChannelInfo> form(1);
  form.Field(ZEL_MEMBER(ChannelInfo, data_info_map_), {{L"e", {}}, {L"d", DataForm().Read(1)}});
  form.Field(ZEL_MEMBER(ChannelInfo, data_info_names_), {L"e", L"d"}, Since(1), {L"d", L"e"});
  return form;
}

StoredForm<SignalInfo> SignalForm() {
  StoredForm<SignalInfo> form(1);
  form.Field(ZEL_MEMBER(SignalInfo, x_data_), {0.5});
  form.Field(ZEL_MEMBER(SignalInfo, channel_info_map_),
             {{L"c", ChannelForm().Read(1)}, {L"b", {}}});
  form.Field(ZEL_MEMBER(SignalInfo, channel_info_names_), {L"c", L"b"}, Since(1), {L"b", L"c"});
  return form;
}

TEST(StoredRecords, OfSignalsAndPaths) {
  DataForm().Check(kEqual);
  ChannelForm().Check(kEqual);
  SignalForm().Check(kEqual);

  using Path = VRDBAttachedPath;
  StoredForm<Path> path(2);
  path.Field(ZEL_MEMBER(Path, path_), "pictures/\u00e4.png").Field(ZEL_MEMBER(Path, title_), L"t");
  path.Field(ZEL_MEMBER(Path, isPathFix_), true);
  path.Field(ZEL_MEMBER(Path, arguments_), L"a", Since(1));
  path.Field(ZEL_MEMBER(Path, autoInsertPlaceholders_), false, Since(2), true);
  path.Check();
}

// ---- design sets ----

template <class Ids>
Groups<Ids> OldGroup(const Text& name, const Ids& ids, int type) {
  return {{name, {ids, eDESIGN_TYPE{type}}}};
}

StoredForm<DesignSet> SetForm() {
  StoredForm<DesignSet> form(4);
  form.Field(ZEL_MEMBER(DesignSet, identifier_), L"s");
  form.Raw("design_ids_", IdSet{Id(3), Id(1)}, Until(1));
  form.Converted(ZEL_MEMBER(DesignSet, design_ids_), {Id(3), Id(1)}, Since(2));
  form.Raw("design_specifications_", OldGroup(L"g", IdSet{Id(1)}, 2), Until(1));
  form.Raw("design_specifications_", OldGroup(L"g", std::set<DesignId>{Id(1)}, 2), {2, 3});
  form.Converted(ZEL_MEMBER(DesignSet, design_specifications_),
                 {{eDESIGN_TYPE{2}, {L"g", {Id(1)}}}}, Since(4));
  form.Raw("history_names_", Names{L"beta"}, Until(2));
  form.Field(ZEL_MEMBER(DesignSet, surrogate_infos_), Models(), Since(1));
  form.Field(ZEL_MEMBER(DesignSet, history_map_), {{L"beta", {{1, Id(3), 2.0}}}}, Since(3));
  return form;
}

StoredForm<Figures> FiguresForm() {
  using F = Figures;
  StoredForm<F> form(6);
  form.Field(ZEL_MEMBER(F, safe_domain_designs_), 11);
  form.Field(ZEL_MEMBER(F, unsafe_domain_designs_), 12).Field(ZEL_MEMBER(F, failed_strings_), 13);
  form.Field(ZEL_MEMBER(F, unsuccessful_designs_), 14).Field(ZEL_MEMBER(F, total_designs_), 15);
  form.Raw("iteration_complete_", true, Until(5));
  form.Converted(ZEL_MEMBER(F, design_set_complete_), true, Since(6));
  form.Field(ZEL_MEMBER(F, most_probable_failure_point_id_), Id(4));
  form.Field(ZEL_MEMBER(F, probability_of_failure_), 0.5);
  form.Field(ZEL_MEMBER(F, standard_deviation_error_), 1.0);
  form.Field(ZEL_MEMBER(F, reliability_index_), 1.5);
  form.Field(ZEL_MEMBER(F, probability_of_failure_form_), 2.0);
  form.Field(ZEL_MEMBER(F, reliability_index_form_), 2.5).Field(ZEL_MEMBER(F, method_name_), L"m");
  form.Field(ZEL_MEMBER(F, error_r2_), {1.0}).Field(ZEL_MEMBER(F, error_loo_), {2.0});
  form.Field(ZEL_MEMBER(F, history_map_), {{L"Step", {{Id(1), 2.0}}}}, Until(4));
  form.Field(ZEL_MEMBER(F, arsm_ds_map_), {{L"in", Eigen::MatrixXd::Ones(2, 1)}}, Since(2));
  form.Field(ZEL_MEMBER(F, arsm_ds_types_), {{1, {}}}, Since(2));
  form.Field(ZEL_MEMBER(F, has_valid_data_), true, Since(3));
  return form;
}

TEST(StoredRecords, OfDesignSets) {
  StoredForm<HistoryData, false> history(0);
  history.Field(ZEL_MEMBER(HistoryData, num_calculated_designs_), 3);
  history.Field(ZEL_MEMBER(HistoryData, design_id_), Id(4));
  history.Field(ZEL_MEMBER(HistoryData, value_), 0.5);
  history.Check(kEqual);
  StoredForm<DesignGroup, false> group(0);
  group.Field(ZEL_MEMBER(DesignGroup, name_), L"g");
  group.Field(ZEL_MEMBER(DesignGroup, design_ids_), {Id(4)});
  group.Check(kEqual);
  SetForm().Check(kEqualSets);

  using O = OptimizationDesignSet;
  StoredForm<O> optimization(0);
  optimization.Part("DesignSet", SetForm());
  optimization.Field(ZEL_MEMBER(O, lower_upper_bounds_map_),
                     {{L"x", {{Id(3), {CDesignEntry(0.0), CDesignEntry(1.0)}}}}});
  optimization.Check(kEqualSets);

  using R = ReliabilityDesignSet;
  StoredForm<R> reliability(1);
  reliability.Part("DesignSet", SetForm()).Field(ZEL_MEMBER(R, probability_of_failure_), 0.25);
  reliability.Field(ZEL_MEMBER(R, standard_deviation_error_), 0.5);
  reliability.Field(ZEL_MEMBER(R, reliability_index_), 3.5).Field(ZEL_MEMBER(R, num_total_dir_), 7);
  reliability.Field(ZEL_MEMBER(R, num_done_dir_), 6);
  reliability.Field(ZEL_MEMBER(R, arsm_approx_errors_), {{L"e", {1.0}}});
  reliability.Field(ZEL_MEMBER(R, input_importance_values_), {{L"x", {0.5}}}, Since(1));
  reliability.Check(kEqualSets);
  FiguresForm().Check();
}

// ---- detailed information ----

StoredForm<DetailedInformationBase> BaseForm() {
  StoredForm<DetailedInformationBase> form(1);
  form.Field("sampling_type_", &DetailedInformationBase::GetSamplingType, 2, Since(1));
  return form;
}

/// Sets {"plain": designs 1 and 2}, whose history belongs to old versions as a whole; `groups` of
/// other sets are those of version 4.
StoredForm<SystemsInformation> SystemsForm(const std::map<Text, Groups<IdSet>>& groups = {}) {
  const auto plain = boost::make_shared<DesignSet>(L"plain");
  plain->design_ids_ = {Id(1), Id(2)};
  const auto with_history = boost::make_shared<DesignSet>(*plain);
  with_history->history_map_[L"beta"] = {{1, Id(2), 0.5}, {3, Id(1), 0.7}};
  const OldHistoryMap history{{L"beta", {{Id(2), 0.5}, {Id(9), 0.6}, {Id(1), 0.7}}}};
  AdditionalDesignContainer additional;
  additional.identifier_ = L"extra";
  additional.design_sets_[L"d"] = boost::make_shared<DesignSet>(L"d");

  using S = SystemsInformation;
  StoredForm<S> form(6);
  form.Part("DetailedInformationBase", BaseForm()).Raw("history_map_", history, Until(5));
  form.Raw("internal_algo_history_names_", Names{L"beta"}, Until(4));
  form.Raw("design_set_map_", std::map<Text, IdSet>{{L"plain", IdSet{Id(1), Id(2)}}}, Until(4));
  form.Raw("index_id_map_", std::map<std::uint64_t, DesignId>{{0, Id(1)}}, Until(4));
  form.Field(ZEL_MEMBER(S, design_set_position_map_), {{L"plain", 1}}, Since(1));
  form.Field(ZEL_MEMBER(S, prefered_design_set_), L"plain", Since(2));
  form.Field(ZEL_MEMBER(S, additional_designs_), {{L"extra", additional}}, Since(3));
  form.Raw("design_set_map_", groups, {4, 4});
  form.Raw("design_sets_map_", DesignSetMap{{L"plain", plain}}, {5, 5});
  form.Converted(ZEL_MEMBER(S, design_sets_map_), {{L"plain", with_history}}, Since(6));
  return form;
}

StoredForm<ReliabilityInformation> ReliabilityForm(const std::map<Text, Figures>& infos = {}) {
  Figures total;
  total.method_name_ = L"m";
  const std::map<DesignId, eALGOINFO_DESIGNTYPE> types{{Id(1), {}}};
  using R = ReliabilityInformation;
  StoredForm<R> form(6);
  form.Part("SystemsInformation", SystemsForm());
  form.Raw("complete_directions_pair_", std::pair<std::uint64_t, std::uint64_t>(1, 2), Until(2));
  form.Raw("reli_total_infos_", total, Until(2)).Raw("stndrd_reli_infos_", total, Until(2));
  form.Raw("reli_iteration_infos_", infos, Until(1)).Raw("design_iteration_map_", types, Until(1));
  form.Raw("reli_design_set_infos_", infos, {2, 2}).Raw("design_type_map_", types, {2, 2});
  form.Converted(ZEL_MEMBER(R, reli_method_name_), L"m", Since(3));
  form.Field(ZEL_MEMBER(R, is_converged_), true, Since(3));
  form.Field(ZEL_MEMBER(R, num_total_it_), 5, Since(3));
  form.Field(ZEL_MEMBER(R, num_done_it_), 4, Since(3));
  form.Field(ZEL_MEMBER(R, is_form_converged_), true, Since(6));
  return form;
}

/// The sampling type of the base is 2; the flag of versions 3 to 6 overrides it.
StoredForm<ZELInformation> ZelForm(bool was_deterministic = false) {
  using Z = ZELInformation;
  const EntrySequence old_groups{{L"g", CDesignEntry(support::Vec({1.0, 0.0}))}};
  ParameterManager parameters;
  parameters.AddParameter(Parameter(L"x"));
  RandomProperties random;
  random.SetKind(1);
  const auto results = [](const Text& name) {
    const auto container = boost::make_shared<Z::SubspaceResultContainer>();
    container->Add(name, {});
    return container;
  };
  StoredForm<Z> form(9);
  form.Part("DetailedInformationBase", BaseForm()).Raw("cv_indexes_", old_groups, Until(3));
  form.Converted(ZEL_MEMBER(Z, cv_indexes_), {{L"g", {1, 0}}}, Since(4));
  form.Field(ZEL_MEMBER(Z, response_to_cv_mapping_), {{L"r", L"g"}});
  form.Field(ZEL_MEMBER(Z, parameter_manager_), parameters, Since(1));
  form.Field(ZEL_MEMBER(Z, surrogate_infos_), Models(), Since(2));
  form.Raw("was_deterministic_sampling_", was_deterministic, {3, 6});
  form.Field(ZEL_MEMBER(Z, zel_settings_), corvath::zel::ZELCombinedSettings(), Since(5));
  form.Field(ZEL_MEMBER(Z, num_samples_), 9, Since(6));
  form.Field(ZEL_MEMBER(Z, parameter_names_), {L"x"}, Since(6));
  form.Field(ZEL_MEMBER(Z, sampling_limits_), {{0.0, 1.0}}, Since(6));
  form.Field(ZEL_MEMBER(Z, defined_limits_), {{CDesignEntry(2.0), CDesignEntry(3.0)}}, Since(6));
  form.Field(ZEL_MEMBER(Z, distribution_settings_), {random}, Since(6));
  form.Field(ZEL_MEMBER(Z, calculated_models_), results(L"a"), Since(6));
  form.Field(ZEL_MEMBER(Z, best_models_), results(L"b"), Since(6));
  form.Field(ZEL_MEMBER(Z, function_strings_), {L"f"}, Since(6));
  form.Raw("polynomial_info_", std::vector<Text>{L"dropped"}, {6, 8});
  form.Field(ZEL_MEMBER(Z, relative_freq_of_importance_), {0.5}, Since(6));
  form.Field(ZEL_MEMBER(Z, custom_zel_logs_), {{L"a", L"b"}}, Since(8));
  return form;
}

TEST(StoredRecords, OfDetailedInformation) {
  BaseForm().Check(kEqualDetails);
  SystemsForm().Check(kEqualDetails);
  ReliabilityForm().Check(kEqualDetails);
  ZelForm().Check(kEqualDetails);

  StoredForm<OptimizationInformation> optimization(1);
  optimization.Part("SystemsInformation", SystemsForm());
  optimization.Field(ZEL_MEMBER(OptimizationInformation, best_design_ids_), {Id(3)});
  optimization.Check(kEqualDetails);

  using A = AdditionalDesignContainer;
  const std::map<Text, Groups<IdSet>> groups{{L"s", OldGroup(L"g", IdSet{Id(4)}, 2)}};
  const auto set = boost::make_shared<DesignSet>(L"s");
  set->design_ids_ = {Id(4)};
  set->design_specifications_ = {{eDESIGN_TYPE{2}, {L"g", {Id(4)}}}};
  StoredForm<A> additional(1);
  additional.Field(ZEL_MEMBER(A, identifier_), L"extra");
  additional.Field(ZEL_MEMBER(A, designs_), DesignManager({Design({}, Id(4))}));
  additional.Field(ZEL_MEMBER(A, similar_to_system_designs_), true);
  additional.Raw("design_sets_", groups, Until(0));
  additional.Converted(ZEL_MEMBER(A, design_sets_), {{L"s", set}}, Since(1));
  additional.Field(ZEL_MEMBER(A, design_set_position_map_), {{L"s", 1}});
  additional.Check(kEqual);

  using Z = ZEL3Information;
  ParameterManager parameters;
  parameters.AddParameter(Parameter(L"x"));
  StoredForm<Z> zel3(0);
  zel3.Part("DetailedInformationBase", BaseForm()).Field(ZEL_MEMBER(Z, zel3_sdb_), "sdb");
  zel3.Field(ZEL_MEMBER(Z, zel3_configuration_), "configuration");
  zel3.Field(ZEL_MEMBER(Z, zel3_support_points_), Eigen::MatrixXd::Ones(2, 1));
  zel3.Field(ZEL_MEMBER(Z, zel3_responses_), Eigen::MatrixXd::Ones(2, 3));
  zel3.Field(ZEL_MEMBER(Z, zel3_design_ids_), {Id(3)});
  zel3.Field(ZEL_MEMBER(Z, zel3_parameter_manager_), parameters);
  zel3.Check(kEqualDetails);
}

TEST(StoredRecords, TheSamplingFlagOfVersions3To6Overrides) {
  for (unsigned version = 0; version <= 9; ++version)
    EXPECT_EQ(ZelForm(true).Read(version).GetSamplingType(), version >= 3 && version < 7 ? 1 : 2)
        << version;
}

TEST(StoredRecords, GroupsOfVersion4JoinTheSets) {
  const auto info = SystemsForm({{L"plain", OldGroup(L"best", IdSet{Id(9)}, 3)},
                                 {L"groups", OldGroup(L"start", IdSet{Id(7), Id(8)}, 1)}})
                        .Read(4);
  ASSERT_EQ(info.design_sets_map_.size(), 2u);
  EXPECT_EQ(info.GetDesignSet(L"plain").design_ids_, (std::set<DesignId>{Id(1), Id(2), Id(9)}));
  EXPECT_EQ(info.GetDesignSet(L"groups").design_ids_, (std::set<DesignId>{Id(7), Id(8)}));
  const auto& group = *info.GetDesignSet(L"plain").design_specifications_.begin();
  EXPECT_EQ(group.first, 3);
  EXPECT_TRUE(group.second == (DesignGroup{L"best", {Id(9)}}));
  const std::deque<HistoryData> of_plain{{1, Id(2), 0.5}, {2, Id(9), 0.6}, {3, Id(1), 0.7}};
  EXPECT_EQ(info.GetDesignSet(L"plain").history_map_.at(L"beta"), of_plain);
  EXPECT_TRUE(info.GetDesignSet(L"groups").history_map_.empty());
}

TEST(StoredRecords, OldFiguresBecomeReliabilitySets) {
  Figures figures;
  figures.probability_of_failure_ = 0.125;
  figures.standard_deviation_error_ = 0.5;
  figures.reliability_index_ = 3.5;
  for (const unsigned version : {0u, 2u}) {
    const auto loaded = ReliabilityForm({{L"plain", figures}, {L"second", figures}}).Read(version);
    ASSERT_EQ(loaded.design_sets_map_.size(), 2u);
    const auto& first = dynamic_cast<const ReliabilityDesignSet&>(loaded.GetDesignSet(L"plain"));
    EXPECT_EQ(first.design_ids_, (std::set<DesignId>{Id(1), Id(2)}));
    EXPECT_EQ(first.probability_of_failure_, 0.125);
    EXPECT_EQ(first.standard_deviation_error_, 0.5);
    EXPECT_EQ(first.reliability_index_, 3.5);
    EXPECT_EQ(first.history_map_.count(L"beta"), 1u);
    EXPECT_TRUE(loaded.GetDesignSet(L"second").design_ids_.empty());
  }
}

// ---- the algorithm ----

/// What stood flat in a record below class version 4.
struct OldFields {
  std::map<std::uint64_t, Figures> iterations;
  std::map<DesignId, std::pair<std::uint64_t, eALGOINFO_DESIGNTYPE>> designs;
  EntrySequence cv_indexes;
};

StoredForm<AlgorithmInfo> AlgorithmForm(std::int32_t type, const Detail& detail,
                                        const OldFields& old = {}) {
  const std::map<Text, std::vector<DesignId>> groups{{L"group", {Id(1)}}};
  Figures total;
  total.method_name_ = L"Adaptive Sampling (AS)";
  using A = AlgorithmInfo;
  StoredForm<A> form(7);
  form.Raw("algo_type_", type).Shows(&A::GetType, type);
  form.Raw("complete_directions_pair_", std::pair<std::uint64_t, std::uint64_t>(1, 2), Until(3));
  form.Raw("design_group_map_", groups, Until(3));
  form.Field("additional_data_", ZEL_SHOWN_BY(GetAdditionalData()),
             {{L"extra", CDesignEntry(2.0)}});
  form.Field("signal_info_container_", ZEL_SHOWN_BY(GetSignalInfos()),
             {{L"s2", SignalForm().Read(1)}, {L"s1", {}}}, Since(5));
  form.Converted("signal_info_names_", ZEL_SHOWN_BY(GetSignalInfoNames()), {L"s2", L"s1"}, Since(7),
                 Since(7));
  form.Shows(ZEL_SHOWN_BY(GetSignalInfoNames()), {L"s1", L"s2"}, {5, 6});
  form.Shows(ZEL_SHOWN_BY(GetSignalInfoNames()), {}, Until(4));
  form.Raw("reli_total_infos_", total, {2, 3}).Raw("reli_iteration_infos_", old.iterations, {2, 3});
  form.Raw("desig_iteration_map_", old.designs, {2, 3});
  form.Raw("zel_cv_indexes_", old.cv_indexes, {2, 3}).Raw("detailed_info_", detail, Since(4));
  return form;
}

TEST(StoredRecords, OfAlgorithmsWithEveryDetail) {
  for (const std::int32_t type : {0, 5, 8, 18, 28}) {
    const Detail detail = AlgorithmInfo(type).GetDetailedInformation();
    if (const auto systems = boost::dynamic_pointer_cast<SystemsInformation>(detail))
      systems->AddDesignSet(L"of the type's class");
    auto form = AlgorithmForm(type, detail);
    form.Shows(&AlgorithmInfo::GetDetailedInformation, detail, Since(6));
    form.Check();
  }
  EXPECT_FALSE(AlgorithmForm(5, Detail()).Read(1).GetDetailedInformation());
}

TEST(StoredRecords, Versions4And5TakeTheSamplingTypeFromTheAlgorithm) {
  const std::pair<std::int32_t, std::int32_t> cases[] = {{0, 1}, {27, 1}, {5, 1},  {23, 1},
                                                         {6, 2}, {14, 2}, {18, 0}, {22, 0}};
  for (const auto& [type, sampling] : cases) {
    const Detail detail = AlgorithmInfo(type).GetDetailedInformation();
    detail->SetSamplingType(0);
    const auto form = AlgorithmForm(type, detail);
    for (const unsigned version : {4u, 5u, 6u})
      EXPECT_EQ(form.Read(version).GetSamplingType(), version < 6 ? sampling : 0) << type;
  }
  for (const auto& [type, sampling] : {std::pair{5, 1}, {6, 2}, {23, 0}}) {
    const auto info = AlgorithmForm(type, Detail()).Read(5);
    EXPECT_EQ(info.GetDetailedInformation() != nullptr, sampling != 0);
    EXPECT_EQ(info.GetSamplingType(), sampling);
  }
}

TEST(StoredRecords, ANullDetailIsMadeOnDemandByItsType) {
  const auto load = [](std::int32_t type) { return AlgorithmForm(type, Detail()).Read(7); };
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

TEST(StoredRecords, BelowVersion4TheDetailIsBuiltFromFlatRecords) {
  OldFields old;
  old.cv_indexes = {{L"a", CDesignEntry(support::Vec({0.0, 2.0, 1.0}))},
                    {L"b", CDesignEntry(std::int64_t{3})},
                    {L"broken", CDesignEntry(support::Vec({0.5, 1.0}))},
                    {L"text", CDesignEntry(L"none")}};
  auto zel = AlgorithmForm(18, Detail(), old).Read(3);
  const std::map<Text, std::vector<std::uint64_t>> expected{
      {L"a", {0, 2, 1}}, {L"b", {3}}, {L"broken", {}}, {L"text", {}}};
  EXPECT_EQ(zel.GetZELInformation()->cv_indexes_, expected);

  old.iterations[1].probability_of_failure_ = 0.25;
  old.iterations[2].reliability_index_ = 3.5;
  old.designs = {{Id(4), {1, {}}}, {Id(5), {2, {}}}, {Id(6), {2, {}}}};
  auto reliability = AlgorithmForm(8, Detail(), old).Read(2);
  const auto detail = reliability.GetReliabilityInformation();
  EXPECT_EQ(detail->reli_method_name_, L"Adaptive Sampling (AS)");
  ASSERT_EQ(detail->design_sets_map_.size(), 2u);
  EXPECT_EQ(detail->GetDesignSet(L"Design Set 1").design_ids_, std::set<DesignId>{Id(4)});
  const auto& second =
      dynamic_cast<const ReliabilityDesignSet&>(detail->GetDesignSet(L"Design Set 2"));
  EXPECT_EQ(second.design_ids_, (std::set<DesignId>{Id(5), Id(6)}));
  EXPECT_EQ(second.reliability_index_, 3.5);
}

}  // namespace
