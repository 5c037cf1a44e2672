#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"
#include "metamodel/thin_plate_splines.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/points.h"
#include "support/stand_in.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <tuple>

// The stored forms of all classes here, field by field, name by name, in every class version: a
// reader that throws at the first wrong name reads what these tables of fields write.

namespace corvath::math::metamodel {
namespace {

using support::StandIn;
using transform::TransBoxCox;
using transform::Transform;
using transform::TransformType;
using transform::TransLimits;
using transform::TransMinMax;
using Archive = portable_binary_oarchive;

// Classes of one archive.
struct Outer {};
struct Middle {};
struct Inner {};
struct Innermost {};

template <class Fields, std::size_t... I>
void PutAll(Archive& ar, const Fields& fields, std::index_sequence<I...>) {
  (support::Put(ar, std::get<2 * I>(fields), std::get<2 * I + 1>(fields)), ...);
}

/// An object of class version `Version` with these fields: name, value, name, value ...
template <class Tag, int Version, bool Tracked, class... Fields>
StandIn<Tag, Version, Tracked> Form(Fields... fields) {
  return {[all = std::make_tuple(fields...)](Archive& ar) {
    PutAll(ar, all, std::make_index_sequence<sizeof...(Fields) / 2>());
  }};
}

/// The bytes of a stored object of a class of its own.
template <int Version, class... Fields>
std::string Stored(const Fields&... fields) {
  return support::Save(Form<Outer, Version, true>(fields...));
}

Eigen::VectorXd One(double value) {
  return Eigen::VectorXd::Constant(1, value);
}

TEST(StoredForm, OfTransforms) {
  const Eigen::VectorXd data = support::UniformVector(9, 1);
  TransMinMax min_max(0.2, 5.0);
  min_max.Build(data);
  TransBoxCox box_cox(-4, 0.2, 5.0);
  box_cox.Build(data);
  const auto built = Form<Middle, 0, false>("need_build_", false);
  const auto open = Form<Middle, 0, false>("need_build_", true);
  const auto of_min_max = [&](auto tag) {
    return Form<decltype(tag), 0, true>("Transform", built, "min_scaled_", 0.2, "max_scaled_", 5.0,
                                        "scaling_", min_max.GetScaling(), "offset_forward_",
                                        min_max.GetOffsetForward(), "offset_backward_",
                                        min_max.GetOffsetBackward());
  };
  const auto check = [](const auto& expected, const std::string& bytes) {
    EXPECT_EQ(support::Save(expected), bytes);
    EXPECT_TRUE(support::Load<std::decay_t<decltype(expected)>>(bytes).Equals(expected));
  };
  check(min_max, support::Save(of_min_max(Outer())));
  check(box_cox,
        Stored<0>("Transform", built, "lambda_", -0.25, "lambda_inv_", std::int64_t{-4},
                  "min_scaled_", 0.2, "max_scaled_", 5.0, "trans_minmax_", of_min_max(Inner())));
  check(TransLimits(-1.0, 3.0),
        Stored<0>("Transform", open, "lower_limit_", -1.0, "upper_limit_", 3.0));
}

TEST(StoredForm, OfKernels) {
  // The stored helper terms serve as they are: 0.001 at half the radius of the parameter.
  const double log_weight = std::log(0.001);
  const auto base = Form<Innermost, 0, false>("parameters_", One(2.0));
  const auto constant = Form<Inner, 0, false>("KernelBase", base);
  const auto isotropic = Form<Middle, 0, false>("KernelConstInfl", constant);
  const auto exp = support::Load<KernelConstInflExp>(
      Stored<0>("KernelConstInfl", constant, "helper_term_", One(log_weight)));
  EXPECT_EQ(exp.GetParameters(), One(2.0));
  EXPECT_NEAR(exp.EvaluateVector(One(1.0)), 0.001, 1e-16);
  const auto iso_exp = support::Load<KernelConstInflIsoExp>(
      Stored<0>("KernelConstInflIso", isotropic, "helper_term_", log_weight));
  EXPECT_NEAR(iso_exp.EvaluateDistance(1.0), 0.001, 1e-16);
  const auto reg = support::Load<KernelConstInflIsoReg>(
      Stored<0>("KernelConstInflIso", isotropic, "epsilon_", 0.5, "m_", 3.0, "D_squared_", 9.0,
                "helper_term_", 0.125));
  EXPECT_NEAR(reg.EvaluateDistance(4.5), 1.0 - 0.125, 1e-15);
  const std::string nodal = Stored<0>("KernelNodalInfl", Form<Middle, 0, false>("KernelBase", base),
                                      "helper_term_", log_weight);
  EXPECT_NEAR(support::Load<KernelNodalInflExp>(nodal).EvaluateDistances(
                  Eigen::Vector3d(0.09, 0.36, 0.81))(1),
              0.001, 1e-16);
  EXPECT_EQ(support::Save(KernelNodalInflExp(One(2.0))), nodal);
}

/// The base of stored settings; no setter exists for `handle_failed`.
template <int Version>
StandIn<Inner, Version> SettingsBase(const SurrogateSettingsBase& settings,
                                     std::int32_t handle_failed = 0) {
  const auto number = [](auto value) { return static_cast<std::int32_t>(value); };
  return {[&settings, number, handle_failed](Archive& ar) {
    using support::Put;
    Put(ar, "ninputs_", settings.GetNumberInputs());
    Put(ar, "coord_transform_", number(settings.GetCoordTransform()));
    Put(ar, "coord_transform_parameter_", settings.GetCoordTransformParameter());
    Put(ar, "value_transform_", number(settings.GetValueTransform()));
    Put(ar, "value_transform_parameter_", settings.GetValueTransformParameter());
    Put(ar, "handle_failed_", handle_failed);
    Put(ar, "state_", number(settings.GetState()));
    if (Version >= 1) {
      Put(ar, "limit_transform_", number(settings.GetLimitTransform()));
      Put(ar, "limit_transform_parameter_", settings.GetLimitTransformParameter());
    }
    if (Version >= 2) Put(ar, "input_names_", settings.GetInputNames());
  }};
}

TEST(StoredForm, OfSettings) {
  LinearRegressionSettings terms(2);
  terms.SetOrder(2);
  terms.SetMainTermSelection({true, false, true, true});
  terms.SetCoordTransformParameter({-1.0, 1.0});
  terms.SetValueTransform(TransformType::kBoxCox);
  terms.SetValueTransformParameter({0.5, 0.1, 10.1});
  terms.SetState(SettingsState::kOptimized);
  const auto stored = [&](const auto& base) {
    return Stored<0>("SurrogateSettingsBase", base, "order_", std::uint64_t{2},
                     "main_term_selection_", BitVector{true, false, true, true},
                     "interaction_selection_", BitVector{true});
  };
  const auto check = [&](const std::string& bytes) {
    const auto read = support::Load<LinearRegressionSettings>(bytes);
    EXPECT_TRUE(read.Equals(terms));
    EXPECT_EQ(read.GetState(), SettingsState::kOptimized);
  };
  check(stored(SettingsBase<0>(terms)));
  terms.SetLimitTransform(TransformType::kLimits);
  terms.SetLimitTransformParameter({0.0, 1.0});
  check(stored(SettingsBase<1>(terms)));
  terms.SetInputNames({L"first", L"zweit\u00e4"});
  // What was read is written as it was, the unused number included.
  const std::string newest = stored(SettingsBase<2>(terms, 7));
  check(newest);
  EXPECT_EQ(support::Save(support::Load<LinearRegressionSettings>(newest)), newest);

  MovingLeastSquaresSettings local(2);
  local.SetOrder(0);
  local.SetVariableSelection({true, false});
  local.SetKernelType(KernelType::kNodalInflExp);
  local.SetKernelParameter(One(9.0));
  EXPECT_EQ(support::Save(local),
            Stored<0>("SurrogateSettingsBase", SettingsBase<2>(local), "order_", std::uint64_t{0},
                      "main_term_selection_", BitVector{true, false}, "kernel_type_", 201,
                      "kernel_parameter_", One(9.0)));
  OrdinaryKrigingSettings kriging(2);
  kriging.SetNugget(0.25);
  kriging.SetUseLikelihood(false);
  kriging.SetKernelType(KernelType::kConstInflExp);
  kriging.SetKernelParameter(Eigen::Vector2d(1.0, 2.0));
  EXPECT_EQ(
      support::Save(kriging),
      Stored<0>("SurrogateSettingsBase", SettingsBase<2>(kriging), "nugget_", 0.25,
                "use_likelihood_", false, "kernel_type_", 1, "kernel_parameter_",
                Eigen::VectorXd(Eigen::Vector2d(1.0, 2.0)), "selection_", BitVector{true, true}));
}

template <class Settings>
void UseTransforms(Settings& settings) {
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.5, 0.1, 10.1});
}

