#include "design/designs/design.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"

#include <string>
#include <tuple>
#include <utility>

namespace corvath::algorithm::datatypes {

namespace {

/// Replaces the values of a design, of which it has as many as before or none.
void Replace(EntrySequence& values, EntrySequence fresh, const std::wstring& operation,
             const std::wstring& what) {
  if (!values.empty() && fresh.size() != values.size())
    throw utils::logic_error(operation + L": Wrong dimension of " + what + L" (" +
                             std::to_wstring(fresh.size()) + L" / " +
                             std::to_wstring(values.size()) + L").");
  values = std::move(fresh);
}

}  // namespace

Design::Design(EntrySequence parameters, DesignId id)
    : parameters_(std::move(parameters)), id_(std::move(id)) {}

Design::Design(const Design& pattern, EntrySequence parameters) : Design(pattern) {
  SetParameters(std::move(parameters));
}

void Design::SetParameters(EntrySequence parameters) {
  Replace(parameters_, std::move(parameters), L"SetParameters", L"parameters");
}

void Design::SetResponses(EntrySequence responses) {
  Replace(responses_, std::move(responses), L"SetResponses", L"responses");
}

void Design::SetStatus(RunInfoMeta::eRunInfo code) {
  status_.Clear();
  status_.Add(RunInfoMeta(code));
  runstate_ = code == RunInfoMeta::NOT_STARTED ? NOT_STARTED
              : code == RunInfoMeta::RUNNING   ? RUNNING
                                               : FINISHED;
}

bool Design::operator==(const Design& other) const {
  const auto members = [](const Design& d) {
    return std::tie(d.parameters_, d.responses_, d.status_, d.runstate_, d.duplicates_,
                    d.activation_state_, d.criteria_, d.isapproximated_, d.id_, d.iteration_,
                    d.workflow_id_, d.type_, d.algo_iteration_);
  };
  return members(*this) == members(other);
}

template <class Archive>
void Design::save(Archive& ar, const unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(parameters_);
  ar << BOOST_SERIALIZATION_NVP(responses_);
  ar << BOOST_SERIALIZATION_NVP(status_);
  ar << BOOST_SERIALIZATION_NVP(runstate_);
  ar << BOOST_SERIALIZATION_NVP(duplicates_);
  ar << BOOST_SERIALIZATION_NVP(activation_state_);
  ar << BOOST_SERIALIZATION_NVP(criteria_);
  ar << BOOST_SERIALIZATION_NVP(isapproximated_);
  ar << BOOST_SERIALIZATION_NVP(id_);
  ar << BOOST_SERIALIZATION_NVP(iteration_);
  ar << BOOST_SERIALIZATION_NVP(workflow_id_);
  ar << BOOST_SERIALIZATION_NVP(type_);
  ar << BOOST_SERIALIZATION_NVP(algo_iteration_);
}

template <class Archive>
void Design::load(Archive& ar, const unsigned int version) {
  *this = Design();  // what an older record lacks keeps its default
  ar >> BOOST_SERIALIZATION_NVP(parameters_);
  if (version < 3) {
    VariantSequence responses;
    ar >> boost::serialization::make_nvp("responses_", responses);
    responses_.SetHeader(responses.GetHeader());
    for (auto& [name, value] : responses)
      responses_.Append(std::move(name), CDesignEntry(std::move(value)));
  } else {
    ar >> BOOST_SERIALIZATION_NVP(responses_);
  }
  if (version == 0) {
    RunInfoMeta::eRunInfo code{};  // one code told both the state and what went wrong
    ar >> boost::serialization::make_nvp("status_", code);
    SetStatus(code);
  } else {
    ar >> BOOST_SERIALIZATION_NVP(status_);
    ar >> BOOST_SERIALIZATION_NVP(runstate_);
  }
  if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(duplicates_);
  ar >> BOOST_SERIALIZATION_NVP(activation_state_);
  ar >> BOOST_SERIALIZATION_NVP(criteria_);
  ar >> BOOST_SERIALIZATION_NVP(isapproximated_);
  ar >> BOOST_SERIALIZATION_NVP(id_);
  if (version >= 4) ar >> BOOST_SERIALIZATION_NVP(iteration_);
  if (version >= 5) {
    ar >> BOOST_SERIALIZATION_NVP(workflow_id_);
    ar >> BOOST_SERIALIZATION_NVP(type_);
  }
  if (version >= 6) ar >> BOOST_SERIALIZATION_NVP(algo_iteration_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::Design)
