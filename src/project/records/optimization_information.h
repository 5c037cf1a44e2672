#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "project/records/systems_information.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// A design set of an optimisation, with the bounds that held for each design.
class OptimizationDesignSet : public DesignSet {
 public:
  using DesignSet::DesignSet;
  boost::shared_ptr<DesignSet> Clone() const override;
  bool IsEqual(const DesignSet& other) const override;

  /// Parameter name to (lower, upper) by design.
  std::map<std::wstring, std::map<DesignId, std::pair<CDesignEntry, CDesignEntry>>>
      lower_upper_bounds_map_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// What an optimisation left behind.
class OptimizationInformation : public SystemsInformation {
 public:
  boost::shared_ptr<DetailedInformationBase> Clone() const override;
  bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const override;

  std::vector<DesignId> best_design_ids_;

 protected:
  boost::shared_ptr<DesignSet> MakeDesignSet(const std::wstring& name) const override;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::algorithm::datatypes

ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::OptimizationDesignSet)
ZEL_EXPORT_KEY(
    corvath::algorithm::datatypes::OptimizationDesignSet,
    "corvath::algorithm::datatypes::AlgorithmInfo::OptimizationInformation::OptimizationDesignSet")
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::OptimizationInformation, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::OptimizationInformation)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::OptimizationInformation,
               "corvath::algorithm::datatypes::AlgorithmInfo::OptimizationInformation")
