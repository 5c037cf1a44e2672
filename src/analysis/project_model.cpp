#include "analysis/project_model.h"

#include "analysis/progress.h"
#include "calculator/criteria_evaluation.h"
#include "design/designs/input_columns.h"
#include "design/parameters/random_conversion.h"
#include "foundation/constants.h"
#include "foundation/text_stream.h"
#include "metamodel/local_errors.h"
#include "project/records/detailed_information.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <new>
#include <set>
#include <utility>

namespace corvath::analysis {
namespace {

using algorithm::datatypes::Design;
using algorithm::datatypes::DeterministicProperties;
using algorithm::datatypes::InputColumns;
using algorithm::datatypes::InputSide;
using algorithm::datatypes::Parameter;
using Eigen::Index;
using zel::ExtrapolationType;
using zel::ScalarNumber;

using math::kNaN;

/// Passes each line on once: an analysis evaluates criteria in thousands of blocks, each of which
/// would tell the same of a name that expressions cannot use.
class OnceLog : public utils::LogBase {
 public:
  explicit OnceLog(boost::shared_ptr<utils::LogBase> log) : log_(std::move(log)) {}
  void Write(std::uint32_t level, std::wstring text) override {
    constexpr std::size_t kMostLines = 100;  // lines may show values, and then all differ
    const std::lock_guard<std::mutex> lock(mutex_);
    if (told_.size() < kMostLines && told_.insert(text).second) log_->Write(level, std::move(text));
  }