/// Built models with all that a surrogate can hold.
template <class Model, class Settings, class... Weights>
Model Full(const Settings& settings, const Weights&... weights) {
  Model model(3.0 * support::UniformPoints(30, 2, 1), support::UniformVector(30, 2), settings,
              weights...);
  EXPECT_TRUE(model.Build());
  EXPECT_TRUE(model.BuildErrors(IndexVector::LinSpaced(30, 0, 4)));
  model.SetSingleCoPs(Eigen::RowVector2d(0.7, 0.2));
  return model;
}

LinearRegression Regression() {
  LinearRegressionSettings settings(2);
  settings.SetOrder(2);
  settings.SetVariableSelection({true, false});
  UseTransforms(settings);
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({0.0, 1.0});
  return Full<LinearRegression>(settings,
                                Eigen::VectorXd(0.5 + support::UniformVector(30, 3).array()));
}

MovingLeastSquares LocalModel() {
  MovingLeastSquaresSettings settings(2);
  settings.SetOrder(2);
  settings.SetMainTermSelection({true, true, false, true});
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::Vector2d(0.9, 1.1));
  UseTransforms(settings);
  return Full<MovingLeastSquares>(settings);
}

OrdinaryKriging Kriging(bool anisotropic) {
  OrdinaryKrigingSettings settings(2);
  if (anisotropic) settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(anisotropic ? Eigen::VectorXd(Eigen::Vector2d(0.8, 2.0)) : One(1.2));
  settings.SetNugget(1e-3);
  return Full<OrdinaryKriging>(settings);
}

