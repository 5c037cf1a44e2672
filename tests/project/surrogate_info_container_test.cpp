#include "project/models/surrogate_info_container.h"

#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "foundation/exception.h"
#include "metamodel/regression/linear_regression.h"
#include "support/archive_round_trip.h"
#include "support/stub_surrogate.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

using namespace corvath::algorithm::datatypes;
using corvath::math::metamodel::IndexVector, corvath::math::metamodel::LinearRegression,
    corvath::math::metamodel::SurrogateBase;
using corvath::utils::log::LogBase, corvath::utils::log::VectorLog;

namespace {

/// A model that notes what is asked of it, and fails where it is told to.
class SpyModel : public support::StubSurrogate {
 public:
  enum Failure { kNone, kBuildFalse, kBuildThrows, kUnavailable, kAvailabilityThrows };

  explicit SpyModel(Failure failure = kNone) : failure_(failure) {
    SetSupportData(Eigen::MatrixXd::Random(3, 1), Eigen::Vector3d(1, 2, 4));
    trans_coord_.reset();
    is_built = false;
  }

  bool Build() override {
    ++num_builds;
    if (failure_ == kBuildThrows) throw std::runtime_error("no inverse");
    need_build_ = failure_ == kBuildFalse;
    return is_built = !need_build_;
  }
  bool CheckAvailable(const boost::shared_ptr<LogBase>&) override {
    ++num_checks;
    if (failure_ == kAvailabilityThrows) throw std::runtime_error("no engine");
    return failure_ != kUnavailable;
  }
  Eigen::VectorXd ApproximateCrossValidation(const IndexVector& subsets) const override {
    last_subsets = subsets;
    return values_;
  }
  SpyModel* Clone() const override { return new SpyModel(*this); }

  int num_builds = 0, num_checks = 0;
  mutable IndexVector last_subsets;

