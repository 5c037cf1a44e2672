#include "solver/zel_solver.h"

#include "foundation/exception.h"
#include "literature/plate_project.h"
#include "project/records/algorithm_info.h"
#include "project/records/systems_information.h"
#include "project/records/zel_information.h"
#include "support/archive_round_trip.h"
#include "support/stub_surrogate.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

namespace corvath::zel {
namespace {

using namespace algorithm::datatypes;
using namespace literature;
using namespace support;
using namespace testing;
using utils::log::VectorLog;

/// A solver of a project in memory, with its log.
struct OpenProject {
  explicit OpenProject(VRDB project, bool allow_missing_models = false)
      : solver(allow_missing_models) {
    solver.SetLogger(log);
    solver.GetProject() = std::move(project);
    is_open = solver.Initialize();
  }
  std::vector<std::wstring> Lines() const {
    std::vector<std::wstring> lines;
    for (const auto& line : log->GetLines()) lines.push_back(line.second);
    return lines;
  }

  boost::shared_ptr<VectorLog> log = boost::make_shared<VectorLog>();
  ZELSolver solver;
  bool is_open = false;
};

TEST(ZELSolver, PublishesWhatTheModelsServeAndBuildsItsReferenceDesign) {
  OpenProject open(MakePlateProject());
  ASSERT_TRUE(open.is_open);
  EXPECT_EQ(open.solver.GetInputNames(), kPlateInputs);
  EXPECT_EQ(open.solver.GetOutputNames(), kPlateOutputs);
  ASSERT_EQ(open.solver.GetCriteriaList().size(), 2u);
  EXPECT_EQ(open.solver.GetCriteriaList()[0].first, L"goal");
  EXPECT_EQ(open.solver.GetCriteriaList()[1].second.GetLhs(), L"stress[0]");

  const auto& design = open.solver.GetReferenceDesign();
  ASSERT_EQ(design.GetParameters().size(), 3u);
  EXPECT_EQ(design.GetParameters().Get(kPlateInputs[2]), CDesignEntry(15.0));
  EXPECT_TRUE(design.GetResponses().Get(L"history").IsUninitialized());
  EXPECT_TRUE(design.GetCriteria().Has(L"limit"));
  EXPECT_EQ(design.GetStatus().GetMessages().front().GetRunInfo(), 7);
  EXPECT_EQ(&open.solver.GetReferenceDesign(), &design);
}

TEST(ZELSolverNames, TestsEachElementOfAVectorByItself) {
  VRDB project = MakePlateProject();
  KeepModels(project, {L"stress[1]"});
  OpenProject open(std::move(project));
  EXPECT_THAT(open.solver.GetOutputNames(), ElementsAre(L"stress[1]"));
}

TEST(ZELSolverNames, TakesInputsFromTheSideThatTheModelsRunOver) {
  RandomProperties random;
  random.SetKind(1);
  VRDB project = MakePlateProject();
  for (const wchar_t* const name : {L"x", L"thickness"}) {
    Parameter parameter = project.GetParameterManager().GetParameter(name);
    parameter.SetRandomProperties(random);
    project.GetParameterManager().ReplaceParameter(parameter);
  }
  project.GetAlgorithmInfo()->GetZELInformation()->SetSamplingType(2);
  EXPECT_THAT(OpenProject(project).solver.GetInputNames(), ElementsAre(L"x"));
}

TEST(ZELSolverNames, KeepsTheModelsOwnListOfInputsButNoConstants) {
  VRDB project = MakePlateProject();
  auto& listed = project.GetAlgorithmInfo()->GetZELInformation()->parameter_manager_;
  for (const auto& name : {kPlateInputs[2], std::wstring(L"thickness"), std::wstring(L"sum"),
                           std::wstring(L"unknown"), kPlateInputs[0]})
    listed.AddParameter(Parameter(name));
  for (Parameter parameter : listed.GetAllParameters()) parameter.SetConst(false);
  EXPECT_THAT(OpenProject(project).solver.GetInputNames(),
              ElementsAre(kPlateInputs[2], kPlateInputs[0]))
      << "in the order of the list; of the first model's inputs";
}

TEST(ZELSolverOpening, FailsWithTheReasonInTheLog) {
  VRDB without_info = MakePlateProject();
  without_info.GetAlgorithmInfo().reset();
  VRDB without_set = MakePlateProject();
  without_set.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(5);
  VRDB without_models = MakePlateProject();
  GetModels(without_models) = {};
  VRDB outside_engine = MakePlateProject();
  outside_engine.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(AlgorithmInfo::kZEL3);
  VRDB unavailable = MakePlateProject();
  const auto stub = boost::make_shared<support::StubSurrogate>();
  stub->is_available = []() -> bool { throw std::runtime_error("no licence"); };
  SetModel(unavailable, L"flat", stub);

  const std::pair<VRDB, const wchar_t*> cases[] = {
      {without_info, L"ZEL file expected."},
      {without_set, L"Surrogate information not available."},
      {without_models, L"Approximation impossible due to missing meta models."},
      {outside_engine, L"Approximation impossible due to missing meta models."},
      {unavailable, L"Availability check failed: no licence"},
  };
  for (const auto& [project, reason] : cases) {
    const OpenProject open(project);
    EXPECT_FALSE(open.is_open);
    EXPECT_THAT(open.Lines(), Contains(reason));
  }
  for (const VRDB& project : {without_models, outside_engine}) {
    OpenProject open(project, /*allow_missing_models=*/true);
    EXPECT_TRUE(open.is_open);
    EXPECT_EQ(open.solver.GetInputNames(), kPlateInputs);
    EXPECT_THAT(open.solver.GetOutputNames(), IsEmpty());
  }
}

TEST(ZELSolverOpening, ServesTheModelsOfThePreferredDesignSet) {
  VRDB project = MakePlateProject();
  const auto models = GetModels(project);
  project.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(5);
  const auto systems = project.GetAlgorithmInfo()->GetSystemsInformation();
  systems->AddDesignSet(L"first");
  systems->AddDesignSet(L"second").surrogate_infos_ = models;
  EXPECT_FALSE(OpenProject(project).is_open);
  systems->prefered_design_set_ = L"first";
  EXPECT_FALSE(OpenProject(project).is_open) << "no models";
  systems->prefered_design_set_ = L"second";
  OpenProject open(project);
  EXPECT_TRUE(open.is_open);
  EXPECT_EQ(open.solver.GetOutputNames(), kPlateOutputs);
}

TEST(ZELSolverOpening, AModelThatThrowsCostsItsErrorsNotTheOpening) {
  const Eigen::RowVector3d design(1.0, 0.5, 12.0);
  for (const bool in_build : {true, false}) {
    VRDB project = MakePlateProject();
    const auto stub = boost::make_shared<support::StubSurrogate>();
    if (in_build) stub->build = []() -> bool { throw std::runtime_error("singular"); };
    stub->SetSupportData(Eigen::MatrixXd::Ones(2, 3), Eigen::VectorXd::Ones(2));
    SetModel(project, L"mass", stub);
    OpenProject open(std::move(project));
    ASSERT_TRUE(open.is_open);
    EXPECT_THAT(open.Lines(), IsEmpty()) << "told at its use";

    EXPECT_MESSAGE(
        "Surrogate ApproximateErrors needs BuildErrors first",
        open.solver.ErrorsPerResponse(L"mass", design, ExtrapolationType::kUnbounded, true));
    const auto others =
        open.solver.ErrorsPerResponse(L"flat", design, ExtrapolationType::kUnbounded, true);
    EXPECT_EQ(others.size(), 5u);
  }
}

TEST(ZELSolver, IsStoredAsItsProject) {
  VRDB project = MakePlateProject();
  GetModels(project) = {};
  const OpenProject original(std::move(project), /*allow_missing_models=*/true);
  const ZELSolver* const stored = &original.solver;
  const std::unique_ptr<ZELSolver> loaded(support::Load<ZELSolver*>(support::Save(stored)));
  ASSERT_TRUE(loaded->Initialize()) << "through a pointer, it takes a project without models";
  EXPECT_EQ(loaded->GetInputNames(), kPlateInputs);
}

TEST(ZELSolver, KeepsLinesInMemoryWithoutALogger) {
  ZELSolver solver(false);
  EXPECT_FALSE(solver.Load(L""));
  EXPECT_FALSE(solver.Load(L"/no/such/file"));
  const auto log = boost::dynamic_pointer_cast<VectorLog>(solver.GetLogger());
  ASSERT_TRUE(log);
  EXPECT_THAT(log->GetLines(),
              ElementsAre(VectorLog::Line(1, L"Given path is empty."),
                          VectorLog::Line(1, L"\"/no/such/file\" does not exist")));
}

}  // namespace
}  // namespace corvath::zel
