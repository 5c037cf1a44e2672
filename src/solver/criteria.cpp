#include "calculator/criteria_evaluation.h"
#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "foundation/log_line.h"
#include "solver/zel_solver.h"

#include <limits>
#include <set>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Criterion;
using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::RunInfoMeta;
using calculator::CriteriaEvaluation;
using calculator::CriteriaOptions;
using math::Value;
using utils::log::kError;
using utils::log::LogLine;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double ValueOf(const Criterion& criterion) {
  try {
    return criterion.GetValue().ToDouble();
  } catch (const std::exception&) {
    return kNaN;  // a vector, for example
  }
}

/// The places of predicted outputs in the responses of a design, where the elements of a vector
/// response stand in one value.
class ResponseLayout {
 public:
  /// @param names  of the outputs, those that are not predicted empty
  explicit ResponseLayout(const std::vector<std::wstring>& names) {
    EntrySequence entries;
    for (const std::wstring& name : names)
      if (!name.empty()) entries.Append(name, CDesignEntry(Value(kNaN)));
    responses_ = algorithm::datatypes::MergeIndexedResponses(std::move(entries));
    values_.resize(responses_.size());
    for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = responses_[i].second.GetVariant();
    for (std::size_t k = 0; k < names.size(); ++k) {
      if (names[k].empty()) continue;
      std::size_t position = responses_.FindPosition(names[k]);
      std::size_t element = 0;
      if (position == EntrySequence::npos) {
        const auto parts = algorithm::datatypes::SplitIndexedName(names[k]);
        position = responses_.FindPosition(parts.base);
        element = static_cast<std::size_t>(*parts.GetIndex());
      }
      places_.push_back({k, position, element});
    }
  }

  /// Responses without values.
  const EntrySequence& GetResponses() const { return responses_; }

  /// Fills `responses`, which GetResponses() gave.
  /// @param value  gives that of output k
  template <class ValueOfOutput>
  void Fill(ValueOfOutput value, EntrySequence& responses) {
    for (const Place& place : places_) {
      Value& response = values_[place.position];
      if (response.IsScalar()) {
        response.SetScalar(value(place.output));
      } else {
        response.TakeVector(vector_);
        vector_[place.element] = value(place.output);
        response.SetVector(vector_);
      }
    }
    for (std::size_t i = 0; i < values_.size(); ++i) responses[i].second = CDesignEntry(values_[i]);
  }

 private:
  struct Place {
    std::size_t output;
    std::size_t position;  ///< of the response
    std::size_t element;   ///< in a vector response
  };

  EntrySequence responses_;
  std::vector<Place> places_;
  std::vector<Value> values_;
  Value::Vector vector_;
};

/// Tells the log once what is wrong with a criterion or a response.
class ProblemLog {
 public:
  explicit ProblemLog(ZELSolver::LogPointer log) : log_(std::move(log)) {}

  void Take(Design& design) {
    for (const RunInfoMeta& problem : design.GetStatus().GetMessages())
      if (known_.insert(problem.GetResponseName()).second)
        for (const std::wstring& message : problem.GetMessage())
          LogLine(log_, kError) << L"Error calculating criteria: " << message;
    design.GetStatus().Clear();
  }

 private:
  ZELSolver::LogPointer log_;
  std::set<std::wstring> known_;
};

}  // namespace

/// Evaluates the criteria, design by design, from the predicted responses.
void ZELSolver::EvaluateCriteria(const ConstPoints& matrix, const double* responses,
                                 const std::vector<bool>& predicted, double* criteria) {
  const auto& inputs = GetInputNames();
  const auto& outputs = GetOutputs();
  const auto n = static_cast<std::size_t>(matrix.rows());

  std::vector<std::wstring> names(outputs.size());
  for (std::size_t k = 0; k < outputs.size(); ++k)
    if (predicted[k]) names[k] = outputs[k].name;
  ResponseLayout layout(names);
  ProblemLog problems(GetLogger());
  CriteriaOptions options;
  options.allow_invalid_responses = true;  // NaN is a prediction like others
  CriteriaEvaluation evaluation(options);

  // One design that takes on the values of each row.
  EntrySequence parameters;
  for (const std::wstring& input : inputs) parameters.Append(input, CDesignEntry());
  Design design(std::move(parameters), {});
  design.SetResponses(layout.GetResponses());
  design.SetCriteria(GetCriteriaTemplates());
  for (std::size_t d = 0; d < n; ++d) {
    for (std::size_t i = 0; i < inputs.size(); ++i)
      design.GetParameters()[i].second =
          CDesignEntry(matrix(static_cast<Eigen::Index>(d), static_cast<Eigen::Index>(i)));
    layout.Fill([&](std::size_t k) { return responses[k * n + d]; }, design.GetResponses());
    for (auto& criterion : design.GetCriteria()) criterion.second.Invalidate();
    evaluation.Calculate(design);
    if (!design.GetStatus().IsEmpty()) problems.Take(design);
    for (const auto& criterion : design.GetCriteria()) *criteria++ = ValueOf(criterion.second);
  }
}

/// Gives the designs the project's criteria with their values at the responses that they have.
void ZELSolver::AddCriteria(std::vector<Design>& designs) {
  CriteriaEvaluation evaluation;
  for (Design& design : designs) {
    design.SetCriteria(GetCriteriaTemplates());
    for (auto& criterion : design.GetCriteria()) criterion.second.Invalidate();
    evaluation.Calculate(design);
  }
}

}  // namespace corvath::zel
