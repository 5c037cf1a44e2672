#include "solver/row_criteria.h"

#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "foundation/log_line.h"

#include <limits>
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

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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
                         const algorithm::datatypes::CriterionSequence& criteria,
                         boost::shared_ptr<utils::LogBase> log)
    : log_(std::move(log)), evaluation_(Options()) {
  EntrySequence parameters;
  for (const std::wstring& input : inputs) parameters.Append(input, CDesignEntry());
  design_ = Design(std::move(parameters), {});
  PlaceOutputs(outputs);
  design_.SetCriteria(criteria);
}

/// Finds the places of the outputs in the responses of a design, where the elements of a vector
/// response stand in one value.
void RowCriteria::PlaceOutputs(const std::vector<std::wstring>& names) {
  EntrySequence entries;
  for (const std::wstring& name : names)
    if (!name.empty()) entries.Append(name, CDesignEntry(Value(kNaN)));
  EntrySequence responses = algorithm::datatypes::MergeIndexedResponses(std::move(entries));
  values_.resize(responses.size());
  for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = responses[i].second.GetVariant();
  for (std::size_t k = 0; k < names.size(); ++k) {
    if (names[k].empty()) continue;
    std::size_t position = responses.FindPosition(names[k]);
    std::size_t element = 0;
    if (position == EntrySequence::npos) {
      const auto parts = algorithm::datatypes::SplitIndexedName(names[k]);
      position = responses.FindPosition(parts.base);
      element = static_cast<std::size_t>(*parts.GetIndex());
    }
    places_.push_back({k, position, element});
  }
  design_.SetResponses(std::move(responses));
}

void RowCriteria::SetResponses(const double* outputs, std::size_t stride) {
  for (const Place& place : places_) {
    Value& response = values_[place.position];
    if (response.IsScalar()) {
      response.SetScalar(outputs[place.output * stride]);
    } else {
      response.TakeVector(vector_);
      vector_[place.element] = outputs[place.output * stride];
      response.SetVector(vector_);
    }
  }
  for (std::size_t i = 0; i < values_.size(); ++i)
    design_.GetResponses()[i].second = CDesignEntry(values_[i]);
}

void RowCriteria::Evaluate(const double* inputs, std::size_t input_stride, const double* outputs,
                           std::size_t output_stride, double* criteria) {
  auto& parameters = design_.GetParameters();
  for (std::size_t i = 0; i < parameters.size(); ++i)
    parameters[i].second = CDesignEntry(inputs[i * input_stride]);
  SetResponses(outputs, output_stride);
  for (auto& criterion : design_.GetCriteria()) criterion.second.Invalidate();
  evaluation_.Calculate(design_);
  if (!design_.GetStatus().IsEmpty()) TellProblems();
  for (const auto& criterion : design_.GetCriteria()) *criteria++ = ValueOf(criterion.second);
}

void RowCriteria::TellProblems() {
  for (const RunInfoMeta& problem : design_.GetStatus().GetMessages())
    if (known_problems_.insert(problem.GetResponseName()).second)
      for (const std::wstring& message : problem.GetMessage())
        utils::log::LogLine(log_, utils::log::kError) << L"Error calculating criteria: " << message;
  design_.GetStatus().Clear();
}

}  // namespace corvath::zel
