#include "project/records/systems_information.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "project/models/used_designs.h"
#include "project/records/legacy_conversion.h"

#include <boost/make_shared.hpp>

#include <list>
#include <tuple>
#include <typeinfo>
#include <utility>

namespace corvath::algorithm::datatypes {

// ---- AdditionalDesignContainer ----

AdditionalDesignContainer::AdditionalDesignContainer(const AdditionalDesignContainer& other)
    : identifier_(other.identifier_),
      designs_(other.designs_),
      similar_to_system_designs_(other.similar_to_system_designs_),
      design_sets_(CloneDesignSets(other.design_sets_)),
      design_set_position_map_(other.design_set_position_map_) {}

AdditionalDesignContainer& AdditionalDesignContainer::operator=(AdditionalDesignContainer other) {
  std::swap(identifier_, other.identifier_);
  std::swap(designs_, other.designs_);
  std::swap(similar_to_system_designs_, other.similar_to_system_designs_);
  std::swap(design_sets_, other.design_sets_);
  std::swap(design_set_position_map_, other.design_set_position_map_);
  return *this;
}

bool operator==(const AdditionalDesignContainer& a, const AdditionalDesignContainer& b) {
  const auto fields = [](const AdditionalDesignContainer& c) {
    return std::tie(c.identifier_, c.designs_, c.similar_to_system_designs_,
                    c.design_set_position_map_);
  };
  return fields(a) == fields(b) && AreEqual(a.design_sets_, b.design_sets_);
}

void AdditionalDesignContainer::Merge(const AdditionalDesignContainer& other) {
  if (identifier_ != other.identifier_)
    throw utils::runtime_error(L"Additional designs identifier do not match.");
  for (const Design& design : other.designs_.GetDesigns()) designs_.AddOrReplace(design);
  for (const auto& [name, set] : other.design_sets_) {
    boost::shared_ptr<DesignSet>& known = design_sets_[name];
    if (known && set)
      known->Merge(*set);
    else if (set)
      known = set->Clone();
  }
  design_set_position_map_.insert(other.design_set_position_map_.begin(),
                                  other.design_set_position_map_.end());
}

template <class Archive>
void AdditionalDesignContainer::load(Archive& ar, unsigned int version) {
  ar >> BOOST_SERIALIZATION_NVP(identifier_);
  ar >> BOOST_SERIALIZATION_NVP(designs_);
  ar >> BOOST_SERIALIZATION_NVP(similar_to_system_designs_);
  if (version < 1) {
    std::map<std::wstring, legacy::GroupMap<legacy::DesignIdSet>> groups;
    ar >> boost::serialization::make_nvp("design_sets_", groups);
    design_sets_.clear();
    legacy::AddGroups(design_sets_, groups);
  } else {
    ar >> BOOST_SERIALIZATION_NVP(design_sets_);
  }
  ar >> BOOST_SERIALIZATION_NVP(design_set_position_map_);
}

template <class Archive>
void AdditionalDesignContainer::save(Archive& ar, unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(identifier_);
  ar << BOOST_SERIALIZATION_NVP(designs_);
  ar << BOOST_SERIALIZATION_NVP(similar_to_system_designs_);
  ar << BOOST_SERIALIZATION_NVP(design_sets_);
  ar << BOOST_SERIALIZATION_NVP(design_set_position_map_);
}

// ---- SystemsInformation ----

SystemsInformation::SystemsInformation(const SystemsInformation& other)
    : DetailedInformationBase(other),
      design_set_position_map_(other.design_set_position_map_),
      prefered_design_set_(other.prefered_design_set_),
      additional_designs_(other.additional_designs_),
      design_sets_map_(CloneDesignSets(other.design_sets_map_)) {}

boost::shared_ptr<DetailedInformationBase> SystemsInformation::Clone() const {
  return boost::make_shared<SystemsInformation>(*this);
}

bool SystemsInformation::IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const {
  const auto* info = dynamic_cast<const SystemsInformation*>(other.get());
  const auto fields = [](const SystemsInformation& i) {
    return std::tie(i.design_set_position_map_, i.prefered_design_set_, i.additional_designs_);
  };
  return info && typeid(*this) == typeid(*info) && DetailedInformationBase::IsEqual(other) &&
         fields(*this) == fields(*info) && AreEqual(design_sets_map_, info->design_sets_map_);
}

void SystemsInformation::ForEachContainer(
    const std::function<void(SurrogateInfoContainer&)>& change) {
  for (const auto& [name, set] : design_sets_map_)
    if (set && !set->surrogate_infos_.IsEmpty()) change(set->surrogate_infos_);
}

void SystemsInformation::RecoverUsedDesigns(const DesignManager& designs,
                                            const ParameterManager& parameters) {
  const UsedDesignSearch search{GetSamplingType() != kStochasticSampling, true, true};
  ForEachContainer([&](SurrogateInfoContainer& infos) {
    datatypes::RecoverUsedDesigns(infos, designs, parameters, search);
  });
}

void SystemsInformation::ResetSupportData(const DesignManager&, const ParameterManager&) {
  if (GetSamplingType() == kUnknownSampling) return;
  ForEachContainer([](SurrogateInfoContainer& infos) { infos.ResetSupportData(); });
}

void SystemsInformation::RestoreSupportData(const DesignManager& designs,
                                            const ParameterManager& parameters) {
  if (GetSamplingType() == kUnknownSampling) return;
  ForEachContainer([&](SurrogateInfoContainer& infos) {
    infos.RestoreSupportData(designs, parameters, IsPlainSampling());
  });
}

boost::shared_ptr<DesignSet> SystemsInformation::MakeDesignSet(const std::wstring& name) const {
  return boost::make_shared<DesignSet>(name);
}

DesignSet& SystemsInformation::AddDesignSet(const std::wstring& name) {
  if (name.empty()) throw utils::runtime_error(L"Empty name for design set is not allowed.");
  boost::shared_ptr<DesignSet>& set = design_sets_map_[name];
  if (!set) set = MakeDesignSet(name);
  return *set;
}

bool SystemsInformation::HasDesignSet(const std::wstring& name) const {
  const auto place = design_sets_map_.find(name);
  return place != design_sets_map_.end() && place->second;
}

const DesignSet& SystemsInformation::GetDesignSet(const std::wstring& name) const {
  if (!HasDesignSet(name)) throw utils::runtime_error(L"Design set " + name + L" does not exist.");
  return *design_sets_map_.find(name)->second;
}

DesignSet& SystemsInformation::GetDesignSet(const std::wstring& name) {
  return const_cast<DesignSet&>(std::as_const(*this).GetDesignSet(name));
}

template <class Archive>
void SystemsInformation::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp(
            "DetailedInformationBase",
            boost::serialization::base_object<DetailedInformationBase>(*this));
  OldHistoryMap history_map_;
  if (version < 6) ar >> BOOST_SERIALIZATION_NVP(history_map_);
  if (version < 5) {
    std::list<std::wstring> internal_algo_history_names_;
    std::map<std::wstring, legacy::DesignIdSet> design_set_map_;
    std::map<std::uint64_t, DesignId> index_id_map_;
    ar >> BOOST_SERIALIZATION_NVP(internal_algo_history_names_);
    ar >> BOOST_SERIALIZATION_NVP(design_set_map_);
    ar >> BOOST_SERIALIZATION_NVP(index_id_map_);
    design_sets_map_ = legacy::ToDesignSets(design_set_map_);
  }
  if (version >= 1) ar >> BOOST_SERIALIZATION_NVP(design_set_position_map_);
  if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(prefered_design_set_);
  if (version >= 3) ar >> BOOST_SERIALIZATION_NVP(additional_designs_);
  if (version == 4) {
    std::map<std::wstring, legacy::GroupMap<legacy::DesignIdSet>> design_set_map_;
    ar >> BOOST_SERIALIZATION_NVP(design_set_map_);
    legacy::AddGroups(design_sets_map_, design_set_map_);
  }
  if (version >= 5) ar >> BOOST_SERIALIZATION_NVP(design_sets_map_);
  if (version < 6) legacy::ApplyHistory(history_map_, design_sets_map_);
}

template <class Archive>
void SystemsInformation::save(Archive& ar, unsigned int) const {
  ar << boost::serialization::make_nvp(
      "DetailedInformationBase", boost::serialization::base_object<DetailedInformationBase>(*this));
  ar << BOOST_SERIALIZATION_NVP(design_set_position_map_);
  ar << BOOST_SERIALIZATION_NVP(prefered_design_set_);
  ar << BOOST_SERIALIZATION_NVP(additional_designs_);
  ar << BOOST_SERIALIZATION_NVP(design_sets_map_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::AdditionalDesignContainer)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::SystemsInformation)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::AdditionalDesignContainer)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::SystemsInformation)
