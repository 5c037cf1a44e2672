#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "support/message_of.h"
#include "support/points.h"
#include "support/surrogate_form.h"

#include <gtest/gtest.h>

#include <cmath>

/// The stored forms of transforms, kernels, settings and regressions.
namespace corvath::math::metamodel {
namespace {

using support::Since;
using support::StoredForm;
using support::Until;
using transform::TransBoxCox;
using transform::Transform;
using transform::TransformType;
using transform::TransLimits;
using transform::TransMinMax;

TEST(StoredForm, OfTransforms) {
  const Eigen::VectorXd data = support::UniformVector(9, 1);
  const auto base = [](bool need_build) {
    return StoredForm<Transform, false>(0).Uncompared("need_build_", &Transform::NeedBuild,
                                                      need_build);
  };
  TransMinMax min_max(0.2, 5.0);
  min_max.Build(data);
  StoredForm<TransMinMax> min_max_form(0);
  min_max_form.Part("Transform", base(false));
  min_max_form.Raw("min_scaled_", 0.2).Raw("max_scaled_", 5.0);
  min_max_form.Raw("scaling_", min_max.GetScaling());
  min_max_form.Raw("offset_forward_", min_max.GetOffsetForward());
  min_max_form.Raw("offset_backward_", min_max.GetOffsetBackward());
  min_max_form.Shows([=](const TransMinMax& t) { return t.Equals(min_max); }, true);
  min_max_form.Check();

  TransBoxCox box_cox(-4, 0.2, 5.0);
  box_cox.Build(data);
  StoredForm<TransBoxCox> box_cox_form(0);
  box_cox_form.Part("Transform", base(false));
  box_cox_form.Raw("lambda_", -0.25).Raw("lambda_inv_", std::int64_t{-4});
  box_cox_form.Raw("min_scaled_", 0.2).Raw("max_scaled_", 5.0);
  box_cox_form.Raw("trans_minmax_", min_max_form.As(0));
  box_cox_form.Shows([=](const TransBoxCox& t) { return t.Equals(box_cox); }, true);
  box_cox_form.Check();

  StoredForm<TransLimits> limits_form(0);
  limits_form.Part("Transform", base(true));
  limits_form.Raw("lower_limit_", -1.0).Raw("upper_limit_", 3.0);
  limits_form.Shows([](const TransLimits& t) { return t.Equals(TransLimits(-1.0, 3.0)); }, true);
  limits_form.Check();
}

TEST(StoredForm, OfKernels) {
  const Eigen::VectorXd parameters = Eigen::VectorXd::Constant(1, 2.0);
  const double log_weight = std::log(0.001);
  StoredForm<KernelBase, false> base(0);
  base.Uncompared("parameters_", &KernelBase::GetParameters, parameters);
  StoredForm<KernelConstInfl, false> constant(0);
  constant.Part("KernelBase", base);
  StoredForm<KernelConstInflIso, false> isotropic(0);
  isotropic.Part("KernelConstInfl", constant);
  StoredForm<KernelNodalInfl, false> nodal(0);
  nodal.Part("KernelBase", base);
  const auto is_near = [](double weight, double expected) {
    return std::abs(weight - expected) < 1e-15;
  };
  // The stored helper terms serve as they are: 0.001 at half the radius of the parameter.
  StoredForm<KernelConstInflExp> exp(0);
  exp.Part("KernelConstInfl", constant);
  exp.Raw("helper_term_", Eigen::VectorXd(Eigen::VectorXd::Constant(1, log_weight)));
  exp.Shows([=](const auto& k) { return is_near(k.EvaluateVector(parameters / 2), 0.001); }, true);
  exp.Check();

  StoredForm<KernelConstInflIsoExp> iso_exp(0);
  iso_exp.Part("KernelConstInflIso", isotropic);
  iso_exp.Raw("helper_term_", log_weight);
  iso_exp.Shows([=](const auto& k) { return is_near(k.EvaluateDistance(1.0), 0.001); }, true);
  iso_exp.Check();

  StoredForm<KernelConstInflIsoReg> reg(0);
  reg.Part("KernelConstInflIso", isotropic);
  reg.Raw("epsilon_", 0.5).Raw("m_", 3.0).Raw("D_squared_", 9.0).Raw("helper_term_", 0.125);
  reg.Shows([=](const auto& k) { return is_near(k.EvaluateDistance(4.5), 0.875); }, true);
  reg.Check();

  StoredForm<KernelNodalInflExp> nodal_exp(0);
  nodal_exp.Part("KernelNodalInfl", nodal);
  nodal_exp.Raw("helper_term_", log_weight);
  nodal_exp.Shows(
      [=](const KernelNodalInflExp& kernel) {
        Eigen::VectorXd weights(3);
        kernel.Weights(weights, Eigen::VectorXd::Zero(1), Eigen::Vector3d(0.3, 0.6, 0.9));
        return is_near(weights(1), 0.001);
      },
      true);
  nodal_exp.Check();
  EXPECT_EQ(support::Save(KernelNodalInflExp(parameters)), nodal_exp.Write(0));
}

TEST(StoredForm, OfSettingsWithEveryVersionOfTheBase) {
  using S = LinearRegressionSettings;
  for (unsigned base_version = 0; base_version <= 2; ++base_version) {
    StoredForm<S> form(0);
    form.Part("SurrogateSettingsBase", support::SettingsBaseForm(), base_version);
    form.Field("order_", &S::GetOrder, 2);
    form.Field("main_term_selection_", &S::GetMainTermSelection,
               BitVector{true, false, true, true});
    form.Field("interaction_selection_", &S::GetInteractionSelection, BitVector{true});
    if (base_version < 2)
      form.CheckReading();
    else
      form.Check([](const S& a, const S& b) { return a.Equals(b); });
  }
}

/// A regression with all that a surrogate can hold.
LinearRegression FullModel() {
  const Eigen::MatrixXd points = 3.0 * support::UniformPoints(30, 2, 1);
  LinearRegressionSettings settings(2);
  settings.SetOrder(2);
  settings.SetVariableSelection({true, false});
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.5, 0.1, 10.1});
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({0.0, 1.0});
  LinearRegression model(points, support::UniformVector(30, 2), settings,
                         0.5 + support::UniformVector(30, 3).array());
  model.Build();
  model.BuildErrors(IndexVector::LinSpaced(30, 0, 4));
  model.SetSingleCoPs(Eigen::RowVector2d(0.7, 0.2));
  return model;
}