Eigen::MatrixXd Transformed(const SurrogateBase& model) {
  return model.GetTransCoord()->Forward(model.GetPoints());
}

/// Without the inputs that the model does not use.
Eigen::MatrixXd Reduced(const SurrogateBase& model) {
  const BitVector selection = model.GetVariableSelection();
  std::vector<Eigen::Index> used;
  for (std::size_t j = 0; j < selection.size(); ++j)
    if (selection[j]) used.push_back(static_cast<Eigen::Index>(j));
  return Transformed(model)(Eigen::all, used);
}

Eigen::VectorXd TransformedValues(const SurrogateBase& model) {
  if (!model.GetTransValue()) return model.GetValues();
  return model.GetTransValue()->Forward(model.GetValues());
}

/// The base part of a built model.
template <int Version>
StandIn<Middle, Version> Base(const SurrogateBase& model) {
  // The archive knows objects by their addresses: the copies live as long as the stand-in.
  std::vector<boost::shared_ptr<Transform>> copies;
  for (const Transform* trans :
       {model.GetTransCoord(), model.GetTransValue(), model.GetTransLimit()})
    copies.emplace_back(trans ? trans->Clone() : nullptr);
  return {[&model, copies](Archive& ar) {
    using support::Put;
    Put(ar, "points_", model.GetPoints());
    Put(ar, "values_", model.GetValues());
    if (Version >= 2) Put(ar, "points_trans_reduced_", Reduced(model));
    if (Version >= 2) Put(ar, "residuals_", model.GetResiduals());
    if (Version >= 3) Put(ar, "subsets_", model.GetSubsets());
    Put(ar, "need_build_", false);
    Put(ar, "trans_coord_", copies[0]);
    Put(ar, "trans_value_", copies[1]);
    if (Version >= 1) Put(ar, "weights_", model.GetWeights());
    if (Version >= 4) Put(ar, "trans_limit_", copies[2]);
    if (Version >= 5) Put(ar, "single_cops_", model.GetSingleCoPs());
    if (Version >= 6) Put(ar, "points_radii_mean_", model.GetPointsRadiiMean());
    if (Version >= 7) Put(ar, "weight_error_radius_", model.GetWeightErrorRadius());
  }};
}

