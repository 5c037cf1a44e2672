#include "project/vrdb.h"

#include "metamodel/surrogate.h"
#include "project/records/reliability_information.h"
#include "project/records/zel_information.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/plate_project.h"
#include "support/stand_in.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace corvath::algorithm::datatypes;
using corvath::portable_binary_oarchive;
using corvath::enums::DeterministicProperties;
using support::Load;
using support::MessageOf;
using support::Put;
using support::Save;
using support::StandIn;
using Kind = corvath::algorithm::datatypes::DeterministicProperties;

/// A project as the class writes it for another class version.
template <int Version>
std::string SaveAs(const VRDB& project) {
  return Save(StandIn<struct ProjectTag, Version, true>{[&](portable_binary_oarchive& ar) {
    boost::serialization::access::member_save(ar, project, Version);
  }});
}

/// The fields of a project in their order, with what a case gives.
struct Fields {
  std::list<SurrogateInfo> surrogate_infos;
  ParameterManager parameters;
  DesignManager designs;
  Design reference;
  boost::shared_ptr<AlgorithmInfo> algorithm_info;
  VRDB::MetaData meta_data;
  VRDB::Criteria criteria;
};

template <int Version>
VRDB LoadFields(const Fields& fields) {
  return Load<VRDB>(
      Save(StandIn<struct FieldsTag, Version, true>{[&](portable_binary_oarchive& ar) {
        if (Version < 9) Put(ar, "surrogate_infos_", fields.surrogate_infos);
        Put(ar, "parameter_manager_", fields.parameters);
        Put(ar, "design_container_", fields.designs);
        if (Version < 10) Put(ar, "is_consistent_", true);
        if (Version >= 1) Put(ar, "reference_design_", fields.reference);
        if (Version >= 2) Put(ar, "algorithm_info_", fields.algorithm_info);
        if (Version >= 3) Put(ar, "meta_data_", fields.meta_data);
        if (Version >= 4) Put(ar, "validated_best_designs_", DesignManager());
        if (Version >= 5) Put(ar, "approx_design_container_", DesignManager());
        if (Version >= 6) Put(ar, "nominal_design_", Design());
        if (Version >= 7) {
          Put(ar, "image_path_map_", VRDB::PathMap());
          Put(ar, "process_path_map_", VRDB::PathMap());
        }
        if (Version >= 13) Put(ar, "criteria_", fields.criteria);
      }}));
}

Parameter DiscreteParameter(const std::wstring& name) {
  Parameter parameter(name);
  parameter.SetDeterministicProperty(
      Kind::Discrete(DeterministicProperties::ORDINAL_BY_INDEX,
                     {CDesignEntry(1.0), CDesignEntry(2.5), CDesignEntry(7.0)}));
  parameter.SetReferenceValue(CDesignEntry(2.5), false);
  return parameter;
}

Parameter RandomParameter(const std::wstring& name) {
  RandomProperties random;
  random.SetKind(1);
  random.SetMoments({1.0, 0.5});
  Parameter parameter(name);
  parameter.SetRandomProperties(random);
  return parameter;
}

DesignManager DesignsOf(const std::wstring& name, const std::vector<double>& values) {
  DesignManager designs;
  for (const double value : values)
    designs.Add(Design({{name, CDesignEntry(value)}}, DesignId(designs.size() + 1)));
  return designs;
}

double BoundAsNumber(const VRDB& project, const std::wstring& name, bool upper) {
  const auto bounds = project.GetInputBounds().at(name);
  return (upper ? bounds.second : bounds.first).GetScalar();
}

