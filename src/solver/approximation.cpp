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
using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::InputColumns;
using algorithm::datatypes::InputSide;
using utils::log::kError;
using utils::log::LogLine;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kStochasticSampling = 2;

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
  ApproximateInto(matrix, type, throw_on_error, result.responses.data(), result.criteria.data());
  return result;
}

void ZELSolver::ApproximateInto(const ConstPoints& matrix, ExtrapolationType type,
                                bool throw_on_error, double* responses, double* criteria) {
  try {
    if (CheckBounds(matrix, type, throw_on_error)) return;
    const auto predicted =
        ApproximateOutputs(matrix, static_cast<std::size_t>(matrix.rows()), responses);
    if (criteria != nullptr) EvaluateCriteria(matrix, responses, predicted, criteria);
  } catch (const std::exception& error) {
    LogLine(GetLogger(), kError) << L"Error in approximation: " << utils::MessageOf(error);
    if (throw_on_error) throw;
  } catch (...) {
    LogLine(GetLogger(), kError) << L"Unknown error in approximation.";
    if (throw_on_error) throw;
  }
}

/// Predicts `n` values of one output, or says in the log why not.
bool ZELSolver::ApproximateOutput(const Output& output, const ConstPoints& matrix, std::size_t n,
                                  double* values) {
  try {
    const SurrogatePointer& surrogate = output.info->GetSurrogate();
    if (!surrogate) {
      LogLine(GetLogger(), kError) << L"Approximation impossible. No metamodel initialized.";
      return false;
    }
    if (!surrogate->IsBuilt()) {
      LogLine(GetLogger(), kError) << L"Approximation impossible. Check failed.";
      return false;
    }
    const Eigen::VectorXd predicted =
        surrogate->Approximate(ModelPoints(matrix, output.columns).Get());
    if (predicted.size() != static_cast<Eigen::Index>(n)) {
      LogLine(GetLogger(), kError) << L"Approximation for response \"" << output.name
                                   << L"\" failed with incorrect result size.";
      return false;
    }
    std::copy_n(predicted.data(), n, values);
    return true;
  } catch (const std::exception& error) {
    LogLine(GetLogger(), kError) << L"Approximation for response \"" << output.name
                                 << L"\" failed: " << utils::MessageOf(error);
    return false;
  }
}

/// Predicts `n` values of each output, one after the other, and tells which of them succeeded; the
/// values of the others are NaN.
std::vector<bool> ZELSolver::ApproximateOutputs(const ConstPoints& matrix, std::size_t n,
                                                double* responses) {
  const auto& outputs = GetOutputs();
  std::vector<bool> predicted(outputs.size(), false);
  if (n == 0) return predicted;
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    double* const values = responses + k * n;
    predicted[k] = ApproximateOutput(outputs[k], matrix, n, values);
    if (!predicted[k]) std::fill_n(values, n, kNaN);
  }
  return predicted;
}

/// The predicted responses of one design, elements of a vector response merged into one value.
EntrySequence ZELSolver::GetResponses(std::size_t design, std::size_t n, const double* responses,
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

ZELSolver::DesignManager ZELSolver::ApproximateDesigns(const DesignManager& designs,
                                                       bool with_criteria, ExtrapolationType type,
                                                       bool throw_on_error,
                                                       const ConstPoints& matrix) {
  if (matrix.size() == 0 && !designs.empty() && !GetInputNames().empty())
    return ApproximateDesigns(designs, with_criteria, type, throw_on_error, GetInputs(designs));
  if (CheckBounds(matrix, type, throw_on_error)) return designs;

  const std::size_t n = designs.size();
  std::vector<double> responses(GetOutputNames().size() * n, kNaN);
  const auto predicted = ApproximateOutputs(matrix, n, responses.data());
  std::vector<Design> approximated;
  approximated.reserve(n);
  for (std::size_t d = 0; d < n; ++d) {
    Design design = designs[d];
    design.GetResponses() = GetResponses(d, n, responses.data(), predicted);
    design.GetCriteria().clear();
    design.SetApproximated(true);
    AddMissingResponses(designs[d], design);
    approximated.push_back(std::move(design));
  }
  if (with_criteria) AddCriteria(approximated);
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
