#include "training/blend.h"

#include "support/points.h"
#include "support/testing.h"
#include "training/competition.h"
#include "training/form_choice.h"

#include <Eigen/Dense>

using namespace corvath::training;

namespace {

TEST(Blend, TheShareFollowsTheErrorsOfTheOtherGroups) {
  const Eigen::VectorXd values = Eigen::VectorXd::Zero(20);
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(20);
  EXPECT_EQ(ShareOfPlane(values, ones, ones), 0.5);
  // Half the mean square: odds of 2^(20 / 20).
  EXPECT_NEAR(ShareOfPlane(values, ones / std::sqrt(2.0), ones), 1.0 / 3.0, 1e-12);
  EXPECT_EQ(ShareOfPlane(values, ones, ones / 2.0), 1.0);
  EXPECT_EQ(ShareOfPlane(values, values, ones), 0.0);
  EXPECT_EQ(ShareOfPlane(values, ones / 0.0, ones), 1.0);

  // The kriging errs in the last ten alone: the first see that, the last see equal errors.
  Eigen::VectorXd of_kriging = ones;
  of_kriging.tail(10).setConstant(std::sqrt(2.0));
  const Eigen::VectorXd predicted =
      PredictByBlend(values, of_kriging, -ones,
                     {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19}});
  const double share = 1.0 / (1.0 + std::pow(0.5, 0.5));
  EXPECT_NEAR(predicted(0), 1.0 - 2.0 * share, 1e-12);
  EXPECT_NEAR(predicted(19), 0.5 * std::sqrt(2.0) - 0.5, 1e-12);
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

TEST(Blend, IsOneKrigingThatFollowsTheMeanOfBoth) {
  const Eigen::MatrixXd points = support::UniformPoints(40, 3, 1);
  const Eigen::VectorXd values = 3.0 * points.col(0) - points.col(1) +
                                 points.col(0).cwiseProduct(points.col(2)) +
                                 0.3 * support::UniformVector(40, 9);
  const ResponseData data = MakeResponseData(points, values, 20, 1);
  const TrainSettings settings;
  const CompetitionObserver observer = [](const std::wstring&, double) {};
  Competition competition(data, settings, AllowedForms(settings.models), 1e10, observer);
  const Finalists finalists = competition.Run();
  const std::size_t curved = FindWhole(finalists, kAnisotropicForm);
  const std::size_t plane = FindWhole(finalists, kPlaneForm);
  ASSERT_TRUE(curved > 0 && plane > 0);
  const Blend blend{finalists[curved].candidate, finalists[plane].candidate, 0.4};
  const CandidateTrials& trials = competition.GetTrials();
  const auto model = blend.Build(trials, data);
  ASSERT_TRUE(model);
  const Eigen::MatrixXd fresh = support::UniformPoints(500, 3, 2);
  const Eigen::VectorXd of_kriging = trials.Build(*blend.kriging)->Approximate(fresh);
  const Eigen::VectorXd of_plane = trials.Build(*blend.plane)->Approximate(fresh);
  const auto distance = [&](double share) {
    return (model->Approximate(fresh) - (1.0 - share) * of_kriging - share * of_plane).norm();
  };
  EXPECT_LT(distance(0.4), 0.2 * distance(0.0));
  EXPECT_LT(distance(0.4), 0.2 * distance(1.0));
}

}  // namespace
