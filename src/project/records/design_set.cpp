#include "project/records/design_set.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "project/records/legacy_conversion.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <list>
#include <tuple>
#include <typeinfo>

namespace corvath::algorithm::datatypes {
namespace {

/// Below class version 4 the designs by role stood under their name. The ids of a group were of the
/// same kind of set as those of the design set.
template <class IdSet, class Archive>
std::multimap<eDESIGN_TYPE, DesignGroup> LoadOldSpecifications(Archive& ar) {
  legacy::GroupMap<IdSet> design_specifications_;
  ar >> BOOST_SERIALIZATION_NVP(design_specifications_);
  return legacy::ToSpecifications(design_specifications_);
}

}  // namespace

bool operator==(const DesignGroup& a, const DesignGroup& b) {
  return a.name_ == b.name_ && a.design_ids_ == b.design_ids_;
}

bool operator==(const HistoryData& a, const HistoryData& b) {
  return std::tie(a.num_calculated_designs_, a.design_id_, a.value_) ==
         std::tie(b.num_calculated_designs_, b.design_id_, b.value_);
}

boost::shared_ptr<DesignSet> DesignSet::Clone() const {
  const auto copy = boost::make_shared<DesignSet>(*this);
  copy->surrogate_infos_ = surrogate_infos_.Clone();
  return copy;
}

bool DesignSet::IsEqual(const DesignSet& other) const {
  const auto fields = [](const DesignSet& s) {
    return std::tie(s.identifier_, s.design_ids_, s.design_specifications_, s.surrogate_infos_,
                    s.history_map_);
  };
  return typeid(*this) == typeid(other) && fields(*this) == fields(other);
}

void DesignSet::Merge(const DesignSet& other) {
  if (identifier_ != other.identifier_)
    throw utils::runtime_error(L"Design set identifier do not match.");
  design_ids_.insert(other.design_ids_.begin(), other.design_ids_.end());
  for (const auto& [type, group] : other.design_specifications_) {
    const auto [first, last] = design_specifications_.equal_range(type);
    const auto same = std::find_if(first, last, [&group = group](const auto& known) {
      return known.second.name_ == group.name_;
    });
    if (same == last)
      design_specifications_.emplace(type, group);
    else
      same->second.design_ids_.insert(group.design_ids_.begin(), group.design_ids_.end());
  }
  for (const SurrogateInfo& info : other.surrogate_infos_.GetSurrogateInfos())
    surrogate_infos_.AddOrReplace(info);
  for (const auto& [name, history] : other.history_map_) {
    auto& known = history_map_[name];
    for (const HistoryData& data : history)
      if (std::find(known.begin(), known.end(), data) == known.end()) known.push_back(data);
  }
}

DesignSetMap CloneDesignSets(const DesignSetMap& sets) {
  DesignSetMap copy;
  for (const auto& [name, set] : sets)
    copy.emplace(name, set ? set->Clone() : boost::shared_ptr<DesignSet>());
  return copy;
}

bool AreEqual(const DesignSetMap& a, const DesignSetMap& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    if (x.first != y.first) return false;
    return x.second && y.second ? x.second->IsEqual(*y.second) : x.second == y.second;
  });
}

template <class Archive>
void DesignGroup::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(name_);
  ar& BOOST_SERIALIZATION_NVP(design_ids_);
}

template <class Archive>
void HistoryData::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(num_calculated_designs_);
  ar& BOOST_SERIALIZATION_NVP(design_id_);
  ar& BOOST_SERIALIZATION_NVP(value_);
}

template <class Archive>
void DesignSet::load(Archive& ar, unsigned int version) {
  ar >> BOOST_SERIALIZATION_NVP(identifier_);
  if (version < 2) {
    legacy::DesignIdSet ids;
    ar >> boost::serialization::make_nvp("design_ids_", ids);
    design_ids_ = {ids.begin(), ids.end()};
  } else {
    ar >> BOOST_SERIALIZATION_NVP(design_ids_);
  }
  if (version < 2)
    design_specifications_ = LoadOldSpecifications<legacy::DesignIdSet>(ar);
  else if (version < 4)
    design_specifications_ = LoadOldSpecifications<std::set<DesignId>>(ar);
  else
    ar >> BOOST_SERIALIZATION_NVP(design_specifications_);
  if (version < 3) {
    std::list<std::wstring> history_names_;
    ar >> BOOST_SERIALIZATION_NVP(history_names_);
  }
  if (version >= 1) ar >> BOOST_SERIALIZATION_NVP(surrogate_infos_);
  if (version >= 3) ar >> BOOST_SERIALIZATION_NVP(history_map_);
}

template <class Archive>
void DesignSet::save(Archive& ar, unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(identifier_);
  ar << BOOST_SERIALIZATION_NVP(design_ids_);
  ar << BOOST_SERIALIZATION_NVP(design_specifications_);
  ar << BOOST_SERIALIZATION_NVP(surrogate_infos_);
  ar << BOOST_SERIALIZATION_NVP(history_map_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::DesignGroup)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::HistoryData)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::DesignSet)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::DesignSet)
