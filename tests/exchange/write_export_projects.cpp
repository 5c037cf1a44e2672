#include "literature/plate_project.h"
#include "metamodel/factories.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/thin_plate_splines.h"
#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "support/points.h"
#include "support/values.h"

#include <boost/make_shared.hpp>

#include <cmath>
#include <type_traits>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace corvath::math::metamodel;
using corvath::math::transform::TransformType;

constexpr Eigen::Index kNumDesigns = 60;
const std::vector<std::wstring> kInputs{L"x", L"*/ int y; /*?\?/",
                                        L"Gr\u00f6\u00dfe \"\\\n</script>"};

struct Case {
  std::wstring name;
  boost::shared_ptr<SurrogateBase> model;
};

/// With a transform of values, and limits that cut some of them off.
void SetTransforms(SurrogateSettingsBase& settings, double lambda) {
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({lambda, 0.1, 10.1});
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({2.0, HUGE_VAL});
}

template <class Model, class Settings>
boost::shared_ptr<SurrogateBase> Built(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                       const Settings& settings) {
  auto model = boost::make_shared<Model>(points, values, settings);
  if (!model->Build()) throw std::logic_error("a model was not built");
  return model;
}

template <class Settings>
Settings WithKernel(KernelType type, const Eigen::VectorXd& parameter) {
  Settings settings(3);
  settings.SetKernelType(type);
  settings.SetKernelParameter(parameter);
  return settings;
}

/// Every family, kernel and transform; among the names some that come to one identifier.
std::vector<Case> MakeCases(const Eigen::MatrixXd& x, const Eigen::VectorXd& y) {
  const auto one = [](double radius) { return Eigen::VectorXd::Constant(1, radius); };
  const auto mls = [&](KernelType type, double parameter, std::uint64_t order) {
    auto settings = WithKernel<MovingLeastSquaresSettings>(type, one(parameter));
    settings.SetOrder(order);
    return settings;
  };
  std::vector<Case> cases;
  for (const double lambda : {0.0, 1.0, 0.5, 1.0 / 3.0, -1.0}) {
    LinearRegressionSettings settings(3);
    settings.SetOrder(lambda == 0.0 ? 3 : 2);
    SetTransforms(settings, lambda);
    if (lambda == 1.0) settings.SetVariableSelection({true, false, true});
    cases.push_back({cases.empty() ? L"mass" : L"class*/-" + std::wstring(cases.size(), L'?'),
                     Built<LinearRegression>(x, y, settings)});
  }
  LinearRegressionSettings plain(3);
  plain.SetCoordTransform(TransformType::kNone);
  plain.SetValueTransform(TransformType::kMinMax);
  cases.push_back({L"stress[1]", Built<LinearRegression>(x, y, plain)});
  cases.push_back(
      {L"stress[0]",
       Built<OrdinaryKriging>(
           x, y, WithKernel<OrdinaryKrigingSettings>(KernelType::kConstInflIsoExp, one(1.5)))});
  auto selected =
      WithKernel<OrdinaryKrigingSettings>(KernelType::kConstInflExp, Eigen::Vector2d(1.5, 0.8));
  selected.SetVariableSelection({false, true, true});
  SetTransforms(selected, 0.5);
  cases.push_back({L"a b", Built<OrdinaryKriging>(x, y, selected)});
  auto average = mls(KernelType::kNodalInflExp, 7.9, 1);
  average.SetOrder(0);
  cases.push_back({L"a_b", Built<MovingLeastSquares>(x, y, average)});
  cases.push_back(
      {L"a-b", Built<MovingLeastSquares>(x, y, mls(KernelType::kNodalInflExp, 25.0, 1))});
  auto fit = mls(KernelType::kConstInflIsoExp, 1.5, 2);
  SetTransforms(fit, 0.0);
  cases.push_back({L"a_b_2", Built<MovingLeastSquares>(x, y, fit)});
  cases.push_back(
      {L"%n", Built<MovingLeastSquares>(x, y, mls(KernelType::kConstInflIsoReg, 2.0, 1))});
  cases.push_back(
      {L"\u202eflat", Built<MovingLeastSquares>(x, Eigen::VectorXd::Constant(x.rows(), 3.0),
                                                mls(KernelType::kConstInflIsoExp, 0.6, 1))});
  auto splines = boost::make_shared<SurrogateTPS>(x, y);
  splines->Build();
  cases.push_back({L"<b>3</b>&amp;", splines});
  return cases;
}

