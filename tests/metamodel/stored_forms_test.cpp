// The stored forms of all classes here, of every class version.

#include "metamodel/families.h"
#include "support/stored_form.h"

namespace corvath::math::metamodel {
namespace {

using namespace support;
using namespace transform;
using Eigen::MatrixXd, Eigen::VectorXd;

const auto kEqual = [](const auto& a, const auto& b) { return a.Equals(b); };

VectorXd One(double value) {
  return VectorXd::Constant(1, value);
}

TEST(StoredForm, OfTransforms) {
  StoredForm<Transform, false> base(0);
  base.Hidden("need_build_", false, true);
  StoredForm<TransMinMax> min_max(0);
  min_max.Part("Transform", base).Hidden("min_scaled_", 0.2, 0.1).Hidden("max_scaled_", 5.0, 6.0);
  min_max.Field("scaling_", &TransMinMax::GetScaling, One(2.0), Since(0));
  min_max.Field("offset_forward_", &TransMinMax::GetOffsetForward, One(3.0), Since(0));
  min_max.Field("offset_backward_", &TransMinMax::GetOffsetBackward, One(4.0), Since(0));
  min_max.Shows([](const auto& t) { return t.Forward(One(1.0)); }, One(5.0));
  min_max.Check(kEqual);
  StoredForm<TransBoxCox> box_cox(0);
  box_cox.Part("Transform", base).Hidden("lambda_", -0.25, -0.5);
  box_cox.Hidden("lambda_inv_", std::int64_t{-4}, std::int64_t{-2});
  box_cox.Hidden("min_scaled_", 0.2, 0.1).Hidden("max_scaled_", 5.0, 6.0);
  box_cox.Raw("trans_minmax_", min_max.As(0)).Shows(&Transform::GetParameters, {-0.25, 0.2, 5.0});
  box_cox.Check(kEqual);
  StoredForm<TransLimits> limits(0);
  limits.Part("Transform", base).Hidden("lower_limit_", -1.0, 0.0).Hidden("upper_limit_", 3.0, 4.0);
  limits.Shows(&Transform::GetParameters, {-1.0, 3.0});
  limits.Check(kEqual);
}

TEST(StoredForm, OfKernels) {
  // The stored helper terms serve as they are: these are not those of the parameter.
  const auto at = [](const auto& kernel) { return kernel.EvaluateVector(One(1.0)); };
  StoredForm<KernelBase, false> base(0);
  base.Raw("parameters_", One(2.0));
  StoredForm<KernelConstInfl, false> constant(0);
  constant.Part("KernelBase", base);
  StoredForm<KernelConstInflIso, false> isotropic(0);
  isotropic.Part("KernelConstInfl", constant);
  StoredForm<KernelNodalInfl, false> nodal(0);
  nodal.Part("KernelBase", base);
  StoredForm<KernelConstInflExp> exp(0);
  exp.Part("KernelConstInfl", constant).Raw("helper_term_", One(0.0)).Shows(at, 1.0);
  exp.Shows(&KernelBase::GetParameters, One(2.0)).Check();
  StoredForm<KernelConstInflIsoExp> iso_exp(0);
  iso_exp.Part("KernelConstInflIso", isotropic).Raw("helper_term_", 0.0).Shows(at, 1.0).Check();
  StoredForm<KernelConstInflIsoReg> reg(0);
  reg.Part("KernelConstInflIso", isotropic).Raw("epsilon_", 0.5).Raw("m_", 3.0);
  reg.Raw("D_squared_", 9.0).Raw("helper_term_", 0.0625);  // (13.5 / 9 + 0.5)^-3 is 0.125
  reg.Shows([](const auto& kernel) { return kernel.EvaluateDistance(13.5); }, 0.0625).Check();
  StoredForm<KernelNodalInflExp> nodal_exp(0);
  nodal_exp.Part("KernelNodalInfl", nodal).Raw("helper_term_", 0.0);
  nodal_exp.Shows([](const auto& kernel) { return kernel.EvaluateDistances(One(4.0)); }, One(1.0));
  nodal_exp.Check();
}

/// The base part of settings for two inputs; equality leaves the state and `handle_failed_` out.
StoredForm<SurrogateSettingsBase, false> SettingsBase() {
  using S = SurrogateSettingsBase;
  using Numbers = std::vector<double>;
  const auto none = TransformType::kNone;
  StoredForm<S, false> form(2);
  form.Field("ninputs_", &S::GetNumberInputs, 2, Since(0), 3);
  form.Field("coord_transform_", &S::GetCoordTransform, TransformType::kMinMax, Since(0), none);
  form.Field("coord_transform_parameter_", &S::GetCoordTransformParameter, Numbers{-1.0, 1.0},
             Since(0));
  form.Field("value_transform_", &S::GetValueTransform, TransformType::kBoxCox, Since(0), none);
  form.Field("value_transform_parameter_", &S::GetValueTransformParameter, Numbers{0.5, 0.1, 10.1},
             Since(0));
  form.Raw("handle_failed_", std::int32_t{7});
  form.Uncompared("state_", &S::GetState, SettingsState::kOptimized);
  form.Field("limit_transform_", &S::GetLimitTransform, TransformType::kLimits, Since(1), none);
  form.Field("limit_transform_parameter_", &S::GetLimitTransformParameter, Numbers{0.0, 1.0},
             Since(1));
  form.Field("input_names_", &S::GetInputNames, {L"first", L"zweit\u00e4"}, Since(2));
  return form;
}

TEST(StoredForm, OfSettings) {
  for (const unsigned base_version : {0, 1, 2}) {
    using L = LinearRegressionSettings;
    StoredForm<L> form(0);
    form.Part("SurrogateSettingsBase", SettingsBase(), base_version);
    form.Field("order_", &L::GetOrder, 2);
    form.Field("main_term_selection_", &L::GetMainTermSelection, {true, false, true, true});
    form.Field("interaction_selection_", &L::GetInteractionSelection, {true});
    if (base_version == 2)
      form.Check(kEqual);
    else
      form.CheckReading();
  }
  using M = MovingLeastSquaresSettings;
  StoredForm<M> local(0);
  local.Part("SurrogateSettingsBase", SettingsBase()).Field("order_", &M::GetOrder, 0);
  local.Field("main_term_selection_", &M::GetMainTermSelection, {true, false});
  local.Field("kernel_type_", &M::GetKernelType, KernelType::kNodalInflExp);
  local.Field("kernel_parameter_", &M::GetKernelParameter, One(9.0));
  local.Check(kEqual);
  using K = OrdinaryKrigingSettings;
  StoredForm<K> kriging(0);
  kriging.Part("SurrogateSettingsBase", SettingsBase()).Field("nugget_", &K::GetNugget, 0.25);
  kriging.Field("use_likelihood_", &K::UsesLikelihood, false);
  kriging.Field("kernel_type_", &K::GetKernelType, KernelType::kConstInflExp);
  kriging.Field("kernel_parameter_", &K::GetKernelParameter, Eigen::Vector2d(1.0, 2.0));
  kriging.Field("selection_", &K::GetVariableSelection, {true, false});
  kriging.Check(kEqual);
}

const MatrixXd kAt = 3.0 * UniformPoints(9, 2, 4);

/// Built models with all that a surrogate can hold.
template <class Model, class Settings, class... Weights>
Model Full(Settings settings, const Weights&... weights) {
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({-99.0, 99.0});  // old forms predict the same without them
  Model model(3.0 * UniformPoints(30, 2, 1), UniformVector(30, 2), settings, weights...);
  EXPECT_TRUE(model.Build() && model.BuildErrors(IndexVector::LinSpaced(30, 0, 4)));
  model.SetSingleCoPs(Eigen::RowVector2d(0.7, 0.2));
  return model;
}

template <class Settings>
Settings WithBoxCox(std::uint64_t order) {
  Settings settings(2);
  settings.SetOrder(order);
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.5, 0.1, 10.1});
  return settings;
}