 private:
  Failure failure_;
};

SurrogateInfo With(SurrogateInfo info, boost::shared_ptr<SurrogateBase> model) {
  info.SetSurrogate(std::move(model));
  return info;
}

std::string NotFound(const std::string& name) {
  return "Surrogate info with name \"" + name + "\" does not exist.";
}

TEST(SurrogateInfoContainer, FindsByNameAndIndexThenByFullName) {
  SurrogateInfoContainer infos;
  infos.AddOrReplace(SurrogateInfo(L"a", 2));
  infos.AddOrReplace(SurrogateInfo(L"b"));
  infos.AddOrReplace(SurrogateInfo(L"peak[max]"));
  const SurrogateInfo& a2 = infos.GetSurrogateInfos().front();

  EXPECT_EQ(&infos.GetSurrogateInfo(L"a[2]"), &a2);
  EXPECT_EQ(&infos.GetSurrogateInfo(L"a", 2), &a2);
  EXPECT_EQ(&infos.GetSurrogateInfo(L"a[2]", 0), &a2);
  EXPECT_TRUE(infos.HasSurrogateInfo(L"a[2]"));
  EXPECT_FALSE(infos.HasSurrogateInfo(L"a"));
  EXPECT_FALSE(infos.HasSurrogateInfo(L"a[2]", 1));
  EXPECT_FALSE(infos.HasSurrogateInfo(L"b", 1));
  EXPECT_EQ(infos.GetSurrogateInfo(L"b").GetResponseName(), L"b");
  EXPECT_EQ(infos.GetSurrogateInfo(L"peak[max]").GetResponseName(), L"peak[max]");

  const auto message = [&](const wchar_t* name) {
    return support::MessageOfExactly<corvath::utils::runtime_error>(
        [&] { infos.GetSurrogateInfo(name); });
  };
  EXPECT_EQ(message(L"c"), NotFound("c"));
  EXPECT_EQ(message(L"a[x]"), NotFound("a"));  // looked up as (a, 0)
  infos.AddOrReplace(SurrogateInfo(L"a", 0));
  EXPECT_EQ(infos.GetSurrogateInfo(L"a[x]").GetFullName(), L"a[0]");
  EXPECT_EQ(infos.GetSurrogateInfo(L"a[-1]").GetFullName(), L"a[0]");
}

TEST(SurrogateInfoContainer, TheFirstOfEqualRecordsIsFound) {
  // AddOrReplace makes no two of a name and index; a file and a full name may.
  SurrogateInfoContainer infos;
  infos.AddOrReplace(SurrogateInfo(L"a[1]"));
  infos.AddOrReplace(SurrogateInfo(L"a", 1));
  EXPECT_TRUE(infos.GetSurrogateInfo(L"a[1]", 0).IsResponseScalar());
  EXPECT_FALSE(infos.GetSurrogateInfo(L"a", 1).IsResponseScalar());
  infos.Update([](SurrogateInfo& info) {
    const bool scalar = info.IsResponseScalar();
    info = SurrogateInfo(L"c");
    info.SetTestingType(scalar ? 1 : 2);
  });
  EXPECT_EQ(infos.GetSurrogateInfo(L"c").GetTestingType(), 1);
  EXPECT_FALSE(infos.HasSurrogateInfo(L"a", 1));
}

TEST(SurrogateInfoContainer, ReplacesInPlace) {
  SurrogateInfoContainer infos;
  for (const wchar_t* name : {L"a", L"b", L"c"}) infos.AddOrReplace(SurrogateInfo(name));
  SurrogateInfo vector_element(L"b", 0);  // the same name and index, another full name
  vector_element.SetTestingType(3);
  infos.AddOrReplace(vector_element);
  EXPECT_EQ(infos.GetSurrogateInfos().size(), 3u);
  EXPECT_EQ(std::next(infos.GetSurrogateInfos().begin())->GetTestingType(), 3);
  EXPECT_TRUE(infos.HasSurrogateInfo(L"b[0]"));
}

TEST(SurrogateInfoContainer, CopiesAndMovesFindTheirOwnRecords) {
  SurrogateInfoContainer infos;
  const auto model = boost::make_shared<SpyModel>();
  infos.AddOrReplace(With(SurrogateInfo(L"a"), model));
  infos.AddOrReplace(With(SurrogateInfo(L"b", 1), model));

  const auto finds_own = [](const SurrogateInfoContainer& container) {
    return &container.GetSurrogateInfo(L"a") == &container.GetSurrogateInfos().front() &&
           &container.GetSurrogateInfo(L"b[1]") == &container.GetSurrogateInfos().back();
  };
  SurrogateInfoContainer copy = infos;
  EXPECT_TRUE(finds_own(copy));
  EXPECT_EQ(copy.GetSurrogateInfo(L"a").GetSurrogate(), model);
  SurrogateInfoContainer moved = std::move(copy);
  EXPECT_TRUE(finds_own(moved));
  copy = moved;
  EXPECT_TRUE(finds_own(copy));
  moved = SurrogateInfoContainer();
  EXPECT_FALSE(moved.HasSurrogateInfo(L"a"));

  const SurrogateInfoContainer clone = infos.Clone();
  EXPECT_TRUE(finds_own(clone));
  EXPECT_NE(clone.GetSurrogateInfo(L"a").GetSurrogate(), model);
  EXPECT_EQ(clone.GetSurrogateInfo(L"a").GetSurrogate(),
            clone.GetSurrogateInfo(L"b[1]").GetSurrogate());
}

TEST(SurrogateInfoContainer, SurvivesTheArchive) {
  SurrogateInfoContainer infos;
  const auto model = boost::make_shared<LinearRegression>(Eigen::MatrixXd(Eigen::Vector3d(1, 2, 3)),
                                                          Eigen::Vector3d(1, 2, 4));
  infos.AddOrReplace(With(SurrogateInfo(L"z", 1), model));
  infos.AddOrReplace(With(SurrogateInfo(L"a"), model));
  infos.AddOrReplace(SurrogateInfo(L"empty"));
  SurrogateInfoContainer read;
  read.AddOrReplace(SurrogateInfo(L"old"));
  support::LoadInto(support::Save(infos), read);
  EXPECT_EQ(read, infos);
  EXPECT_FALSE(read.HasSurrogateInfo(L"old"));
  EXPECT_EQ(read.GetSurrogateInfo(L"z[1]").GetSurrogate(),
            read.GetSurrogateInfo(L"a").GetSurrogate());
}

TEST(SurrogateInfoContainer, BuildsWhatIsNamedAndToldApart) {
  const auto good = boost::make_shared<SpyModel>();
  const auto other = boost::make_shared<SpyModel>();
  SurrogateInfoContainer infos;
  infos.AddOrReplace(With(SurrogateInfo(L"good"), good));
  infos.AddOrReplace(With(SurrogateInfo(L"v", 1), other));
  EXPECT_TRUE(infos.BuildAll());
  EXPECT_TRUE(infos.BuildAll({L"good"}));
  EXPECT_TRUE(infos.BuildAll({L"v[1]"}));
  EXPECT_TRUE(infos.BuildAll({L"v"}));
  EXPECT_EQ(good->num_builds, 2);
  EXPECT_EQ(other->num_builds, 3);

  EXPECT_TRUE(infos.BuildErrorsAll({{L"v", {4, 5, 4}}, {L"good", {}}}));
  EXPECT_EQ(other->last_subsets, (IndexVector(3) << 4, 5, 4).finished());
  EXPECT_EQ(good->last_subsets, (IndexVector(3) << 0, 1, 2).finished());  // leave-one-out

  infos.AddOrReplace(SurrogateInfo(L"empty"));
  EXPECT_FALSE(infos.BuildAll());
  EXPECT_FALSE(infos.BuildErrorsAll());
}

TEST(SurrogateInfoContainer, AFailingModelCostsOnlyItself) {
  const auto failing = boost::make_shared<SpyModel>(SpyModel::kBuildThrows);
  const auto refusing = boost::make_shared<SpyModel>(SpyModel::kBuildFalse);
  const auto last = boost::make_shared<SpyModel>();
  SurrogateInfoContainer infos;
  infos.AddOrReplace(With(SurrogateInfo(L"failing"), failing));
  infos.AddOrReplace(With(SurrogateInfo(L"refusing"), refusing));
  infos.AddOrReplace(With(SurrogateInfo(L"last"), last));
  EXPECT_THROW(infos.BuildAll(), std::runtime_error);  // nobody is there to be told

  const auto log = boost::make_shared<VectorLog>();
  EXPECT_FALSE(infos.BuildAll({}, log));
  EXPECT_FALSE(infos.BuildErrorsAll({}, log));
  EXPECT_EQ(last->GetResiduals().size(), 3);
  EXPECT_EQ(refusing->GetResiduals().size(), 0);
  ASSERT_EQ(log->GetLines().size(), 2u);
  EXPECT_EQ(log->GetLines().front().second, L"The model of response \"failing\" fails: no inverse");
}

TEST(SurrogateInfoContainer, AvailabilityStopsAtTheFirstFailure) {
  for (const auto failure : {SpyModel::kUnavailable, SpyModel::kAvailabilityThrows}) {
    const auto first = boost::make_shared<SpyModel>();
    const auto last = boost::make_shared<SpyModel>();
    SurrogateInfoContainer infos;
    infos.AddOrReplace(With(SurrogateInfo(L"first"), first));
    infos.AddOrReplace(SurrogateInfo(L"empty"));
    const auto log = boost::make_shared<VectorLog>();
    EXPECT_TRUE(infos.CheckAvailable(log));
    infos.AddOrReplace(With(SurrogateInfo(L"bad"), boost::make_shared<SpyModel>(failure)));
    infos.AddOrReplace(With(SurrogateInfo(L"last"), last));
    EXPECT_FALSE(infos.CheckAvailable(log));
    EXPECT_EQ(first->num_checks, 2);
    EXPECT_EQ(last->num_checks, 0);
    const bool threw = failure == SpyModel::kAvailabilityThrows;
    ASSERT_EQ(log->GetLines().size(), threw ? 1u : 0u);
    if (threw) {
      EXPECT_EQ(log->GetLines()[0].second, L"Availability check failed: no engine");
    }
  }
}

/// Three designs of two inputs with a scalar, a vector and a missing response.
class SupportData : public testing::Test {
 protected:
  SupportData() {
    Parameter width(L"width");
    width.SetDeterministicProperty(DeterministicProperties::Continuous(0.0, 10.0));
    Parameter grade(L"grade");  // by index: design values are texts, the model sees positions
    grade.SetDeterministicProperty(DeterministicProperties::Discrete(
        corvath::enums::DeterministicProperties::NOMINAL_BY_INDEX,
        {CDesignEntry(L"S235"), CDesignEntry(L"S355"), CDesignEntry(L"S460")}));
    parameters.AddParameter(grade);
    parameters.AddParameter(width);
    Add(1, 1.5, L"S235", 10.0, {1, 2, 3});
    Add(2, 2.5, L"S460", 20.0, {4, 5, 6});
    Add(3, 3.5, L"S355", 30.0, {7, 8, 9});
  }