/// The regression as version 1 with that version of the base part stored it.
StoredForm<LinearRegression> RegressionForm(const LinearRegression& model, unsigned base_version,
                                            const Eigen::VectorXd& coefficients,
                                            const Eigen::MatrixXd& matrix) {
  StoredForm<LinearRegression> form(1);
  form.Part("SurrogateBase", support::SurrogateBaseForm(model), base_version);
  form.Uncompared("coefficients_", &LinearRegression::GetCoefficients, coefficients);
  form.Raw("coefficient_matrix_", matrix);
  form.Raw("settings_", model.GetSettingsBase(), Since(1));
  return form;
}

Eigen::MatrixXd MatrixOf(const LinearRegression& model) {
  const auto& settings = model.GetSettingsBase();
  return BuildRegressionMatrix(model.GetTransCoord()->Forward(model.GetPoints()),
                               settings.GetMainTermSelection(), settings.GetInteractionSelection());
}

TEST(StoredForm, OfRegressionsWithEveryVersionOfTheBase) {
  const LinearRegression model = FullModel();
  const Eigen::MatrixXd x = 3.0 * support::UniformPoints(9, 2, 4);
  const auto form = [&model](unsigned base_version) {
    return RegressionForm(model, base_version, model.GetCoefficients(), MatrixOf(model));
  };
  for (unsigned base_version = 0; base_version <= 7; ++base_version) {
    form(base_version).CheckReading(1);
    if (base_version < 4) continue;  // the limits came later
    EXPECT_EQ(form(base_version).Read(1).Approximate(x), model.Approximate(x)) << base_version;
  }
  EXPECT_EQ(support::Save(model), form(7).Write(1));
  EXPECT_TRUE(form(7).Read(1).Equals(model));

  // Radii that an old file lacks come with the next errors.
  LinearRegression completed = form(4).Read(1);
  ASSERT_TRUE(completed.BuildErrors());
  EXPECT_EQ(completed.GetResiduals(), model.GetResiduals());
  EXPECT_EQ(completed.GetPointsRadiiMean(), model.GetPointsRadiiMean());
  EXPECT_EQ(completed.GetWeightErrorRadius(), model.GetWeightErrorRadius());
}

