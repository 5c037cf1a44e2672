#include "project/vrdb.h"

#include "literature/plate_project.h"
#include "metamodel/surrogate.h"
#include "project/records/reliability_information.h"
#include "project/records/zel_information.h"
#include "support/stored_form.h"

#include <gmock/gmock.h>

namespace {

using namespace corvath::algorithm::datatypes;
using corvath::enums::DeterministicProperties;
using namespace support;
using Kind = corvath::algorithm::datatypes::DeterministicProperties;

/// The fields of a project in their order, with what a case gives.
struct Fields {
  std::list<SurrogateInfo> surrogate_infos;
  ParameterManager parameters;
  DesignManager designs;
  Design reference;
  boost::shared_ptr<AlgorithmInfo> algorithm_info;
  VRDB::MetaData meta_data;
  DesignManager validated;
  DesignManager approximated;
  Design nominal;
  VRDB::PathMap images;
  VRDB::PathMap processes;
  VRDB::Criteria criteria;

  Fields() = default;
  explicit Fields(const VRDB& project)
      : parameters(project.GetParameterManager()),
        designs(project.GetDesignContainer()),
        algorithm_info(project.GetAlgorithmInfo()) {}

  StoredForm<VRDB> ToForm() const {
    StoredForm<VRDB> form(14, /*restores_defaults=*/true);
    form.Raw("surrogate_infos_", surrogate_infos, Until(8)).Raw("parameter_manager_", parameters);
    form.Raw("design_container_", designs).Raw("is_consistent_", true, Until(9));
    form.Raw("reference_design_", reference, Since(1));
    form.Raw("algorithm_info_", algorithm_info, Since(2)).Raw("meta_data_", meta_data, Since(3));
    form.Raw("validated_best_designs_", validated, Since(4));
    form.Raw("approx_design_container_", approximated, Since(5));
    form.Raw("nominal_design_", nominal, Since(6)).Raw("image_path_map_", images, Since(7));
    form.Raw("process_path_map_", processes, Since(7)).Raw("criteria_", criteria, Since(13));
    return form;
  }
  VRDB Read(unsigned version) const { return ToForm().Read(version); }
};

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

TEST(VRDB, ReadsEveryClassVersionAndKeepsAllThroughAFile) {
  Fields fields(literature::MakePlateProject());
  fields.reference = Design({{L"x", CDesignEntry(3.0)}}, DesignId(77));
  fields.validated = DesignsOf(L"v", {1.0});
  fields.approximated = DesignsOf(L"a", {1.0, 2.0});
  fields.nominal.SetId(DesignId(78));
  fields.images[boost::uuids::uuid{{1, 2, 3}}].title_ = L"image";
  fields.processes[boost::uuids::uuid{{4}}].title_ = L"process";
  fields.criteria.Append(L"own", Criterion());
  const VRDB::DesignIds deactivated{DesignId(3), DesignId(3).Appended(1)};
  fields.meta_data = {{L"note \u00e4", "text"}, {L"deactivated_designs", Save(deactivated)}};

  StoredForm<VRDB> form = fields.ToForm();
  const auto field = [&form](const auto& get, const auto& value, unsigned since,
                             const auto& other) {
    form.Shows(get, value, Since(since));
    if (since > 0) form.Shows(get, other, Until(since - 1));
  };
  form.Shows(ZEL_SHOWN_BY(GetParameterManager()), fields.parameters);
  form.Shows(ZEL_SHOWN_BY(GetDesignContainer()), fields.designs);
  field(ZEL_SHOWN_BY(GetReferenceDesign()), fields.reference, 1,
        fields.designs.BuildTemplate(false));
  field(ZEL_SHOWN_BY(GetAlgorithmInfo()->GetType()), 18, 2, 22);
  field(ZEL_SHOWN_BY(HasMetaData(L"note \u00e4")), true, 3, false);
  field(ZEL_SHOWN_BY(GetDeactivatedDesigns()), deactivated, 3, VRDB::DesignIds());
  field(ZEL_SHOWN_BY(GetValidatedBestDesigns()), fields.validated, 4, DesignManager());
  field(ZEL_SHOWN_BY(GetApproxDesignContainer()), fields.approximated, 5, DesignManager());
  field(ZEL_SHOWN_BY(GetNominalDesign()), fields.nominal, 6, Design());
  const auto title = [](const VRDB::PathMap& paths) {
    return paths.empty() ? std::wstring() : paths.begin()->second.title_;
  };
  field([=](const VRDB& p) { return title(p.GetImagePathMap()); }, L"image", 7, L"");
  field([=](const VRDB& p) { return title(p.GetProcessPathMap()); }, L"process", 7, L"");
  field(ZEL_SHOWN_BY(GetCriteria()), fields.criteria, 13, fields.designs.GetCriteriaTemplate());
  const auto original = fields.algorithm_info->GetDetailedInformation();
  form.Shows(
      [original](const VRDB& p) {
        return original->IsEqual(p.GetAlgorithmInfo()->GetDetailedInformation());
      },
      true, Since(12));  // older ones do not tell the designs
  form.Shows(
      [](const VRDB& p) {
        const auto detail = p.GetAlgorithmInfo()->GetZELInformation();
        return detail->surrogate_infos_.GetSurrogateInfo(L"mass").GetSurrogate()->GetPoints();
      },
      literature::PlateDesigns(), Since(2));
  form.CheckReading();
  form.Expect(Load<VRDB>(Save(form.Read(14))), 14);
  for (unsigned version = 0; version <= 15; ++version)  // a newer one, too
    EXPECT_EQ(form.Read(version).GetClassVersion(), version);
}

TEST(VRDB, StoresSupportDataOnlyInTheDesigns) {
  VRDB project = literature::MakePlateProject();
  const Eigen::MatrixXd points = literature::PlateDesigns();
  const std::string column(reinterpret_cast<const char*>(points.col(0).data()),
                           static_cast<std::size_t>(points.rows()) * sizeof(double));
  const auto holds_column = [&](const std::string& bytes) {
    return bytes.find(column) != std::string::npos;
  };
  const std::string bytes = Save(project);
  EXPECT_FALSE(holds_column(bytes));
  EXPECT_TRUE(holds_column(Fields(project).ToForm().Write(13)));  // has no other place for them

  // The project keeps them, and a reader has them back to the bit.
  VRDB loaded = Load<VRDB>(bytes);
  for (const std::wstring& name : literature::kPlateOutputs)
    for (VRDB* p : {&project, &loaded}) {
      const auto& model = *literature::GetModels(*p).GetSurrogateInfo(name).GetSurrogate();
      EXPECT_EQ(model.GetPoints(), points);
      EXPECT_EQ(
          model.GetValues()(7),
          literature::GetModels(project).GetSurrogateInfo(name).GetSurrogate()->GetValues()(7));
    }
}

TEST(VRDB, RecoversTheDesignsOfModelsBelowVersion12) {
  VRDB project = literature::MakePlateProject();
  const auto ids = literature::GetModels(project).GetSurrogateInfo(L"mass").GetUsedHids();
  literature::GetModels(project).Update([](SurrogateInfo& info) { info.SetUsedHids({}); });
  Fields fields(project);
  fields.algorithm_info = boost::make_shared<AlgorithmInfo>(5);
  fields.algorithm_info->GetSystemsInformation()->AddDesignSet(L"s").surrogate_infos_ =
      literature::GetModels(project);
  for (const unsigned version : {11u, 12u}) {
    const VRDB read = fields.Read(version);
    const auto& set = read.GetAlgorithmInfo()->GetSystemsInformation()->GetDesignSet(L"s");
    EXPECT_EQ(set.surrogate_infos_.GetSurrogateInfo(L"mass").GetUsedHids(),
              version < 12 ? ids : SurrogateInfo::HidVector());
  }
}

TEST(VRDB, OldModelsMoveIntoTheDetailAndParametersAreRepairedBelowVersion8) {
  Fields fields;
  fields.parameters.AddParameter(DiscreteParameter(L"d"));
  fields.surrogate_infos = {SurrogateInfo(L"r")};
  const auto kind_of = [](const ParameterManager& manager) {
    return manager.GetParameter(L"d").GetDeterministicProperty(0).GetKind();
  };

  const VRDB of_0 = fields.Read(0);  // no algorithm yet: one of the models' type is made
  ASSERT_EQ(of_0.GetAlgorithmInfo()->GetType(), 18);
  EXPECT_TRUE(
      of_0.GetAlgorithmInfo()->GetZELInformation()->surrogate_infos_.HasSurrogateInfo(L"r"));

  for (const unsigned version : {7u, 8u}) {
    const auto kind = version < 8 ? DeterministicProperties::ORDINAL_BY_VALUE
                                  : DeterministicProperties::ORDINAL_BY_INDEX;
    const VRDB read = fields.Read(version);
    const auto detail = read.GetAlgorithmInfo()->GetZELInformation();
    EXPECT_TRUE(detail->surrogate_infos_.HasSurrogateInfo(L"r"));
    EXPECT_EQ(kind_of(read.GetParameterManager()), kind);
    EXPECT_TRUE(version == 8 || kind_of(detail->parameter_manager_) == kind);
    EXPECT_EQ(read.GetSamplingType(), version < 8 ? 1 : 0);
  }

  // A manager of the detail's own counts, and constant parameters do not.
  fields.surrogate_infos.clear();
  fields.algorithm_info = boost::make_shared<AlgorithmInfo>(18);
  Parameter constant = DiscreteParameter(L"d");
  constant.SetConst(true);
  auto& own = fields.algorithm_info->GetZELInformation()->parameter_manager_;
  own.AddParameter(constant);
  own.AddParameter(RandomParameter(L"r"));
  const VRDB with_own = fields.Read(7);
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
  const VRDB named = fields.Read(8);
  const auto sets = named.GetAlgorithmInfo()->GetReliabilityInformation();
  EXPECT_EQ(sets->design_sets_map_.size(), 2u);
  EXPECT_TRUE(sets->GetDesignSet(L"a").surrogate_infos_.HasSurrogateInfo(L"r"));
  EXPECT_TRUE(sets->GetDesignSet(L"b").surrogate_infos_.IsEmpty());

  // A file without sets gets them from its designs: one violated limit state makes a design unsafe,
  // and one without a value makes it failed.
  const double nan = std::nan("");
  const std::pair<double, double> limits[] = {
      {0.5, 0.25}, {-0.5, 0.5}, {0.5, -0.5}, {-0.5, nan}, {nan, 0.5}};
  fields.designs = DesignManager();
  for (const auto& values : limits) {
    Design design({{L"x", CDesignEntry(1.0)}}, DesignId(fields.designs.size() + 1));
    for (const double value : {values.first, values.second}) {
      Criterion criterion(CriterionDescription::LIMIT_LHS_BELOW_RHS, L"x", L"1");
      criterion.SetValues(CDesignEntry(), CDesignEntry(), CDesignEntry(value), false);
      design.GetCriteria().Append(L"limit", criterion);
    }
    fields.designs.Add(design);
  }
  detail.design_sets_map_.clear();
  const auto read = [&fields](unsigned version) {
    return fields.Read(version).GetAlgorithmInfo()->GetReliabilityInformation();
  };
  for (const unsigned version : {8u, 10u}) {
    const auto made = read(version);
    const auto ids = [&made](const wchar_t* name) { return made->GetDesignSet(name).design_ids_; };
    using Ids = std::set<DesignId>;
    EXPECT_EQ(made->prefered_design_set_, L"All designs");
    EXPECT_EQ(ids(L"All designs").size(), 5u);
    EXPECT_EQ(ids(L"Safe domain designs"), (Ids{DesignId(1)}));
    EXPECT_EQ(ids(L"Unsafe domain designs"), (Ids{DesignId(2), DesignId(3)}));
    EXPECT_EQ(ids(L"Failed designs"), (Ids{DesignId(4), DesignId(5)}));
    EXPECT_EQ(made->GetDesignSet(L"All designs").surrogate_infos_.HasSurrogateInfo(L"r"),
              version < 9);
  }
  EXPECT_TRUE(read(11)->design_sets_map_.empty());
}

TEST(VRDB, EmptyCriteriaComeFromTheDesigns) {
  Fields fields(literature::MakePlateProject());
  EXPECT_TRUE(fields.Read(13).GetCriteria().Has(L"goal"));
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
  EXPECT_MESSAGE("No such meta data: no such", loaded.GetMetaData(L"no such"));
}

TEST(VRDB, DamagedDeactivatedDesignsAreNone) {
  VRDB project;
  project.GetDeactivatedDesigns() = {DesignId(1), DesignId(2)};
  const std::string whole = Load<VRDB>(Save(project)).GetMetaData(L"deactivated_designs");
  Fields fields;
  const auto load = [&](const std::string& value) {
    fields.meta_data = {{L"deactivated_designs", value}};
    const VRDB loaded = fields.Read(14);
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
  VRDB project = literature::MakePlateProject();
  EXPECT_EQ(project.GetInputBounds().size(), 4u);  // three inputs and the dependent parameter
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
  EXPECT_MESSAGE("Unable to extract bounds.", project.GetInputBounds());
  project.GetDesignContainer() = DesignsOf(L"other", {1.0});
  EXPECT_NE(MessageOf([&] { project.GetInputBounds(); }), "");
}

TEST(VRDB, NamesTheResponsesOfTheMapping) {
  VRDB project = literature::MakePlateProject();
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