LinearRegression Regression() {
  auto settings = WithBoxCox<LinearRegressionSettings>(2);
  settings.SetVariableSelection({true, false});
  return Full<LinearRegression>(settings, VectorXd(0.5 + UniformVector(30, 3).array()));
}

MovingLeastSquares LocalModel() {
  auto settings = WithBoxCox<MovingLeastSquaresSettings>(2);
  settings.SetMainTermSelection({true, true, false, true});
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::Vector2d(0.9, 1.1));
  return Full<MovingLeastSquares>(settings);
}

OrdinaryKriging Kriging(bool anisotropic) {
  OrdinaryKrigingSettings settings(2);
  if (anisotropic) settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(anisotropic ? VectorXd(Eigen::Vector2d(0.8, 2.0)) : One(1.2));
  settings.SetNugget(1e-3);
  return Full<OrdinaryKriging>(settings);
}

MatrixXd Transformed(const SurrogateBase& model) {
  return model.GetTransCoord()->Forward(model.GetPoints());
}

/// Without the inputs that the model does not use.
MatrixXd Reduced(const SurrogateBase& model) {
  std::vector<Eigen::Index> used;
  const BitVector selection = model.GetVariableSelection();
  for (std::size_t j = 0; j < selection.size(); ++j)
    if (selection[j]) used.push_back(static_cast<Eigen::Index>(j));
  return Transformed(model)(Eigen::all, used);
}