Eigen::MatrixXd BasisOf(const LinearRegression& model) {
  return BuildRegressionMatrix(Transformed(model), model.GetSettingsBase().GetMainTermSelection(),
                               model.GetSettingsBase().GetInteractionSelection());
}
Eigen::MatrixXd BasisOf(const MovingLeastSquares& model) {
  return BuildRegressionMatrix(Transformed(model), model.GetSettingsBase().GetMainTermSelection(),
                               {});
}

template <int BaseVersion>
std::string Newest(const LinearRegression& model) {
  return Stored<1>("SurrogateBase", Base<BaseVersion>(model), "coefficients_",
                   model.GetCoefficients(), "coefficient_matrix_", BasisOf(model), "settings_",
                   model.GetSettingsBase());
}

TEST(StoredForm, OfTheNewestModels) {
  const auto check = [](const auto& model, const std::string& bytes) {
    EXPECT_EQ(support::Save(model), bytes);
    auto read = support::Load<std::decay_t<decltype(model)>>(bytes);
    EXPECT_TRUE(read.Equals(model));
    EXPECT_TRUE(read.Build());  // nothing to be done
    EXPECT_TRUE(read.Equals(model));
    const Eigen::MatrixXd x = support::UniformPoints(9, 2, 4);
    EXPECT_EQ(read.Approximate(x), model.Approximate(x));
    if (model.GetName(true) == L"Linear Regression") return;
    read.SetSupportData(Eigen::MatrixXd(0, 2), {});  // what else is stored suffices to predict
    EXPECT_EQ(read.Approximate(x), model.Approximate(x));
  };
  const LinearRegression regression = Regression();
  check(regression, Newest<7>(regression));
  const MovingLeastSquares local = LocalModel();
  check(local,
        Stored<3>("SurrogateBase", Base<7>(local), "values_trans_", TransformedValues(local),
                  "coefficient_matrix_", BasisOf(local), "settings_", local.GetSettingsBase()));
  for (const bool anisotropic : {false, true}) {
    const OrdinaryKriging kriging = Kriging(anisotropic);
    check(kriging,
          Stored<2>("SurrogateBase", Base<7>(kriging), "mean_", kriging.GetMean(), "sigma2_",
                    kriging.GetSigma2(), "kernel_weights_", kriging.GetKernelWeights(), "settings_",
                    kriging.GetSettingsBase(), "values_trans_", kriging.GetValues()));
  }
  SurrogateTPS splines(support::UniformPoints(12, 2, 1), support::UniformVector(12, 2));
  ASSERT_TRUE(splines.Build());
  check(splines, support::Save(splines));
}

/// What came with a later version than `Version` is as in a new model.
template <int Version>
void ExpectBaseOf(const LinearRegression& model) {
  const auto read = support::Load<LinearRegression>(Newest<Version>(model));
  const LinearRegression fresh;
  const auto expect = [&](int since, auto get) {
    EXPECT_EQ(get(read), get(Version >= since ? model : fresh)) << Version << ", " << since;
  };
  expect(0, [](auto& m) { return m.GetPoints(); });
  expect(0, [](auto& m) { return m.GetValues(); });
  expect(0, [](auto& m) { return m.GetTransCoord()->GetName(); });
  expect(1, [](auto& m) { return m.GetWeights(); });
  expect(2, [](auto& m) { return m.GetResiduals(); });
  expect(3, [](auto& m) { return m.GetSubsets(); });
  expect(4, [](auto& m) { return m.GetTransLimit() != nullptr; });
  expect(5, [](auto& m) { return m.GetSingleCoPs(); });
  expect(6, [](auto& m) { return m.GetPointsRadiiMean(); });
  expect(7, [](auto& m) { return m.GetWeightErrorRadius(); });
}

template <int... Versions>
void ExpectBasesOf(const LinearRegression& model, std::integer_sequence<int, Versions...>) {
  (ExpectBaseOf<Versions>(model), ...);
}

