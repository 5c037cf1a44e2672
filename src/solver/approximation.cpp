#include "design/indexed_responses.h"
#include "design/input_columns.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "solver/model_points.h"
#include "solver/zel_solver.h"

#include <algorithm>
#include <limits>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Criterion;
using algorithm::datatypes::Design;
using algorithm::datatypes::DesignId;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::InputColumns;
using algorithm::datatypes::InputSide;
using utils::log::kError;
using utils::log::LogLine;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kStochasticSampling = 2;

/// Evaluates the criteria that the design has been given. There is no calculator yet: they end
/// without values.
void CalculateCriteria(Design& design) {
  for (auto& criterion : design.GetCriteria()) criterion.second.Invalidate();
}

double ValueOf(const Criterion& criterion) {
  try {
    return criterion.GetValue().ToDouble();
  } catch (const std::exception&) {
    return kNaN;  // a vector, for example
  }
}

/// Gives `design` the responses that `pattern` has and `design` lacks, without values.
void AddMissingResponses(const Design& pattern, Design& design) {
  for (const auto& response : pattern.GetResponses())
    if (!design.GetResponses().Has(response.first))
      design.GetResponses().Append(response.first, CDesignEntry());
}

}  // namespace

ApproximationResult ZELSolver::ApproximateMatrix(const ConstPoints& matrix, bool with_criteria,
                                                 ExtrapolationType type, bool throw_on_error) {
  const auto n = static_cast<std::size_t>(matrix.rows());
  ApproximationResult result;
  if (matrix.cols() != static_cast<Eigen::Index>(GetInputNames().size())) {
    const std::wstring message =
        std::to_wstring(GetInputNames().size()) + L" input columns expected.";
    if (throw_on_error) throw utils::out_of_range(message);
    LogLine(GetLogger(), kError) << message;
    return result;
  }
  result.responses.assign(GetOutputNames().size() * n, kNaN);
  if (with_criteria) result.criteria.assign(GetCriteriaList().size() * n, kNaN);
  try {
    if (CheckBounds(matrix, type, throw_on_error)) return result;
    const auto predicted = ApproximateOutputs(matrix, n, result.responses);
    if (!result.criteria.empty()) EvaluateCriteria(matrix, predicted, result);
  } catch (const std::exception& error) {
    LogLine(GetLogger(), kError) << L"Error in approximation: " << utils::MessageOf(error);
    if (throw_on_error) throw;
  } catch (...) {
    LogLine(GetLogger(), kError) << L"Unknown error in approximation.";
    if (throw_on_error) throw;
  }
  return result;
}

/// Predicts each output at all designs and tells which of them succeeded; the values of the others
/// stay as they are. `n` values of an output are wanted.
std::vector<bool> ZELSolver::ApproximateOutputs(const ConstPoints& matrix, std::size_t n,
                                                std::vector<double>& responses) {
  const auto& outputs = GetOutputs();
  std::vector<bool> predicted(outputs.size(), false);
  if (n == 0) return predicted;
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const Output& output = outputs[k];
    try {
      const SurrogatePointer& surrogate = output.info->GetSurrogate();
      if (!surrogate) {
        LogLine(GetLogger(), kError) << L"Approximation impossible. No metamodel initialized.";
        continue;
      }
      if (!surrogate->IsBuilt()) {
        LogLine(GetLogger(), kError) << L"Approximation impossible. Check failed.";
        continue;
      }
      const Eigen::VectorXd values =
          surrogate->Approximate(ModelPoints(matrix, output.columns).Get());
      if (values.size() != static_cast<Eigen::Index>(n)) {
        LogLine(GetLogger(), kError) << L"Approximation for response \"" << output.name
                                     << L"\" failed with incorrect result size.";
        continue;
      }
      std::copy_n(values.data(), n, responses.begin() + static_cast<std::ptrdiff_t>(k * n));
      predicted[k] = true;
    } catch (const std::exception& error) {
      LogLine(GetLogger(), kError) << L"Approximation for response \"" << output.name
                                   << L"\" failed: " << utils::MessageOf(error);
    }
  }
  return predicted;
}

