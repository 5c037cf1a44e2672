#include "foundation/exception.h"
#include "optimizer/settings_nlpqlp.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/stored_form.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

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

TEST(OptimizerSettings, StartWithTheirDefaults) {
  const Settings settings(2, 1, 0, 3);
  EXPECT_EQ(settings.GetLowerBounds(),
            Eigen::Vector2d::Constant(std::numeric_limits<double>::lowest()));
  EXPECT_EQ(settings.GetUpperBounds(),
            Eigen::Vector2d::Constant(std::numeric_limits<double>::max()));
  EXPECT_EQ(settings.GetStartDesigns(), Eigen::RowVector2d(0.0, 0.0));
  EXPECT_EQ(Bounded().GetStartDesigns(), Eigen::RowVector2d(0.0, 2.0));
  EXPECT_EQ(settings.GetParameterTypes(), (std::vector<std::int32_t>{0, 0}));
  EXPECT_EQ(settings.GetDiscreteStates().size(), 2u);
  EXPECT_EQ(settings.GetMaxNumFunctionCalls(), 10000u);
  EXPECT_EQ(settings.GetAccuracy(), 5e-6);
  EXPECT_EQ(settings.GetGradientDx(), Eigen::Vector2d::Constant(0.001));
  EXPECT_EQ(settings.GetMaxStepsize(), Eigen::Vector2d::Constant(0.2));
  EXPECT_EQ(settings.GetStackSize(), 10u);
  EXPECT_EQ(support::MessageOf([&] { settings.Check(nullptr); }), "");

  Settings changed = Bounded();
  changed.SetNumberParallel(0);
  EXPECT_EQ(changed.GetNumberParallel(), 1u);
  changed.SetAccuracy(1.0);
  changed.SetMinStepsize(0.5);
  const std::unique_ptr<Settings> clone(changed.Clone());
  EXPECT_TRUE(clone->Equals(changed));
  changed.Reset();
  EXPECT_FALSE(clone->Equals(changed));
  EXPECT_TRUE(changed.Equals(Settings(2, 1, 1, 1)));
  EXPECT_EQ(support::MessageOfExactly<std::logic_error>(
                [&] { changed.SetDiscreteState(2, Eigen::VectorXd()); }),
            "Error when setting discrete state. Index out of bounds.");
}