CriterionSequence MakeCriteria() {
  using C = CriterionDescription;
  return {{L"goal", Criterion(C::RHS, L"", L"-x^2+2*x/mass-3^-1+(x+1)^1.5-ln(mass)+log(mass)")},
          {L"pole", Criterion(C::RHS, L"", L"mass/(x-x)")},
          {L"all", Criterion(C::RHS, L"", L"max(abs(stress-5))-mean(stress)+sum(2*stress-mass)/4")},
          {L"chain", Criterion(C::NEGATIVE_RHS, L"", L"goal+pi*all*sqrt(x+1)-min(x,1,mass)")},
          {L"limit*/", Criterion(C::LIMIT_LHS_BELOW_RHS, L"stress[0]", L"max(3,mass)")},
          {L"names", Criterion(C::RHS, L"", L"-2^2+2^-3^x-8/4/2+7-3-2*-mass")},
          {L"loop", Criterion(C::RHS, L"", L"pool+1")},
          {L"pool", Criterion(C::RHS, L"", L"loop+1")},
          {L"truth", Criterion(C::RHS, L"", L"mass<3")},
          {L"macro", Criterion(C::RHS, L"", L"$ABSOLUTE_ERROR(mass,3)")},
          {L"unknown", Criterion(C::RHS, L"", L"nothing+1")},
          {L"reads", Criterion(C::RHS, L"", L"truth+1")},
          {L"vector", Criterion(C::RHS_ANY, L"", L"2*stress")}};
}

VRDB MakeProject(const std::vector<std::wstring>& inputs, const Eigen::MatrixXd& x,
                 const Eigen::VectorXd& y, const std::vector<Case>& cases,
                 const CriterionSequence& criteria) {
  VRDB project;
  for (const std::wstring& input : inputs) {
    Parameter parameter(input);
    parameter.SetDeterministicProperty(DeterministicProperties::Continuous(-30.0, 70.0));
    project.GetParameterManager().AddParameter(parameter);
  }
  SurrogateInfo::HidVector ids;
  for (Eigen::Index d = 0; d < x.rows(); ++d) {
    EntrySequence parameters;
    for (std::size_t i = 0; i < inputs.size(); ++i)
      parameters.Append(inputs[i], CDesignEntry(x(d, static_cast<Eigen::Index>(i))));
    EntrySequence responses;
    for (const Case& c : cases)
      if (c.name.find(L"stress") != 0)
        responses.Append(c.name, CDesignEntry(c.model->GetValues()(d)));
    responses.Append(L"stress", CDesignEntry(support::Vec({y(d), y(d)})));
    ids.emplace_back(static_cast<std::uint64_t>(d) + 1);
    Design design(std::move(parameters), ids.back());
    design.SetResponses(std::move(responses));
    design.SetCriteria(criteria);
    project.GetDesignContainer().Add(std::move(design));
  }
  project.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(AlgorithmInfo::kZEL);
  const auto detail = project.GetAlgorithmInfo()->GetZELInformation();
  detail->SetSamplingType(1);
  for (const Case& c : cases) {
    SurrogateInfo info = c.name == L"stress[0]"   ? SurrogateInfo(L"stress", 0)
                         : c.name == L"stress[1]" ? SurrogateInfo(L"stress", 1)
                                                  : SurrogateInfo(c.name);
    info.SetSurrogate(c.model);
    info.SetParameters(inputs, BitVector(inputs.size(), true));
    info.SetUsedHids(ids);
    detail->surrogate_infos_.AddOrReplace(std::move(info));
  }
  return project;
}

VRDB MakeHostileProject() {
  Eigen::MatrixXd x = support::UniformPoints(kNumDesigns, 3, /*seed=*/5);
  x.col(2) = 100.0 * x.col(2).array() - 30.0;
  const Eigen::VectorXd y =
      3.0 + x.col(0).array().square() + (0.05 * x.col(2).array()).sin() - x.col(1).array();
  return MakeProject(kInputs, x, y, MakeCases(x, y), MakeCriteria());
}