VectorXd TransformedValues(const SurrogateBase& model) {
  return model.GetTransValue() ? VectorXd(model.GetTransValue()->Forward(model.GetValues()))
                               : model.GetValues();
}

template <class Model>
MatrixXd BasisOf(const Model& model) {
  return BuildRegressionMatrix(Transformed(model), model.GetSettingsBase().GetMainTermSelection(),
                               model.GetSettingsBase().GetInteractionSelection());
}

/// The base part of a built model.
StoredForm<SurrogateBase, false> BaseOf(const SurrogateBase& model) {
  using S = SurrogateBase;
  const auto copy = [](const Transform* trans) {
    return boost::shared_ptr<Transform>(trans ? trans->Clone() : nullptr);
  };
  const auto names = [](const S& m) {
    return m.GetTransCoord()->GetName() + (m.GetTransLimit() ? m.GetTransLimit()->GetName() : L"");
  };
  StoredForm<S, false> form(7);
  form.Uncompared("points_", &S::GetPoints, model.GetPoints());
  form.Uncompared("values_", &S::GetValues, model.GetValues());
  form.Raw("points_trans_reduced_", Reduced(model), Since(2));
  form.Field("residuals_", &S::GetResiduals, model.GetResiduals(), Since(2));
  form.Field("subsets_", &S::GetSubsets, model.GetSubsets(), Since(3));
  form.Hidden("need_build_", false, true).Raw("trans_coord_", copy(model.GetTransCoord()));
  form.Raw("trans_value_", copy(model.GetTransValue()));
  if (model.GetWeights().size() > 0)
    form.Field("weights_", &S::GetWeights, model.GetWeights(), Since(1));
  else
    form.Raw("weights_", VectorXd(), Since(1));
  form.Hidden("trans_limit_", copy(model.GetTransLimit()), {}, Since(4));
  form.Shows(names, names(model), Since(4));
  form.Shows(names, model.GetTransCoord()->GetName(), Until(3));
  form.Field("single_cops_", &S::GetSingleCoPs, model.GetSingleCoPs(), Since(5));
  form.Field("points_radii_mean_", &S::GetPointsRadiiMean, model.GetPointsRadiiMean(), Since(6));
  form.Field("weight_error_radius_", &S::GetWeightErrorRadius, model.GetWeightErrorRadius(),
             Since(7));
  return form;
}

/// What a model that was read must show, with and without the support data that a file may leave
/// out; beside `settings`, which the oldest versions rebuild.
template <class Model, class Settings>
void ShowsModel(StoredForm<Model>& form, const Model& model, const Settings& settings) {
  form.Shows([settings](const Model& m) { return m.GetSettingsBase().Equals(settings); }, true);
  form.Shows([](const Model& m) { return m.Approximate(kAt); }, model.Approximate(kAt));
  if constexpr (!std::is_same_v<Model, LinearRegression>)
    form.Shows(
        [](Model m) {
          m.SetSupportData(MatrixXd(0, 2), {});
          return m.Approximate(kAt);
        },
        model.Approximate(kAt), Since(form.GetNewest()));
}