TEST(OptimizerSettings, CheckNamesTheFirstFault) {
  const double nan = std::nan(""), inf = HUGE_VAL;
  struct Case {
    std::function<void(Settings&)> change;
    const char* text;
  };
  const Case cases[] = {
      {[](Settings& s) { s.SetMaxNumFunctionCalls(0); },
       "An optimization problem was defined where <= 0 function calls are permitted (0."},
      {[](Settings& s) { s.SetStartDesigns(Eigen::MatrixXd::Zero(1, 3)); },
       "The dimension of the start design does not match. obtained 3 columns, expected 2."},
      {[](Settings& s) { s.SetStartDesigns(Eigen::MatrixXd(0, 2)); },
       "At least one start design must be defined."},
      {[](Settings& s) { s.SetAccuracy(-0.5); },
       "The desired accuracy (tolerance) can not be smaller than zero, obtained -0.5"},
      {[](Settings& s) { s.SetAccuracy(0.0); },
       "The desired accuracy of iterative solvers can not be exact zero."},
      {[](Settings& s) { s.SetStartDesigns(Eigen::RowVector2d(-1.5, 1.0)); },
       "A start design violates the lower bounds (see design #0)."},
      {[](Settings& s) { s.SetStartDesigns(Eigen::RowVector2d(0.0, 5.0)); },
       "A start design violates the upper bounds (see design #0)."},
      {[](Settings& s) {
         s.SetNumberInputs(0);
         s.SetStartDesigns(Eigen::MatrixXd(1, 0));
       },
       "An optimization problem was defined with < 1 parameter."},
      {[](Settings& s) { s.SetNumberObjectives(0); },
       "An optimization problem was defined with < 1 objective functions."},
      {[](Settings& s) { s.SetNumberEqualities(3); },
       "An optimization problem was defined with too many constraints (num equality constraints > "
       "num parameter : 3 > 2)."},
      {[](Settings& s) { s.SetLowerBounds(Eigen::VectorXd::Zero(1)); },
       "The dimension of lower bounds (=1) does not match (=2)."},
      {[](Settings& s) { s.SetUpperBounds(Eigen::VectorXd::Constant(3, 9.0)); },
       "The dimension of upper bounds (=3) does not match (=2)."},
      {[](Settings& s) { s.SetLowerBounds(Eigen::Vector2d(0.0, 4.0)), s.ResetStartDesigns(); },
       "At least one upper bound is not larger than the lower bound."},
      {[=](Settings& s) { s.SetLowerBounds(Eigen::Vector2d(0.0, nan)); },
       "Lower bound must be a valid finite number (no NaN, no INF)."},
      {[=](Settings& s) { s.SetUpperBounds(Eigen::Vector2d(1.0, inf)); },
       "Upper bound must be a valid finite number (no NaN, no INF)."},
      {[](Settings& s) { s.SetNumberObjectives(2); },
       "NLPQLP supports only a single objective function, obtained 2"},
      {[](Settings& s) { s.SetStartDesigns(Eigen::MatrixXd::Constant(2, 2, 0.5)); },
       "NLPQLP requires a single start design, obtained 2"},
      {[](Settings& s) { s.SetNumberParallel(16); },
       "The number of parallel linesearches must be at least 1 and less than 16, obtained 16"},
      {[](Settings& s) { s.SetGradientDx(Eigen::Vector2d(0.001, 0.0)); },
       "The step size for numerical differentiation must be greater than zero."},
      {[](Settings& s) { s.SetGradientDx(Eigen::VectorXd::Constant(3, 0.001)); },
       "The step size vector for numerical differentiation does not have correct dimension, "
       "expected 2, obtained 3"},
      {[](Settings& s) { s.SetGradientDx(0.3); },
       "The step size for numerical differentiation should not exceed 10% of the parameter range."},
      {[](Settings& s) { s.SetAccuracy(0.2); },
       "The desired accuracy should be between 1e-10 and 0.1, obtained 0.2"},
      {[=](Settings& s) { s.SetAccuracy(nan); },
       "The desired accuracy should be between 1e-10 and 0.1, obtained nan"},
      {[](Settings& s) { s.SetStackSize(51); },
       "The stack size for nonmonotonous line search must be non-negative and not be greater than "
       "50, obtained 51"},
      {[](Settings& s) {
         s.SetUseInitialStepsizeLimit(true);
         s.SetMaxStepsize(Eigen::VectorXd::Ones(1));
       },
       "The vector containing the maximum allowed step size does not have the correct dimension, "
       "expected 2, obtained 1"},
      {[](Settings& s) {
         s.SetUseInitialStepsizeLimit(true);
         s.SetMaxStepsize(0.005);
       },
       "The maximum step size must be more than 5x as large as the differentiation step size!"},
      {[=](Settings& s) {
         s.SetUseInitialStepsizeLimit(true);
         s.SetMaxStepsize(inf);
       },
       "The maximum allowed step size vector must contain valid finite numbers (no NaN, no INF)."},
  };
  for (const Case& one : cases) {
    Settings settings = Bounded();
    one.change(settings);
    EXPECT_EQ(
        support::MessageOfExactly<corvath::utils::runtime_error>([&] { settings.Check(nullptr); }),
        one.text);
  }
  Settings boundless(1);
  boundless.SetGradientDx(inf);
  EXPECT_EQ(support::MessageOf([&] { boundless.Check(nullptr); }),
            "The step sizes for numerical differentiation must be valid finite numbers (no NaN, no "
            "INF).");

  corvath::utils::log::VectorLog log;
  Settings narrow = Bounded();
  narrow.SetUseInitialStepsizeLimit(true);
  narrow.SetMaxStepsize(0.01);
  narrow.Check(&log);
  ASSERT_EQ(log.GetLines().size(), 1u);
  EXPECT_EQ(log.GetLines()[0].second,
            L"The maximum step size should be more than 20x as large as the differentiation step "
            L"size.");
}

TEST(OptimizerSettings, WarnOfStartDesignsOutsideTheBounds) {
  // An algorithm that is no gradient method only warns.
  Settings settings = Bounded();
  settings.SetStartDesigns(Eigen::Matrix2d{{0.0, 4.5}, {-1.5, 1.0}});
  corvath::utils::log::VectorLog log;
  settings.Base::Check(&log);
  ASSERT_EQ(log.GetLines().size(), 2u);
  for (const auto& [level, line] : log.GetLines()) EXPECT_EQ(level, corvath::utils::log::kWarning);
  EXPECT_EQ(log.GetLines()[0].second, L"At least one entry is greater than upper bound");
  EXPECT_EQ(log.GetLines()[1].second, L"At least one entry is lower than lower bound");
  settings.SetStartDesigns(Eigen::MatrixXd(1, 3));
  EXPECT_EQ(support::MessageOfExactly<corvath::utils::runtime_error>(
                [&] { settings.Base::Check(nullptr); }),
            "Start designs have wrong dimension. Expected number of cols: 2, obtained: 3.");
}

