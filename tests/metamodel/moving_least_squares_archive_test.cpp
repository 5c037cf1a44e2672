#include "metamodel/factories.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/polynomial_basis.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/points.h"
#include "support/stand_in.h"
#include "support/surrogate_stand_in.h"

#include <gtest/gtest.h>

/// The stored forms of moving least squares models, name by name.
namespace corvath::math::metamodel {
namespace {

using support::Put;
using support::StandIn;
using transform::TransformType;
using Archive = portable_binary_oarchive;

struct Outer;
struct SettingsTag;

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

StandIn<SettingsTag, 0, true> StoredSettingsOf(const support::SettingsFields& base,
                                               const MovingLeastSquaresSettings& settings) {
  return {[&](Archive& ar) {
    Put(ar, "SurrogateSettingsBase", support::StoredSettings<2>(base));
    Put(ar, "order_", settings.GetOrder());
    Put(ar, "main_term_selection_", settings.GetMainTermSelection());
    Put(ar, "kernel_type_", static_cast<std::int32_t>(settings.GetKernelType()));
    Put(ar, "kernel_parameter_", settings.GetKernelParameter());
  }};
}

/// The model as version `Version` with base version `BaseVersion` stored it.
template <int Version, int BaseVersion>
std::string Stored(const MovingLeastSquares& model) {
  const MovingLeastSquaresSettings& settings = model.GetSettingsBase();
  const support::SettingsFields base{settings, 0, settings.GetState()};
  return support::Save(StandIn<Outer, Version, true>{[&](Archive& ar) {
    Put(ar, "SurrogateBase", support::StoredSurrogate<BaseVersion>(model));
    if (Version == 2) Put(ar, "points_trans_reduced_", support::TransformedAndReduced(model));
    if (Version >= 2)
      Put(ar, "values_trans_", Eigen::VectorXd(model.GetTransValue()->Forward(model.GetValues())));
    Put(ar, "coefficient_matrix_", BasisOf(model));
    Put(ar, "settings_", StoredSettingsOf(base, settings));
  }});
}

TEST(StoredMovingLeastSquares, ReadsEveryVersion) {
  const MovingLeastSquares model = Model();
  const std::string newest = Stored<3, 7>(model);
  EXPECT_EQ(support::Save(model), newest);
  EXPECT_TRUE(support::Load<MovingLeastSquares>(newest).Equals(model));
  // Old forms lack the radii of errors at most, and predict the same.
  EXPECT_TRUE(support::Load<MovingLeastSquares>(Stored<2, 1>(model)).Equals(model));
  EXPECT_TRUE(support::Load<MovingLeastSquares>(Stored<1, 1>(model)).Equals(model));
}

template <class Kernel>
std::string StoredVersion0(const MovingLeastSquares& model, std::uint64_t order,
                           const BitVector& main, const boost::shared_ptr<Kernel>& kernel) {
  return support::Save(StandIn<Outer, 0, true>{[&](Archive& ar) {
    Put(ar, "SurrogateBase", support::StoredSurrogate<0>(model));
    KernelBase* const weight = kernel.get();
    Put(ar, "weight_", weight);
    Put(ar, "coefficient_matrix_", BasisOf(model));
    Put(ar, "order_", order);
    Put(ar, "main_term_selection_", main);
  }});
}

TEST(StoredMovingLeastSquares, RebuildsSettingsOfTheFirstVersion) {
  const MovingLeastSquares model = Model();
  const BitVector main = model.GetSettingsBase().GetMainTermSelection();
  const auto kernel =
      MakeKernel(KernelType::kConstInflExp, model.GetSettingsBase().GetKernelParameter());
  const auto read = support::Load<MovingLeastSquares>(StoredVersion0(model, 2, main, kernel));
  EXPECT_TRUE(read.GetSettingsBase().Equals(model.GetSettingsBase()));
  EXPECT_TRUE(read.Equals(model));

  const auto nodal = MakeKernel(KernelType::kNodalInflExp, Eigen::VectorXd::Constant(1, 9.0));
  const auto with_nodal = support::Load<MovingLeastSquares>(StoredVersion0(model, 2, main, nodal));
  EXPECT_EQ(with_nodal.GetSettingsBase().GetKernelType(), KernelType::kNodalInflExp);
  EXPECT_EQ(with_nodal.GetSettingsBase().GetKernelParameter()(0), 9.0);
  EXPECT_TRUE(std::isfinite(with_nodal.Approximate(model.GetPoints().topRows(1))(0)));

  const auto refusal = [&](std::uint64_t order, const BitVector& bits) {
    MovingLeastSquares victim;
    const std::string bytes = StoredVersion0(model, order, bits, kernel);
    return support::MessageOf([&] { support::LoadInto(bytes, victim); });
  };
  EXPECT_EQ(refusal(std::uint64_t{1} << 62, main), "can not set mls order >2");
  EXPECT_EQ(refusal(1, main), "size of selection vector is not consistent to order");
}

TEST(StoredMovingLeastSquares, KnowsItsExportKeys) {
  const auto expect_key = [](const auto& pointer, const std::string& key) {
    const std::string stored = std::string{static_cast<char>(key.size()), '\0'} + key;
    EXPECT_NE(support::Save(pointer).find(stored), std::string::npos) << key;
  };
  const boost::shared_ptr<SurrogateBase> model(Model().Clone());
  expect_key(model, "corvath::math::metamodel::MovingLeastSquares");
  expect_key(boost::shared_ptr<SurrogateSettingsBase>(new MovingLeastSquaresSettings(1)),
             "::corvath::math::metamodel::MovingLeastSquaresSettings");
  const auto read = support::Load<boost::shared_ptr<SurrogateBase>>(support::Save(model));
  EXPECT_TRUE(read->Equals(*model));
}

TEST(StoredMovingLeastSquares, ThatContradictsItselfIsRefusedAtUse) {
  const MovingLeastSquares model = Model();
  const support::SettingsFields base{model.GetSettingsBase(), 0, SettingsState::kFresh};
  const auto load = [&](const Eigen::VectorXd& values, const Eigen::MatrixXd& basis) {
    return support::Load<MovingLeastSquares>(
        support::Save(StandIn<Outer, 3, true>{[&](Archive& ar) {
          Put(ar, "SurrogateBase", support::StoredSurrogate<7>(model));
          Put(ar, "values_trans_", values);
          Put(ar, "coefficient_matrix_", basis);
          Put(ar, "settings_", StoredSettingsOf(base, model.GetSettingsBase()));
        }}));
  };
  const auto refusal = [&](const MovingLeastSquares& read) {
    return support::MessageOf([&] { read.Approximate(Eigen::MatrixXd::Zero(1, 2)); });
  };
  EXPECT_EQ(refusal(load(Eigen::VectorXd(39), BasisOf(model))),
            "Moving Least Squares: 39 values, support points of 40 x 2 and a basis of 40 x 4 for "
            "2 selected inputs and 4 terms");
  EXPECT_EQ(refusal(load(Eigen::VectorXd(40), Eigen::MatrixXd(40, 3))),
            "Moving Least Squares: 40 values, support points of 40 x 2 and a basis of 40 x 3 for "
            "2 selected inputs and 4 terms");
}

}  // namespace
}  // namespace corvath::math::metamodel
