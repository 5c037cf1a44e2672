#include "project/models/surrogate_info.h"

#include "foundation/exception.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/subspace_results.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using corvath::algorithm::datatypes::DesignId;
using corvath::algorithm::datatypes::SurrogateInfo;
using corvath::math::metamodel::AppraisalData;
using corvath::math::metamodel::LinearRegression;
using corvath::math::metamodel::LinearRegressionSettings;
using corvath::math::metamodel::ModelType;
using corvath::math::metamodel::SubspaceResultContainer;
using corvath::math::metamodel::SubspaceResults;
using corvath::math::metamodel::SurrogateBase;
using corvath::math::metamodel::SurrogateSettingsBase;
using corvath::utils::runtime_error;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

boost::shared_ptr<SurrogateBase> MakeModel() {
  Eigen::MatrixXd points(4, 2);
  points << 0, 0, 1, 0, 0, 1, 1, 1;
  auto model = boost::make_shared<LinearRegression>(points, Eigen::Vector4d(1, 2, 3, 5));
  model->Build();
  return model;
}

SurrogateInfo MakeInfo() {
  SurrogateInfo info(L"stress", 2);
  info.SetSurrogate(MakeModel());
  AppraisalData data;
  data.SetCoP(0.75);
  data.SetSingleCoPs(Eigen::Vector2d(0.5, kNaN));
  info.SetAppraisalData(data);
  info.SetParameters({L"width", L"height"}, {true, false});
  info.SetTestingType(7);
  info.SetUsedHids({DesignId(3), DesignId(1).Appended(2), DesignId(0), DesignId(4)});
  return info;
}

/// The stored forms before the present one, field by field.
template <int version>
struct OldInfo {
  std::wstring response_name_ = L"stress[2]";
  std::uint64_t response_index_ = 0;
  bool is_response_scalar_ = true;
  SurrogateBase* plain = nullptr;
  boost::shared_ptr<SurrogateBase> shared;
  AppraisalData appraisal_data_;
  std::uint64_t num_vars_ = 2;
  std::vector<bool> subspace_{true, false};
  std::map<std::wstring, std::uint64_t> parameter_name_lookup_map_{{L"width", 0}, {L"height", 1}};
  std::int32_t testing_type_ = 7;
  std::map<std::uint64_t, DesignId> used_hids_{{0, DesignId(3)}, {1, DesignId(4)}};

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(response_name_) & BOOST_SERIALIZATION_NVP(response_index_);
    ar& BOOST_SERIALIZATION_NVP(is_response_scalar_);
    if (version == 0)
      ar& boost::serialization::make_nvp("surrogate_", plain);
    else
      ar& boost::serialization::make_nvp("surrogate_", shared);
    ar& BOOST_SERIALIZATION_NVP(appraisal_data_) & BOOST_SERIALIZATION_NVP(num_vars_);
    ar& BOOST_SERIALIZATION_NVP(subspace_) & BOOST_SERIALIZATION_NVP(parameter_name_lookup_map_);
    if (version >= 2) ar& BOOST_SERIALIZATION_NVP(testing_type_);
    if (version == 3) ar& BOOST_SERIALIZATION_NVP(used_hids_);
  }
};

template <int version>
SurrogateInfo ReadOld(const std::wstring& name) {
  OldInfo<version> old;
  old.response_name_ = name;
  old.shared = MakeModel();
  old.plain = old.shared.get();
  return support::Load<SurrogateInfo>(support::Save(old));
}

struct OldAppraisalData {
  double cop_ = 0.5, cod_ = 0.625, codadj_ = 0.25;
  Eigen::VectorXd single_cop_ = Eigen::Vector2d(0.125, kNaN);

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(cop_) & BOOST_SERIALIZATION_NVP(cod_);
    ar& BOOST_SERIALIZATION_NVP(codadj_) & BOOST_SERIALIZATION_NVP(single_cop_);
  }
};

/// Two records of the oldest form that point to one model.
struct OldPair {
  OldInfo<0> first, second;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& first& second;
  }
};
struct NewPair {
  SurrogateInfo first, second;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& first& second;
  }
};

}  // namespace

ZEL_CLASS_VERSION(OldInfo<0>, 0)
ZEL_CLASS_VERSION(OldInfo<1>, 1)
ZEL_CLASS_VERSION(OldInfo<2>, 2)
ZEL_CLASS_VERSION(OldInfo<3>, 3)