StoredForm<LinearRegression> FormOf(const LinearRegression& model, unsigned base_version,
                                    std::uint64_t order = 2) {
  LinearRegressionSettings old = model.GetSettingsBase();
  old.SetLimitTransform(TransformType::kNone);  // came later
  old.SetLimitTransformParameter({});
  using L = LinearRegression;
  StoredForm<L> form(1);
  form.Part("SurrogateBase", BaseOf(model), base_version);
  form.Field("coefficients_", &L::GetCoefficients, model.GetCoefficients());
  form.Hidden("coefficient_matrix_", BasisOf(model), {});
  form.Hidden("settings_", model.GetSettingsBase(), LinearRegressionSettings(), Since(1));
  form.Raw("order_", order, Until(0));
  form.Raw("main_term_selection_", old.GetMainTermSelection(), Until(0));
  form.Raw("interaction_selection_", old.GetInteractionSelection(), Until(0));
  form.Raw("weights_", model.GetWeights(), Until(0));
  form.Shows([old](const L& m) { return m.GetSettingsBase().Equals(old); }, true, Until(0));
  form.Shows([](const L& m) { return m.Approximate(kAt); }, model.Approximate(kAt));
  return form;
}

TEST(StoredForm, OfLinearRegression) {
  const LinearRegression model = Regression();
  FormOf(model, 7).Check(kEqual);
  for (unsigned base_version = 0; base_version < 7; ++base_version)
    FormOf(model, base_version).CheckReading(1);
  EXPECT_EQ(FormOf(model, 0).Read(0).GetWeights(), model.GetWeights());
  // Radii that an old file lacks come with the next errors.
  LinearRegression old = FormOf(model, 4).Read(1);
  ASSERT_TRUE(old.BuildErrors());
  EXPECT_EQ(old.ApproximateErrors(kAt), model.ApproximateErrors(kAt));
  // An order from a damaged file does not become that many bits.
  for (const std::uint64_t order : {std::uint64_t{3}, std::uint64_t{1} << 63})
    EXPECT_MESSAGE("size of main term selection vector is not consistent to regression order",
                   FormOf(model, 0, order).Read(0));
}

StoredForm<MovingLeastSquares> FormOf(const MovingLeastSquares& model, unsigned base_version,
                                      const boost::shared_ptr<KernelBase>& kernel,
                                      std::uint64_t order = 2) {
  const MovingLeastSquaresSettings& settings = model.GetSettingsBase();
  KernelBase* const weight = kernel.get();
  StoredForm<MovingLeastSquares> form(3);
  form.Part("SurrogateBase", BaseOf(model), base_version).Raw("weight_", weight, Until(0));
  form.Raw("points_trans_reduced_", Reduced(model), {2, 2});
  form.Hidden("values_trans_", TransformedValues(model), {}, Since(2));
  form.Hidden("coefficient_matrix_", BasisOf(model), {}).Raw("order_", order, Until(0));
  form.Raw("main_term_selection_", settings.GetMainTermSelection(), Until(0));
  form.Hidden("settings_", settings, MovingLeastSquaresSettings(), Since(1));
  return form;
}

