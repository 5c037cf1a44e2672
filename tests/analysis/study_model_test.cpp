#include "analysis/function_model.h"
#include "analysis/progress.h"
#include "analysis/project_model.h"
#include "literature/plate_project.h"
#include "metamodel/local_errors.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

namespace corvath::analysis {
namespace {

using algorithm::datatypes::Criterion, algorithm::datatypes::CriterionDescription;

boost::shared_ptr<zel::ZELSolver> OpenPlate() {
  auto solver = boost::make_shared<zel::ZELSolver>(/*allow_missing_models=*/false);
  solver->GetProject() = literature::MakePlateProject();
  EXPECT_TRUE(solver->Initialize());
  return solver;
}

TEST(ProjectModel, HasTheClosedFormsOfThePlate) {
  algorithm::datatypes::CriterionSequence more;
  more.Append(L"stiff", Criterion(CriterionDescription::LIMIT_LHS_ABOVE_RHS, L"sum(stress)", L"x"));
  const ProjectModel model(OpenPlate(), more);
  ASSERT_EQ(model.GetNumInputs(), 3);
  EXPECT_EQ(model.GetInputs()[2].lower, 10.0);
  EXPECT_EQ(model.GetInputs()[2].upper, 20.0);
  EXPECT_EQ(model.GetInputs()[2].reference, 15.0);
  ASSERT_EQ(model.GetNumQuantities(), 8);  // 5 responses, goal, limit, stiff
  EXPECT_TRUE(model.GetQuantities()[6].IsLimit());
  EXPECT_EQ(model.FindQuantity(L"stiff"), 7);

  const Eigen::MatrixXd x{{0.5, -0.5, 12.0}, {2.0, 1.0, 20.0}};  // inside, and at upper bounds
  const Eigen::MatrixXd values = model.Evaluate(x);
  for (Eigen::Index d = 0; d < 2; ++d) {
    double sum = 0.0;
    for (std::size_t k = 0; k < 5; ++k) {
      const double expected = literature::PlateOutput(k, x(d, 0), x(d, 1), x(d, 2));
      EXPECT_NEAR(values(d, static_cast<Eigen::Index>(k)), expected, 1e-9);
      if (k >= 2) sum += expected;
    }
    EXPECT_NEAR(values(d, 5), values(d, 0), 1e-12);
    EXPECT_NEAR(values(d, 6), 3.0 - values(d, 2), 1e-12);
    EXPECT_NEAR(values(d, 7), sum - x(d, 0), 1e-8);
    const Eigen::MatrixXd gradients = model.Gradients(x.row(d).transpose());
    for (std::size_t k = 0; k < 5; ++k)
      EXPECT_LT((gradients.row(static_cast<Eigen::Index>(k)) -
                 literature::PlateGradient(k, x(d, 0), x(d, 1), x(d, 2)))
                    .norm(),
                1e-6);
    EXPECT_LT((gradients.row(6) + gradients.row(2)).norm(), 1e-9);
  }
  EXPECT_LT(model.StandardErrors().maxCoeff(), 1e-9);  // the models are exact
  EXPECT_EQ(model.LocalErrors(0, x).cols(), math::metamodel::kNumErrorColumns);
  EXPECT_EQ(model.GetDesigns().inputs, literature::PlateDesigns());
  EXPECT_EQ(model.GetDesigns().numbers.back(), L"40");
  const auto& analysed = model.GetDesigns().values;
  EXPECT_LT((analysed - model.Evaluate(model.GetDesigns().inputs)).leftCols(2).norm(), 1e-6);
  EXPECT_THROW(ProjectModel(OpenPlate(),
                            [] {
                              algorithm::datatypes::CriterionSequence taken;
                              taken.Append(L"mass", Criterion());
                              return taken;
                            }()),
               AnalysisError);
}

TEST(FunctionModel, DifferentiatesToTheInsideOfItsRange) {
  StudyInput input;
  input.name = L"x";
  input.lower = 0.0;
  input.upper = 4.0;
  StudyQuantity root;
  root.name = L"root";
  const FunctionModel model({input}, {root}, [](const ConstPoints& x) -> Eigen::MatrixXd {
    return (x.array() + 1.0).sqrt().matrix() / (x.minCoeff() < 0.0 || x.maxCoeff() > 4.0 ? 0 : 1);
  });
  for (const double x : {0.0, 1e-5, 2.0, 4.0})  // the error of the differences is h^2 f''' / 3
    EXPECT_NEAR(model.Gradients(Eigen::VectorXd::Constant(1, x))(0, 0), 0.5 / std::sqrt(x + 1.0),
                1e-7);
}

}  // namespace
}  // namespace corvath::analysis
