#include "solver/row_criteria.h"

#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "foundation/constants.h"
#include "foundation/log_line.h"
#include "foundation/parallel.h"

#include <algorithm>
#include <new>
#include <set>
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
    : evaluation_(Options()) {
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

void RowCriteria::NoteProblems() {
  for (const RunInfoMeta& problem : design_.GetStatus().GetMessages()) {
    const std::wstring& name = problem.GetResponseName();
    const auto has_name = [&](const Problem& known) { return known.name == name; };
    if (std::none_of(problems_.begin(), problems_.end(), has_name))
      problems_.push_back({name, {problem.GetMessage().begin(), problem.GetMessage().end()}});
  }
  design_.GetStatus().Clear();
}

void EvaluateCriteriaAtRows(const std::vector<std::wstring>& inputs,
                            const std::vector<std::wstring>& outputs,
                            const algorithm::datatypes::CriterionSequence& criteria,
                            const math::metamodel::ConstPoints& x,
                            const math::metamodel::ConstPoints& responses,
                            const boost::shared_ptr<utils::LogBase>& log, double* values) {
  // No row depends on another, so the ranges may follow the number of threads. A range costs as much
  // as some 150 rows, for its calculator and the parsing of the texts.
  constexpr std::size_t kLeastRows = 2048;
  const auto n = static_cast<std::size_t>(x.rows());
  const std::size_t threads = utils::GetNumThreads();
  const std::size_t count =
      threads == 1 ? 1 : std::clamp<std::size_t>(n / kLeastRows, 1, 2 * threads);
  std::vector<std::vector<RowCriteria::Problem>> problems(count);
  utils::ParallelTasks(count, [&](std::size_t range) {
    RowCriteria rows(inputs, outputs, criteria);
    const std::size_t end = (range + 1) * n / count;
    for (std::size_t d = range * n / count; d < end; ++d)
      rows.Evaluate(x.data() + d, static_cast<std::size_t>(x.outerStride()), responses.data() + d,
                    static_cast<std::size_t>(responses.outerStride()),
                    values + d * rows.GetCount());
    problems[range] = rows.GetProblems();
  });
  std::set<std::wstring> told;
  for (const auto& of_range : problems)
    for (const RowCriteria::Problem& problem : of_range)
      if (told.insert(problem.name).second)
        for (const std::wstring& message : problem.messages)
          utils::log::LogLine(log, utils::log::kError)
              << L"Error calculating criteria: " << message;
}

}  // namespace corvath::zel