TEST(StoredForm, OfMovingLeastSquares) {
  const MovingLeastSquares model = LocalModel();
  MovingLeastSquaresSettings old = model.GetSettingsBase();
  old.SetLimitTransform(TransformType::kNone);
  old.SetLimitTransformParameter({});
  const auto kernel = MakeKernel(KernelType::kConstInflExp, old.GetKernelParameter());
  for (const unsigned version : {0, 1, 2, 3}) {
    auto form = FormOf(model, version == 3 ? 7 : 1, kernel);
    ShowsModel(form, model, version == 0 ? old : model.GetSettingsBase());
    form.Shows(&SurrogateBase::ApproximateLeaveOneOut, model.ApproximateLeaveOneOut());
    form.CheckReading(version);
  }
  FormOf(model, 7, kernel).Check(kEqual);
  const auto nodal_kernel = MakeKernel(KernelType::kNodalInflExp, One(9.0));
  const auto nodal = FormOf(model, 0, nodal_kernel).Read(0);
  EXPECT_EQ(nodal.GetSettingsBase().GetKernelType(), KernelType::kNodalInflExp);
  EXPECT_EQ(nodal.GetSettingsBase().GetKernelParameter(), One(9.0));
  EXPECT_TRUE(nodal.Approximate(kAt).allFinite());
  const auto refusal = [&](std::uint64_t order) {
    return MessageOf([&] { FormOf(model, 0, kernel, order).Read(0); });
  };
  EXPECT_EQ(refusal(std::uint64_t{1} << 62), "can not set mls order >2");
  EXPECT_EQ(refusal(1), "size of selection vector is not consistent to order");
}

StoredForm<OrdinaryKriging> FormOf(const OrdinaryKriging& model, unsigned base_version,
                                   const boost::shared_ptr<KernelBase>& kernel) {
  using K = OrdinaryKriging;
  KernelBase* const plain = kernel.get();
  StoredForm<K> form(2);
  form.Part("SurrogateBase", BaseOf(model), base_version).Raw("kernel_", plain, Until(0));
  form.Field("mean_", &K::GetMean, model.GetMean());
  form.Field("sigma2_", &K::GetSigma2, model.GetSigma2()).Raw("nugget_", 1e-3, Until(0));
  form.Field("kernel_weights_", &K::GetKernelWeights, model.GetKernelWeights());
  form.Hidden("settings_", model.GetSettingsBase(), OrdinaryKrigingSettings(), Since(1));
  form.Raw("points_trans_reduced_", Transformed(model), {1, 1});
  form.Hidden("values_trans_", model.GetValues(), {}, Since(1));
  return form;
}

TEST(StoredForm, OfKriging) {
  for (const bool anisotropic : {false, true}) {
    const OrdinaryKriging model = Kriging(anisotropic);
    OrdinaryKrigingSettings old = model.GetSettingsBase();
    const auto kernel = MakeKernel(old.GetKernelType(), old.GetKernelParameter());
    FormOf(model, 7, kernel).Check(kEqual);
    for (const unsigned version : {1, 2}) {
      auto form = FormOf(model, version == 2 ? 7 : 1, kernel);
      ShowsModel(form, model, old);
      form.Shows(&SurrogateBase::ApproximateLeaveOneOut, model.ApproximateLeaveOneOut());
      form.CheckReading(version);
    }
    old.SetLimitTransform(TransformType::kNone);
    old.SetLimitTransformParameter({});
    auto form = FormOf(model, 0, kernel);
    ShowsModel(form, model, old);
    form.CheckReading(0);
    OrdinaryKriging read = form.Read(0);
    EXPECT_THROW(read.ApproximateLeaveOneOut(), std::logic_error);
    EXPECT_TRUE(read.Build());
    EXPECT_EQ(read.GetKernelWeights(), model.GetKernelWeights());
    EXPECT_EQ(read.ApproximateLeaveOneOut(), model.ApproximateLeaveOneOut());
  }
}

/// What a model says that predicts from one of its fields as it stands here.
template <class Model, class Value>
std::string RefusalWith(const StoredForm<Model>& form, unsigned version, const char* name,
                        const Value& value) {
  const Model read = Load<Model>(form.With(name, value).Write(version));
  return MessageOf([&] { read.Approximate(MatrixXd::Zero(1, 2)); });
}

