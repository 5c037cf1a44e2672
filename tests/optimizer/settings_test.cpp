#include "foundation/exception.h"
#include "optimizer/settings_nlpqlp.h"
#include "support/stored_form.h"

using corvath::algorithm::optimizer::NumericalDifferences;
using Base = corvath::algorithm::optimizer::OptimizerSettingsBase<double>;
using Settings = corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>;

namespace {

Settings Bounded() {
  Settings settings(2, 1, 1, 1);
  settings.SetLowerBounds(Eigen::Vector2d(-1.0, 0.0));
  settings.SetUpperBounds(Eigen::Vector2d(1.0, 4.0));
  settings.ResetStartDesigns();
  return settings;
}

void Limit(Settings& settings, const Eigen::VectorXd& sizes) {
  settings.SetUseInitialStepsizeLimit(true);
  settings.SetMaxStepsize(sizes);
}

TEST(OptimizerSettings, StartValidInTheMiddleAndFollowTheNumberOfInputs) {
  Settings settings(2, 1, 0, 3);
  EXPECT_EQ(Bounded().GetStartDesigns(), Eigen::RowVector2d(0.0, 2.0));
  EXPECT_MESSAGE("", settings.Check(nullptr));
  settings.SetNumberParallel(0);
  EXPECT_EQ(settings.GetNumberParallel(), 1u);
  settings.SetParameterTypes({1, 2});
  settings.SetNumberInputs(3);
  EXPECT_EQ(settings.GetParameterTypes(), (std::vector<std::int32_t>{0, 0, 0}));
  settings.SetLowerBounds(Eigen::Vector3d::Constant(0x1p1023));  // the sum is no number
  settings.SetUpperBounds(Eigen::Vector3d::Constant(0x1.8p1023));
  settings.ResetStartDesigns();
  EXPECT_EQ(settings.GetStartDesigns(), Eigen::RowVector3d::Constant(0x1.4p1023));
  EXPECT_ERROR(std::logic_error, "Error when setting discrete state. Index out of bounds.",
               settings.SetDiscreteState(3, {}));
}

using Change = void (*)(Settings&);

TEST(OptimizerSettings, CheckNamesTheFirstFault) {
  static const double nan = std::nan(""), inf = HUGE_VAL;
  using S = Settings;
  using Eigen::MatrixXd, Eigen::Vector2d;
  const std::pair<Change, const char*> cases[] = {
      {[](S& s) { s.SetMaxNumFunctionCalls(0); }, "<= 0 function calls are permitted (0."},
      {[](S& s) { s.SetStartDesigns(MatrixXd(1, 3)); }, "match. obtained 3 columns, expected 2."},
      {[](S& s) { s.SetStartDesigns(MatrixXd(0, 2)); }, "one start design must be defined."},
      {[](S& s) { s.SetAccuracy(-0.5); }, "can not be smaller than zero, obtained -0.5"},
      {[](S& s) { s.SetAccuracy(0.0); }, "iterative solvers can not be exact zero."},
      {[](S& s) { s.SetStartDesigns(Eigen::RowVector2d(-1.5, 1)); },
       "the lower bounds (see design #0)."},
      {[](S& s) { s.SetStartDesigns(Eigen::RowVector2d(0, 5)); },
       "the upper bounds (see design #0)."},
      {[](S& s) { s.SetNumberInputs(0), s.SetStartDesigns(MatrixXd(1, 0)); },
       "with < 1 parameter."},
      {[](S& s) { s.SetNumberObjectives(0); }, "was defined with < 1 objective functions."},
      {[](S& s) { s.SetNumberEqualities(3); }, "constraints > num parameter : 3 > 2)."},
      {[](S& s) { s.SetLowerBounds(MatrixXd::Zero(1, 1)); }, "lower bounds (=1) does not match"},
      {[](S& s) { s.SetUpperBounds(Eigen::Vector3d(9, 9, 9)); }, "upper bounds (=3) does"},
      {[](S& s) { s.SetLowerBounds(Vector2d(0, 4)), s.ResetStartDesigns(); }, "is not larger than"},
      {[](S& s) { s.SetLowerBounds(Vector2d(0, nan)); }, "Lower bound must be a valid finite"},
      {[](S& s) { s.SetUpperBounds(Vector2d(1, inf)); }, "Upper bound must be a valid finite"},
      {[](S& s) { s.SetNumberObjectives(2); }, "only a single objective function, obtained 2"},
      {[](S& s) { s.SetStartDesigns(MatrixXd::Ones(2, 2)); }, "a single start design, obtained 2"},
      {[](S& s) { s.SetNumberParallel(16); }, "at least 1 and less than 16, obtained 16"},
      {[](S& s) { s.SetGradientDx(Vector2d(0.001, 0)); }, "must be greater than zero."},
      {[](S& s) { s.SetGradientDx(Eigen::Vector3d(1, 1, 1)); }, "expected 2, obtained 3"},
      {[](S& s) { s.SetGradientDx(0.3); }, "should not exceed 10% of the parameter range."},
      {[](S& s) { s.SetAccuracy(0.2); }, "between 1e-10 and 0.1, obtained 0.2"},
      {[](S& s) { s.SetAccuracy(nan); }, "between 1e-10 and 0.1, obtained nan"},
      {[](S& s) { s.SetStackSize(51); }, "not be greater than 50, obtained 51"},
      {[](S& s) { Limit(s, Eigen::VectorXd::Ones(1)); }, "expected 2, obtained 1"},
      {[](S& s) { Limit(s, Vector2d(0.005, 0.2)); }, "must be more than 5x as large"},
      {[](S& s) { Limit(s, Vector2d(0.2, inf)); }, "size vector must contain valid finite numbers"},
      {[](S& s) { s = S(1), s.SetGradientDx(inf); }, "differentiation must be valid finite"},
  };
  for (const auto& [change, part] : cases) {
    Settings settings = Bounded();
    change(settings);
    const std::string text =
        support::MessageOfExactly<corvath::utils::runtime_error>([&] { settings.Check(nullptr); });
    EXPECT_NE(text.find(part), std::string::npos) << text << "\nfor " << part;
  }
}

TEST(OptimizerSettings, WarnOfWhatIsOnlyDoubtful) {
  corvath::utils::log::VectorLog log;
  Settings settings = Bounded();
  Limit(settings, Eigen::Vector2d(0.01, 0.2));
  settings.Check(&log);
  // An algorithm that is no gradient method only warns of start designs outside the bounds.
  settings.SetStartDesigns(Eigen::Matrix2d{{0.0, 4.5}, {-1.5, 1.0}});
  settings.Base::Check(&log);
  const wchar_t* const lines[] = {
      L"The maximum step size should be more than 20x as large as the differentiation step size.",
      L"At least one entry is greater than upper bound",
      L"At least one entry is lower than lower bound"};
  ASSERT_EQ(log.GetLines().size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(log.GetLines()[k].first, corvath::utils::log::kWarning);
    EXPECT_EQ(log.GetLines()[k].second, lines[k]);
  }
  settings.SetStartDesigns(Eigen::MatrixXd(1, 3));
  EXPECT_ERROR(corvath::utils::runtime_error,
               "Start designs have wrong dimension. Expected number of cols: 2, obtained: 3.",
               settings.Base::Check(nullptr));
}

/// With every field away from its default, over that version of the base part.
support::StoredForm<Settings> FormOf(unsigned base_version) {
  using support::Since;
  using Gradient = corvath::algorithm::optimizer::OptimizerSettingsGradientBase<double>;
  using Eigen::Vector2d, Eigen::VectorXd;
  // Tracked are the classes with an export key that pointers can hold; the base is abstract.
  support::StoredForm<Base, false> base(1);
  base.Field("ninputs_", &Base::GetNumberInputs, 2, Since(0), 3);
  base.Field("nobjectives_", &Base::GetNumberObjectives, 4, Since(0), 2);
  base.Field("nequalities_", &Base::GetNumberEqualities, 1, Since(0), 2);
  base.Field("ninequalities_", &Base::GetNumberInequalities, 3, Since(0), 2);
  base.Field("start_designs_", &Base::GetStartDesigns, Eigen::RowVector2d(0.5, 2.5), Since(0));
  base.Field("lowerbounds_", &Base::GetLowerBounds, Vector2d(-1.0, 0.0), Since(0));
  base.Field("upperbounds_", &Base::GetUpperBounds, Vector2d(1.0, 4.0), Since(0));
  base.Field("parameter_types_", &Base::GetParameterTypes, {1, 2}, Since(1), {0, 0});
  using States = std::vector<VectorXd>;
  const auto second = [](const Base& b) { return b.GetDiscreteStates().at(1); };
  base.Hidden("discrete_states_vector_", States{VectorXd(), Vector2d(1.0, 2.0)},
              States{VectorXd(), Vector2d(1.0, 3.0)}, Since(1));
  base.Shows(second, Vector2d(1.0, 2.0), Since(1)).Shows(second, VectorXd(), support::Until(0));
  support::StoredForm<Gradient> gradient(0);
  gradient.Part("OptimizerSettingsBase<T>", base, base_version);
  gradient.Field("max_num_function_calls_", &Gradient::GetMaxNumFunctionCalls, 77);
  gradient.Field("accuracy_", &Gradient::GetAccuracy, 1e-4);
  support::StoredForm<Settings> form(2, /*restores_defaults=*/true);
  form.Part("OptimizerSettingsGradientBase<T>", gradient);
  form.Field("nparallel_", &Settings::GetNumberParallel, 3);
  form.Raw("computeinititalhessian", std::int32_t{1}, support::Until(0));
  form.Field("gradient_dx_", &Settings::GetGradientDx, Vector2d(0.01, 0.02));
  form.Field("nonmonotonous_line_search_stack_size_", &Settings::GetStackSize, 4);
  form.Field("numerical_differences_", &Settings::GetNumericalDifferences,
             NumericalDifferences::kFivePoint);
  form.Field("use_initial_stepsize_limit_", &Settings::GetUseInitialStepsizeLimit, true, Since(1));
  form.Field("max_stepsize_", &Settings::GetMaxStepsize, Vector2d(0.5, 0.6), Since(1),
             Vector2d(0.2, 0.2));
  form.Field("min_stepsize_", &Settings::GetMinStepsize, 0.125, Since(2));
  return form;
}

TEST(OptimizerSettings, HaveAStoredFormAndGoBackToTheirDefaults) {
  FormOf(1).Check([](const auto& a, const auto& b) { return a.Equals(b); });
  FormOf(0).CheckReading();
  Settings settings = FormOf(1).Read(2);
  const std::string bytes = support::Save(boost::shared_ptr<Base>(settings.Clone()));
  EXPECT_NE(bytes.find("::corvath::algorithm::optimizer::OptimizerSettingsNLPQLP < "
                       "corvath::typedefs::float_type >"),
            std::string::npos);
  EXPECT_TRUE(support::Load<boost::shared_ptr<Base>>(bytes)->Equals(settings));
  settings.Reset();
  EXPECT_TRUE(settings.Equals(Settings(2, 4, 1, 3)));
}

}  // namespace
