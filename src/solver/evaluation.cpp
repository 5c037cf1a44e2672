#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "solver/model_points.h"
#include "solver/row_ranges.h"
#include "solver/zel_solver.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

namespace corvath::zel {
namespace {

using utils::log::kError;
using utils::log::LogLine;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// The rows one after the other.
std::vector<double> Flatten(const Eigen::MatrixXd& matrix) {
  std::vector<double> flat(static_cast<std::size_t>(matrix.size()));
  Eigen::Map<RowMajor>(flat.data(), matrix.rows(), matrix.cols()) = matrix;
  return flat;
}

/// The values of all parts, one part after the other.
std::vector<double> Join(std::vector<std::vector<double>> parts) {
  std::vector<double> all = std::move(parts.front());
  all.reserve(all.size() * parts.size());
  for (std::size_t i = 1; i < parts.size(); ++i)
    all.insert(all.end(), parts[i].begin(), parts[i].end());
  return all;
}

Eigen::MatrixXd Errors(const ZELSolver::VRDB&, const std::wstring&,
                       const ZELSolver::SurrogatePointer& surrogate,
                       const ZELSolver::ConstPoints& points) {
  return surrogate->ApproximateErrors(points);
}

}  // namespace

/// The values of one response, within no bounds.
/// @param problems  receives what the log is to be told
std::vector<double> ZELSolver::EvaluateModel(const std::wstring& response,
                                             const Evaluator& evaluator, const ConstPoints& matrix,
                                             bool throw_on_error,
                                             std::vector<std::wstring>& problems) {
  try {
    const Model& model = GetModel(response);
    if (!model.surrogate) {
      problems.push_back(L"Evaluation impossible. No metamodel initialized.");
      return {};
    }
    if (!model.is_solvable) problems.push_back(L"Evaluation impossible. Check failed.");
    const RowRanges ranges(static_cast<std::size_t>(matrix.rows()));
    std::vector<std::vector<double>> parts(ranges.GetCount());
    ranges.Run(parts.size(), [&](std::size_t range) {
      const ConstPoints rows = matrix.middleRows(static_cast<Eigen::Index>(ranges.GetBegin(range)),
                                                 static_cast<Eigen::Index>(ranges.GetSize(range)));
      parts[range] = Flatten(
          evaluator(vrdb_, response, model.surrogate, ModelPoints(rows, model.columns).Get()));
    });
    return Join(std::move(parts));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    if (throw_on_error) throw;
    problems.push_back(L"Evaluation of response \"" + response + L"\" failed: " +
                       utils::MessageOf(error));
    return {};
  }
}

std::vector<double> ZELSolver::EvaluateResponse(const std::wstring& response,
                                                const Evaluator& evaluator,
                                                const ConstPoints& matrix, ExtrapolationType type,
                                                bool throw_on_error) {
  if (CheckBounds(matrix, type, throw_on_error)) return {};
  std::vector<std::wstring> problems;
  std::vector<double> values = EvaluateModel(response, evaluator, matrix, throw_on_error, problems);
  for (const std::wstring& problem : problems) LogLine(GetLogger(), kError) << problem;
  return values;
}

std::vector<double> ZELSolver::EvaluateAllResponses(const Evaluator& evaluator,
                                                    const ConstPoints& matrix,
                                                    ExtrapolationType type, bool throw_on_error) {
  if (CheckBounds(matrix, type, throw_on_error)) return {};
  const auto& outputs = GetOutputs();
  std::vector<std::vector<std::wstring>> problems(outputs.size());
  const auto evaluate = [&](std::size_t k) {
    return outputs[k].is_complete
               ? EvaluateModel(outputs[k].name, evaluator, matrix, throw_on_error, problems[k])
               : std::vector<double>();
  };
  // The first that has values tells how many; the others go side by side to their places.
  std::vector<double> result;
  std::size_t first = 0;
  for (; first < outputs.size() && result.empty(); ++first) {
    const std::vector<double> values = evaluate(first);
    if (values.empty()) continue;
    result.assign(outputs.size() * values.size(), std::numeric_limits<double>::quiet_NaN());
    std::copy(values.begin(), values.end(),
              result.begin() + static_cast<std::ptrdiff_t>(first * values.size()));
  }
  const std::size_t block = result.size() / std::max<std::size_t>(outputs.size(), 1);
  RowRanges(static_cast<std::size_t>(matrix.rows()))
      .Run(outputs.size() - first, [&](std::size_t i) {
        const std::vector<double> values = evaluate(first + i);
        if (!values.empty() && values.size() != block)
          throw std::logic_error(
              "EvaluateAllResponses: responses with different numbers of values.");
        std::copy(values.begin(), values.end(),
                  result.begin() + static_cast<std::ptrdiff_t>((first + i) * block));
      });
  for (const auto& of_output : problems)
    for (const std::wstring& problem : of_output) LogLine(GetLogger(), kError) << problem;
  return result;
}

void ZELSolver::BuildErrorsOnce(const std::wstring& response) {
  try {
    const SurrogatePointer& surrogate = GetModel(response).surrogate;
    if (!surrogate || !surrogate->IsBuilt()) return;
    const std::lock_guard<std::mutex> building(errors_mutex_);
    const auto is_done = [&] {
      const std::lock_guard<std::mutex> lock(names_mutex_);
      return with_errors_.count(surrogate.get()) > 0;
    };
    if (is_done()) return;
    try {
      surrogate->BuildErrors();
    } catch (const std::bad_alloc&) {
      throw;  // not for good, as with_errors_ would make it
    } catch (const std::exception&) {
      // The evaluation fails then, with the model's own text.
    }
    const std::lock_guard<std::mutex> lock(names_mutex_);
    with_errors_.insert(surrogate.get());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // An unknown response: the evaluation says so, after its check of the bounds.
  }
}

std::vector<double> ZELSolver::ErrorsPerResponse(const std::wstring& response,
                                                 const ConstPoints& matrix, ExtrapolationType type,
                                                 bool throw_on_error) {
  BuildErrorsOnce(response);
  return EvaluateResponse(response, Errors, matrix, type, throw_on_error);
}

std::vector<double> ZELSolver::ErrorsAllResponses(const ConstPoints& matrix, ExtrapolationType type,
                                                  bool throw_on_error) {
  for (const Output& output : GetOutputs())
    if (output.is_complete) BuildErrorsOnce(output.name);
  return EvaluateAllResponses(Errors, matrix, type, throw_on_error);
}

std::vector<double> ZELSolver::GradientsPerResponse(const std::wstring& response,
                                                    const ConstPoints& matrix,
                                                    ExtrapolationType type, bool throw_on_error) {
  const auto gradients = [this](const VRDB&, const std::wstring& name,
                                const SurrogatePointer& surrogate, const ConstPoints& points) {
    const Columns& columns = GetModel(name).columns;
    const Eigen::MatrixXd by_column = surrogate->ApproximateGradients(points);
    if (columns.empty()) return by_column;
    Eigen::MatrixXd by_input(by_column.rows(), by_column.cols());
    for (std::size_t c = 0; c < columns.size(); ++c)
      by_input.col(columns[c]) = by_column.col(static_cast<Eigen::Index>(c));
    return by_input;
  };
  return EvaluateResponse(response, gradients, matrix, type, throw_on_error);
}

}  // namespace corvath::zel