TEST(VRDB, KeepsAProjectThroughAFile) {
  VRDB project = support::MakePlateProject();
  project.GetDeactivatedDesigns() = {DesignId(3), DesignId(3).Appended(1)};
  project.SetMetaData(L"note \u00e4", "text");
  VRDBAttachedPath image;
  image.path_ = "pictures/\u00e4.png";
  image.title_ = L"title";
  image.isPathFix_ = true;
  image.autoInsertPlaceholders_ = false;
  project.GetImagePathMap()[boost::uuids::uuid{{1, 2, 3}}] = image;
  const std::string bytes = Save(project);
  const VRDB loaded = Load<VRDB>(bytes);

  EXPECT_EQ(loaded.GetClassVersion(), 14u);
  EXPECT_TRUE(loaded.GetParameterManager() == project.GetParameterManager());
  EXPECT_TRUE(loaded.GetDesignContainer() == project.GetDesignContainer());
  EXPECT_EQ(loaded.GetDeactivatedDesigns(), project.GetDeactivatedDesigns());
  EXPECT_EQ(loaded.GetMetaData(L"note \u00e4"), "text");
  const VRDBAttachedPath& path = loaded.GetImagePathMap().begin()->second;
  EXPECT_EQ(path.path_, image.path_);
  EXPECT_TRUE(path.isPathFix_ && !path.autoInsertPlaceholders_);
  EXPECT_EQ(loaded.GetCriteria().size(), 2u);  // those of the designs
  EXPECT_TRUE(loaded.GetAlgorithmInfo()->GetDetailedInformation()->IsEqual(
      project.GetAlgorithmInfo()->GetDetailedInformation()));
}

TEST(VRDB, StoresSupportDataOnlyInTheDesigns) {
  VRDB project = support::MakePlateProject();
  const Eigen::MatrixXd points = support::PlateDesigns();
  const std::string column(reinterpret_cast<const char*>(points.col(0).data()),
                           static_cast<std::size_t>(points.rows()) * sizeof(double));
  const auto holds_column = [&](const std::string& bytes) {
    return bytes.find(column) != std::string::npos;
  };
  const std::string bytes = Save(project);
  EXPECT_FALSE(holds_column(bytes));
  EXPECT_TRUE(holds_column(SaveAs<13>(project)));  // which has no other place for them

  // The project keeps them, and a reader has them back to the bit.
  VRDB loaded = Load<VRDB>(bytes);
  for (const std::wstring& name : support::kPlateOutputs)
    for (VRDB* p : {&project, &loaded}) {
      const auto& model = *support::GetModels(*p).GetSurrogateInfo(name).GetSurrogate();
      EXPECT_EQ(model.GetPoints(), points);
      EXPECT_EQ(model.GetValues()(7),
                support::GetModels(project).GetSurrogateInfo(name).GetSurrogate()->GetValues()(7));
    }
}

TEST(VRDB, ReadsEveryClassVersionAndNewerOnes) {
  VRDB project = support::MakePlateProject();
  project.SetMetaData(L"note", "text");
  project.GetReferenceDesign().SetId(DesignId(77));
  const auto check = [](VRDB loaded, int version) {
    EXPECT_EQ(loaded.GetClassVersion(), static_cast<unsigned>(version));
    EXPECT_EQ(loaded.GetDesignContainer().size(), 40u);
    EXPECT_EQ(loaded.GetReferenceDesign().GetId() == DesignId(77), version >= 1);
    EXPECT_EQ(loaded.HasMetaData(L"note"), version >= 3);
    EXPECT_EQ(loaded.GetAlgorithmInfo()->GetType(), version >= 2 ? 18 : 22) << version;
    EXPECT_EQ(loaded.GetCriteria().size(), 2u);
    if (version >= 2) {
      const auto& record = support::GetModels(loaded).GetSurrogateInfo(L"mass");
      EXPECT_EQ(record.GetSurrogate()->GetPoints().rows(), 40);
    }
  };
  check(Load<VRDB>(SaveAs<0>(project)), 0);
  check(Load<VRDB>(SaveAs<1>(project)), 1);
  check(Load<VRDB>(SaveAs<2>(project)), 2);
  check(Load<VRDB>(SaveAs<3>(project)), 3);
  check(Load<VRDB>(SaveAs<4>(project)), 4);
  check(Load<VRDB>(SaveAs<5>(project)), 5);
  check(Load<VRDB>(SaveAs<6>(project)), 6);
  check(Load<VRDB>(SaveAs<7>(project)), 7);
  check(Load<VRDB>(SaveAs<9>(project)), 9);
  check(Load<VRDB>(SaveAs<12>(project)), 12);
  check(Load<VRDB>(SaveAs<13>(project)), 13);
  check(Load<VRDB>(SaveAs<15>(project)), 15);
}