TEST(StoredForm, OfEveryVersionOfTheBase) {
  const LinearRegression model = Regression();
  ExpectBasesOf(model, std::make_integer_sequence<int, 8>());
  // Radii that an old file lacks come with the next errors.
  auto old = support::Load<LinearRegression>(Newest<4>(model));
  const Eigen::MatrixXd x = 3.0 * support::UniformPoints(9, 2, 4);
  EXPECT_EQ(old.Approximate(x), model.Approximate(x));
  ASSERT_TRUE(old.BuildErrors());
  EXPECT_EQ(old.ApproximateErrors(x), model.ApproximateErrors(x));
}

std::string Regression0(const LinearRegression& model, std::uint64_t order) {
  const LinearRegressionSettings& settings = model.GetSettingsBase();
  return Stored<0>("SurrogateBase", Base<0>(model), "coefficients_", model.GetCoefficients(),
                   "coefficient_matrix_", BasisOf(model), "order_", order, "main_term_selection_",
                   settings.GetMainTermSelection(), "interaction_selection_",
                   settings.GetInteractionSelection(), "weights_", model.GetWeights());
}

TEST(StoredForm, OfTheFirstRegressionRebuildsItsSettings) {
  LinearRegression model = Regression();
  const auto read = support::Load<LinearRegression>(Regression0(model, 2));
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
  for (const std::uint64_t order : {std::uint64_t{3}, std::uint64_t{1} << 63}) {
    const std::string bytes = Regression0(model, order);
    EXPECT_EQ(support::MessageOf([&] { support::Load<LinearRegression>(bytes); }),
              "size of main term selection vector is not consistent to regression order");
  }
}

std::string Local0(const MovingLeastSquares& model, std::uint64_t order, const BitVector& main,
                   const boost::shared_ptr<KernelBase>& kernel) {
  KernelBase* const weight = kernel.get();
  return Stored<0>("SurrogateBase", Base<0>(model), "weight_", weight, "coefficient_matrix_",
                   BasisOf(model), "order_", order, "main_term_selection_", main);
}

TEST(StoredForm, OfOlderMovingLeastSquares) {
  MovingLeastSquares model = LocalModel();
  model.Initialize(model.GetSettingsBase());  // without errors, as base version 1 has none
  model.SetSingleCoPs({});
  ASSERT_TRUE(model.Build());
  const MovingLeastSquaresSettings& settings = model.GetSettingsBase();
  const Eigen::MatrixXd x = 3.0 * support::UniformPoints(9, 2, 4);
  const auto check = [&](const std::string& bytes) {
    const auto read = support::Load<MovingLeastSquares>(bytes);
    EXPECT_TRUE(read.GetSettingsBase().Equals(settings));
    EXPECT_EQ(read.Approximate(x), model.Approximate(x));
    EXPECT_EQ(read.ApproximateLeaveOneOut(), model.ApproximateLeaveOneOut());
  };
  check(Stored<2>("SurrogateBase", Base<1>(model), "points_trans_reduced_", Reduced(model),
                  "values_trans_", TransformedValues(model), "coefficient_matrix_", BasisOf(model),
                  "settings_", settings));
  check(Stored<1>("SurrogateBase", Base<1>(model), "coefficient_matrix_", BasisOf(model),
                  "settings_", settings));
  const BitVector main = settings.GetMainTermSelection();
  const auto kernel = MakeKernel(KernelType::kConstInflExp, settings.GetKernelParameter());
  check(Local0(model, 2, main, kernel));
  const auto nodal = support::Load<MovingLeastSquares>(
      Local0(model, 2, main, MakeKernel(KernelType::kNodalInflExp, One(9.0))));
  EXPECT_EQ(nodal.GetSettingsBase().GetKernelType(), KernelType::kNodalInflExp);
  EXPECT_EQ(nodal.GetSettingsBase().GetKernelParameter()(0), 9.0);
  EXPECT_TRUE(nodal.Approximate(x).allFinite());

  const auto refusal = [&](std::uint64_t order) {
    const std::string bytes = Local0(model, order, main, kernel);
    return support::MessageOf([&] { support::Load<MovingLeastSquares>(bytes); });
  };
  EXPECT_EQ(refusal(std::uint64_t{1} << 62), "can not set mls order >2");
  EXPECT_EQ(refusal(1), "size of selection vector is not consistent to order");
}