  void Add(std::uint64_t id, double width, const wchar_t* grade, double mass,
           const std::vector<double>& stress) {
    Value::Vector elements(stress.size());
    for (std::size_t i = 0; i < stress.size(); ++i) elements(i) = stress[i];
    Design design({{L"width", CDesignEntry(width)}, {L"grade", CDesignEntry(grade)}}, DesignId(id));
    design.GetResponses().Append(L"mass", CDesignEntry(mass));
    design.GetResponses().Append(L"stress", CDesignEntry(Value(elements)));
    designs.Add(design);
  }

  void AddModel(SurrogateInfo info, const std::vector<std::uint64_t>& ids,
                const std::vector<std::wstring>& names = {L"width", L"grade"}) {
    Eigen::MatrixXd points{{0, 0}, {0, 1}, {1, 0}};
    info.SetSurrogate(boost::make_shared<LinearRegression>(points, Eigen::Vector3d(7, 8, 9)));
    info.SetParameters(names, std::vector<bool>(names.size(), true));
    SurrogateInfo::HidVector hids;
    for (const std::uint64_t id : ids) hids.emplace_back(id);
    info.SetUsedHids(hids);
    infos.AddOrReplace(info);
  }

  const SurrogateBase& Model(const wchar_t* name) const {
    return *infos.GetSurrogateInfo(name).GetSurrogate();
  }

