#include "project/settings/zel_data.h"

#include "archive/instantiate.h"
#include "design/parameters/parameter.h"

#include <list>
#include <tuple>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Parameter;

/// Version 0 stored whole parameters.
template <class Archive>
void LoadParameters(Archive& ar, ZELData::EntrySequence& entries) {
  std::list<Parameter> parameters_;
  ar >> BOOST_SERIALIZATION_NVP(parameters_);
  for (const Parameter& parameter : parameters_)
    entries.Append(parameter.GetName(), parameter.GetReferenceValue());
}

/// Version 1 stored names without values.
template <class Archive>
void LoadNames(Archive& ar, const char* key, ZELData::EntrySequence& entries) {
  std::list<std::wstring> names;
  ar >> boost::serialization::make_nvp(key, names);
  for (const std::wstring& name : names) entries.Append(name, CDesignEntry());
}

}  // namespace

bool operator==(const ZELData& a, const ZELData& b) {
  const auto fields = [](const ZELData& d) {
    return std::tie(d.parameters_, d.responses_, d.responses_boundaries_, d.parameter_importance_,
                    d.responses_usage_, d.responses_zelability_);
  };
  return fields(a) == fields(b);
}

template <class Archive>
void ZELData::load(Archive& ar, unsigned int version) {
  *this = ZELData();
  if (version == 0)
    LoadParameters(ar, parameters_);
  else if (version == 1)
    LoadNames(ar, "parameters_", parameters_);
  else
    ar >> BOOST_SERIALIZATION_NVP(parameters_);
  if (version == 1)
    LoadNames(ar, "responses_", responses_);
  else
    ar >> BOOST_SERIALIZATION_NVP(responses_);
  if (version >= 3) ar >> BOOST_SERIALIZATION_NVP(responses_boundaries_);
  ar >> BOOST_SERIALIZATION_NVP(parameter_importance_);
  ar >> BOOST_SERIALIZATION_NVP(responses_usage_);
  if (version >= 4) {
    ar >> BOOST_SERIALIZATION_NVP(responses_zelability_);
  } else {
    for (const auto& response : responses_) responses_zelability_[response.first] = true;
  }
}

template <class Archive>
void ZELData::save(Archive& ar, unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(parameters_);
  ar << BOOST_SERIALIZATION_NVP(responses_);
  ar << BOOST_SERIALIZATION_NVP(responses_boundaries_);
  ar << BOOST_SERIALIZATION_NVP(parameter_importance_);
  ar << BOOST_SERIALIZATION_NVP(responses_usage_);
  ar << BOOST_SERIALIZATION_NVP(responses_zelability_);
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::zel::ZELData)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELData)