TEST(AppraisalData, HasNoFiguresUntilTheyAreSet) {
  AppraisalData data;
  EXPECT_EQ(support::MessageOfExactly<runtime_error>([&] { data.GetCoP(); }), "CoP is not valid.");
  EXPECT_FALSE(data.HasSingleCoP(0));
  EXPECT_FALSE(data.HasFirstOrderIndex(0));
  EXPECT_EQ(support::MessageOfExactly<runtime_error>([&] { data.GetSingleCoP(0); }),
            "Single CoP is not valid.");
  EXPECT_EQ(support::MessageOfExactly<runtime_error>([&] { data.GetFirstOrderIndex(0); }),
            "First order index is not valid.");

  data.SetCoP(std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isinf(data.GetCoP()));
  data.SetSingleCoPs(Eigen::Vector3d(0.25, kNaN, 0.5));
  data.SetFirstOrderIndices(Eigen::Vector2d(kNaN, 0.125));
  EXPECT_EQ(data.GetSingleCoP(2), 0.5);
  EXPECT_EQ(data.GetFirstOrderIndex(1), 0.125);
  for (const Eigen::Index missing : {1, 3, -1}) EXPECT_FALSE(data.HasSingleCoP(missing)) << missing;
  for (const Eigen::Index missing : {0, 2}) EXPECT_FALSE(data.HasFirstOrderIndex(missing));
}

TEST(AppraisalData, ReadsBothStoredForms) {
  AppraisalData data;
  data.SetCoP(0.5);
  data.SetCoD(0.625, 0.25);
  data.SetSingleCoPs(Eigen::Vector2d(0.125, kNaN));
  EXPECT_EQ(support::Load<AppraisalData>(support::Save(OldAppraisalData())), data);
  data.SetFirstOrderIndices(Eigen::Vector2d(kNaN, 0.75));
  EXPECT_EQ(support::Load<AppraisalData>(support::Save(data)), data);
}

TEST(SurrogateInfo, AnswersByInputName) {
  const SurrogateInfo info = MakeInfo();
  EXPECT_EQ(info.GetFullName(), L"stress[2]");
  EXPECT_EQ(SurrogateInfo(L"mass").GetFullName(), L"mass");
  EXPECT_EQ(info.GetParameterNames(), (std::vector<std::wstring>{L"width", L"height"}));
  EXPECT_EQ(info.GetParameterIndex(L"height"), 1u);
  EXPECT_EQ(info.GetSingleCoP(L"width"), 0.5);
  EXPECT_FALSE(info.HasSingleCoP(L"height"));
  EXPECT_FALSE(info.HasSingleCoP(L"depth"));
  EXPECT_FALSE(info.IsParameterOutsideSubspace(L"width"));
  EXPECT_TRUE(info.IsParameterOutsideSubspace(L"height"));
  EXPECT_TRUE(info.IsParameterOutsideSubspace(L"depth"));

  const auto message = [](auto action) { return support::MessageOfExactly<runtime_error>(action); };
  EXPECT_EQ(message([&] { info.GetParameterIndex(L"depth"); }),
            "Parameter \"depth\" does not exist.");
  EXPECT_EQ(message([&] { info.GetSingleCoP(L"height"); }),
            "Single CoP for parameter \"height\" does not exist.");
  EXPECT_EQ(message([&] { info.GetSingleCoP(L"depth"); }),
            "Single CoP for parameter \"depth\" does not exist.");
}

TEST(SurrogateInfo, KnowsWhetherItsDesignsAreKnown) {
  SurrogateInfo info;
  EXPECT_FALSE(info.HasUsedHids());
  info.SetUsedHids({DesignId(), DesignId(0)});
  EXPECT_FALSE(info.HasUsedHids());
  info.SetUsedHids({DesignId(), DesignId(0).Appended(0)});
  EXPECT_TRUE(info.HasUsedHids());
}

