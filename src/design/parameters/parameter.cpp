#include "design/parameters/parameter.h"

#include "archive/instantiate.h"
#include "design/random_uuid.h"
#include "foundation/exception.h"
#include "foundation/text_stream.h"

#include <algorithm>
#include <iterator>

namespace corvath::algorithm::datatypes {

namespace {

constexpr double kReferenceTolerance = 2.220446049250313e-14;

/// Raises the texts of `parts`, one behind the other.
template <class... Parts>
[[noreturn]] void Raise(const Parts&... parts) {
  utils::WideTextStream text;
  (text << ... << parts);
  throw utils::runtime_error(text.str());
}

/// The default closeness of entries first; where it fails, doubles may differ a little more.
bool SameReference(const CDesignEntry& left, const CDesignEntry& right) {
  return left == right || IsClose(left, right, kReferenceTolerance);
}

}  // namespace

Parameter::Parameter() : id_(NewRandomUuid()), origin_(id_) {}

Parameter::Parameter(const std::wstring& name) : Parameter() {
  name_ = name;
}

void Parameter::SetName(const std::wstring& name) {
  for (auto& property : dprops_)
    if (property.first == name_) property.first = name;
  name_ = name;
}

void Parameter::SetDeterministicProperty(const std::wstring& name,
                                         const DeterministicProperties& property) {
  const auto same_name = [&name](const auto& entry) { return entry.first == name; };
  const auto found = std::find_if(dprops_.begin(), dprops_.end(), same_name);
  if (found != dprops_.end())
    found->second = property;
  else
    dprops_.emplace_back(name, property);
}

const DeterministicProperties& Parameter::GetDeterministicProperty(const std::wstring& name) const {
  if (!IsOptimization())
    Raise(L"Cannot return the the requested deterministic property ", name,
          L" for the non optimization parameter \"", name_);
  for (const auto& property : dprops_)
    if (property.first == name) return property.second;
  Raise(L"Cannot find the determinsitic property \"", name, L"\" of the parameter \"", name_,
        L"\"");
}

const NamedProperties::value_type& Parameter::PropertyAt(std::size_t index) const {
  if (!IsOptimization())
    Raise(L"Cannot return the name of the requested deterministic property at index ", index,
          L" for the non optimization parameter \"", name_);
  if (index >= dprops_.size())
    Raise(L"The index given for the requested deterministic property of the parameter \"", name_,
          L"\" is out of range: ", index, L" / ", dprops_.size());
  return *std::next(dprops_.begin(), static_cast<std::ptrdiff_t>(index));
}

const DeterministicProperties& Parameter::GetDeterministicProperty(std::size_t index) const {
  return PropertyAt(index).second;
}

const std::wstring& Parameter::GetDeterministicPropertyName(std::size_t index) const {
  return PropertyAt(index).first;
}

void Parameter::GetBounds(CDesignEntry& lower, CDesignEntry& upper) const {
  const DeterministicProperties& property = GetDeterministicProperty(0);
  lower = property.GetLowerBound();
  upper = property.GetUpperBound();
}

void Parameter::SetKind(enums::DeterministicProperties::eKind kind) {
  if (!IsOptimization() ||
      (HasRandom() && kind >= enums::DeterministicProperties::ORDINAL_BY_INDEX))
    Raise(L"Cannot set the deterministic property \"kind\" for the non optimization parameter \"",
          name_, L"\"");
  Parameter changed(*this);  // a conversion may fail
  DeterministicProperties& first = changed.dprops_.front().second;
  first.SetKind(kind);
  for (auto& property : changed.dprops_) property.second.SetDataType(first.GetDataType());
  changed.SetReferenceValue(ConvertEntry(reference_value_, first.GetDataType()), false);
  *this = std::move(changed);
}

void Parameter::SetReferenceValue(const CDesignEntry& value, bool convert) {
  if (convert && (IsOptimization() || HasRandom())) {
    const auto type =
        IsOptimization() ? dprops_.front().second.GetDataType() : enums::DesignEntry::REAL;
    SetReferenceValue(ConvertEntry(value, type), false);
    return;
  }
  if (value.GetType() == reference_value_.GetType() && value == reference_value_) return;
  CheckReferenceType(value.GetType());
  reference_value_ = value;
}

void Parameter::CheckReferenceType(enums::DesignEntry::eType type) const {
  const auto text = [](enums::DesignEntry::eType number) {
    return enums::DesignEntry::GetText(number);
  };
  if (IsStochastic()) {
    if (type != enums::DesignEntry::REAL)
      Raise(L"Cannot set reference value for stochastic parameter \"", name_,
            L"\". Data type needs to be ", text(enums::DesignEntry::REAL), L", got ", text(type));
  } else if (IsOptimization()) {
    const auto domain = dprops_.front().second.GetDataType();
    if (!HasRandom() && type != domain)
      Raise(L"Cannot set reference value for optimization parameter \"", name_,
            L"\". Data type doesn't match. Awaited ", text(domain), L", got ", text(type));
    if (HasRandom() && (type != domain || type != enums::DesignEntry::REAL))
      Raise(L"Cannot set reference value for mixed parameter \"", name_,
            L"\". Data type needs to be ", text(domain), L", got ", text(type));
  }
}

bool Parameter::IsMutable(MutableMember member) const {
  const auto found = mutable_map_.find(member);
  return found != mutable_map_.end() && found->second;
}

bool Parameter::IsEqual(const Parameter& other, bool compareOrigin) const {
  return name_ == other.name_ && active_ == other.active_ && const_ == other.const_ &&
         SameReference(reference_value_, other.reference_value_) &&
         IsMutable(kFirstMutableMember) == other.IsMutable(kFirstMutableMember) &&
         dependency_expression_ == other.dependency_expression_ &&
         modifiable_ == other.modifiable_ && unit_ == other.unit_ &&
         removable_ == other.removable_ && (!compareOrigin || origin_ == other.origin_) &&
         dprops_ == other.dprops_ && rprop_ == other.rprop_;
}

template <class Archive>
void Parameter::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(name_);
  ar& BOOST_SERIALIZATION_NVP(active_);
  ar& BOOST_SERIALIZATION_NVP(const_);
  ar& BOOST_SERIALIZATION_NVP(rprop_);
  ar& BOOST_SERIALIZATION_NVP(dprops_);
  ar& BOOST_SERIALIZATION_NVP(reference_value_);
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(mutable_map_);
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(dependency_expression_);
  if (version >= 3) ar& BOOST_SERIALIZATION_NVP(id_);
  if (version >= 4) ar& BOOST_SERIALIZATION_NVP(modifiable_);
  if (version >= 5) ar& BOOST_SERIALIZATION_NVP(unit_);
  if (version >= 6) ar& BOOST_SERIALIZATION_NVP(removable_);
  if (version >= 7)
    ar& BOOST_SERIALIZATION_NVP(origin_);
  else
    origin_ = id_;  // only reading meets an old version
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::Parameter)