 private:
  const boost::shared_ptr<utils::LogBase> log_;
  std::mutex mutex_;
  std::set<std::wstring> told_;
};

double CoPOf(const algorithm::datatypes::SurrogateInfo& info) {
  return info.GetAppraisalData().HasCoP() ? info.GetAppraisalData().GetCoP() : kNaN;
}

/// The states of a discrete domain as numbers that models take: by index, a state is its position.
std::vector<double> StatesOf(const DeterministicProperties& property) {
  std::vector<double> states;
  for (const auto& state : property.GetDiscreteStates()) {
    const bool by_value = property.GetKind() == enums::DeterministicProperties::ORDINAL_BY_VALUE;
    const auto number = by_value ? ScalarNumber(state) : static_cast<double>(states.size());
    if (number && std::isfinite(*number)) states.push_back(*number);
  }
  return states;
}

/// Criteria of analysed designs at their own responses.
Eigen::MatrixXd CriteriaOf(std::vector<Design> designs,
                           const algorithm::datatypes::CriterionSequence& criteria) {
  calculator::CriteriaOptions options;
  options.allow_invalid_responses = true;  // costs the criteria that need them alone
  calculator::CriteriaEvaluation evaluation(options);
  Eigen::MatrixXd values(static_cast<Index>(designs.size()), static_cast<Index>(criteria.size()));
  for (std::size_t d = 0; d < designs.size(); ++d) {
    designs[d].SetCriteria(criteria);
    for (auto& criterion : designs[d].GetCriteria()) criterion.second.Invalidate();
    evaluation.Calculate(designs[d]);
    for (std::size_t k = 0; k < criteria.size(); ++k)
      values(static_cast<Index>(d), static_cast<Index>(k)) =
          ScalarNumber(designs[d].GetCriteria()[k].second.GetValue()).value_or(kNaN);
  }
  return values;
}

}  // namespace

ProjectModel::ProjectModel(boost::shared_ptr<zel::ZELSolver> solver,
                           const CriterionSequence& more_criteria)
    : solver_(std::move(solver)),
      log_(boost::make_shared<OnceLog>(solver_->GetLogger())),
      criteria_(solver_->GetCriteriaTemplates()),
      input_names_(solver_->GetInputNames()),
      output_names_(solver_->GetOutputNames()) {
  std::vector<StudyInput> inputs;
  for (const std::wstring& name : input_names_) inputs.push_back(MakeInput(name));
  std::vector<StudyQuantity> quantities;
  for (const std::wstring& name : output_names_)
    quantities.push_back({name, StudyQuantity::Kind::kResponse, std::nullopt,
                          CoPOf(solver_->GetSurrogateInfos().GetSurrogateInfo(name))});
  const auto is_taken = [&](const std::wstring& name) {
    return criteria_.Has(name) ||
           std::count(output_names_.begin(), output_names_.end(), name) > 0 ||
           std::count(input_names_.begin(), input_names_.end(), name) > 0;
  };
  for (const auto& [name, criterion] : more_criteria) {
    if (is_taken(name))
      throw AnalysisError(L"The project has a quantity \"" + name + L"\" already.");
    criteria_.Append(name, criterion);
  }
  for (const auto& [name, criterion] : criteria_)
    quantities.push_back(
        {name, criterion.IsLimitState() ? StudyQuantity::Kind::kLimit : StudyQuantity::Kind::kValue,
         criterion.GetDescription(), kNaN});
  Describe(std::move(inputs), std::move(quantities),
           algorithm::datatypes::BuildCorrelationMatrix(solver_->GetProject().GetParameterManager(),
                                                        input_names_));
}

bool ProjectModel::IsStochastic() const {
  return solver_->GetProject().GetSamplingType() ==
         algorithm::datatypes::DetailedInformationBase::kStochasticSampling;
}

StudyInput ProjectModel::MakeInput(const std::wstring& name) const {
  const auto& manager = solver_->GetProject().GetParameterManager();
  const Parameter& parameter = manager.GetParameter(name);
  StudyInput input;
  input.name = name;
  if (!IsStochastic()) SetDomain(parameter, input);
  SetDataBounds(input);
  if (parameter.HasRandom()) input.variable = algorithm::datatypes::ParameterToRV(parameter);
  try {
    const auto side = IsStochastic() ? InputSide::kRandom : InputSide::kDeterministic;
    const std::vector<const Design*> reference = {&solver_->GetReferenceDesign()};
    input.reference = InputColumns::Of(manager, {name}, side).ToMatrix(reference)(0, 0);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {  // no reference value, or none that is a number
    if (input.variable) input.reference = input.variable->GetStats()(0);
  }
  return input;
}

void ProjectModel::SetDomain(const Parameter& parameter, StudyInput& input) const {
  const DeterministicProperties& property = parameter.GetDeterministicProperty(0);
  if (property.GetKind() != enums::DeterministicProperties::CONTINUOUS) {
    input.states = StatesOf(property);
    if (input.states.empty()) return;
    input.lower = input.states.front();
    input.upper = input.states.back();
    return;
  }
  // Unbounded domains are stored with the largest doubles.
  constexpr double kNone = std::numeric_limits<double>::max();
  const double lower = ScalarNumber(property.GetLowerBound()).value_or(-kNone);
  const double upper = ScalarNumber(property.GetUpperBound()).value_or(kNone);
  if (lower > -kNone) input.lower = lower;
  if (upper < kNone) input.upper = upper;
}

/// Where no domain tells a bound, the analysed designs do.
void ProjectModel::SetDataBounds(StudyInput& input) const {
  const auto& bounds = solver_->GetInputBounds();
  const auto found = bounds.find(input.name);
  if (found == bounds.end()) return;
  if (!std::isfinite(input.lower))
    input.lower = ScalarNumber(found->second.first).value_or(input.lower);
  if (!std::isfinite(input.upper))
    input.upper = ScalarNumber(found->second.second).value_or(input.upper);
}

Eigen::MatrixXd ProjectModel::Responses(const ConstPoints& x) const {
  const auto result =
      solver_->ApproximateMatrix(x, /*with_criteria=*/false, ExtrapolationType::kUnbounded,
                                 /*throw_on_error=*/true);
  return Eigen::Map<const Eigen::MatrixXd>(result.responses.data(), x.rows(), GetNumResponses());
}

Eigen::MatrixXd ProjectModel::Criteria(const ConstPoints& x, const ConstPoints& responses) const {
  const auto num_criteria = static_cast<Index>(criteria_.size());
  Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> values(x.rows(),
                                                                                num_criteria);
  if (values.size() == 0) return values;
  zel::EvaluateCriteriaAtRows(input_names_, output_names_, criteria_, x, responses, log_,
                              idle_criteria_, values.data());
  return values;
}

Eigen::VectorXd ProjectModel::StandardErrors() const {
  errors_once_.Do([this] { standard_errors_ = FindStandardErrors(); });
  return standard_errors_;
}

Eigen::VectorXd ProjectModel::FindStandardErrors() const {
  Eigen::VectorXd errors = Eigen::VectorXd::Constant(GetNumResponses(), kNaN);
  const Eigen::MatrixXd nowhere(0, GetNumInputs());
  for (Index k = 0; k < errors.size(); ++k) {
    const std::wstring& name = output_names_[static_cast<std::size_t>(k)];
    LocalErrors(k, nowhere);  // builds the residuals of a model that was stored without
    const auto& model = solver_->GetSurrogateInfos().GetSurrogateInfo(name).GetSurrogate();
    if (!model || model->GetResiduals().size() == 0) continue;
    errors(k) = std::sqrt(model->GetResiduals().squaredNorm() /
                          static_cast<double>(model->GetResiduals().size()));
  }
  return errors;
}

Eigen::MatrixXd ProjectModel::LocalErrors(Index response, const ConstPoints& x) const {
  constexpr Index kColumns = math::metamodel::kNumErrorColumns;
  std::vector<double> values;
  try {
    values = solver_->ErrorsPerResponse(output_names_[static_cast<std::size_t>(response)], x,
                                        ExtrapolationType::kUnbounded, /*throw_on_error=*/true);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {  // the model has none
  }
  if (static_cast<Index>(values.size()) != x.rows() * kColumns)
    return Eigen::MatrixXd::Constant(x.rows(), kColumns, kNaN);
  return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, kColumns, Eigen::RowMajor>>(
      values.data(), x.rows(), kColumns);
}

const StudyDesigns& ProjectModel::GetDesigns() const {
  designs_once_.Do([this] { designs_ = FindDesigns(); });
  return designs_;
}

StudyDesigns ProjectModel::FindDesigns() const {
  const auto& project = solver_->GetProject();
  const auto& off = project.GetDeactivatedDesigns();
  std::vector<Design> active;
  for (const Design& design : project.GetDesignContainer().GetDesigns())
    if (off.count(design.GetId()) == 0) active.push_back(design);
  StudyDesigns designs;
  for (const Design& design : active) {
    utils::WideTextStream number;
    number << design.GetId();
    designs.numbers.push_back(number.str());
  }
  const auto side = IsStochastic() ? InputSide::kRandom : InputSide::kDeterministic;
  designs.inputs =
      InputColumns::Of(project.GetParameterManager(), input_names_, side).ToMatrix(active);
  designs.values = Eigen::MatrixXd::Constant(designs.inputs.rows(), GetNumQuantities(), kNaN);
  const algorithm::datatypes::DesignManager container(active);
  const auto widths = container.GetModelResponseWidths();
  const auto names = algorithm::datatypes::DesignManager::GetResponseNames(widths);
  const Eigen::MatrixXd values = container.GetResponseMatrix(widths);
  for (Index k = 0; k < GetNumResponses(); ++k) {
    const auto found =
        std::find(names.begin(), names.end(), output_names_[static_cast<std::size_t>(k)]);
    if (found != names.end()) designs.values.col(k) = values.col(found - names.begin());
  }
  designs.values.rightCols(GetNumQuantities() - GetNumResponses()) =
      CriteriaOf(std::move(active), criteria_);
  return designs;
}

}  // namespace corvath::analysis