/// The predicted responses of one design, elements of a vector response merged into one value.
EntrySequence ZELSolver::GetResponses(std::size_t design, std::size_t n,
                                      const std::vector<double>& responses,
                                      const std::vector<bool>& predicted) {
  const auto& outputs = GetOutputs();
  EntrySequence entries;
  entries.reserve(outputs.size());
  for (std::size_t k = 0; k < outputs.size(); ++k)
    if (predicted[k])
      entries.Append(outputs[k].name,
                     CDesignEntry(CDesignEntry::Variant(responses[k * n + design])));
  return algorithm::datatypes::MergeIndexedResponses(std::move(entries));
}

/// Fills the criteria of `result`, design by design, from its responses.
void ZELSolver::EvaluateCriteria(const ConstPoints& matrix, const std::vector<bool>& predicted,
                                 ApproximationResult& result) {
  const auto& inputs = GetInputNames();
  const auto& templates = GetCriteriaTemplates();
  const auto n = static_cast<std::size_t>(matrix.rows());
  for (std::size_t d = 0; d < n; ++d) {
    EntrySequence parameters;
    parameters.reserve(inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i)
      parameters.Append(inputs[i], CDesignEntry(matrix(static_cast<Eigen::Index>(d),
                                                       static_cast<Eigen::Index>(i))));
    Design design(std::move(parameters), DesignId(d + 1));
    design.SetResponses(GetResponses(d, n, result.responses, predicted));
    design.SetCriteria(templates);
    CalculateCriteria(design);
    for (std::size_t k = 0; k < templates.size(); ++k)
      result.criteria[d * templates.size() + k] = ValueOf(design.GetCriteria()[k].second);
  }
}

ZELSolver::DesignManager ZELSolver::ApproximateDesigns(const DesignManager& designs,
                                                       bool with_criteria, ExtrapolationType type,
                                                       bool throw_on_error,
                                                       const ConstPoints& matrix) {
  if (matrix.size() == 0 && !designs.empty() && !GetInputNames().empty())
    return ApproximateDesigns(designs, with_criteria, type, throw_on_error, GetInputs(designs));
  if (CheckBounds(matrix, type, throw_on_error)) return designs;

  const std::size_t n = designs.size();
  std::vector<double> responses(GetOutputNames().size() * n, kNaN);
  const auto predicted = ApproximateOutputs(matrix, n, responses);
  std::vector<Design> approximated;
  approximated.reserve(n);
  for (std::size_t d = 0; d < n; ++d) {
    Design design = designs[d];
    design.GetResponses() = GetResponses(d, n, responses, predicted);
    design.GetCriteria().clear();
    design.SetApproximated(true);
    AddMissingResponses(designs[d], design);
    if (with_criteria) {
      design.SetCriteria(GetCriteriaTemplates());
      CalculateCriteria(design);
    }
    approximated.push_back(std::move(design));
  }
  return DesignManager(std::move(approximated));
}

/// The inputs of the designs as the models take them; what a design lacks is taken from the
/// reference design.
Eigen::MatrixXd ZELSolver::GetInputs(const DesignManager& designs) {
  std::vector<Design> complete = designs.GetDesigns();
  for (Design& design : complete)
    for (const auto& parameter : GetReferenceDesign().GetParameters())
      if (!design.GetParameters().Has(parameter.first))
        design.GetParameters().Append(parameter.first, parameter.second);
  const auto side = vrdb_.GetSamplingType() == kStochasticSampling ? InputSide::kRandom
                                                                   : InputSide::kDeterministic;
  return InputColumns::Of(vrdb_.GetParameterManager(), GetInputNames(), side).ToMatrix(complete);
}

}  // namespace corvath::zel