TEST(SurrogateInfo, SurvivesTheArchiveAndOwnsItsClone) {
  const SurrogateInfo info = MakeInfo();
  const SurrogateInfo read = support::Load<SurrogateInfo>(support::Save(info));
  EXPECT_EQ(read, info);
  EXPECT_NE(read.GetSurrogate(), info.GetSurrogate());
  const SurrogateInfo clone = info.Clone();
  EXPECT_EQ(clone, info);
  EXPECT_NE(clone.GetSurrogate(), info.GetSurrogate());
  EXPECT_EQ(SurrogateInfo(info).GetSurrogate(), info.GetSurrogate());
  EXPECT_EQ(support::Load<SurrogateInfo>(support::Save(SurrogateInfo(L"mass"))),
            SurrogateInfo(L"mass"));
}

TEST(SurrogateInfo, ReadsEveryOlderForm) {
  const auto expect = [](const SurrogateInfo& info, bool is_split, std::int32_t testing_type) {
    EXPECT_EQ(info.GetResponseName(), is_split ? L"stress" : L"stress[2]");
    EXPECT_EQ(info.GetResponseIndex(), is_split ? 2u : 0u);
    EXPECT_EQ(info.IsResponseScalar(), !is_split);
    EXPECT_TRUE(info.GetSurrogate()->Equals(*MakeModel()));
    EXPECT_EQ(info.GetSubspace(), (std::vector<bool>{true, false}));
    EXPECT_EQ(info.GetParameterIndex(L"height"), 1u);
    EXPECT_EQ(info.GetTestingType(), testing_type);
    EXPECT_TRUE(info.GetUsedHids().empty());
  };
  expect(ReadOld<0>(L"stress[2]"), true, 0);
  expect(ReadOld<1>(L"stress[2]"), true, 0);
  expect(ReadOld<2>(L"stress[2]"), true, 7);
  expect(ReadOld<3>(L"stress[2]"), false, 7);  // from here on the index has a field of its own

  EXPECT_TRUE(ReadOld<2>(L"mass").IsResponseScalar());
  for (const wchar_t* bad : {L"stress[x]", L"stress[]", L"stress[-1]", L"stress[1.5]"})
    EXPECT_EQ(support::MessageOfExactly<runtime_error>([&] { ReadOld<2>(bad); }),
              "Error with vector response: Bad lexical cast.");
}

TEST(SurrogateInfo, OldRecordsMayShareTheirPlainModel) {
  const auto model = MakeModel();
  OldPair old;
  old.first.plain = old.second.plain = model.get();
  const NewPair pair = support::Load<NewPair>(support::Save(old));
  EXPECT_EQ(pair.first.GetSurrogate(), pair.second.GetSurrogate());
  EXPECT_TRUE(pair.first.GetSurrogate()->Equals(*model));
}

TEST(SubspaceResults, GetSettingsOfTheirOwnWhileReading) {
  auto settings = boost::make_shared<LinearRegressionSettings>(3);
  settings->SetOrder(2);
  std::stringstream stream;
  {
    SubspaceResults first, second;
    first.model_type = static_cast<ModelType::eModelType>(5);
    first.singleCoPs = Eigen::Vector3d(0.1, 0.2, 0.3);
    first.settings = second.settings = settings;
    corvath::portable_binary_oarchive ar(stream);
    ar << std::as_const(first) << std::as_const(second);
  }
  corvath::portable_binary_iarchive ar(stream, corvath::archive::kThrowOnMismatch);
  SubspaceResults first, second;
  ar >> first >> second;
  ASSERT_TRUE(first.settings && second.settings);
  EXPECT_NE(first.settings, second.settings);
  EXPECT_TRUE(first.settings->Equals(*settings));
  EXPECT_TRUE(second.settings->Equals(*settings));
  EXPECT_EQ(first.model_type, 5);
  EXPECT_EQ(first.singleCoPs, Eigen::Vector3d(0.1, 0.2, 0.3));
}

TEST(SubspaceResults, ContainerKeepsNamesOrderAndSettings) {
  SubspaceResultContainer container;
  SubspaceResults results;
  results.CoD = 0.25;
  results.CoPadj = kNaN;
  container.Add(L"second", results);
  results.settings = boost::make_shared<LinearRegressionSettings>(2);
  container.Add(L"first", results);
  const auto read = support::Load<SubspaceResultContainer>(support::Save(container));
  EXPECT_EQ(read, container);
  EXPECT_EQ(read.GetResults().front().first, L"second");
  const SubspaceResultContainer copy = container;
  EXPECT_EQ(copy, container);
  EXPECT_NE(copy.GetResults().back().second.settings,
            container.GetResults().back().second.settings);
}