TEST(VRDB, Version0HasAlgorithmType22OrThatOfItsModels) {
  Fields fields;
  fields.designs = DesignsOf(L"x", {1.0, 2.0});
  const VRDB plain = LoadFields<0>(fields);
  EXPECT_EQ(plain.GetAlgorithmInfo()->GetType(), 22);
  EXPECT_TRUE(plain.GetAllMetaData().empty());
  EXPECT_TRUE(plain.GetReferenceDesign().GetParameters().Has(L"x"));

  fields.surrogate_infos = {SurrogateInfo(L"r")};
  const VRDB with_models = LoadFields<0>(fields);
  ASSERT_EQ(with_models.GetAlgorithmInfo()->GetType(), 18);
  EXPECT_TRUE(
      with_models.GetAlgorithmInfo()->GetZELInformation()->surrogate_infos_.HasSurrogateInfo(L"r"));
}

TEST(VRDB, OldModelsMoveIntoTheDetailAndParametersAreRepairedBelowVersion8) {
  Fields fields;
  fields.parameters.AddParameter(DiscreteParameter(L"d"));
  fields.surrogate_infos = {SurrogateInfo(L"r")};
  const auto kind_of = [](const ParameterManager& manager) {
    return manager.GetParameter(L"d").GetDeterministicProperty(0).GetKind();
  };

  const VRDB of_8 = LoadFields<8>(fields);
  const auto detail_8 = of_8.GetAlgorithmInfo()->GetZELInformation();
  EXPECT_TRUE(detail_8->surrogate_infos_.HasSurrogateInfo(L"r"));
  EXPECT_EQ(kind_of(of_8.GetParameterManager()), DeterministicProperties::ORDINAL_BY_INDEX);
  EXPECT_EQ(of_8.GetSamplingType(), 0);

  const VRDB of_7 = LoadFields<7>(fields);
  const auto detail_7 = of_7.GetAlgorithmInfo()->GetZELInformation();
  EXPECT_TRUE(detail_7->surrogate_infos_.HasSurrogateInfo(L"r"));
  EXPECT_EQ(kind_of(of_7.GetParameterManager()), DeterministicProperties::ORDINAL_BY_VALUE);
  EXPECT_EQ(kind_of(detail_7->parameter_manager_), DeterministicProperties::ORDINAL_BY_VALUE);
  EXPECT_EQ(of_7.GetSamplingType(), 1);

  // A manager of the detail's own counts, and constant parameters do not.
  fields.surrogate_infos.clear();
  fields.algorithm_info = boost::make_shared<AlgorithmInfo>(18);
  Parameter constant = DiscreteParameter(L"d");
  constant.SetConst(true);
  auto& own = fields.algorithm_info->GetZELInformation()->parameter_manager_;
  own.AddParameter(constant);
  own.AddParameter(RandomParameter(L"r"));
  const VRDB with_own = LoadFields<7>(fields);
  EXPECT_EQ(with_own.GetSamplingType(), 2);
  EXPECT_EQ(kind_of(with_own.GetAlgorithmInfo()->GetZELInformation()->parameter_manager_),
            DeterministicProperties::ORDINAL_BY_VALUE);
}