TEST(StoredForm, OfTheFirstRegressionRebuildsItsSettings) {
  LinearRegression model = FullModel();
  const BitVector main = model.GetSettingsBase().GetMainTermSelection();
  const auto read_first = [model, main](std::uint64_t order) {
    auto form = RegressionForm(model, 0, model.GetCoefficients(), MatrixOf(model));
    form.Raw("order_", order, Until(0));
    form.Raw("main_term_selection_", main, Until(0));
    form.Raw("interaction_selection_", model.GetSettingsBase().GetInteractionSelection(), Until(0));
    form.Raw("weights_", model.GetWeights(), Until(0));
    return form.Read(0);
  };
  const LinearRegression read = read_first(2);
  EXPECT_EQ(read.GetWeights(), model.GetWeights());
  LinearRegressionSettings expected = model.GetSettingsBase();
  expected.SetLimitTransform(TransformType::kNone);  // came later
  expected.SetLimitTransformParameter({});
  EXPECT_TRUE(read.GetSettingsBase().Equals(expected));
  model.SetLimitTransform(TransformType::kNone, {});
  model.Build();
  const Eigen::MatrixXd x = support::UniformPoints(9, 2, 4);
  EXPECT_LT(support::Deviation(read.Approximate(x), model.Approximate(x)), 1e-14);

  // An order from a damaged file does not become that many bits.
  for (const std::uint64_t order : {std::uint64_t{3}, std::uint64_t{1} << 63})
    EXPECT_EQ(support::MessageOf([&] { read_first(order); }),
              "size of main term selection vector is not consistent to regression order");
}

TEST(StoredForm, OfPointersHoldsTheExportKeys) {
  const Eigen::VectorXd one = Eigen::VectorXd::Ones(1);
  const char* const transforms[] = {"TransMinMax", "TransBoxCox", "TransLimits"};
  for (int type = 1; type <= 3; ++type)
    support::ExpectExportKey(MakeTransform(static_cast<TransformType>(type), {}),
                             std::string("corvath::math::transform::") + transforms[type - 1]);
  const std::pair<KernelType, const char*> kernels[] = {
      {KernelType::kConstInflExp, "KernelConstInflExp"},
      {KernelType::kConstInflIsoExp, "KernelConstInflIsoExp"},
      {KernelType::kConstInflIsoReg, "KernelConstInflIsoReg"},
      {KernelType::kNodalInflExp, "KernelNodalInflExp"}};
  for (const auto& [type, name] : kernels)
    support::ExpectExportKey(MakeKernel(type, one),
                             std::string("corvath::math::metamodel::") + name);
  support::ExpectExportKey(
      boost::shared_ptr<SurrogateSettingsBase>(new LinearRegressionSettings(1)),
      "::corvath::math::metamodel::LinearRegressionSettings");
  const boost::shared_ptr<SurrogateBase> model(FullModel().Clone());
  support::ExpectExportKey(model, "corvath::math::metamodel::LinearRegression");
  EXPECT_TRUE(
      support::Load<boost::shared_ptr<SurrogateBase>>(support::Save(model))->Equals(*model));
}

TEST(StoredForm, ThatContradictsItselfIsRefusedAtUse) {
  const LinearRegression model = FullModel();
  const Eigen::MatrixXd x = Eigen::MatrixXd::Zero(1, 2);
  const LinearRegression seven = RegressionForm(model, 5, Eigen::VectorXd(7), {}).Read(1);
  EXPECT_EQ(support::MessageOf([&] { seven.Approximate(x); }),
            "Linear Regression: 7 coefficients for 3 terms");
  LinearRegression no_matrix =
      RegressionForm(model, 5, model.GetCoefficients(), Eigen::MatrixXd(29, 3)).Read(1);
  EXPECT_EQ(no_matrix.Approximate(x), model.Approximate(x));
  const auto names_sizes = [](const std::string& message) {
    return message.find("regression matrix of 29 x 3") != std::string::npos;
  };
  EXPECT_TRUE(names_sizes(support::MessageOf([&] { no_matrix.ApproximateLeaveOneOut(); })));
  EXPECT_TRUE(names_sizes(support::MessageOf([&] { no_matrix.ApproximateSupportPoints(); })));
  EXPECT_TRUE(names_sizes(
      support::MessageOf([&] { no_matrix.ApproximateCrossValidation(IndexVector::Zero(30)); })));
}

}  // namespace
}  // namespace corvath::math::metamodel
