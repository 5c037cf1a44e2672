#include "project/records/legacy_conversion.h"

#include "design/designs/design_manager.h"

#include <boost/format.hpp>
#include <boost/make_shared.hpp>

#include <cmath>
#include <optional>

namespace corvath::algorithm::datatypes::legacy {
namespace {

std::optional<std::uint64_t> ToIndex(double number) {
  if (!(number >= 0.0 && number < 0x1p64 && std::trunc(number) == number)) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

std::vector<std::uint64_t> ToIndexes(const CDesignEntry& entry) {
  std::vector<double> numbers;
  const auto* variant = entry.Peek<CDesignEntry::Variant>();
  if (variant && variant->IsVector()) {
    for (const auto& element : variant->GetVector()) numbers.push_back(element.real());
  } else if (entry.IsScalar()) {
    numbers.push_back(entry.ToDouble());
  }
  std::vector<std::uint64_t> indexes;
  for (const double number : numbers) {
    const std::optional<std::uint64_t> index = ToIndex(number);
    if (!index) return {};
    indexes.push_back(*index);
  }
  return indexes;
}

/// On which side of its limit states a design lies.
enum class Side { kUnknown, kFailed, kSafe, kUnsafe };

Side SideOf(const Design& design) {
  Side side = Side::kUnknown;
  for (const auto& [name, criterion] : design.GetCriteria()) {
    if (!criterion.IsLimitState()) continue;
    if (criterion.NeedsEvaluation() || criterion.IsValueInvalid()) return Side::kFailed;
    if (side != Side::kUnsafe) side = criterion.IsViolated() ? Side::kUnsafe : Side::kSafe;
  }
  return side;
}

}  // namespace

CvIndexes ToCvIndexes(const EntrySequence& entries) {
  CvIndexes indexes;
  for (const auto& [name, entry] : entries) indexes[name] = ToIndexes(entry);
  return indexes;
}

DesignSetMap ToDesignSets(const std::map<std::wstring, DesignIdSet>& sets) {
  DesignSetMap result;
  for (const auto& [name, ids] : sets) {
    const auto set = boost::make_shared<DesignSet>(name);
    set->design_ids_ = {ids.begin(), ids.end()};
    result.emplace(name, set);
  }
  return result;
}

void AddGroups(DesignSetMap& sets, const std::map<std::wstring, GroupMap<DesignIdSet>>& groups) {
  for (const auto& [name, group_map] : groups) {
    boost::shared_ptr<DesignSet>& set = sets[name];
    if (!set) set = boost::make_shared<DesignSet>(name);
    set->design_specifications_ = ToSpecifications(group_map);
    for (const auto& [type, group] : set->design_specifications_)
      set->design_ids_.insert(group.design_ids_.begin(), group.design_ids_.end());
  }
}

void ApplyHistory(const OldHistoryMap& history, DesignSet& set) {
  for (const auto& [name, points] : history) {
    std::uint64_t number = 0;
    for (const auto& [id, value] : points) {
      ++number;
      if (set.design_ids_.count(id) > 0) set.history_map_[name].push_back({number, id, value});
    }
  }
}

void ApplyHistory(const OldHistoryMap& history, DesignSetMap& sets) {
  for (const auto& [name, set] : sets)
    if (set) ApplyHistory(history, *set);
}

boost::shared_ptr<ReliabilityDesignSet> ToReliabilityDesignSet(
    const std::wstring& name, const boost::shared_ptr<DesignSet>& set,
    const ReliabilityDesignSetInfo& info) {
  const auto result = boost::make_shared<ReliabilityDesignSet>(name);
  if (set) static_cast<DesignSet&>(*result) = *set;
  result->probability_of_failure_ = info.probability_of_failure_;
  result->standard_deviation_error_ = info.standard_deviation_error_;
  result->reliability_index_ = info.reliability_index_;
  ApplyHistory(info.history_map_, *result);
  return result;
}

boost::shared_ptr<ReliabilityInformation> ToReliabilityInformation(
    const ReliabilityDesignSetInfo& total,
    const std::map<std::uint64_t, ReliabilityDesignSetInfo>& iterations,
    const IterationMap& designs) {
  const auto result = boost::make_shared<ReliabilityInformation>();
  result->reli_method_name_ = total.method_name_;
  for (const auto& [number, info] : iterations) {
    const std::wstring name = str(boost::wformat(L"Design Set %u") % number);
    const auto set = boost::make_shared<DesignSet>(name);
    for (const auto& [id, place] : designs)
      if (place.first == number) set->design_ids_.insert(id);
    result->design_sets_map_[name] = ToReliabilityDesignSet(name, set, info);
  }
  return result;
}

void RepairReliabilityInformation(ReliabilityInformation& information,
                                  const DesignManager& designs) {
  if (!information.design_sets_map_.empty()) return;
  const auto add = [&](const wchar_t* name, const DesignId& id) {
    information.AddDesignSet(name).design_ids_.insert(id);
  };
  constexpr wchar_t kAll[] = L"All designs";
  for (const Design& design : designs.GetDesigns()) {
    add(kAll, design.GetId());
    switch (SideOf(design)) {
      case Side::kFailed:
        add(L"Failed designs", design.GetId());
        break;
      case Side::kSafe:
        add(L"Safe domain designs", design.GetId());
        break;
      case Side::kUnsafe:
        add(L"Unsafe domain designs", design.GetId());
        break;
      case Side::kUnknown:
        break;
    }
  }
  // Otherwise no set, and so no model, would serve the file.
  if (information.prefered_design_set_.empty() && information.HasDesignSet(kAll))
    information.prefered_design_set_ = kAll;
}

}  // namespace corvath::algorithm::datatypes::legacy
