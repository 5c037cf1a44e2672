#include "metamodel/families.h"
#include "support/archive_round_trip.h"

// What transforms, kernels and models of every family refuse, and what they say then.

namespace corvath::math::metamodel {
namespace {

using support::ExpectRefusals;
using transform::TransBoxCox, transform::Transform, transform::TransformType,
    transform::TransLimits, transform::TransMinMax;
using Runtime = utils::runtime_error;
using Logic = std::logic_error;

const Eigen::MatrixXd kPoints = support::UniformPoints(20, 2, 1);
const Eigen::VectorXd kValues = support::UniformVector(20, 2);
const IndexVector kFewGroups = IndexVector::Zero(3);
const Eigen::MatrixXd kWide = Eigen::MatrixXd::Zero(1, 3);

TEST(Refusals, OfTransforms) {
  const Eigen::VectorXd one = Eigen::VectorXd::Ones(1);
  const Eigen::VectorXd two = Eigen::Vector2d(1.0, 2.0);
  const Eigen::MatrixXd square = Eigen::MatrixXd::Ones(2, 2);
  TransMinMax min_max;
  TransBoxCox box_cox;
  TransLimits limits(2.0, 2.0);
  TransBoxCox negative(1, 0.0, 1.0);
  ExpectRefusals<std::runtime_error>({
      {[&] { min_max.Build(one); }, "At least two points are required."},
      {[&] { min_max.Build(Eigen::MatrixXd(3, 0)); }, "At least two points are required."},
      {[&] { negative.Build(two); }, "scaling should be larger than zero."},
      {[&] { box_cox.Build(one); }, "At least two values are required."},
      {[&] { box_cox.Build(square); }, "works only for response vector."},
      {[&] { limits.Build(two); }, "Minimum limit should be less than maximum."},
  });
  for (const Transform* unbuilt :
       std::initializer_list<const Transform*>{&min_max, &box_cox, &limits})
    ExpectRefusals<Logic>(
        {{[&] { unbuilt->Backward(square); }, "can not transform - build first"}});
  box_cox.Build(two);
  min_max.Build(two);
  const auto make = [](int type, double lambda) {
    return [=] { MakeTransform(static_cast<TransformType>(type), {lambda, 1.0, 2.0}); };
  };
  ExpectRefusals<Logic>({
      {[&] { box_cox.Forward(square); }, "TransBoxCox works only for scalar data"},
      {[&] { min_max.Forward(square); }, "not for 2"},
      {make(4, 1.0), "Unknown transformation type."},
      {make(2, std::nan("")), "lambda"},
      {make(2, 1e-300), "lambda"},
  });
}

TEST(Refusals, OfKernels) {
  const Eigen::VectorXd two = Eigen::VectorXd::Ones(2);
  const auto set = [](int type, const Eigen::VectorXd& parameters) {
    return [=] {
      const auto kernel = MakeKernel(static_cast<KernelType>(type), Eigen::VectorXd());
      try {
        kernel->SetParameters(parameters);
      } catch (...) {
        EXPECT_EQ(kernel->GetParameters().size(), 0);
        throw;
      }
    };
  };
  for (const double bad : {0.0, -1.0, std::nan("")}) {
    const Eigen::VectorXd alone = Eigen::VectorXd::Constant(1, bad);
    ExpectRefusals<std::domain_error>({
        {set(1, Eigen::Vector2d(1.0, bad)), "KernelConstInflExp: parameter must be greater zero"},
        {set(101, alone), "KernelConstInflIsoExp: parameter must be greater zero"},
        {set(102, alone), "KernelConstInflIsoReg: parameter must be greater zero"},
        {set(201, alone), "KernelNodalInflExp: parameter must be greater or equal one"},
    });
  }
  for (const int type : {1, 101, 102, 201})
    ExpectRefusals<std::domain_error>({{set(type, {}), "undefined parameter"}});
  const KernelConstInflExp aniso(two);
  const KernelNodalInflExp nodal(two);
  Eigen::VectorXd weights(2);
  ExpectRefusals<std::domain_error>({
      {set(101, two), "Invalid size of parameter"},
      {set(102, two), "Invalid size of parameter"},
      {[&] { aniso.EvaluateDistance(1.0); }, "EvaluateDistance works only"},
      {[&] { nodal.EvaluateDistance(1.0); }, "EvaluateDistance works only"},
      {[&] { aniso.EvaluateDistances(two); }, "EvaluateDistances works only"},
      {[&] { aniso.Weights(weights, Eigen::Vector3d::Zero(), Eigen::MatrixXd::Zero(2, 3)); },
       "Invalid size of parameter"},
      {[&] { KernelConstInflIsoExp().EvaluateDistance(1.0); }, "undefined parameter"},
  });
  ExpectRefusals<Logic>({{[] { MakeKernel(KernelType(7), {}); }, "Unknown kernel type."}});
}

TEST(Refusals, OfRegressions) {
  LinearRegression model(kPoints, kValues);
  ExpectRefusals<Runtime>({
      {[&] { LinearRegression(kPoints, kValues.head(3)); },
       "Surrogate needs same number of support points (20) and values (3)"},
      {[&] { LinearRegression(kPoints, kValues, kValues.head(3)); },
       "Surrogate needs same number of support points (20) and weights (3)"},
      {[&] { model.Approximate(kPoints); }, "can not approximate - build first"},
      {[&] { model.ApproximateLeaveOneOut(); }, "LOO approximation - build first"},
      {[&] { model.ApproximateCrossValidation(kFewGroups); }, "CV approximation - build first"},
  });
  ASSERT_TRUE(model.Build());
  ExpectRefusals<Runtime>({
      {[&] { model.Approximate(kWide); },
       "Surrogate approximate needs same number of input dimension (3) as support points (2)"},
      {[&] { model.ApproximateCrossValidation(kFewGroups); },
       "Surrogate approximate CV needs same number of support points (20) as subset indeces (3)"},
  });
  ExpectRefusals<Logic>({{[&] {
                            BuildRegressionMatrix(kPoints, {true, true}, BitVector(2));
                          },
                          "size of interaction vector is not consistent to regression dimension"}});
}

TEST(Refusals, OfMovingLeastSquares) {
  MovingLeastSquares model(kPoints, kValues);
  ExpectRefusals<Logic>({
      {[&] { model.Approximate(kPoints); }, "MLS::Approximate - need build first"},
      {[&] { model.ApproximateCrossValidation({}); }, "MLS::ApproximateCrossValidation - need"},
      {[&] { model.BuildOptimal(kFewGroups); }, "subset vector has wrong"},  // builds first
      {[&] { model.Approximate(kWide); }, "dimension of approximation points is wrong"},
      {[&] { model.ApproximateCrossValidation(kFewGroups); }, "subset vector has wrong"},
  });
  EXPECT_THROW(model.Approximate(kPoints), std::domain_error);  // no radius yet
  MovingLeastSquaresSettings unknown(2);
  unknown.SetKernelType(KernelType(7));
  ExpectRefusals<Runtime>(
      {{[&] { model.Initialize(LinearRegressionSettings(2)); },
        "Initialize Moving Least Squares failed. Could not convert surrogate setting : "},
       {[&] { model.Initialize(unknown); }, ""}});
  ExpectRefusals<Logic>({{[&] { model.GetDescription(); }, "Unknown kernel type"}});
}

TEST(Refusals, OfKriging) {
  OrdinaryKriging model(kPoints, kValues);
  const auto log = boost::make_shared<utils::log::VectorLog>();
  model.SetLogger(log);
  EXPECT_FALSE(model.Build());  // no kernel parameter
  EXPECT_EQ(log->GetLines().size(), 1u);
  const auto predict = [&](const Eigen::MatrixXd& x) {
    return [&model, x] { model.Approximate(x); };
  };
  ExpectRefusals<Runtime>({{predict(kPoints), "can not approximate - build first"}});
  ExpectRefusals<Logic>({
      {[&] { model.ApproximateLeaveOneOut(); }, "can not approximate CV - build first"},
      {[&] { model.SetSettings(LinearRegressionSettings(2)); },
       "Initialize Kriging failed. Could not convert surrogate setting : "},
  });
  OrdinaryKrigingSettings settings(2);
  settings.SetKernelParameter(Eigen::VectorXd::Ones(1));
  model.SetSettings(settings);
  ASSERT_TRUE(model.Build());
  ExpectRefusals<Runtime>(
      {{predict(kWide),
        "Surrogate approximate needs same number of input dimension (3) as support points (2)"}});
  ExpectRefusals<Logic>({
      {[&] { model.ApproximateCrossValidation(kFewGroups); }, "subset vector has wrong"},
      {[&] { model.ApproximateCrossValidationDirect(kFewGroups); }, "subset vector has wrong"},
  });
  model.SetSupportData(Eigen::MatrixXd(0, 2), {});
  ExpectRefusals<Logic>(
      {{[&] { model.ComputeSingleCoPs(); }, "Surrogate: support point data is missing"}});
  model.SetSettings(settings);
  EXPECT_FALSE(model.Build());
}

TEST(Refusals, OfThinPlateSplines) {
  SurrogateTPS equal(Eigen::MatrixXd::Ones(5, 2), Eigen::VectorXd::LinSpaced(5, 0, 1));
  EXPECT_FALSE(equal.IsSolvable());
  SurrogateTPS good(kPoints, kValues);
  EXPECT_TRUE(good.IsSolvable());
  ASSERT_TRUE(good.Build());
  SurrogateTPS uneven = good;
  uneven.SetSupportData(kPoints, kValues.head(7));
  uneven.SetCoordTransform(TransformType::kNone, {});
  ExpectRefusals<Runtime>({
      {[&] { equal.Build(); },
       "Surrogate can not compute the internal coefficients. The support points correlate and lead "
       "to a non-invertible matrix (rank 2, matrix dimension 8)."},
      {[&] { equal.Approximate(kPoints); }, "before the regression was"},
      {[&] { good.Approximate(kWide); }, "(obtained 3, expected 2)."},
      {[&] { uneven.Build(); }, "points (=20) and values (=7)."},
      {[&] { good.ApproximateLeaveOneOut(); },
       "The method ApproximateLeaveOneOut is not implemented for surrogate model 'Thin Plate "
       "Splines'."},
      {[&] { good.ApproximateCrossValidation({}); },
       "The method ApproximateCrossValidation is not implemented for surrogate model 'Thin Plate "
       "Splines'."},
  });
  ExpectRefusals<Logic>({
      {[&] { good.GetVariableSelection(); }, "implemented for SurrogateTPS"},
      {[&] { good.GetNumberCoefficients(); }, "GetNumberCoefficients not"},
      {[&] { good.GetSettingsBase(); }, "GetSettingsBase not"},
      {[&] { good.SetSettings(LinearRegressionSettings(2)); }, ""},  // none are kept
  });
}

/// Opens the parts of a built model, which a damaged file makes disagree.
template <class Model, class Settings>
class Damaged : public Model {
 public:
  explicit Damaged(const Settings& settings) : Model(kPoints, kValues, settings) {
    this->Build();
    this->BuildErrors();
  }
  using Model::need_build_, Model::points_, Model::points_trans_reduced_, Model::residuals_,
      Model::subsets_, Model::values_, Model::weights_;
};

template <class Model, class Settings>
void ExpectPartsToAgree() {
  using Victim = Damaged<Model, Settings>;
  Settings settings(2);
  if constexpr (!std::is_same_v<Model, LinearRegression>)
    settings.SetKernelParameter(Eigen::VectorXd::Ones(1));
  const auto after = [&](auto damage, auto use) {
    return [=] {
      Victim model(settings);
      damage(model);
      use(model);
    };
  };
  const auto few_values = [](Victim& m) { m.need_build_ = true, m.values_.conservativeResize(19); };
  const auto many_weights = [](Victim& m) { m.need_build_ = true, m.weights_.setOnes(21); };
  const auto few_residuals = [](Victim& m) { m.residuals_.resize(7); };
  const auto few_groups = [](Victim& m) { m.subsets_.setZero(7); };
  const auto no_support = [](Victim& m) { m.SetSupportData(Eigen::MatrixXd(), {}); };
  const auto one_missing = [](Victim& m) {
    m.SetSupportData(kPoints.topRows(19), kValues.head(19));
  };
  const auto nothing = [](Victim& m) {
    m.points_trans_reduced_.resize(0, 2);
    m.residuals_.resize(0);
    m.SetSupportData(Eigen::MatrixXd(0, 2), {});
  };
  const auto build = [](Victim& m) { m.Build(); };
  const auto optimise = [](Victim& m) { m.BuildOptimal(); };
  const auto box_cox = [](Victim& m) { m.BuildBoxCox(); };
  const auto errors = [](Victim& m) { m.BuildErrors(IndexVector::LinSpaced(20, 0, 4)); };
  const auto store = [](Victim& m) { support::Load<Model>(support::Save<Model>(m)); };
  const auto estimate = [](Victim& m) { m.ApproximateErrors(Eigen::MatrixXd::Zero(1, 2)); };
  const std::string points = "Surrogate needs same number of support points (20) and ";
  ExpectRefusals<Runtime>({
      {after(few_values, build), points + "values (19)"},
      {after(few_values, optimise), points + "values (19)"},
      {after(few_values, box_cox), points + "values (19)"},
      {after(few_values, store), points + "values (19)"},
      {after(many_weights, build), points + "weights (21)"},
      {after(many_weights, optimise), points + "weights (21)"},
      {after(few_residuals, errors), points + "residuals (7)"},
      {after(few_groups, errors), points + "groups (7)"},
      {after(few_groups, store), points + "groups (7)"},
      {after(one_missing, errors), "support points (19) and transformed support points (20)"},
      {after(no_support, optimise), ""},  // nothing to choose from
      {after(nothing, estimate), "Surrogate ApproximateErrors needs BuildErrors first"},
  });
  ExpectRefusals<Logic>({{after(no_support, errors), "Surrogate: support point data is missing"}});
}

TEST(Refusals, OfPartsThatDisagreeInNumber) {
  ExpectPartsToAgree<LinearRegression, LinearRegressionSettings>();
  ExpectPartsToAgree<MovingLeastSquares, MovingLeastSquaresSettings>();
  ExpectPartsToAgree<OrdinaryKriging, OrdinaryKrigingSettings>();
}

}  // namespace
}  // namespace corvath::math::metamodel
