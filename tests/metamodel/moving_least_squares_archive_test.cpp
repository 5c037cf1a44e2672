#include "metamodel/factories.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/polynomial_basis.h"
#include "support/message_of.h"
#include "support/points.h"
#include "support/surrogate_form.h"

#include <gtest/gtest.h>

/// The stored forms of moving least squares models.
namespace corvath::math::metamodel {
namespace {

using support::Since;
using support::StoredForm;
using support::Until;
using transform::TransformType;

MovingLeastSquares Model() {
  const Eigen::MatrixXd points = 3.0 * support::UniformPoints(40, 2, 1);
  MovingLeastSquaresSettings settings(2);
  settings.SetOrder(2);
  settings.SetMainTermSelection({true, true, false, true});
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::Vector2d(0.9, 1.1));
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.5, 0.1, 10.1});
  MovingLeastSquares model(points, support::UniformVector(40, 2), settings);
  model.Build();
  return model;
}

Eigen::MatrixXd BasisOf(const MovingLeastSquares& model) {
  return BuildRegressionMatrix(model.GetTransCoord()->Forward(model.GetPoints()),
                               model.GetSettingsBase().GetMainTermSelection(), {});
}

Eigen::VectorXd TransformedValues(const MovingLeastSquares& model) {
  return model.GetTransValue()->Forward(model.GetValues());
}

/// Everything but the fields of version 0, over the base part of `base_version`.
StoredForm<MovingLeastSquares> FormOf(const MovingLeastSquares& model, unsigned base_version,
                                      const Eigen::VectorXd& values, const Eigen::MatrixXd& basis) {
  StoredForm<MovingLeastSquares> form(3);
  form.Part("SurrogateBase", support::SurrogateBaseForm(model), base_version);
  form.Raw("points_trans_reduced_", support::TransformedAndReduced(model), {2, 2});
  form.Raw("values_trans_", values, Since(2));
  form.Raw("coefficient_matrix_", basis, Since(1));
  form.Raw("settings_", model.GetSettingsBase(), Since(1));
  return form;
}

TEST(StoredMovingLeastSquares, ReadsEveryVersion) {
  const MovingLeastSquares model = Model();
  const auto form = [&](unsigned base_version) {
    auto result = FormOf(model, base_version, TransformedValues(model), BasisOf(model));
    result.Shows([&](const MovingLeastSquares& m) { return m.Equals(model); }, true);
    return result;
  };
  EXPECT_EQ(support::Save(model), form(7).Write(3));
  form(7).CheckReading(3);
  for (const unsigned version : {1u, 2u}) form(1).CheckReading(version);

  using S = MovingLeastSquaresSettings;
  StoredForm<S> settings(0);
  settings.Part("SurrogateSettingsBase", support::SettingsBaseForm());
  settings.Field("order_", &S::GetOrder, 2);
  settings.Field("main_term_selection_", &S::GetMainTermSelection,
                 BitVector{true, true, false, true});
  settings.Field("kernel_type_", &S::GetKernelType, KernelType::kConstInflExp);
  settings.Field("kernel_parameter_", &S::GetKernelParameter, Eigen::Vector2d(0.9, 1.1));
  settings.Check([](const S& a, const S& b) { return a.Equals(b); });
}

TEST(StoredMovingLeastSquares, RebuildsSettingsOfTheFirstVersion) {
  const MovingLeastSquares model = Model();
  const BitVector main = model.GetSettingsBase().GetMainTermSelection();
  const auto read_first = [&](std::uint64_t order, const BitVector& bits,
                              const boost::shared_ptr<KernelBase>& kernel) {
    KernelBase* const weight = kernel.get();
    StoredForm<MovingLeastSquares> form(0);
    form.Part("SurrogateBase", support::SurrogateBaseForm(model), 0);
    form.Raw("weight_", weight);
    form.Raw("coefficient_matrix_", BasisOf(model));
    form.Raw("order_", order);
    form.Raw("main_term_selection_", bits);
    return form.Read(0);
  };
  const boost::shared_ptr<KernelBase> kernel =
      MakeKernel(KernelType::kConstInflExp, model.GetSettingsBase().GetKernelParameter());
  const auto read = read_first(2, main, kernel);
  EXPECT_TRUE(read.GetSettingsBase().Equals(model.GetSettingsBase()));
  EXPECT_TRUE(read.Equals(model));

  const auto with_nodal =
      read_first(2, main, MakeKernel(KernelType::kNodalInflExp, Eigen::VectorXd::Constant(1, 9.0)));
  EXPECT_EQ(with_nodal.GetSettingsBase().GetKernelType(), KernelType::kNodalInflExp);
  EXPECT_EQ(with_nodal.GetSettingsBase().GetKernelParameter()(0), 9.0);
  EXPECT_TRUE(std::isfinite(with_nodal.Approximate(model.GetPoints().topRows(1))(0)));

  EXPECT_EQ(support::MessageOf([&] { read_first(std::uint64_t{1} << 62, main, kernel); }),
            "can not set mls order >2");
  EXPECT_EQ(support::MessageOf([&] { read_first(1, main, kernel); }),
            "size of selection vector is not consistent to order");
}

TEST(StoredMovingLeastSquares, KnowsItsExportKeys) {
  const boost::shared_ptr<SurrogateBase> model(Model().Clone());
  support::ExpectExportKey(model, "corvath::math::metamodel::MovingLeastSquares");
  support::ExpectExportKey(
      boost::shared_ptr<SurrogateSettingsBase>(new MovingLeastSquaresSettings(1)),
      "::corvath::math::metamodel::MovingLeastSquaresSettings");
  EXPECT_TRUE(
      support::Load<boost::shared_ptr<SurrogateBase>>(support::Save(model))->Equals(*model));
}

TEST(StoredMovingLeastSquares, ThatContradictsItselfIsRefusedAtUse) {
  const MovingLeastSquares model = Model();
  const auto refusal = [&](const Eigen::VectorXd& values, const Eigen::MatrixXd& basis) {
    const MovingLeastSquares read = FormOf(model, 7, values, basis).Read(3);
    return support::MessageOf([&] { read.Approximate(Eigen::MatrixXd::Zero(1, 2)); });
  };
  EXPECT_EQ(refusal(Eigen::VectorXd(39), BasisOf(model)),
            "Moving Least Squares: 39 values, support points of 40 x 2 and a basis of 40 x 4 for "
            "2 selected inputs and 4 terms");
  EXPECT_EQ(refusal(Eigen::VectorXd(40), Eigen::MatrixXd(40, 3)),
            "Moving Least Squares: 40 values, support points of 40 x 2 and a basis of 40 x 3 for "
            "2 selected inputs and 4 terms");
}

}  // namespace
}  // namespace corvath::math::metamodel
