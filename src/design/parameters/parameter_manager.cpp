#include "design/parameters/parameter_manager.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <unordered_map>

namespace corvath::algorithm::datatypes {

std::pair<std::wstring, std::wstring> SplitKey(const std::wstring& key,
                                               const std::wstring& separator) {
  const std::size_t position = key.rfind(separator);
  if (position == std::wstring::npos) return {key, L""};
  return {key.substr(0, position), key.substr(position + separator.size())};
}

std::list<Parameter>::iterator ParameterManager::Find(const std::wstring& name) {
  return std::find_if(parameters_.begin(), parameters_.end(),
                      [&name](const Parameter& parameter) { return parameter.GetName() == name; });
}

const Parameter* ParameterManager::FindParameter(const std::wstring& name) const {
  for (const Parameter& parameter : parameters_)
    if (parameter.GetName() == name) return &parameter;
  return nullptr;
}

void ParameterManager::AddParameter(const Parameter& parameter) {
  if (FindParameter(parameter.GetName()) != nullptr)
    throw utils::runtime_error(
        L"Cannot add the parameter \"" + parameter.GetName() +
        L"\" to the parametermanager because a parameter with the same name already exists. "
        L"Parameter name MUST be unique.");
  parameters_.push_back(parameter);
}

void ParameterManager::ReplaceParameter(const Parameter& parameter) {
  const auto found = Find(parameter.GetName());
  if (found == parameters_.end())
    throw utils::runtime_error(L"Cannot replace the non existing parameter \"" +
                               parameter.GetName() + L"\"");
  *found = parameter;
}

const Parameter& ParameterManager::GetParameter(const std::wstring& name) const {
  const Parameter* found = FindParameter(name);
  if (found == nullptr)
    throw utils::runtime_error(L"Cannot return non existing parameter \"" + name + L"\"");
  return *found;
}

void ParameterManager::GetBounds(const std::wstring& name, CDesignEntry& lower,
                                 CDesignEntry& upper) const {
  const Parameter* found = FindParameter(name);
  if (found == nullptr)
    throw utils::runtime_error(L"Cannot set boundaries of the non existing parameter \"" + name +
                               L"\"");
  found->GetBounds(lower, upper);
}

void ParameterManager::SetKind(const std::wstring& name,
                               enums::DeterministicProperties::eKind kind) {
  const auto found = Find(name);
  if (found == parameters_.end())
    throw utils::runtime_error(L"Cannot set the kind of the non existing parameter \"" + name +
                               L"\"");
  found->SetKind(kind);
}

std::list<Parameter> ParameterManager::GetParameters(bool withoutDependent) const {
  std::list<Parameter> result;
  for (const Parameter& parameter : parameters_)
    if (!parameter.IsConst() && !(withoutDependent && parameter.IsDependent()))
      result.push_back(parameter);
  return result;
}

std::map<std::wstring, DeterministicProperties> ParameterManager::GetDeterministicProperties()
    const {
  std::map<std::wstring, DeterministicProperties> result;
  for (const Parameter& parameter : parameters_) {
    for (const auto& [name, property] : parameter.GetDeterministicProperties()) {
      const std::wstring key =
          name == parameter.GetName() ? name : parameter.GetName() + kPropertySeparator + name;
      if (!result.emplace(key, property).second)
        throw std::logic_error(
            "Parametermanager: Something went wrong building up the deterministic property "
            "container; guess key problems occured.");
    }
  }
  return result;
}

ParameterManager ParameterManager::GetSubset(const std::vector<std::wstring>& keys) const {
  std::unordered_map<std::wstring, const Parameter*> by_name;
  for (const Parameter& parameter : parameters_) by_name.emplace(parameter.GetName(), &parameter);

  ParameterManager result;
  std::set<std::wstring> added;
  for (const std::wstring& key : keys) {
    const auto found = by_name.find(SplitKey(key).first);
    if (found != by_name.end() && added.insert(found->first).second)
      result.parameters_.push_back(*found->second);
  }
  for (const auto& [pair, correlation] : coherences_.GetEntries())
    if (pair.GetFirst() != pair.GetSecond() && added.count(pair.GetFirst()) != 0 &&
        added.count(pair.GetSecond()) != 0)
      result.coherences_.Set(pair.GetFirst(), pair.GetSecond(), correlation);
  return result;
}

bool ParameterManager::IsEqual(const ParameterManager& other, bool compareOrigin) const {
  if (this == &other) return true;
  if (parameters_.size() != other.parameters_.size()) return false;
  const CorrelationMatrix::Map& entries = coherences_.GetEntries();
  const CorrelationMatrix::Map& others = other.coherences_.GetEntries();
  return std::equal(entries.begin(), entries.end(), others.begin(), others.end(),
                    [](const auto& left, const auto& right) {
                      return left.first == right.first && left.second == right.second;
                    }) &&
         std::equal(parameters_.begin(), parameters_.end(), other.parameters_.begin(),
                    [compareOrigin](const Parameter& left, const Parameter& right) {
                      return left.IsEqual(right, compareOrigin);
                    });
}

template <class Archive>
void ParameterManager::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(parameters_);
  if (version >= 1)
    ar& BOOST_SERIALIZATION_NVP(coherences_);
  else
    coherences_ = {};
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::ParameterManager)