TEST(VRDB, OldModelsOfAReliabilityProjectGoToItsFirstDesignSet) {
  Fields fields;
  fields.designs = DesignsOf(L"x", {1.0, 2.0});
  fields.surrogate_infos = {SurrogateInfo(L"r")};
  fields.algorithm_info = boost::make_shared<AlgorithmInfo>(14);
  auto& detail = *fields.algorithm_info->GetReliabilityInformation();
  detail.AddDesignSet(L"b");
  detail.AddDesignSet(L"a");
  const VRDB named = LoadFields<8>(fields);
  const auto sets = named.GetAlgorithmInfo()->GetReliabilityInformation();
  EXPECT_EQ(sets->design_sets_map_.size(), 2u);
  EXPECT_TRUE(sets->GetDesignSet(L"a").surrogate_infos_.HasSurrogateInfo(L"r"));
  EXPECT_TRUE(sets->GetDesignSet(L"b").surrogate_infos_.IsEmpty());

  // A file without sets gets them from its designs.
  const auto limit = [&](double value) {
    Criterion criterion(CriterionDescription::LIMIT_LHS_BELOW_RHS, L"x", L"1");
    criterion.SetValues(CDesignEntry(), CDesignEntry(), CDesignEntry(value), false);
    return criterion;
  };
  fields.designs.ModifyDesigns()[0].GetCriteria().Append(L"limit", limit(0.5));
  fields.designs.ModifyDesigns()[1].GetCriteria().Append(L"limit", limit(-0.5));
  Design failed({{L"x", CDesignEntry(3.0)}}, DesignId(3));
  failed.GetCriteria().Append(L"limit", limit(std::nan("")));
  fields.designs.Add(failed);
  detail.design_sets_map_.clear();
  const VRDB repaired = LoadFields<8>(fields);
  const auto made = repaired.GetAlgorithmInfo()->GetReliabilityInformation();
  EXPECT_EQ(made->prefered_design_set_, L"All designs");
  EXPECT_EQ(made->GetDesignSet(L"All designs").design_ids_.size(), 3u);
  EXPECT_TRUE(made->GetDesignSet(L"All designs").surrogate_infos_.HasSurrogateInfo(L"r"));
  EXPECT_EQ(made->GetDesignSet(L"Safe domain designs").design_ids_.count(DesignId(1)), 1u);
  EXPECT_EQ(made->GetDesignSet(L"Unsafe domain designs").design_ids_.count(DesignId(2)), 1u);
  EXPECT_EQ(made->GetDesignSet(L"Failed designs").design_ids_.count(DesignId(3)), 1u);
}

TEST(VRDB, EmptyCriteriaComeFromTheDesigns) {
  Fields fields;
  fields.designs = DesignsOf(L"x", {1.0});
  fields.designs.ModifyDesigns()[0].GetCriteria().Append(
      L"goal", Criterion(CriterionDescription::RHS, L"", L"x"));
  EXPECT_TRUE(LoadFields<13>(fields).GetCriteria().Has(L"goal"));
  fields.criteria.Append(L"own", Criterion());
  EXPECT_FALSE(LoadFields<13>(fields).GetCriteria().Has(L"goal"));
  EXPECT_TRUE(LoadFields<13>(fields).GetCriteria().Has(L"own"));
}

