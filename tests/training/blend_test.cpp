#include "training/blend.h"

#include "support/points.h"
#include "support/testing.h"
#include "training/competition.h"
#include "training/form_choice.h"

#include <Eigen/Dense>

using namespace corvath::training;

namespace {

TEST(Blend, SharesFollowTheErrorsOfTheOtherGroups) {
  const Eigen::VectorXd values = Eigen::VectorXd::Zero(20);
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(20);
  const double failed = std::nan("");
  // Root mean square errors of three models, prior odds, shares: odds times mean squares^(-20 / 20).
  const Eigen::Vector3d cases[][3] = {
      {{1.0, -1.0, 1.0}, {1.0, 1.0, 2.0}, {0.25, 0.25, 0.5}},
      {{std::sqrt(0.5), 1.0, 2.0}, {1.0, 1.0, 4.0}, {0.5, 0.25, 0.25}},
      {{1.0, 0.1, 8.0}, {1.0, 1.0, 1.0}, {0.0, 1.0, 0.0}},  // next to nothing is nothing
      {{failed, 1.0, 1.0}, {1.0, 3.0, 1.0}, {0.0, 0.75, 0.25}},
      {{1.0, 0.0, 1.0}, {1.0, 1.0, 1.0}, {0.0, 1.0, 0.0}},
      {{failed, failed, failed}, {1.0, 1.0, 1.0}, {1.0, 0.0, 0.0}},
  };
  for (const auto& [errors, odds, shares] : cases)
    EXPECT_LT((SharesOf(values, ones * errors.transpose(), odds) - shares).norm(), 1e-12)
        << errors.transpose();

  // The first model errs in the last ten alone: the first see that, the last see equal errors.
  Eigen::MatrixXd predicted(20, 2);
  predicted << ones, -ones;
  predicted.col(0).tail(10).setConstant(std::sqrt(2.0));
  const Eigen::VectorXd mean =
      PredictByBlend(values, predicted, Eigen::Vector2d::Ones(),
                     {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19}});
  const double share = 1.0 / (1.0 + std::pow(0.5, 0.5));
  EXPECT_NEAR(mean(0), 1.0 - 2.0 * share, 1e-12);
  EXPECT_NEAR(mean(19), 0.5 * std::sqrt(2.0) - 0.5, 1e-12);
}

TEST(FormChoice, AFormThatFailsAtOneDesignWinsNotWithoutItEither) {
  Eigen::MatrixXd predicted(8, 3);
  predicted << Eigen::VectorXd::Constant(8, 9.0), Eigen::VectorXd::Constant(8, 0.1),
      Eigen::VectorXd::Constant(8, 3.0);
  const Eigen::VectorXd values = Eigen::VectorXd::LinSpaced(8, 0.0, 0.7);
  const std::vector<Eigen::Index> others = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(Choose(SquaredErrors(values, predicted)(others, Eigen::all), 0, 1), 1u);
  predicted(0, 1) = std::nan("");
  EXPECT_EQ(Choose(SquaredErrors(values, predicted)(others, Eigen::all), 0, 1), 2u);
}

TEST(FormChoice, TheRobustFormIsTheFirstOfThreeThatAllInputsHave) {
  const auto of_form = [](const CandidateForm& form) {
    Candidate candidate;
    candidate.form = form;
    return candidate;
  };
  const Candidate constant = of_form(kConstantForm), plane = of_form(kPlaneForm),
                  one = of_form(kIsotropicForm), each = of_form(kAnisotropicForm),
                  bowl = of_form(kBowlForm);
  EXPECT_EQ(FindRobust({{&constant, true}, {&each, true}, {&one, true}}), 1u);
  EXPECT_EQ(FindRobust({{&constant, true}, {&plane, true}, {&each, false}, {&one, true}}), 3u);
  EXPECT_EQ(FindRobust({{&constant, true}, {&plane, true}, {&each, true}}), 2u);
  EXPECT_EQ(FindRobust({{&constant, true}, {&bowl, true}, {&each, false}}), 0u);
}

TEST(Blend, IsOneKrigingThatFollowsTheMeanOfAll) {
  const Eigen::MatrixXd points = support::UniformPoints(40, 3, 1);
  const Eigen::VectorXd values = 3.0 * points.col(0) - points.col(1) +
                                 points.col(0).cwiseProduct(points.col(2)) +
                                 0.3 * support::UniformVector(40, 9);
  const ResponseData data = MakeResponseData(points, values, 20, 1);
  const TrainSettings settings;
  const CompetitionObserver observer = [](const std::wstring&, double) {};
  Competition competition(data, settings, AllowedForms(settings.models), 1e10, observer);
  const Finalists finalists = competition.Run();
  const CandidateTrials& trials = competition.GetTrials();
  Blend blend{{}, Eigen::Vector4d(0.3, 0.1, 0.2, 0.4)};
  const Eigen::MatrixXd fresh = support::UniformPoints(500, 3, 2);
  Eigen::MatrixXd predicted(500, 4);
  for (const CandidateForm& form : {kAnisotropicForm, kIsotropicForm, kPlaneForm, kBowlForm}) {
    const std::size_t k = FindWhole(finalists, form);
    ASSERT_GT(k, 0u) << blend.members.size();
    predicted.col(static_cast<Eigen::Index>(blend.members.size())) =
        trials.Build(*finalists[k].candidate)->Approximate(fresh);
    blend.members.push_back(finalists[k].candidate);
  }
  const auto model = blend.Build(trials, data);
  ASSERT_TRUE(model);
  // Within a twentieth of the noise, whose standard deviation is 0.3 / sqrt(12); each of the four is
  // more than that away.
  const double bound = 0.05 * 0.3 / std::sqrt(12.0) * std::sqrt(500.0);
  const Eigen::VectorXd mean = predicted * blend.shares;
  EXPECT_LT((model->Approximate(fresh) - mean).norm(), bound);
  EXPECT_GT((predicted.colwise() - mean).colwise().norm().minCoeff(), bound);
}

}  // namespace
