#include "project/models/surrogate_info.h"

#include "archive/instantiate.h"
#include "design/indexed_name.h"
#include "foundation/exception.h"
#include "metamodel/surrogate.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace corvath::algorithm::datatypes {

namespace {

bool SameModel(const SurrogateInfo::SurrogatePointer& a, const SurrogateInfo::SurrogatePointer& b) {
  return a == b || (a && b && a->Equals(*b));
}

}  // namespace

SurrogateInfo SurrogateInfo::Clone() const {
  SurrogateInfo copy(*this);
  if (surrogate_) copy.surrogate_.reset(surrogate_->Clone());
  return copy;
}

std::wstring SurrogateInfo::GetFullName() const {
  if (is_response_scalar_) return response_name_;
  return IndexedName(response_name_, response_index_);
}

std::vector<std::wstring> SurrogateInfo::GetParameterNames() const {
  std::vector<std::pair<std::uint64_t, std::wstring>> by_index;
  by_index.reserve(parameter_name_lookup_map_.size());
  for (const auto& [name, index] : parameter_name_lookup_map_) by_index.emplace_back(index, name);
  std::sort(by_index.begin(), by_index.end());
  std::vector<std::wstring> names;
  names.reserve(by_index.size());
  for (auto& entry : by_index) names.push_back(std::move(entry.second));
  return names;
}

void SurrogateInfo::SetParameters(const std::vector<std::wstring>& names,
                                  std::vector<bool> subspace) {
  if (names.size() != subspace.size())
    throw std::logic_error("SurrogateInfo: " + std::to_string(names.size()) + " inputs, but " +
                           std::to_string(subspace.size()) + " bits of the subspace.");
  num_vars_ = names.size();
  subspace_ = std::move(subspace);
  parameter_name_lookup_map_.clear();
  for (std::size_t i = 0; i < names.size(); ++i) parameter_name_lookup_map_.emplace(names[i], i);
}

std::uint64_t SurrogateInfo::GetParameterIndex(const std::wstring& name) const {
  const auto found = parameter_name_lookup_map_.find(name);
  if (found == parameter_name_lookup_map_.end())
    throw utils::runtime_error(L"Parameter \"" + name + L"\" does not exist.");
  return found->second;
}

bool SurrogateInfo::HasSingleCoP(const std::wstring& name) const {
  const auto found = parameter_name_lookup_map_.find(name);
  return found != parameter_name_lookup_map_.end() &&
         appraisal_data_.HasSingleCoP(static_cast<Eigen::Index>(found->second));
}

double SurrogateInfo::GetSingleCoP(const std::wstring& name) const {
  if (!HasSingleCoP(name))
    throw utils::runtime_error(L"Single CoP for parameter \"" + name + L"\" does not exist.");
  return appraisal_data_.GetSingleCoP(static_cast<Eigen::Index>(GetParameterIndex(name)));
}

bool SurrogateInfo::IsParameterOutsideSubspace(const std::wstring& name) const {
  const auto found = parameter_name_lookup_map_.find(name);
  if (found == parameter_name_lookup_map_.end()) return true;
  if (found->second >= subspace_.size())
    throw utils::runtime_error(L"Subspace is not set properly.");
  return !subspace_[found->second];
}

bool SurrogateInfo::HasUsedHids() const {
  const HidVector::value_type unset{};
  return std::any_of(used_hids_.begin(), used_hids_.end(),
                     [&](const auto& id) { return id != unset; });
}

bool operator==(const SurrogateInfo& a, const SurrogateInfo& b) {
  return a.response_name_ == b.response_name_ && a.response_index_ == b.response_index_ &&
         a.is_response_scalar_ == b.is_response_scalar_ && a.appraisal_data_ == b.appraisal_data_ &&
         a.num_vars_ == b.num_vars_ && a.subspace_ == b.subspace_ &&
         a.parameter_name_lookup_map_ == b.parameter_name_lookup_map_ &&
         a.testing_type_ == b.testing_type_ && a.used_hids_ == b.used_hids_ &&
         SameModel(a.surrogate_, b.surrogate_);
}

template <class Archive>
void SurrogateInfo::save(Archive& ar, unsigned int /*version*/) const {
  ar& BOOST_SERIALIZATION_NVP(response_name_);
  ar& BOOST_SERIALIZATION_NVP(response_index_);
  ar& BOOST_SERIALIZATION_NVP(is_response_scalar_);
  ar& BOOST_SERIALIZATION_NVP(surrogate_);
  ar& BOOST_SERIALIZATION_NVP(appraisal_data_);
  ar& BOOST_SERIALIZATION_NVP(num_vars_);
  ar& BOOST_SERIALIZATION_NVP(subspace_);
  ar& BOOST_SERIALIZATION_NVP(parameter_name_lookup_map_);
  ar& BOOST_SERIALIZATION_NVP(testing_type_);
  ar& BOOST_SERIALIZATION_NVP(used_hids_);
}

template <class Archive>
void SurrogateInfo::load(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(response_name_);
  ar& BOOST_SERIALIZATION_NVP(response_index_);
  ar& BOOST_SERIALIZATION_NVP(is_response_scalar_);
  if (version == 0) {
    math::metamodel::SurrogateBase* plain = nullptr;
    ar& boost::serialization::make_nvp("surrogate_", plain);
    surrogate_ = ar.Share(plain);  // records may point to one model
  } else {
    ar& BOOST_SERIALIZATION_NVP(surrogate_);
  }
  ar& BOOST_SERIALIZATION_NVP(appraisal_data_);
  ar& BOOST_SERIALIZATION_NVP(num_vars_);
  ar& BOOST_SERIALIZATION_NVP(subspace_);
  ar& BOOST_SERIALIZATION_NVP(parameter_name_lookup_map_);
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(testing_type_);
  if (version == 3) {
    // Row of the support point to id; it cannot be relied on, the ids are recovered elsewhere.
    std::map<std::uint64_t, HidVector::value_type> dropped;
    ar& boost::serialization::make_nvp("used_hids_", dropped);
  }
  if (version >= 4) ar& BOOST_SERIALIZATION_NVP(used_hids_);

  if (version < 3 && is_response_scalar_) {
    // The element of a vector response was told by its name alone.
    const SplitName parts = SplitIndexedName(response_name_);
    const std::optional<std::int64_t> index = parts.GetIndex();
    if (parts.has_brackets && (!index || *index < 0))
      throw utils::runtime_error(L"Error with vector response: Bad lexical cast.");
    is_response_scalar_ = !parts.has_brackets;
    response_name_ = parts.base;
    response_index_ = index ? static_cast<std::uint64_t>(*index) : 0;
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::SurrogateInfo)