Settings Filled() {
  Settings settings = Bounded();
  settings.SetParameterTypes({1, 2});
  settings.SetDiscreteState(1, Eigen::Vector3d(1.0, 2.0, 3.0));
  settings.SetMaxNumFunctionCalls(77);
  settings.SetAccuracy(1e-4);
  settings.SetNumberParallel(3);
  settings.SetGradientDx(Eigen::Vector2d(0.01, 0.02));
  settings.SetStackSize(4);
  settings.SetNumericalDifferences(NumericalDifferences::kFivePoint);
  settings.SetUseInitialStepsizeLimit(true);
  settings.SetMaxStepsize(Eigen::Vector2d(0.5, 0.6));
  settings.SetMinStepsize(0.125);
  return settings;
}

TEST(OptimizerSettings, ReturnFromTheArchiveAlsoThroughTheirBase) {
  const Settings settings = Filled();
  EXPECT_TRUE(support::Load<Settings>(support::Save(settings)).Equals(settings));

  const boost::shared_ptr<Base> pointer(settings.Clone());
  const std::string bytes = support::Save(pointer);
  EXPECT_NE(bytes.find("::corvath::algorithm::optimizer::OptimizerSettingsNLPQLP < "
                       "corvath::typedefs::float_type >"),
            std::string::npos);
  EXPECT_TRUE(support::Load<boost::shared_ptr<Base>>(bytes)->Equals(settings));
}

/// The form of `Filled()` with continuous parameters, over that version of the base part.
support::StoredForm<Settings> FormOf(unsigned base_version) {
  using support::Since;
  using Gradient = corvath::algorithm::optimizer::OptimizerSettingsGradientBase<double>;
  // Tracked are the classes with an export key that pointers can hold; the base is abstract.
  support::StoredForm<Base, false> base(1);
  base.Raw("ninputs_", std::uint64_t{2}).Raw("nobjectives_", std::uint64_t{1});
  base.Raw("nequalities_", std::uint64_t{1}).Raw("ninequalities_", std::uint64_t{1});
  base.Raw("start_designs_", Eigen::MatrixXd(Bounded().GetStartDesigns()));
  base.Raw("lowerbounds_", Eigen::VectorXd(Bounded().GetLowerBounds()));
  base.Raw("upperbounds_", Eigen::VectorXd(Bounded().GetUpperBounds()));
  base.Raw("parameter_types_", std::vector<std::int32_t>{0, 0}, Since(1));
  base.Raw("discrete_states_vector_", std::vector<Eigen::VectorXd>(2), Since(1));
  support::StoredForm<Gradient> gradient(0);
  gradient.Part("OptimizerSettingsBase<T>", base, base_version);
  gradient.Raw("max_num_function_calls_", std::uint64_t{77}).Raw("accuracy_", 1e-4);
  support::StoredForm<Settings> form(2);
  form.Part("OptimizerSettingsGradientBase<T>", gradient);
  form.Raw("nparallel_", std::uint64_t{3});
  form.Raw("computeinititalhessian", std::int32_t{1}, support::Until(0));
  form.Raw("gradient_dx_", Eigen::VectorXd(Eigen::Vector2d(0.01, 0.02)));
  form.Raw("nonmonotonous_line_search_stack_size_", std::uint64_t{4});
  form.Raw("numerical_differences_", NumericalDifferences::kFivePoint);
  form.Raw("use_initial_stepsize_limit_", true, Since(1));
  form.Raw("max_stepsize_", Eigen::VectorXd(Eigen::Vector2d(0.5, 0.6)), Since(1));
  form.Raw("min_stepsize_", 0.125, Since(2));
  return form;
}

TEST(OptimizerSettings, ReadTheirOldVersions) {
  Settings expected = Filled();
  expected.ResetParameterTypes();
  expected.ResetDiscreteStates();
  EXPECT_EQ(FormOf(1).Write(2), support::Save(expected));  // names, order, versions of today
  const auto read = [](unsigned version, unsigned base_version) {
    Settings settings = Filled();  // so that a default that is not restored shows
    support::LoadInto(FormOf(base_version).Write(version), settings);
    return settings;
  };
  EXPECT_TRUE(read(2, 0).Equals(expected));
  expected.SetMinStepsize(0.0);
  EXPECT_TRUE(read(1, 1).Equals(expected));
  expected.SetUseInitialStepsizeLimit(false);
  expected.SetMaxStepsize(0.2);
  EXPECT_TRUE(read(0, 0).Equals(expected));
}

}  // namespace
