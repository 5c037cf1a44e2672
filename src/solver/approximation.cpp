#include "design/designs/indexed_responses.h"
#include "design/designs/input_columns.h"
#include "foundation/constants.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "project/records/detailed_information.h"
#include "solver/model_points.h"
#include "solver/row_ranges.h"
#include "solver/zel_solver.h"

#include <algorithm>
#include <new>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::InputColumns;
using algorithm::datatypes::InputSide;
using utils::log::kError;
using utils::log::LogLine;

using math::kNaN;

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
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    LogLine(GetLogger(), kError) << L"Error in approximation: " << utils::MessageOf(error);
    if (throw_on_error) throw;
  } catch (...) {
    LogLine(GetLogger(), kError) << L"Unknown error in approximation.";
    if (throw_on_error) throw;
  }
}

/// Predicts one output at the rows of `matrix`.
/// @returns why that failed, as the log tells it; empty when it did not
std::wstring ZELSolver::ApproximateOutput(const Output& output, const ConstPoints& matrix,
                                          double* values) {
  try {
    const SurrogatePointer& surrogate = output.info->GetSurrogate();
    if (!surrogate) return L"Approximation impossible. No metamodel initialized.";
    if (!surrogate->IsBuilt()) return L"Approximation impossible. Check failed.";
    const Eigen::VectorXd predicted =
        surrogate->Approximate(ModelPoints(matrix, output.columns).Get());
    if (predicted.size() != matrix.rows())
      return L"Approximation for response \"" + output.name +
             L"\" failed with incorrect result size.";
    std::copy_n(predicted.data(), predicted.size(), values);
    return {};
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the model
  } catch (const std::exception& error) {
    return L"Approximation for response \"" + output.name + L"\" failed: " +
           utils::MessageOf(error);
  }
}

/// Predicts `n` values of each output and tells which of them succeeded; the values of the others
/// are NaN. Outputs and ranges of rows run side by side; the log has its lines in the order of the
/// outputs, one for each that failed.
std::vector<bool> ZELSolver::ApproximateOutputs(const ConstPoints& matrix, std::size_t n,
                                                double* responses) {
  const auto& outputs = GetOutputs();
  std::vector<bool> predicted(outputs.size(), false);
  if (n == 0) return predicted;
  const RowRanges ranges(n);
  const std::size_t n_ranges = ranges.GetCount();
  std::vector<std::wstring> failures(outputs.size() * n_ranges);
  ranges.Run(failures.size(), [&](std::size_t task) {
    const std::size_t k = task / n_ranges;
    const std::size_t begin = ranges.GetBegin(task % n_ranges);
    const ConstPoints rows =
        matrix.middleRows(static_cast<Eigen::Index>(begin),
                          static_cast<Eigen::Index>(ranges.GetSize(task % n_ranges)));
    failures[task] = ApproximateOutput(outputs[k], rows, responses + k * n + begin);
  });
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const auto begin = failures.begin() + static_cast<std::ptrdiff_t>(k * n_ranges);
    const auto end = begin + static_cast<std::ptrdiff_t>(n_ranges);
    const auto failure = std::find_if(begin, end, [](const auto& text) { return !text.empty(); });
    predicted[k] = failure == end;
    if (predicted[k]) continue;
    LogLine(GetLogger(), kError) << *failure;
    std::fill_n(responses + k * n, n, kNaN);
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
  const auto side =
      vrdb_.GetSamplingType() == algorithm::datatypes::DetailedInformationBase::kStochasticSampling
          ? InputSide::kRandom
          : InputSide::kDeterministic;
  return InputColumns::Of(vrdb_.GetParameterManager(), GetInputNames(), side).ToMatrix(complete);
}

}  // namespace corvath::zel