/// Of a single input, which a power transforms; for the power 1 with a kriging whose weights nearly
/// cancel, over more points than the library adds up at once.
VRDB MakeSingleProject() {
  const Eigen::MatrixXd x = 30.0 * support::UniformPoints(300, 1, /*seed=*/6);
  const Eigen::VectorXd y = (0.2 * x.array()).exp() + x.array().sin();
  std::vector<Case> cases;
  const auto add = [&](auto settings, double lambda) {
    settings.SetCoordTransform(TransformType::kBoxCox);
    settings.SetCoordTransformParameter({lambda, 0.1, 10.1});
    const std::wstring name = L"y" + std::to_wstring(cases.size());
    if constexpr (std::is_same_v<decltype(settings), LinearRegressionSettings>)
      cases.push_back({name, Built<LinearRegression>(x, y, settings)});
    else if constexpr (std::is_same_v<decltype(settings), OrdinaryKrigingSettings>)
      cases.push_back({name, Built<OrdinaryKriging>(x, y, settings)});
    else
      cases.push_back({name, Built<MovingLeastSquares>(x, y, settings)});
  };
  for (const double lambda : {0.0, 1.0, 0.5, -1.0 / 3.0}) {
    LinearRegressionSettings polynomial(1);
    polynomial.SetOrder(3);
    add(polynomial, lambda);
    OrdinaryKrigingSettings kriging(1);
    kriging.SetKernelType(lambda == 0.0 ? KernelType::kConstInflIsoExp : KernelType::kConstInflExp);
    kriging.SetKernelParameter(Eigen::VectorXd::Constant(1, 20.0));
    kriging.SetNugget(lambda == 1.0 ? 1e-12 : 1e-2);
    add(kriging, lambda);
    MovingLeastSquaresSettings fit(1);
    fit.SetKernelType(KernelType::kConstInflIsoExp);
    fit.SetKernelParameter(Eigen::VectorXd::Constant(1, 2.0));
    fit.SetOrder(1);
    add(fit, lambda);
  }
  return MakeProject({L"x"}, x, y, cases, {});
}

/// Local fits whose normal equations are nearly singular or singular: the second input follows the
/// first one but for a little, the third takes two values, designs stand twice, and radii reach from
/// some neighbours to far beyond all designs.
VRDB MakeSingularProject() {
  Eigen::MatrixXd x = support::UniformPoints(kNumDesigns, 3, /*seed=*/7);
  x.bottomRows(kNumDesigns / 2) = x.topRows(kNumDesigns / 2);
  x.col(1) = x.col(0) + 1e-6 * x.col(1);
  x.col(2) = (x.col(2).array() < 0.5).select(0.1, Eigen::VectorXd::Ones(kNumDesigns));
  const Eigen::VectorXd y = (3.0 * x.col(0).array()).sin() + x.col(2).array();
  std::vector<Case> cases;
  for (const KernelType type : {KernelType::kConstInflIsoExp, KernelType::kConstInflExp,
                                KernelType::kConstInflIsoReg, KernelType::kNodalInflExp})
    for (const double radius : {0.2, 0.7, 30.0})
      for (const std::uint64_t order : {0u, 1u, 2u}) {
        const bool is_nodal = type == KernelType::kNodalInflExp;
        auto settings = WithKernel<MovingLeastSquaresSettings>(
            type, Eigen::VectorXd::Constant(type == KernelType::kConstInflExp ? 3 : 1,
                                            is_nodal ? 20.0 + radius : radius));
        settings.SetOrder(order);
        cases.push_back(
            {L"y" + std::to_wstring(cases.size()), Built<MovingLeastSquares>(x, y, settings)});
      }
  return MakeProject({L"a", L"b", L"c"}, x, y, cases, {});
}

}  // namespace

/// Writes the projects of the tests into a directory: three with all that can be exported, one with
/// a response that cannot.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string directory = std::string(argv[1]) + '/';
  SaveProjectFile(MakeSingleProject(), directory + "single.vrdb");
  SaveProjectFile(MakeSingularProject(), directory + "singular.vrdb");
  SaveProjectFile(MakeHostileProject(), directory + "hostile.vrdb");
  VRDB missing = literature::MakePlateProject();
  literature::SetModel(missing, L"mass", nullptr);
  SaveProjectFile(missing, directory + "missing.vrdb");
}
