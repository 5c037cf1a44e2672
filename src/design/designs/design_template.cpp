#include "design/designs/design_manager.h"

#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace corvath::algorithm::datatypes {

namespace {

/// Collects the names of many sequences, each once, in the order of first occurrence.
template <class T>
class Union {
 public:
  explicit Union(CNVPSequence<std::wstring, T>& names) : names_(names) {}

  /// The value kept for a name, or null after taking `value` for a new name. `guess` is where the
  /// name stands if the sequence looks like the ones before, as most do.
  T* FindOrAppend(const std::wstring& name, const T& value, std::size_t guess) {
    if (guess < names_.size() && names_[guess].first == name) return &names_[guess].second;
    const auto [known, is_new] = positions_.try_emplace(name, names_.size());
    if (!is_new) return &names_[known->second].second;
    names_.Append(name, value);
    return nullptr;
  }

 private:
  CNVPSequence<std::wstring, T>& names_;
  std::unordered_map<std::wstring, std::size_t> positions_;
};

bool IsConvertible(CDesignEntry target, const CDesignEntry& value) {
  try {
    target.Assign(value, /*parse_strings=*/false);
    return true;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return false;
  }
}

/// Two values of one name, both initialised, must be of one type as far as conversion can tell.
void CheckAgreement(const CDesignEntry& known, const CDesignEntry& fresh, const std::string& what) {
  const auto* known_variant = known.Peek<CDesignEntry::Variant>();
  const auto* fresh_variant = fresh.Peek<CDesignEntry::Variant>();
  if (known_variant && fresh_variant) {
    if (known_variant->GetKind() != fresh_variant->GetKind())
      throw std::logic_error("Found " + what + " with same name but different variant type.");
    return;
  }
  if (known.GetType() == fresh.GetType()) return;
  if (!IsConvertible(known, fresh) || !IsConvertible(fresh, known))
    throw std::logic_error("Found " + what + " with same name but incompatible data type.");
}

void CollectParameters(const std::vector<Design>& designs, EntrySequence& result) {
  Union<CDesignEntry> names(result);
  for (const Design& design : designs) {
    std::size_t position = 0;
    for (const auto& [name, value] : design.GetParameters())
      if (CDesignEntry* known = names.FindOrAppend(name, value, position++)) *known = value;
  }
}

void CollectResponses(const std::vector<Design>& designs, bool check, EntrySequence& result) {
  Union<CDesignEntry> names(result);
  for (const Design& design : designs) {
    std::size_t position = 0;
    for (const auto& [name, value] : design.GetResponses()) {
      CDesignEntry* known = names.FindOrAppend(name, value, position++);
      if (!known || value.IsUninitialized()) continue;
      if (known->IsUninitialized())
        *known = value;
      else if (check)
        CheckAgreement(*known, value, "response");
    }
  }
}

void CollectCriteria(const std::vector<Design>& designs, bool check, CriterionSequence& result) {
  Union<Criterion> names(result);
  for (const Design& design : designs) {
    std::size_t position = 0;
    for (const auto& [name, criterion] : design.GetCriteria()) {
      Criterion* known = names.FindOrAppend(name, criterion, position++);
      if (!known) continue;
      if (check && known->GetType() != criterion.GetType())
        throw std::logic_error("Found criterion with same name but different criterion type.");
      if (criterion.GetValue().IsUninitialized()) continue;
      if (known->GetValue().IsUninitialized())
        *known = criterion;
      else if (check)
        CheckAgreement(known->GetValue(), criterion.GetValue(), "criterion");
    }
  }
}

Design Build(const std::vector<Design>& designs, bool check) {
  Design result;
  CollectParameters(designs, result.GetParameters());
  CollectResponses(designs, check, result.GetResponses());
  CollectCriteria(designs, check, result.GetCriteria());
  return result;
}

}  // namespace

Design DesignManager::BuildTemplate(bool check) const {
  return check ? Build(designs_, true) : *GetTemplate();
}

std::shared_ptr<const Design> DesignManager::GetTemplate() const {
  std::shared_ptr<const Design> result = std::atomic_load(&template_);
  if (!result) {
    result = std::make_shared<const Design>(Build(designs_, false));
    std::atomic_store(&template_, result);
  }
  return result;
}

CriterionSequence DesignManager::GetCriteriaTemplate() const {
  return GetTemplate()->GetCriteria();
}

std::vector<std::wstring> DesignManager::GetLimitStateNames() const {
  if (designs_.empty())
    throw std::domain_error("Can't extract limit state names from an empty design container");
  std::vector<std::wstring> names;
  const std::shared_ptr<const Design> pattern = GetTemplate();
  for (const auto& [name, criterion] : pattern->GetCriteria())
    if (criterion.IsLimitState()) names.push_back(name);
  return names;
}

}  // namespace corvath::algorithm::datatypes
