#include "metamodel/families.h"
#include "support/allocations.h"

namespace corvath::math::metamodel {
namespace {

std::unique_ptr<SurrogateBase> Kriging(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                       KernelType type, const Eigen::VectorXd& parameters) {
  OrdinaryKrigingSettings settings(static_cast<std::uint64_t>(points.cols()));
  settings.SetKernelType(type);
  settings.SetKernelParameter(parameters);
  settings.SetNugget(1e-6);
  return std::make_unique<OrdinaryKriging>(points, values, settings);
}

TEST(Prediction, AllocatesNothingPerBlock) {
  const Eigen::MatrixXd points = support::UniformPoints(60, 3, 1);
  const Eigen::VectorXd values = points.rowwise().squaredNorm();
  const auto parameters = [](Eigen::Index n) { return Eigen::VectorXd::Constant(n, 1.5); };
  std::vector<std::unique_ptr<SurrogateBase>> models;
  models.push_back(Kriging(points, values, KernelType::kConstInflExp, parameters(3)));
  models.push_back(Kriging(points, values, KernelType::kConstInflIsoExp, parameters(1)));
  MovingLeastSquaresSettings moving(3);
  moving.SetKernelParameter(parameters(1));
  models.push_back(std::make_unique<MovingLeastSquares>(points, values, moving));
  models.push_back(std::make_unique<LinearRegression>(points, values));
  models.push_back(std::make_unique<SurrogateTPS>(points, values));

  const Eigen::MatrixXd x = support::UniformPoints(20010, 3, 2);
  for (const auto& model : models) {
    SCOPED_TRACE(::testing::PrintToString(model->GetName(false)));
    ASSERT_TRUE(model->Build());
    const auto allocations = [&](Eigen::Index rows) {
      const long before = num_allocations;
      const Eigen::VectorXd predicted = model->Approximate(x.topRows(rows));
      EXPECT_TRUE(predicted.allFinite());
      return num_allocations - before;
    };
    const long few = allocations(10010);
    EXPECT_GT(few, 0);  // counts
    EXPECT_EQ(allocations(20010), few);
  }
}

}  // namespace
}  // namespace corvath::math::metamodel
