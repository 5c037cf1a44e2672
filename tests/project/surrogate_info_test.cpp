#include "project/models/surrogate_info.h"

#include "foundation/exception.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/subspace_results.h"
#include "support/stored_form.h"

using corvath::algorithm::datatypes::DesignId, corvath::algorithm::datatypes::SurrogateInfo;
using namespace corvath::math::metamodel;
using corvath::utils::runtime_error;
using namespace support;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

boost::shared_ptr<SurrogateBase> MakeModel() {
  Eigen::MatrixXd points{{0, 0}, {1, 0}, {0, 1}, {1, 1}};
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

/// The form of a record; `name` is that of the versions below 3, which told the element by it alone.
StoredForm<SurrogateInfo, false> FormOf(const boost::shared_ptr<SurrogateBase>& model,
                                        const std::wstring& name = L"stress[2]") {
  using Lookup = SurrogateInfo::ParameterLookupMap;
  const std::map<std::uint64_t, DesignId> dropped{{0, DesignId(3)}, {1, DesignId(4)}};
  SurrogateBase* const plain = model.get();
  AppraisalData data;
  data.SetCoP(0.75);
  using I = SurrogateInfo;
  StoredForm<I, false> form(4);
  form.Raw("response_name_", name, Until(2));
  form.Converted("response_name_", &I::GetResponseName, L"stress", Since(3));
  form.Raw("response_index_", std::uint64_t{0}, Until(2));
  form.Converted("response_index_", &I::GetResponseIndex, 2, Since(3));
  form.Raw("is_response_scalar_", true, Until(2));
  form.Converted("is_response_scalar_", &I::IsResponseScalar, false, Since(3));
  form.Raw("surrogate_", plain, Until(0));
  form.Converted("surrogate_", &I::GetSurrogate, model, Since(1));
  form.Field("appraisal_data_", &I::GetAppraisalData, data).Field("num_vars_", &I::GetNumVars, 2);
  form.Field("subspace_", &I::GetSubspace, {true, false});
  form.Field("parameter_name_lookup_map_", &I::GetParameterNameLookupMap,
             Lookup{{L"width", 0}, {L"height", 1}});
  form.Field("testing_type_", &I::GetTestingType, 7, Since(2)).Raw("used_hids_", dropped, {3, 3});
  form.Field("used_hids_", &I::GetUsedHids, {DesignId(3), DesignId(1).Appended(2)}, Since(4));
  return form;
}

/// Two records of the oldest form that point to one model, and what reads them.
template <class Info>
struct Pair {
  Info first, second;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& first& second;
  }
};

}  // namespace

TEST(AppraisalData, HasNoFiguresUntilTheyAreSet) {
  AppraisalData data;
  EXPECT_ERROR(runtime_error, "CoP is not valid.", data.GetCoP());
  EXPECT_FALSE(data.HasSingleCoP(0));
  EXPECT_FALSE(data.HasFirstOrderIndex(0));
  EXPECT_ERROR(runtime_error, "Single CoP is not valid.", data.GetSingleCoP(0));
  EXPECT_ERROR(runtime_error, "First order index is not valid.", data.GetFirstOrderIndex(0));

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
  using D = AppraisalData;
  const auto single = [](const D& d) { return d.HasSingleCoP(0) ? d.GetSingleCoP(0) : kNaN; };
  const auto first = [](const D& d) { return d.HasFirstOrderIndex(1) ? 0.75 : 0.0; };
  const Eigen::VectorXd indices = Eigen::Vector2d(kNaN, 0.75);
  StoredForm<D, false> form(1);
  form.Field(
      "cop_", [](const D& d) { return d.HasCoP() ? d.GetCoP() : kNaN; }, 0.5);
  form.Field("cod_", &D::GetCoD, 0.625).Field("codadj_", &D::GetCoDAdjusted, 0.25);
  form.Raw("single_cop_", Eigen::VectorXd(Eigen::Vector2d(0.125, kNaN))).Shows(single, 0.125);
  form.Raw("first_order_indices_", indices, support::Since(1));
  form.Shows(first, 0.75, support::Since(1)).Shows(first, 0.0, support::Until(0));
  form.Check([](const D& a, const D& b) { return a == b; });
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
  const std::pair<SurrogateInfo::HidVector, bool> cases[] = {
      {{}, false},
      {{DesignId(), DesignId(0)}, false},
      {{DesignId(), DesignId(0).Appended(0)}, true}};
  for (const auto& [ids, known] : cases) {
    SurrogateInfo info;
    info.SetUsedHids(ids);
    EXPECT_EQ(info.HasUsedHids(), known);
  }
}

TEST(SurrogateInfo, ReadsEveryForm) {
  const auto model = MakeModel();
  FormOf(model).Check([](const SurrogateInfo& a, const SurrogateInfo& b) { return a == b; });
  EXPECT_TRUE(FormOf(model, L"mass").Read(2).IsResponseScalar());
  for (const wchar_t* bad : {L"stress[x]", L"stress[]", L"stress[-1]", L"stress[1.5]"})
    EXPECT_ERROR(runtime_error, "Error with vector response: Bad lexical cast.",
                 FormOf(model, bad).Read(2));
}

TEST(SurrogateInfo, OldRecordsMayShareTheirPlainModel) {
  const auto model = MakeModel();
  const auto form = FormOf(model);
  const Pair<decltype(form.As(0))> old{form.As(0), form.As(0)};
  const auto pair = support::Load<Pair<SurrogateInfo>>(support::Save(old));
  EXPECT_EQ(pair.first.GetSurrogate(), pair.second.GetSurrogate());
  EXPECT_TRUE(pair.first.GetSurrogate()->Equals(*model));
}

TEST(SubspaceResults, AreStoredWithSettingsOfTheirOwn) {
  using R = SubspaceResults;
  const auto settings = boost::make_shared<LinearRegressionSettings>(3);
  settings->SetOrder(2);
  const auto equal = [](const auto& a, const auto& b) { return a == b; };
  StoredForm<R> form(0);
  form.Field(ZEL_MEMBER(R, model_type), ModelType::eModelType{5});
  form.Field(ZEL_MEMBER(R, settings), settings).Field(ZEL_MEMBER(R, CoD), 0.25);
  form.Field(ZEL_MEMBER(R, CoDadj), 0.5).Field(ZEL_MEMBER(R, CoP), 0.75);
  form.Field(ZEL_MEMBER(R, CoPadj), 0.625).Field(ZEL_MEMBER(R, CoDtest), 0.125);
  form.Field(ZEL_MEMBER(R, predError), 1.5);
  form.Field(ZEL_MEMBER(R, singleCoPs), Eigen::Vector3d(0.1, 0.2, 0.3));
  form.Check(equal);

  using C = SubspaceResultContainer;
  const C::Container results{{L"second", form.Read(0)}, {L"first", form.Read(0)}};
  StoredForm<C> container(0);
  container.Field("container_", &C::GetResults, results);
  container.Check(equal);

  // A file may share the settings; neither what is read nor a copy does.
  const Pair<SubspaceResults> pair{results.front().second, results.front().second};
  Pair<SubspaceResults> shared = pair;
  shared.second.settings = shared.first.settings;
  const auto read = support::Load<Pair<SubspaceResults>>(support::Save(shared));
  ASSERT_TRUE(read.first.settings && read.second.settings);
  EXPECT_NE(read.first.settings, read.second.settings);
  EXPECT_NE(pair.first.settings, pair.second.settings);
}
