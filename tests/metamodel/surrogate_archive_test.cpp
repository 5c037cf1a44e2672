#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/points.h"
#include "support/stand_in.h"
#include "support/surrogate_stand_in.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

/// The stored forms of transforms, kernels, settings and regressions, field by field, name by name:
/// a reader that throws at the first wrong name reads what the stand-ins write.
namespace corvath::math::metamodel {
namespace {

using support::Put;
using support::StandIn;
using transform::TransBoxCox;
using transform::Transform;
using transform::TransformType;
using transform::TransLimits;
using transform::TransMinMax;
using Archive = portable_binary_oarchive;

struct Outer;
struct Base;
struct Middle;
struct Inner;

TEST(StoredForm, OfTransforms) {
  const Eigen::VectorXd data = support::UniformVector(9, 1);
  TransMinMax min_max(0.2, 5.0);
  min_max.Build(data);
  const auto base = [](bool need_build) {
    return StandIn<Base, 0>{[=](Archive& ar) { Put(ar, "need_build_", need_build); }};
  };
  const auto put_min_max = [&](Archive& ar) {
    Put(ar, "Transform", base(false));
    Put(ar, "min_scaled_", 0.2);
    Put(ar, "max_scaled_", 5.0);
    Put(ar, "scaling_", min_max.GetScaling());
    Put(ar, "offset_forward_", min_max.GetOffsetForward());
    Put(ar, "offset_backward_", min_max.GetOffsetBackward());
  };
  const StandIn<Outer, 0, true> stored_min_max{put_min_max};
  EXPECT_TRUE(support::Load<TransMinMax>(support::Save(stored_min_max)).Equals(min_max));

  TransBoxCox box_cox(-4, 0.2, 5.0);
  box_cox.Build(data);
  const StandIn<Outer, 0, true> stored_box_cox{[&](Archive& ar) {
    Put(ar, "Transform", base(false));
    Put(ar, "lambda_", -0.25);
    Put(ar, "lambda_inv_", std::int64_t{-4});
    Put(ar, "min_scaled_", 0.2);
    Put(ar, "max_scaled_", 5.0);
    Put(ar, "trans_minmax_", StandIn<Inner, 0, true>{put_min_max});
  }};
  EXPECT_TRUE(support::Load<TransBoxCox>(support::Save(stored_box_cox)).Equals(box_cox));

  const StandIn<Outer, 0, true> stored_limits{[&](Archive& ar) {
    Put(ar, "Transform", base(true));
    Put(ar, "lower_limit_", -1.0);
    Put(ar, "upper_limit_", 3.0);
  }};
  EXPECT_TRUE(
      support::Load<TransLimits>(support::Save(stored_limits)).Equals(TransLimits(-1.0, 3.0)));
  // The same bytes are written.
  EXPECT_EQ(support::Save(min_max), support::Save(stored_min_max));
  EXPECT_EQ(support::Save(box_cox), support::Save(stored_box_cox));
  EXPECT_EQ(support::Save(TransLimits(-1.0, 3.0)), support::Save(stored_limits));
}

TEST(StoredForm, OfKernels) {
  const Eigen::VectorXd parameters = Eigen::VectorXd::Constant(1, 2.0);
  const double log_weight = std::log(0.001);
  const StandIn<Base, 0> base{[&](Archive& ar) { Put(ar, "parameters_", parameters); }};
  const StandIn<Middle, 0> constant{[&](Archive& ar) { Put(ar, "KernelBase", base); }};
  const StandIn<Inner, 0> isotropic{[&](Archive& ar) { Put(ar, "KernelConstInfl", constant); }};
  const auto weight = [](const KernelBase& kernel) {
    Eigen::VectorXd weights(3);
    kernel.Weights(weights, Eigen::VectorXd::Zero(1), Eigen::Vector3d(0.3, 0.6, 0.9));
    return weights;
  };
  // The stored helper terms serve as they are: 0.001 at half the radius of the parameter.
  const StandIn<Outer, 0, true> exp{[&](Archive& ar) {
    Put(ar, "KernelConstInfl", constant);
    Put(ar, "helper_term_", Eigen::VectorXd(Eigen::VectorXd::Constant(1, log_weight)));
  }};
  KernelConstInflExp read_exp;
  support::LoadInto(support::Save(exp), read_exp);
  EXPECT_EQ(read_exp.GetParameters(), parameters);
  EXPECT_NEAR(read_exp.EvaluateVector(Eigen::VectorXd::Ones(1)), 0.001, 1e-16);

  const StandIn<Outer, 0, true> iso_exp{[&](Archive& ar) {
    Put(ar, "KernelConstInflIso", isotropic);
    Put(ar, "helper_term_", log_weight);
  }};
  KernelConstInflIsoExp read_iso_exp;
  support::LoadInto(support::Save(iso_exp), read_iso_exp);
  EXPECT_NEAR(read_iso_exp.EvaluateDistance(1.0), 0.001, 1e-16);

  const StandIn<Outer, 0, true> reg{[&](Archive& ar) {
    Put(ar, "KernelConstInflIso", isotropic);
    Put(ar, "epsilon_", 0.5);
    Put(ar, "m_", 3.0);
    Put(ar, "D_squared_", 9.0);
    Put(ar, "helper_term_", 0.125);
  }};
  KernelConstInflIsoReg read_reg;
  support::LoadInto(support::Save(reg), read_reg);
  EXPECT_NEAR(read_reg.EvaluateDistance(4.5), 1.0 - 0.125, 1e-15);

  const StandIn<Middle, 0> nodal_base{[&](Archive& ar) { Put(ar, "KernelBase", base); }};
  const StandIn<Outer, 0, true> nodal{[&](Archive& ar) {
    Put(ar, "KernelNodalInfl", nodal_base);
    Put(ar, "helper_term_", log_weight);
  }};
  KernelNodalInflExp read_nodal;
  support::LoadInto(support::Save(nodal), read_nodal);
  EXPECT_NEAR(weight(read_nodal)(1), 0.001, 1e-16);
  EXPECT_EQ(support::Save(KernelNodalInflExp(parameters)), support::Save(nodal));
}

TEST(StoredForm, OfSettingsInEveryVersion) {
  LinearRegressionSettings expected(2);
  expected.SetOrder(2);
  expected.SetMainTermSelection({true, false, true, true});
  expected.SetCoordTransformParameter({-1.0, 1.0});
  expected.SetValueTransform(TransformType::kBoxCox);
  expected.SetValueTransformParameter({0.5, 0.1, 10.1});
  const auto stored = [&](auto base) {
    return support::Save(StandIn<Outer, 0, true>{[=](Archive& ar) {
      Put(ar, "SurrogateSettingsBase", base);
      Put(ar, "order_", std::uint64_t{2});
      Put(ar, "main_term_selection_", BitVector{true, false, true, true});
      Put(ar, "interaction_selection_", BitVector{true});
    }});
  };
  const support::SettingsFields fields{expected, 7, SettingsState::kOptimized};
  const auto check = [&](const std::string& bytes) {
    const auto read = support::Load<LinearRegressionSettings>(bytes);
    EXPECT_TRUE(read.Equals(expected));
    EXPECT_EQ(read.GetState(), SettingsState::kOptimized);
  };
  check(stored(support::StoredSettings<0>(fields)));
  expected.SetLimitTransform(TransformType::kLimits);
  expected.SetLimitTransformParameter({0.0, 1.0});
  check(stored(support::StoredSettings<1>(fields)));
  expected.SetInputNames({L"first", L"zweit\u00e4"});
  const std::string newest = stored(support::StoredSettings<2>(fields));
  check(newest);
  // What was read is written as it was, the unused number included.
  EXPECT_EQ(support::Save(support::Load<LinearRegressionSettings>(newest)), newest);
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

template <int BaseVersion>
LinearRegression ReadWithBase(const LinearRegression& model) {
  const StandIn<Outer, 1, true> stored{[&](Archive& ar) {
    Put(ar, "SurrogateBase", support::StoredSurrogate<BaseVersion>(model));
    Put(ar, "coefficients_", model.GetCoefficients());
    Put(ar, "coefficient_matrix_", support::RegressionMatrixOf(model));
    Put(ar, "settings_", model.GetSettingsBase());
  }};
  const std::string bytes = support::Save(stored);
  if (BaseVersion == 7) {
    EXPECT_EQ(bytes, support::Save(model));
  }
  return support::Load<LinearRegression>(bytes);
}

TEST(StoredForm, OfRegressionsWithEveryVersionOfTheBase) {
  const LinearRegression model = FullModel();
  const Eigen::MatrixXd x = 3.0 * support::UniformPoints(9, 2, 4);
  const Eigen::VectorXd predicted = model.Approximate(x);
  EXPECT_TRUE(ReadWithBase<7>(model).Equals(model));

  const LinearRegression v6 = ReadWithBase<6>(model);
  EXPECT_EQ(v6.GetWeightErrorRadius(), 0.0);
  EXPECT_EQ(v6.GetPointsRadiiMean(), model.GetPointsRadiiMean());
  const LinearRegression v5 = ReadWithBase<5>(model);
  EXPECT_EQ(v5.GetPointsRadiiMean(), 0.0);
  EXPECT_EQ(v5.GetSingleCoPs(), model.GetSingleCoPs());
  const LinearRegression v4 = ReadWithBase<4>(model);
  EXPECT_EQ(v4.GetSingleCoPs().size(), 0);
  EXPECT_EQ(v4.Approximate(x), predicted);
  const LinearRegression v3 = ReadWithBase<3>(model);
  EXPECT_EQ(v3.GetTransLimit(), nullptr);
  EXPECT_EQ(v3.GetSubsets(), model.GetSubsets());
  EXPECT_EQ(v3.GetResiduals(), model.GetResiduals());
  const LinearRegression v2 = ReadWithBase<2>(model);
  EXPECT_EQ(v2.GetSubsets().size(), 0);
  EXPECT_EQ(v2.GetResiduals(), model.GetResiduals());
  LinearRegression v1 = ReadWithBase<1>(model);
  EXPECT_EQ(v1.GetResiduals().size(), 0);
  EXPECT_EQ(v1.GetWeights(), model.GetWeights());
  const LinearRegression v0 = ReadWithBase<0>(model);
  EXPECT_EQ(v0.GetWeights().size(), 0);
  EXPECT_EQ(v0.GetPoints(), model.GetPoints());
  EXPECT_EQ(v0.GetTransCoord()->GetName(), model.GetTransCoord()->GetName());

  // Radii that an old file lacks come with the next errors.
  LinearRegression completed = v4;
  ASSERT_TRUE(completed.BuildErrors());
  EXPECT_EQ(completed.GetResiduals(), model.GetResiduals());
  EXPECT_EQ(completed.GetPointsRadiiMean(), model.GetPointsRadiiMean());
  EXPECT_EQ(completed.GetWeightErrorRadius(), model.GetWeightErrorRadius());
}

std::string StoredRegression0(const LinearRegression& model, std::uint64_t order,
                              const BitVector& main, const BitVector& interactions) {
  return support::Save(StandIn<Outer, 0, true>{[&](Archive& ar) {
    Put(ar, "SurrogateBase", support::StoredSurrogate<0>(model));
    Put(ar, "coefficients_", model.GetCoefficients());
    Put(ar, "coefficient_matrix_", support::RegressionMatrixOf(model));
    Put(ar, "order_", order);
    Put(ar, "main_term_selection_", main);
    Put(ar, "interaction_selection_", interactions);
    Put(ar, "weights_", model.GetWeights());
  }});
}

TEST(StoredForm, OfTheFirstRegressionRebuildsItsSettings) {
  LinearRegression model = FullModel();
  const BitVector main = model.GetSettingsBase().GetMainTermSelection();
  const BitVector interactions = model.GetSettingsBase().GetInteractionSelection();
  const auto read =
      support::Load<LinearRegression>(StoredRegression0(model, 2, main, interactions));
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
    LinearRegression victim;
    EXPECT_EQ(support::MessageOf([&] {
                support::LoadInto(StoredRegression0(FullModel(), order, main, interactions),
                                  victim);
              }),
              "size of main term selection vector is not consistent to regression order");
  }
}

TEST(StoredForm, OfPointersHoldsTheExportKeys) {
  const Eigen::VectorXd one = Eigen::VectorXd::Ones(1);
  const auto expect_key = [](const auto& pointer, const std::string& key) {
    // A key stands behind its length, a 16-bit number.
    const std::string stored = std::string{static_cast<char>(key.size()), '\0'} + key;
    EXPECT_NE(support::Save(pointer).find(stored), std::string::npos) << key;
  };
  const char* const transforms[] = {"TransMinMax", "TransBoxCox", "TransLimits"};
  for (int type = 1; type <= 3; ++type)
    expect_key(MakeTransform(static_cast<TransformType>(type), {}),
               std::string("corvath::math::transform::") + transforms[type - 1]);
  const std::pair<KernelType, const char*> kernels[] = {
      {KernelType::kConstInflExp, "KernelConstInflExp"},
      {KernelType::kConstInflIsoExp, "KernelConstInflIsoExp"},
      {KernelType::kConstInflIsoReg, "KernelConstInflIsoReg"},
      {KernelType::kNodalInflExp, "KernelNodalInflExp"}};
  for (const auto& [type, name] : kernels)
    expect_key(MakeKernel(type, one), std::string("corvath::math::metamodel::") + name);
  expect_key(boost::shared_ptr<SurrogateSettingsBase>(new LinearRegressionSettings(1)),
             "::corvath::math::metamodel::LinearRegressionSettings");

  const boost::shared_ptr<SurrogateBase> model(FullModel().Clone());
  expect_key(model, "corvath::math::metamodel::LinearRegression");
  const auto read = support::Load<boost::shared_ptr<SurrogateBase>>(support::Save(model));
  EXPECT_TRUE(read->Equals(*model));
}

TEST(StoredForm, ThatContradictsItselfIsRefusedAtUse) {
  const LinearRegression model = FullModel();
  const auto load = [&](const Eigen::VectorXd& coefficients, const Eigen::MatrixXd& matrix) {
    return support::Load<LinearRegression>(support::Save(StandIn<Outer, 1, true>{[&](Archive& ar) {
      Put(ar, "SurrogateBase", support::StoredSurrogate<5>(model));
      Put(ar, "coefficients_", coefficients);
      Put(ar, "coefficient_matrix_", matrix);
      Put(ar, "settings_", model.GetSettingsBase());
    }}));
  };
  const Eigen::MatrixXd x = Eigen::MatrixXd::Zero(1, 2);
  EXPECT_EQ(support::MessageOf([&] { load(Eigen::VectorXd(7), {}).Approximate(x); }),
            "Linear Regression: 7 coefficients for 3 terms");
  LinearRegression no_matrix = load(model.GetCoefficients(), Eigen::MatrixXd(29, 3));
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
