#pragma once

#include "design/designs/design_entry.h"
#include "design/named_sequence.h"
#include "project/records/reliability_information.h"
#include "project/records/zel_information.h"

#include <boost/unordered_set.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// How the records of older files become those of today. Each function takes what an old class
/// version stored; design sets are kept by their names, records for display alone as far as today's
/// classes have a place for them.
namespace corvath::algorithm::datatypes::legacy {

using DesignIdSet = boost::unordered_set<DesignId>;
/// Designs of one role by name.
template <class IdSet>
using GroupMap = std::map<std::wstring, std::pair<IdSet, eDESIGN_TYPE>>;
using CvIndexes = std::map<std::wstring, std::vector<std::uint64_t>>;
using IterationMap = std::map<DesignId, std::pair<std::uint64_t, eALGOINFO_DESIGNTYPE>>;

/// Groups of cross-validation, one entry of numbers by name. What is not a list of unsigned whole
/// numbers becomes an empty list.
CvIndexes ToCvIndexes(const EntrySequence& entries);

/// Named groups as the roles in a design set. `groups` is a GroupMap of any set.
template <class IdSet>
std::multimap<eDESIGN_TYPE, DesignGroup> ToSpecifications(const GroupMap<IdSet>& groups) {
  std::multimap<eDESIGN_TYPE, DesignGroup> result;
  for (const auto& [name, group] : groups)
    result.emplace(group.second, DesignGroup{name, {group.first.begin(), group.first.end()}});
  return result;
}

/// Design sets from plain sets of ids by name, and from groups by name of set.
DesignSetMap ToDesignSets(const std::map<std::wstring, DesignIdSet>& sets);
void AddGroups(DesignSetMap& sets, const std::map<std::wstring, GroupMap<DesignIdSet>>& groups);

/// Histories by name go to each design set as far as they belong to its designs, numbered by their
/// place in the whole history.
void ApplyHistory(const OldHistoryMap& history, DesignSetMap& sets);
void ApplyHistory(const OldHistoryMap& history, DesignSet& set);

/// A reliability design set with the figures of `info` in the place of `set`, which may be null.
boost::shared_ptr<ReliabilityDesignSet> ToReliabilityDesignSet(
    const std::wstring& name, const boost::shared_ptr<DesignSet>& set,
    const ReliabilityDesignSetInfo& info);

/// The information of a reliability analysis whose figures were stored by iteration: iteration n
/// becomes "Design Set n".
boost::shared_ptr<ReliabilityInformation> ToReliabilityInformation(
    const ReliabilityDesignSetInfo& total,
    const std::map<std::uint64_t, ReliabilityDesignSetInfo>& iterations,
    const IterationMap& designs);

/// Design sets of a reliability analysis that stored none, from its designs: all, and those that
/// lie on the safe or the unsafe side of the limit states or have no value there. The set of all is
/// then the preferred one, unless another is named.
void RepairReliabilityInformation(ReliabilityInformation& information,
                                  const DesignManager& designs);

}  // namespace corvath::algorithm::datatypes::legacy