/// The form before the present one.
std::string Kriging1(const OrdinaryKriging& model, const Eigen::VectorXd& weights,
                     const OrdinaryKrigingSettings& settings, const Eigen::MatrixXd& points) {
  return Stored<1>("SurrogateBase", Base<1>(model), "mean_", model.GetMean(), "sigma2_",
                   model.GetSigma2(), "kernel_weights_", weights, "settings_", settings,
                   "points_trans_reduced_", points, "values_trans_", model.GetValues());
}

TEST(StoredForm, OfOlderKriging) {
  for (const bool anisotropic : {false, true}) {
    const OrdinaryKriging model = Kriging(anisotropic);
    const OrdinaryKrigingSettings& settings = model.GetSettingsBase();
    const Eigen::MatrixXd x = 3.0 * support::UniformPoints(9, 2, 4);
    const auto read1 = support::Load<OrdinaryKriging>(
        Kriging1(model, model.GetKernelWeights(), settings, Transformed(model)));
    EXPECT_EQ(read1.Approximate(x), model.Approximate(x));
    EXPECT_EQ(read1.ApproximateLeaveOneOut(), model.ApproximateLeaveOneOut());

    const auto kernel = MakeKernel(settings.GetKernelType(), settings.GetKernelParameter());
    KernelBase* const kernel_ = kernel.get();
    auto read0 = support::Load<OrdinaryKriging>(Stored<0>(
        "SurrogateBase", Base<0>(model), "kernel_", kernel_, "mean_", model.GetMean(), "sigma2_",
        model.GetSigma2(), "nugget_", 1e-3, "kernel_weights_", model.GetKernelWeights()));
    EXPECT_TRUE(read0.GetSettingsBase().Equals(settings));
    EXPECT_EQ(read0.Approximate(x), model.Approximate(x));
    EXPECT_THROW(read0.ApproximateLeaveOneOut(), std::logic_error);
    EXPECT_TRUE(read0.Build());
    EXPECT_EQ(read0.GetKernelWeights(), model.GetKernelWeights());
    EXPECT_EQ(read0.ApproximateLeaveOneOut(), model.ApproximateLeaveOneOut());
  }
}

TEST(StoredForm, ThatContradictsItselfIsRefusedAtUse) {
  const Eigen::MatrixXd x = Eigen::MatrixXd::Zero(1, 2);
  const auto refusal = [&](const auto* type, const std::string& bytes) {
    const auto read =
        support::Load<std::remove_const_t<std::remove_pointer_t<decltype(type)>>>(bytes);
    return support::MessageOf([&] { read.Approximate(x); });
  };
  const LinearRegression terms = Regression();
  const auto regression = [&](const Eigen::VectorXd& coefficients, const Eigen::MatrixXd& matrix) {
    return Stored<1>("SurrogateBase", Base<5>(terms), "coefficients_", coefficients,
                     "coefficient_matrix_", matrix, "settings_", terms.GetSettingsBase());
  };
  EXPECT_EQ(refusal(&terms, regression(Eigen::VectorXd(7), {})),
            "Linear Regression: 7 coefficients for 3 terms");
  const auto no_matrix =
      support::Load<LinearRegression>(regression(terms.GetCoefficients(), Eigen::MatrixXd(29, 3)));
  EXPECT_EQ(no_matrix.Approximate(x), terms.Approximate(x));
  const std::function<void()> uses[] = {
      [&] { no_matrix.ApproximateLeaveOneOut(); }, [&] { no_matrix.ApproximateSupportPoints(); },
      [&] { no_matrix.ApproximateCrossValidation(IndexVector::Zero(30)); }};
  for (const auto& use : uses)
    EXPECT_NE(support::MessageOf(use).find("regression matrix of 29 x 3"), std::string::npos);

  const MovingLeastSquares local = LocalModel();
  const auto moving = [&](Eigen::Index num_values, Eigen::Index num_terms) {
    return Stored<3>("SurrogateBase", Base<7>(local), "values_trans_", Eigen::VectorXd(num_values),
                     "coefficient_matrix_", Eigen::MatrixXd(30, num_terms), "settings_",
                     local.GetSettingsBase());
  };
  const std::string sizes = " for 2 selected inputs and 4 terms";
  EXPECT_EQ(
      refusal(&local, moving(29, 4)),
      "Moving Least Squares: 29 values, support points of 30 x 2 and a basis of 30 x 4" + sizes);
  EXPECT_EQ(
      refusal(&local, moving(30, 3)),
      "Moving Least Squares: 30 values, support points of 30 x 2 and a basis of 30 x 3" + sizes);

  const OrdinaryKriging model = Kriging(false);
  const Eigen::VectorXd weights = model.GetKernelWeights();
  OrdinaryKrigingSettings settings = model.GetSettingsBase();
  const auto kriging = [&](const Eigen::VectorXd& w, const Eigen::MatrixXd& points) {
    return refusal(&model, Kriging1(model, w, settings, points));
  };
  EXPECT_EQ(kriging(weights, Transformed(model)), "");
  EXPECT_EQ(kriging(weights.head(7), Transformed(model)), "can not approximate - build first");
  EXPECT_EQ(kriging(weights, Transformed(model).leftCols(1)),
            "Kriging: support points of 1 inputs and 1 kernel parameters for 2 selected inputs");
  settings.SetKernelParameter(One(-1.0));
  EXPECT_NE(kriging(weights, Transformed(model)), "");
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::Vector3d(1, 1, 1));
  EXPECT_EQ(kriging(weights, Transformed(model)),
            "Kriging: support points of 2 inputs and 3 kernel parameters for 2 selected inputs");
  settings.SetKernelType(KernelType(7));
  settings.SetKernelParameter(One(1.0));
  EXPECT_EQ(kriging(weights, Transformed(model)), "Unknown kernel type.");
}

