#include "foundation/exception.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "metamodel/moving_least_squares/moving_least_squares_settings.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "support/testing.h"

namespace corvath::math::metamodel {
namespace {

using Runtime = utils::runtime_error;

/// Coefficients, parameters, complexity.
using Counts = std::array<std::uint64_t, 3>;

Counts CountsOf(const SurrogateSettingsBase& settings) {
  return {settings.GetNumberCoefficients(), settings.GetNumberParameters(),
          settings.GetComplexity()};
}

const std::vector<double> kTransformed{0.5, 0.1, 10.1};
const BitVector kTwoOfThree{true, false, true};
const BitVector kTheirSquares{true, false, true, true, false, true};

TEST(LinearRegressionSettings, CountTermsParametersAndComplexity) {
  LinearRegressionSettings settings(3);
  EXPECT_EQ(CountsOf(settings), (Counts{4, 4, 0}));
  settings.SetValueTransformParameter(kTransformed);
  EXPECT_EQ(CountsOf(settings), (Counts{4, 5, 1}));
  settings.SetValueTransformParameter({1.0 + 1e-11});
  EXPECT_EQ(CountsOf(settings), (Counts{4, 4, 0}));
  settings.SetInteractionSelection({false, true, false});
  EXPECT_EQ(CountsOf(settings), (Counts{5, 5, 1}));
  settings.SetOrder(2);
  EXPECT_EQ(CountsOf(settings), (Counts{10, 10, 2}));
  settings.SetVariableSelection(kTwoOfThree);
  EXPECT_EQ(settings.GetVariableSelection(), kTwoOfThree);
  EXPECT_EQ(settings.GetMainTermSelection(), kTheirSquares);
  EXPECT_EQ(settings.GetInteractionSelection(), (BitVector{false, true, false}));
  LinearRegressionSettings odd = settings;
  settings.ResetToLinear();
  EXPECT_TRUE(settings.Equals(LinearRegressionSettings(3)));

  LinearRegressionSettings main = settings;
  main.SetMainTermSelection(BitVector(4, true));
  odd.SetNumberInputs(4);
  odd.SetMainTermSelection(BitVector(8, true));
  const char* const interactions =
      "size of interaction selection vector is not consistent to regression dimension";
  support::ExpectRefusals<Runtime>({
      {[&] { main.Check(nullptr); },
       "size of main term selection vector is not consistent to regression order"},
      {[&] { settings.SetInteractionSelection(BitVector(2)); }, interactions},
      {[&] { odd.Check(nullptr); }, interactions},
      {[] { LinearRegressionSettings().Check(nullptr); }, "Number of inputs can not be 0."},
  });
}

TEST(MovingLeastSquaresSettings, CountTermsParametersAndComplexity) {
  MovingLeastSquaresSettings settings(3);
  EXPECT_EQ(CountsOf(settings), (Counts{4, 5, 11}));
  EXPECT_TRUE(settings.GetInteractionSelection().empty());
  settings.SetKernelParameter(Eigen::VectorXd::Ones(1));
  settings.SetKernelType(KernelType::kConstInflExp);
  EXPECT_EQ(settings.GetKernelParameter().size(), 0);
  EXPECT_EQ(CountsOf(settings), (Counts{4, 7, 11}));
  settings.SetKernelParameter(Eigen::VectorXd::Ones(1));
  settings.SetValueTransformParameter(kTransformed);
  EXPECT_EQ(CountsOf(settings), (Counts{4, 6, 11}));
  settings.SetOrder(2);
  settings.SetVariableSelection(kTwoOfThree);
  EXPECT_EQ(settings.GetMainTermSelection(), kTheirSquares);
  EXPECT_EQ(settings.GetVariableSelection(), kTwoOfThree);
  EXPECT_EQ(CountsOf(settings), (Counts{5, 7, 12}));
  settings.SetOrder(0);
  settings.SetVariableSelection(kTwoOfThree);
  EXPECT_EQ(CountsOf(settings), (Counts{1, 1 + 1 + 1 + 2, 10}));
  settings.ResetToLinear();
  EXPECT_TRUE(settings.Equals(MovingLeastSquaresSettings(3)));

  MovingLeastSquaresSettings cubic(3);
  cubic.SetOrder(3);
  settings.SetOrder(2);
  settings.SetMainTermSelection(BitVector(3, true));
  support::ExpectRefusals<Runtime>({
      {[&] { cubic.Check(nullptr); }, "can not set mls order >2"},
      {[&] { settings.Check(nullptr); }, "size of selection vector is not consistent to order"},
      {[] { MovingLeastSquaresSettings().Check(nullptr); }, "Number of inputs can not be 0."},
  });
}

TEST(OrdinaryKrigingSettings, CountParametersAndComplexity) {
  OrdinaryKrigingSettings settings(3);
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetVariableSelection({true, true, false});
  EXPECT_EQ(CountsOf(settings), (Counts{1, 1 + 2 + 2, 11}));
  settings.SetValueTransformParameter(kTransformed);
  EXPECT_EQ(CountsOf(settings), (Counts{1, 1 + 1 + 2 + 2, 11}));
  settings.SetKernelParameter(Eigen::Vector3d(1, 2, 3));
  EXPECT_EQ(CountsOf(settings), (Counts{1, 1 + 1 + 3 + 2, 11}));
  settings.SetKernelType(KernelType::kNodalInflExp);
  EXPECT_EQ(settings.GetKernelParameter().size(), 0);
  EXPECT_EQ(CountsOf(settings), (Counts{1, 1 + 1 + 1 + 2, 10}));
  EXPECT_FALSE(settings.Equals(OrdinaryKrigingSettings(3)));
  settings.ResetToLinear();
  EXPECT_TRUE(settings.Equals(OrdinaryKrigingSettings(3)));

  utils::log::VectorLog log;
  const auto check = [&log](KernelType type, const Eigen::VectorXd& parameters) {
    return [=, &log] {
      OrdinaryKrigingSettings other(3);
      other.SetKernelType(type);
      other.SetKernelParameter(parameters);
      other.Check(&log);
    };
  };
  support::ExpectRefusals<Runtime>({
      {[] { OrdinaryKrigingSettings().Check(nullptr); }, "Number of inputs can not be 0."},
      {check(KernelType::kConstInflIsoReg, Eigen::VectorXd::Ones(1)),
       "Kernel is not of type correlation"},
      {check(KernelType::kConstInflExp, {}), ""},
      {check(KernelType::kConstInflExp, Eigen::Vector2d(1, 1)),
       "Wrong number of dimensions in anisotropic kernel"},
  });
  EXPECT_EQ(log.GetLines().back().second, L"Wrong number of dimensions in anisotropic kernel");
  support::ExpectRefusals<std::logic_error>(
      {{check(KernelType(7), Eigen::VectorXd::Ones(1)), "Unknown kernel type."}});
}

}  // namespace
}  // namespace corvath::math::metamodel
