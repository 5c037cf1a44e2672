#include "solver/row_criteria.h"

#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "foundation/constants.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Criterion;
using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::RunInfoMeta;
using math::Value;

using math::kNaN;

calculator::CriteriaOptions Options() {
  calculator::CriteriaOptions options;
  options.allow_invalid_responses = true;  // NaN is a prediction like others
  return options;
}

double ValueOf(const Criterion& criterion) {
  try {
    return criterion.GetValue().ToDouble();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return kNaN;  // a vector, for example
  }
}

}  // namespace

RowCriteria::RowCriteria(const std::vector<std::wstring>& inputs,
                         const std::vector<std::wstring>& outputs,
                         const algorithm::datatypes::CriterionSequence& criteria)
    : outputs_(outputs), evaluation_(Options()) {
  EntrySequence parameters;
  for (const std::wstring& input : inputs) parameters.Append(input, CDesignEntry());
  design_ = Design(std::move(parameters), {});
  PlaceOutputs();
  design_.SetCriteria(criteria);
}

/// Finds the places of the outputs in the responses of a design, where the elements of a vector
/// response stand in one value.
void RowCriteria::PlaceOutputs() {
  EntrySequence entries;
  for (const std::wstring& name : outputs_)
    if (!name.empty()) entries.Append(name, CDesignEntry(Value(kNaN)));
  EntrySequence responses = algorithm::datatypes::MergeIndexedResponses(std::move(entries));
  values_.resize(responses.size());
  for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = responses[i].second.GetVariant();
  for (std::size_t k = 0; k < outputs_.size(); ++k) {
    const std::wstring& name = outputs_[k];
    if (name.empty()) continue;
    std::size_t position = responses.FindPosition(name);
    std::size_t element = 0;
    if (position == EntrySequence::npos) {
      const auto parts = algorithm::datatypes::SplitIndexedName(name);
      position = responses.FindPosition(parts.base);
      element = static_cast<std::size_t>(*parts.GetIndex());
    }
    places_.push_back({k, position, element});
  }
  design_.SetResponses(std::move(responses));
}

void RowCriteria::SetResponses(const double* outputs, std::size_t stride) {
  EntrySequence& responses = design_.GetResponses();
  for (const Place& place : places_) {
    const double number = outputs[place.output * stride];
    Value& response = values_[place.position];
    if (response.IsScalar()) {
      responses[place.position].second = CDesignEntry(number);
    } else {
      response.TakeVector(vector_);
      vector_[place.element] = number;
      response.SetVector(vector_);
    }
  }
  for (std::size_t i = 0; i < values_.size(); ++i)
    if (!values_[i].IsScalar()) responses[i].second = CDesignEntry(values_[i]);
}

void RowCriteria::Evaluate(const double* inputs, std::size_t input_stride, const double* outputs,
                           std::size_t output_stride, double* criteria) {
  auto& parameters = design_.GetParameters();
  for (std::size_t i = 0; i < parameters.size(); ++i)
    parameters[i].second = CDesignEntry(inputs[i * input_stride]);
  SetResponses(outputs, output_stride);
  for (auto& criterion : design_.GetCriteria()) criterion.second.Invalidate();
  evaluation_.CalculateAgain(design_);
  if (!design_.GetStatus().IsEmpty()) NoteProblems();
  for (const auto& criterion : design_.GetCriteria()) *criteria++ = ValueOf(criterion.second);
}

void RowCriteria::EvaluateRows(const double* inputs, std::size_t input_stride,
                               const double* outputs, std::size_t output_stride, std::size_t rows,
                               double* criteria) {
  const std::size_t count = GetCount();
  for (std::size_t done = 0; done < rows;) {
    // The first row makes the plan.
    const bool in_block = evaluation_.TakesRows();
    const std::size_t end =
        in_block ? std::min(rows, done + calculator::ScalarProgram::kMaxRows) : done + 1;
    if (in_block)
      EvaluateBlock(inputs + done, input_stride, outputs + done, output_stride, end - done,
                    criteria + done * count);
    for (; done < end; ++done)
      if (!in_block || std::isnan(criteria[done * count]))
        Evaluate(inputs + done, input_stride, outputs + done, output_stride,
                 criteria + done * count);
  }
}

/// What begins with NaN is left to Evaluate().
void RowCriteria::EvaluateBlock(const double* inputs, std::size_t input_stride,
                                const double* outputs, std::size_t output_stride, std::size_t rows,
                                double* criteria) {
  std::vector<const double*> parameters(design_.GetParameters().size());
  for (std::size_t i = 0; i < parameters.size(); ++i) parameters[i] = inputs + i * input_stride;
  std::vector<calculator::CriteriaEvaluation::RowNumbers> responses;
  for (const Place& place : places_)
    responses.push_back(
        {place.position,
         values_[place.position].IsScalar() ? calculator::ScalarProgram::kWhole : place.element,
         outputs + place.output * output_stride});
  evaluation_.CalculateRows(parameters, responses, rows, criteria);
}

bool RowCriteria::IsLasting() const {
  const auto is_vector = [](const auto& criterion) {
    const auto* value = criterion.second.GetValue().template Peek<Value>();
    return value && !value->IsScalar();
  };
  const auto& criteria = design_.GetCriteria();
  return evaluation_.IsLasting() && std::none_of(criteria.begin(), criteria.end(), is_vector);
}

void RowCriteria::NoteProblems() {
  for (const RunInfoMeta& problem : design_.GetStatus().GetMessages()) {
    const std::wstring& name = problem.GetResponseName();
    const auto has_name = [&](const Problem& known) { return known.name == name; };
    if (std::none_of(problems_.begin(), problems_.end(), has_name))
      problems_.push_back({name, {problem.GetMessage().begin(), problem.GetMessage().end()}});
  }
  design_.GetStatus().Clear();
}

}  // namespace corvath::zel
