#pragma once

#include "archive/serialization.h"
#include "design/hierarchical_id.h"
#include "project/models/surrogate_info_container.h"

#include <boost/shared_ptr.hpp>
#include <boost/unordered_set.hpp>

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace corvath::algorithm::datatypes {

/// Roles of designs within an algorithm. The numbers are carried as they stand.
enum eDESIGN_TYPE : std::int32_t {};
enum eALGOINFO_DESIGNTYPE : std::int32_t {};

/// Designs of one role, under a name.
struct DesignGroup {
  std::wstring name_;
  std::set<DesignId> design_ids_;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};
bool operator==(const DesignGroup& a, const DesignGroup& b);

/// One point of the history of a quantity.
struct HistoryData {
  std::uint64_t num_calculated_designs_ = 0;
  DesignId design_id_{0};
  double value_ = 0.0;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};
bool operator==(const HistoryData& a, const HistoryData& b);

/// Histories by the name of the quantity.
using HistoryMap = std::map<std::wstring, std::deque<HistoryData>>;

/// A named part of a project's designs, with the models that were trained on it.
class DesignSet {
 public:
  DesignSet() = default;
  explicit DesignSet(std::wstring identifier) : identifier_(std::move(identifier)) {}
  DesignSet(const DesignSet&) = default;
  DesignSet& operator=(const DesignSet&) = default;
  virtual ~DesignSet() = default;

  /// A deep copy of the most derived class: it owns its models.
  virtual boost::shared_ptr<DesignSet> Clone() const;
  /// Same class and the same fields.
  virtual bool IsEqual(const DesignSet& other) const;

  /// Adds what `other` holds beyond this set: designs, groups (by role and name) and histories are
  /// joined, models of the same response are replaced.
  /// @throws corvath::utils::runtime_error "Design set identifier do not match."
  void Merge(const DesignSet& other);

  std::wstring identifier_;
  std::set<DesignId> design_ids_;
  std::multimap<eDESIGN_TYPE, DesignGroup> design_specifications_;
  SurrogateInfoContainer surrogate_infos_;
  HistoryMap history_map_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};

/// Design sets by name, in the order of the names. A file may hold null pointers.
using DesignSetMap = std::map<std::wstring, boost::shared_ptr<DesignSet>>;

/// A map that owns copies of the sets, and the comparison of two maps set by set.
DesignSetMap CloneDesignSets(const DesignSetMap& sets);
bool AreEqual(const DesignSetMap& a, const DesignSetMap& b);

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::DesignSet, 4)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::DesignSet)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::DesignSet,
               "corvath::algorithm::datatypes::AlgorithmInfo::SystemsInformation::DesignSet")