TEST(VRDB, SavingNotesTheWriterInTheMetaData) {
  const VRDB project;
  EXPECT_TRUE(project.GetAllMetaData().empty());
  const VRDB loaded = Load<VRDB>(Save(project));
  EXPECT_THAT(loaded.GetMetaData(L"stelvanix version"),
              testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
  int major = 0, minor = 0, maintenance = 0;
  ASSERT_EQ(std::sscanf(loaded.GetMetaData(L"stelvanix version").c_str(), "%d.%d.%d", &major,
                        &minor, &maintenance),
            3);
  EXPECT_EQ(loaded.GetMetaData(L"stelvanix version_full"),
            std::to_string(major * 65536 + minor * 256 + maintenance));
  EXPECT_TRUE(loaded.HasMetaData(L"stelvanix suffix"));
  EXPECT_THAT(loaded.GetMetaData(L"stelvanix build date"),
              testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+"));
  EXPECT_THAT(loaded.GetMetaData(L"last_write_time"),
              testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+(\\.[0-9]+)?"));
  EXPECT_EQ(loaded.GetMetaData(L"deactivated_designs").substr(0, 3), "KBX");
  EXPECT_EQ(MessageOf([&] { loaded.GetMetaData(L"no such"); }), "No such meta data: no such");
}

TEST(VRDB, DamagedDeactivatedDesignsAreNone) {
  VRDB project;
  project.GetDeactivatedDesigns() = {DesignId(1), DesignId(2)};
  const std::string whole = Load<VRDB>(Save(project)).GetMetaData(L"deactivated_designs");
  Fields fields;
  const auto load = [&](const std::string& value) {
    fields.meta_data = {{L"deactivated_designs", value}};
    const VRDB loaded = LoadFields<14>(fields);
    EXPECT_EQ(loaded.GetMetaData(L"deactivated_designs"), value);
    return loaded.GetDeactivatedDesigns().size();
  };
  EXPECT_EQ(load(whole), 2u);
  EXPECT_EQ(load(""), 0u);
  EXPECT_EQ(load("3;4"), 0u);
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(load(whole.substr(0, length)), 0u) << length;
}

TEST(VRDB, BoundsAreTheRangeOfTheData) {
  VRDB project = support::MakePlateProject();
  const InputBounds bounds = project.GetInputBounds();
  EXPECT_EQ(bounds.size(), 4u);  // three inputs and the dependent parameter, not the constant one
  EXPECT_EQ(bounds.count(L"thickness"), 0u);
  const double expected[][2] = {{0.0, 2.0}, {-1.0, 1.0}, {10.0, 20.0}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(BoundAsNumber(project, support::kPlateInputs[i], false), expected[i][0]);
    EXPECT_EQ(BoundAsNumber(project, support::kPlateInputs[i], true), expected[i][1]);
  }
  EXPECT_EQ(project.GetParameterLimits(L"x").second.GetScalar(), 2.0);

  // Nothing is kept from call to call.
  project.GetDesignContainer().ModifyDesigns()[3].GetParameters().Set(L"x", CDesignEntry(9.0));
  EXPECT_EQ(BoundAsNumber(project, L"x", true), 9.0);
}

TEST(VRDB, BoundsFollowTheSamplingTypeAndKeepANaNOfTheFirstDesign) {
  VRDB project;
  project.GetParameterManager().AddParameter(RandomParameter(L"r"));
  project.GetDesignContainer() = DesignsOf(L"r", {3.0, -2.0, 5.0});
  EXPECT_TRUE(project.GetInputBounds().empty());  // no deterministic input
  project.GetAlgorithmInfo()->GetDetailedInformation()->SetSamplingType(2);
  EXPECT_EQ(BoundAsNumber(project, L"r", false), -2.0);
  EXPECT_EQ(BoundAsNumber(project, L"r", true), 5.0);

  const double nan = std::nan("");
  project.GetDesignContainer() = DesignsOf(L"r", {3.0, nan, 5.0});
  EXPECT_EQ(BoundAsNumber(project, L"r", true), 5.0);
  project.GetDesignContainer() = DesignsOf(L"r", {nan, 3.0, 5.0});
  EXPECT_TRUE(std::isnan(BoundAsNumber(project, L"r", true)));

  project.GetDesignContainer().Clear();
  EXPECT_EQ(MessageOf([&] { project.GetInputBounds(); }), "Unable to extract bounds.");
  project.GetDesignContainer() = DesignsOf(L"other", {1.0});
  EXPECT_NE(MessageOf([&] { project.GetInputBounds(); }), "");
}

TEST(VRDB, AMixedParameterStaysUnderItsNameAmongRandomOnes) {
  // A random variable set would put the mixed one in front.
  VRDB project;
  Parameter mixed = RandomParameter(L"mixed");
  mixed.SetDeterministicProperty(Kind::Continuous(0.0, 1.0));
  project.GetParameterManager().AddParameter(RandomParameter(L"random"));
  project.GetParameterManager().AddParameter(mixed);
  project.GetAlgorithmInfo()->GetDetailedInformation()->SetSamplingType(2);
  project.GetDesignContainer().Add(
      Design({{L"random", CDesignEntry(100.0)}, {L"mixed", CDesignEntry(0.5)}}, DesignId(1)));
  EXPECT_EQ(BoundAsNumber(project, L"random", true), 100.0);
  EXPECT_EQ(BoundAsNumber(project, L"mixed", true), 0.5);
}

TEST(VRDB, NamesTheResponsesOfTheMapping) {
  VRDB project = support::MakePlateProject();
  EXPECT_TRUE(project.GetResponseNames().empty());
  project.GetAlgorithmInfo()->GetZELInformation()->response_to_cv_mapping_ = {{L"b", L"mass"},
                                                                              {L"a", L"stress"}};
  EXPECT_EQ(project.GetResponseNames(), (std::list<std::wstring>{L"stress", L"mass"}));
  const VRDB copy = project;
  EXPECT_EQ(copy.GetAlgorithmInfo(), project.GetAlgorithmInfo());
  project.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(5);
  EXPECT_TRUE(project.GetResponseNames().empty());
}

}  // namespace