TEST(StoredForm, ThatContradictsItselfIsRefusedAtUse) {
  const LinearRegression terms = Regression();
  const auto regression = FormOf(terms, 7);
  EXPECT_EQ(RefusalWith(regression, 1, "coefficients_", VectorXd(7)),
            "Linear Regression: 7 coefficients for 3 terms");
  const auto no_matrix =
      Load<LinearRegression>(regression.With("coefficient_matrix_", MatrixXd(29, 3)).Write(1));
  EXPECT_EQ(no_matrix.Approximate(kAt), terms.Approximate(kAt));
  const std::function<void()> uses[] = {
      [&] { no_matrix.ApproximateLeaveOneOut(); }, [&] { no_matrix.ApproximateSupportPoints(); },
      [&] { no_matrix.ApproximateCrossValidation(IndexVector::Zero(30)); }};
  for (const auto& use : uses)
    EXPECT_NE(MessageOf(use).find("regression matrix of 29 x 3"), std::string::npos);

  const auto moving = FormOf(LocalModel(), 7, {});
  const std::string text = " values, support points of 30 x 2 and a basis of 30 x ",
                    sizes = " for 2 selected inputs and 4 terms", mls = "Moving Least Squares: ";
  EXPECT_EQ(RefusalWith(moving, 3, "values_trans_", VectorXd(29)), mls + "29" + text + "4" + sizes);
  EXPECT_EQ(RefusalWith(moving, 3, "coefficient_matrix_", MatrixXd(30, 3)),
            mls + "30" + text + "3" + sizes);

  const OrdinaryKriging model = Kriging(false);
  const auto kriging = FormOf(model, 1, {});
  const auto with_kernel = [&](KernelType type, const VectorXd& parameter) {
    OrdinaryKrigingSettings settings = model.GetSettingsBase();
    settings.SetKernelType(type);
    settings.SetKernelParameter(parameter);
    return RefusalWith(kriging, 1, "settings_", settings);
  };
  EXPECT_EQ(RefusalWith(kriging, 1, "kernel_weights_", VectorXd(7)),
            "can not approximate - build first");
  EXPECT_EQ(RefusalWith(kriging, 1, "points_trans_reduced_", MatrixXd(30, 1)),
            "Kriging: support points of 1 inputs and 1 kernel parameters for 2 selected inputs");
  EXPECT_NE(with_kernel(KernelType::kConstInflIsoExp, One(-1.0)), "");
  EXPECT_EQ(with_kernel(KernelType::kConstInflExp, Eigen::Vector3d(1, 1, 1)),
            "Kriging: support points of 2 inputs and 3 kernel parameters for 2 selected inputs");
  EXPECT_EQ(with_kernel(KernelType(7), One(1.0)), "Unknown kernel type.");
}

/// Writes `pointer` and expects the export key of its object, which stands behind its length, a
/// 16-bit number.
template <class Pointer>
void ExpectKey(const Pointer& pointer, const std::string& key) {
  const std::string stored = std::string{static_cast<char>(key.size()), '\0'} + key;
  EXPECT_NE(Save(pointer).find(stored), std::string::npos) << key;
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
  SurrogateTPS splines(UniformPoints(12, 2, 1), UniformVector(12, 2));
  ASSERT_TRUE(splines.Build());
  const LinearRegression regression = Regression();
  const MovingLeastSquares local = LocalModel();
  const OrdinaryKriging kriging = Kriging(false);
  const std::pair<const SurrogateBase*, std::string> models[] = {{&regression, "LinearRegression"},
                                                                 {&local, "MovingLeastSquares"},
                                                                 {&kriging, "OrdinaryKriging"},
                                                                 {&splines, "SurrogateTPS"}};
  for (const auto& [model, name] : models) {
    const boost::shared_ptr<SurrogateBase> pointer(model->Clone());
    ExpectKey(pointer, room + name);
    const auto read = Load<boost::shared_ptr<SurrogateBase>>(Save(pointer));
    EXPECT_TRUE(read->Equals(*model)) << name;
    EXPECT_TRUE(read->Build());  // nothing to be done
    EXPECT_TRUE(read->Equals(*model)) << name;
    if (model == &splines) break;
    const boost::shared_ptr<SurrogateSettingsBase> settings(model->GetSettingsBase().Clone());
    ExpectKey(settings, "::" + room + name + "Settings");
  }
  splines.SetSupportData(MatrixXd(0, 2), {});  // what else is stored suffices to predict
  EXPECT_TRUE(Load<SurrogateTPS>(Save(splines)).Approximate(kAt).allFinite());
}

}  // namespace
}  // namespace corvath::math::metamodel