  using Value = corvath::math::Value;
  ParameterManager parameters;
  DesignManager designs;
  SurrogateInfoContainer infos;
};

TEST_F(SupportData, ComesBackFromTheDesigns) {
  AddModel(SurrogateInfo(L"mass"), {3, 1});
  AddModel(SurrogateInfo(L"stress", 1), {3, 1});
  AddModel(SurrogateInfo(L"stress", 5), {2}, {L"grade", L"width"});  // no such element
  AddModel(SurrogateInfo(L"other"), {2, 8, 1});  // no such response, no design 8
  infos.ResetSupportData();
  EXPECT_EQ(Model(L"mass").GetPoints().size() + Model(L"mass").GetValues().size(), 0);
  infos.RestoreSupportData(designs, parameters, true);

  Eigen::MatrixXd expected{{3.5, 1}, {1.5, 0}};
  EXPECT_EQ(Model(L"mass").GetPoints(), expected);
  EXPECT_EQ(Model(L"mass").GetValues(), Eigen::Vector2d(30, 10));
  EXPECT_EQ(Model(L"stress[1]").GetPoints(), expected);
  EXPECT_EQ(Model(L"stress[1]").GetValues(), Eigen::Vector2d(8, 2));
  EXPECT_EQ(Model(L"stress[5]").GetPoints(), Eigen::RowVector2d(2, 2.5));
  EXPECT_TRUE(Model(L"stress[5]").GetValues().hasNaN());
  EXPECT_EQ(Model(L"other").GetPoints(), (Eigen::Matrix2d() << 2.5, 2, 1.5, 0).finished());
  EXPECT_TRUE(Model(L"other").GetValues().hasNaN());
}

TEST_F(SupportData, StaysWhereTheDesignsAreNotKnown) {
  AddModel(SurrogateInfo(L"none"), {});
  AddModel(SurrogateInfo(L"unset"), {0, 0, 0});
  AddModel(SurrogateInfo(L"mass"), {98, 1, 99});
  testing::internal::CaptureStdout();
  infos.ResetSupportData();
  infos.RestoreSupportData(designs, parameters, true);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING: empty id vector for response 'none' - will not reset support data for saving "
            "vrdb\n"
            "WARNING: empty id vector for response 'unset' - will not reset support data for "
            "saving vrdb\n"
            "WARNING: empty id vector for response 'none' - not able to restore support data\n"
            "WARNING: empty id vector for response 'unset' - not able to restore support data\n"
            "WARNING: 2 of 3 used designs of response 'mass' not found\n");
  EXPECT_EQ(Model(L"none").GetValues(), Eigen::Vector3d(7, 8, 9));
}

TEST_F(SupportData, AModelWithoutThemStillPredicts) {
  AddModel(SurrogateInfo(L"broken"), {1, 2}, {L"width", L"thickness"});
  AddModel(SurrogateInfo(L"mass"), {1, 2});
  ASSERT_TRUE(infos.BuildAll());
  const Eigen::MatrixXd x = Eigen::RowVector2d(0.5, 0.25);
  const Eigen::VectorXd before = Model(L"broken").Approximate(x);
  infos.ResetSupportData();
  testing::internal::CaptureStderr();
  infos.RestoreSupportData(designs, parameters, true);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("support data of response 'broken'"),
            std::string::npos);
  EXPECT_EQ(Model(L"broken").Approximate(x), before);
  EXPECT_EQ(Model(L"mass").GetValues(), Eigen::Vector2d(10, 20));
}

}  // namespace
