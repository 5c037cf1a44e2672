#include "training/train_study.h"

#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "metamodel/surrogate.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "support/points.h"
#include "support/temporary_directory.h"
#include "support/testing.h"
#include "training/settings_record.h"

#include <zelsolver/zelsolver.hpp>

namespace corvath::training {
namespace {

using namespace algorithm::datatypes;

constexpr Eigen::Index kNumDesigns = 60;
constexpr double kConstant = 2.5;

/// Inputs a, b, fixed, states (three values) and dull; the responses are a wave that fails in
/// some designs, a vector of two elements and a constant.
TrainingTable MakeTable() {
  TrainingTable table;
  table.inputs = {L"a", L"b", L"fixed", L"states", L"dull"};
  table.points = support::UniformPoints(kNumDesigns, 5, 11);
  table.points.col(1) = 100.0 + 50.0 * table.points.col(1).array();
  table.points.col(2).setConstant(kConstant);
  table.points.col(3) = (3.0 * table.points.col(3).array()).floor();
  table.discrete = {L"states"};
  table.responses = {L"wave", L"s[0]", L"s[1]", L"level"};
  const auto a = table.points.col(0).array();
  const auto b = (table.points.col(1).array() - 100.0) / 50.0;
  const auto c = table.points.col(3).array();
  table.values.resize(kNumDesigns, 4);
  table.values << (3.0 * a).sin() + b * b, 2.0 * a + c, (1.0 + a + b * c).exp(),
      Eigen::ArrayXd::Constant(kNumDesigns, 7.0);
  for (const Eigen::Index row : {0, 5, 59}) table.values(row, 0) = std::nan("");
  return table;
}

TrainSettings QuickSettings() {
  TrainSettings settings;
  settings.models.isotropic_kriging = settings.models.anisotropic_kriging = false;
  return settings;
}

CriterionSequence MakeCriteria() {
  CriterionSequence criteria;
  ParseCriterion(L"total: s[0] + wave", criteria);
  ParseCriterion(L"bound: max(s) <= 20", criteria);
  return criteria;
}

/// One study for all tests that only look at it.
const TrainedStudy& Study() {
  static const TrainedStudy study = TrainStudy(MakeTable(), QuickSettings(), MakeCriteria());
  return study;
}

TEST(TrainStudy, AWrittenStudyAnswersThroughTheCInterfaceAsTheModelsDo) {
  using Names = std::vector<std::string>;
  const support::TemporaryDirectory directory;
  const std::string path = directory.File("study.vrdb");
  WriteStudy(Study(), path);
  const zelsolver::Project project(path);
  EXPECT_EQ(project.GetInputs(), (Names{"a", "b", "states", "dull"}));
  EXPECT_EQ(project.GetOutputs(), (Names{"wave", "s[0]", "s[1]", "level"}));
  EXPECT_EQ(project.GetCriteria(), (Names{"total", "bound"}));
  const TrainingTable table = MakeTable();
  const auto bounds = project.GetBounds();
  EXPECT_EQ(bounds[1].lower, table.points.col(1).minCoeff());
  EXPECT_EQ(bounds[1].upper, table.points.col(1).maxCoeff());
  EXPECT_EQ(bounds[2].lower, 0.0);
  EXPECT_EQ(bounds[2].upper, 2.0);
  EXPECT_EQ(project.GetReferenceValue("fixed"), kConstant);

  // Predictions at designs, by the file and by the models that were trained.
  constexpr Eigen::Index kNum = 20;
  const Eigen::MatrixXd points = table.points(Eigen::seqN(1, kNum), {0, 1, 3, 4});
  Eigen::VectorXd solved(kNum * 6);
  project.Solve(points.reshaped().eval(), ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA, solved);
  const auto& infos = Study().project.GetAlgorithmInfo()->GetZELInformation()->surrogate_infos_;
  for (std::size_t k = 0; k < 4; ++k) {
    const TrainedResponse& trained = Study().responses[k];
    EXPECT_EQ(solved.segment(static_cast<Eigen::Index>(k) * kNum, kNum),
              infos.GetSurrogateInfo(trained.name).GetSurrogate()->Approximate(points));
    EXPECT_EQ(project.GetCoPs(std::string(trained.name.begin(), trained.name.end())).back(),
              trained.cop);
  }
  for (Eigen::Index i = 0; i < kNum; ++i) {
    const double wave = solved(i), s0 = solved(kNum + i), s1 = solved(2 * kNum + i);
    EXPECT_DOUBLE_EQ(solved(4 * kNum + 2 * i), s0 + wave);
    EXPECT_DOUBLE_EQ(solved(4 * kNum + 2 * i + 1), 20.0 - std::max(s0, s1));
  }
  zelsolver::Project::CloseAll();
}

TEST(TrainStudy, FindsWhatTheResponsesAreMadeOf) {
  const auto& responses = Study().responses;
  EXPECT_GT(responses[0].cop, 0.95);
  EXPECT_EQ(responses[0].num_designs, 57u);
  EXPECT_EQ(responses[0].inputs, (std::vector<std::wstring>{L"a", L"b"}));
  EXPECT_EQ(responses[1].inputs, (std::vector<std::wstring>{L"a", L"states"}));
  EXPECT_NEAR(responses[1].cop, 1.0, 1e-12) << "a plane";
  EXPECT_EQ(responses[1].model, L"Linear Regression of order 1");
  EXPECT_EQ(responses[2].inputs, (std::vector<std::wstring>{L"a", L"b", L"states"}));
  EXPECT_EQ(responses[3].inputs, std::vector<std::wstring>());
  EXPECT_EQ(responses[3].model, L"Constant");
  EXPECT_EQ(responses[3].cop, 1.0);
  EXPECT_EQ(Study().notes, (std::vector<std::wstring>{L"Input \"fixed\" is constant.",
                                                      L"Response \"wave\" failed in 3 designs.",
                                                      L"Response \"level\" is constant."}));
}

TEST(TrainStudy, TheFiguresAreThoseOfTheStoredResiduals) {
  const auto& zel = *Study().project.GetAlgorithmInfo()->GetZELInformation();
  for (const TrainedResponse& trained : Study().responses) {
    if (trained.model == L"Constant") continue;
    const SurrogateInfo& info = zel.surrogate_infos_.GetSurrogateInfo(trained.name);
    auto& model = *info.GetSurrogate();
    const auto& stored = zel.cv_indexes_.at(trained.name);
    math::metamodel::IndexVector groups(static_cast<Eigen::Index>(stored.size()));
    std::copy(stored.begin(), stored.end(), groups.begin());
    const Eigen::VectorXd& y = model.GetValues();
    const double sst = (y.array() - y.mean()).square().sum();
    const Eigen::VectorXd residuals = model.GetResiduals();
    EXPECT_NEAR(info.GetAppraisalData().GetCoP(), 1.0 - residuals.squaredNorm() / sst, 1e-12);
    // What is done after loading keeps them: they know more than the model.
    EXPECT_TRUE(model.BuildErrors(groups));
    EXPECT_EQ(model.GetResiduals(), residuals);
    const double fitted = (y - model.ApproximateSupportPoints()).squaredNorm();
    EXPECT_DOUBLE_EQ(info.GetAppraisalData().GetCoD(), 1.0 - fitted / sst);
    EXPECT_EQ(info.GetUsedHids().size(), stored.size());
    EXPECT_EQ(zel.response_to_cv_mapping_.count(info.GetResponseName()), 1u);
  }
  EXPECT_EQ(zel.best_models_->GetResults().size(), 4u);
  std::size_t num_tried = 0;
  for (const TrainedResponse& trained : Study().responses) num_tried += trained.num_candidates;
  EXPECT_EQ(zel.calculated_models_->GetResults().size(), num_tried);
}

TEST(TrainStudy, TheProjectHoldsTheWholeTable) {
  const VRDB& project = Study().project;
  const TrainingTable table = MakeTable();
  ASSERT_EQ(project.GetDesignContainer().size(), static_cast<std::size_t>(kNumDesigns));
  const Design& failed = project.GetDesignContainer()[5];
  EXPECT_EQ(failed.GetId(), DesignId(6));
  EXPECT_TRUE(failed.GetResponses().Get(L"wave").IsUninitialized());
  ASSERT_EQ(failed.GetStatus().GetMessages().size(), 1u);
  EXPECT_EQ(failed.GetStatus().GetMessages().front().GetResponseName(), L"wave");
  EXPECT_EQ(failed.GetParameters().Get(L"fixed").ToDouble(), kConstant);
  const Design& whole = project.GetDesignContainer()[1];
  EXPECT_TRUE(whole.GetStatus().IsEmpty());
  EXPECT_DOUBLE_EQ(whole.GetCriteria().Get(L"total").GetValue().ToDouble(),
                   table.values(1, 0) + table.values(1, 1));
  const ParameterManager& parameters = project.GetParameterManager();
  EXPECT_TRUE(parameters.GetParameter(L"fixed").IsConst());
  EXPECT_EQ(
      parameters.GetParameter(L"states").GetDeterministicProperty(0).GetDiscreteStates().size(),
      3u);
  EXPECT_EQ(project.GetDesignContainer().GetStats().failed_, 3u);
  const auto& zel = *project.GetAlgorithmInfo()->GetZELInformation();
  const auto& record = zel.zel_settings_->advanced_settings_.pzel_settings_;
  EXPECT_TRUE(record.use_MLS_ && record.use_polynomials_);
  EXPECT_FALSE(record.use_Kriging_ || record.use_anisotropic_Kriging_);
  TrainSettings important;
  important.filters.always = {7, 3};
  EXPECT_EQ(RecordOf(important).info_important_.transpose(),
            (Eigen::Matrix<std::uint64_t, 1, 2>(7, 3)));
}

TEST(TrainStudy, AnObserverSeesTheWorkAndEndsIt) {
  std::uint64_t last = 0;
  std::vector<std::wstring> responses;
  TrainStudy(MakeTable(), QuickSettings(), {}, [&](const TrainProgress& progress) {
    EXPECT_GE(progress.done, last);
    EXPECT_LE(progress.done, progress.total);
    EXPECT_FALSE(progress.candidate.empty());
    last = progress.done;
    if (responses.empty() || responses.back() != progress.response)
      responses.push_back(progress.response);
    return true;
  });
  EXPECT_EQ(responses, (std::vector<std::wstring>{L"wave", L"s[0]", L"s[1]"}));
  int calls = 0;
  EXPECT_THROW(TrainStudy(MakeTable(), QuickSettings(), {},
                          [&](const TrainProgress&) { return ++calls < 20; }),
               TrainingInterrupted);
  EXPECT_EQ(calls, 20) << "nothing goes on";
}

TEST(TrainStudy, RefusesSettingsThatTrainNothing) {
  const auto refusal = [](const TrainSettings& settings) {
    return support::MessageOfExactly<TrainingError>([&] { TrainStudy(MakeTable(), settings); });
  };
  TrainSettings settings = QuickSettings();
  settings.models.polynomials = settings.models.moving_least_squares = false;
  EXPECT_EQ(refusal(settings), "No family of models is allowed.");
  settings.num_groups = 1;
  EXPECT_EQ(refusal(settings), "At least two groups are needed for cross-validation.");
}

TEST(TrainStudy, AFewDesignsGiveAModelAndACoP) {
  for (const Eigen::Index n : {4, 5, 8, 12}) {
    TrainingTable table;
    table.inputs = {L"a", L"b", L"c"};
    table.points = support::UniformPoints(n, 3, 5);
    table.responses = {L"y"};
    table.values = table.points.rowwise().sum();
    const double cop = TrainStudy(table, {}).responses[0].cop;
    EXPECT_GE(cop, 0.0);
    EXPECT_LE(cop, 1.0);
  }
}

}  // namespace
}  // namespace corvath::training
