#include "project/records/algorithm_info.h"

#include "literature/plate_project.h"
#include "metamodel/surrogate.h"
#include "project/records/optimization_information.h"
#include "project/records/reliability_information.h"
#include "project/records/systems_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

namespace {

using namespace corvath::algorithm::datatypes;
using support::MessageOf;

DesignId Id(std::uint64_t number) {
  return DesignId(number);
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
  const auto systems = boost::make_shared<SystemsInformation>();
  EXPECT_FALSE(systems->IsEqual(nullptr));
  const auto optimization = AlgorithmInfo(0).GetDetailedInformation();
  EXPECT_FALSE(optimization->IsEqual(systems));  // another class, whichever asks
  EXPECT_FALSE(systems->IsEqual(optimization));
}

TEST(AlgorithmInfo, ACopyOwnsItsModels) {
  VRDB project = literature::MakePlateProject();
  const AlgorithmInfo& info = *project.GetAlgorithmInfo();
  const AlgorithmInfo copy(info);
  EXPECT_TRUE(info.GetDetailedInformation()->IsEqual(copy.GetDetailedInformation()));
  copy.GetDetailedInformation()->ResetSupportData(project.GetDesignContainer(),
                                                  project.GetParameterManager());
  EXPECT_FALSE(info.GetDetailedInformation()->IsEqual(copy.GetDetailedInformation()));
  SystemsInformation systems;
  systems.SetSamplingType(1);
  systems.AddDesignSet(L"s").surrogate_infos_ = literature::GetModels(project);
  systems.Clone()->ResetSupportData(project.GetDesignContainer(), project.GetParameterManager());
  for (const auto& record : literature::GetModels(project).GetSurrogateInfos())
    EXPECT_EQ(record.GetSurrogate()->GetPoints().rows(), 40);

  AdditionalDesignContainer additional;
  additional.design_sets_[L"d"] = boost::make_shared<DesignSet>(L"d");
  const AdditionalDesignContainer own(additional);
  own.design_sets_.at(L"d")->identifier_ = L"changed";
  EXPECT_EQ(additional.design_sets_.at(L"d")->identifier_, L"d");

  AlgorithmInfo unknown(info);
  unknown.GetDetailedInformation()->SetSamplingType(0);
  unknown.GetDetailedInformation()->ResetSupportData(project.GetDesignContainer(),
                                                     project.GetParameterManager());
  const auto& models = unknown.GetZELInformation()->surrogate_infos_;
  EXPECT_EQ(models.GetSurrogateInfo(L"mass").GetSurrogate()->GetPoints().rows(), 40);
}

TEST(SystemsInformation, RefusesUnknownNamesAndForeignMerges) {
  SystemsInformation info;
  EXPECT_MESSAGE("Empty name for design set is not allowed.", info.AddDesignSet(L""));
  EXPECT_MESSAGE("Design set a b does not exist.", info.GetDesignSet(L"a b"));
  info.design_sets_map_[L"null"];
  EXPECT_MESSAGE("Design set null does not exist.", info.GetDesignSet(L"null"));
  EXPECT_MESSAGE("Design set identifier do not match.", DesignSet(L"a").Merge(DesignSet(L"b")));
  AdditionalDesignContainer additional;
  additional.identifier_ = L"a";
  EXPECT_MESSAGE("Additional designs identifier do not match.",
                 additional.Merge(AdditionalDesignContainer()));
  AdditionalDesignContainer other(additional);
  other.designs_.AddOrReplace(Design());
  additional.Merge(other);
  EXPECT_EQ(additional.designs_.GetDesigns().size(), 1u);
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

TEST(DetailedInformation, RecoversTheDesignsOfModels) {
  VRDB project = literature::MakePlateProject();
  auto& models = literature::GetModels(project);
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
  for (const std::wstring& name : literature::kPlateOutputs) {
    auto expected = ids;
    expected[5] = Id(100);  // of equal designs the last
    EXPECT_EQ(found.GetSurrogateInfo(name).GetUsedHids(), expected);
  }
}

}  // namespace