template <class Pointer>
void ExpectKey(const Pointer& pointer, const std::string& key) {
  // A key stands behind its length, a 16-bit number.
  const std::string stored = std::string{static_cast<char>(key.size()), '\0'} + key;
  EXPECT_NE(support::Save(pointer).find(stored), std::string::npos) << key;
}

TEST(StoredForm, OfPointersHoldsTheExportKeys) {
  const char* const transforms[] = {"TransMinMax", "TransBoxCox", "TransLimits"};
  for (int type = 1; type <= 3; ++type)
    ExpectKey(MakeTransform(static_cast<TransformType>(type), {}),
              std::string("corvath::math::transform::") + transforms[type - 1]);
  const std::string room = "corvath::math::metamodel::";
  const std::pair<int, const char*> kernels[] = {{1, "KernelConstInflExp"},
                                                 {101, "KernelConstInflIsoExp"},
                                                 {102, "KernelConstInflIsoReg"},
                                                 {201, "KernelNodalInflExp"}};
  for (const auto& [type, name] : kernels)
    ExpectKey(MakeKernel(static_cast<KernelType>(type), One(1.0)), room + name);
  using SettingsPointer = boost::shared_ptr<SurrogateSettingsBase>;
  ExpectKey(SettingsPointer(new LinearRegressionSettings(1)),
            "::" + room + "LinearRegressionSettings");
  ExpectKey(SettingsPointer(new MovingLeastSquaresSettings(1)),
            "::" + room + "MovingLeastSquaresSettings");
  ExpectKey(SettingsPointer(new OrdinaryKrigingSettings(1)),
            "::" + room + "OrdinaryKrigingSettings");
  using ModelPointer = boost::shared_ptr<SurrogateBase>;
  const std::pair<ModelPointer, const char*> models[] = {
      {ModelPointer(Regression().Clone()), "LinearRegression"},
      {ModelPointer(LocalModel().Clone()), "MovingLeastSquares"},
      {ModelPointer(Kriging(false).Clone()), "OrdinaryKriging"},
      {boost::make_shared<SurrogateTPS>(), "SurrogateTPS"}};
  for (const auto& [model, name] : models) {
    ExpectKey(model, room + name);
    EXPECT_TRUE(support::Load<ModelPointer>(support::Save(model))->Equals(*model));
  }
}

}  // namespace
}  // namespace corvath::math::metamodel
