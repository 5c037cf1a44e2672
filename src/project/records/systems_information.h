#pragma once

#include "archive/serialization.h"
#include "design/designs/design_manager.h"
#include "project/records/design_set.h"
#include "project/records/detailed_information.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace corvath::algorithm::datatypes {

/// Designs that did not come from the algorithm itself, kept as stored.
class AdditionalDesignContainer {
 public:
  AdditionalDesignContainer() = default;
  /// A copy owns its design sets.
  AdditionalDesignContainer(const AdditionalDesignContainer& other);
  AdditionalDesignContainer(AdditionalDesignContainer&&) = default;
  AdditionalDesignContainer& operator=(AdditionalDesignContainer other);

  /// Adds the designs and design sets of `other`; a design of the same id is replaced.
  /// @throws corvath::utils::runtime_error "Additional designs identifier do not match."
  void Merge(const AdditionalDesignContainer& other);

  std::wstring identifier_;
  DesignManager designs_;
  bool similar_to_system_designs_ = false;
  DesignSetMap design_sets_;
  std::map<std::wstring, std::uint64_t> design_set_position_map_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};
bool operator==(const AdditionalDesignContainer& a, const AdditionalDesignContainer& b);

/// What a sampling or a search left behind: design sets, each with its models.
class SystemsInformation : public DetailedInformationBase {
 public:
  SystemsInformation() = default;
  /// A copy owns its design sets and their models.
  SystemsInformation(const SystemsInformation& other);
  SystemsInformation& operator=(const SystemsInformation&) = delete;

  boost::shared_ptr<DetailedInformationBase> Clone() const override;
  bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const override;
  void RecoverUsedDesigns(const DesignManager& designs,
                          const ParameterManager& parameters) override;
  void ResetSupportData(const DesignManager& designs, const ParameterManager& parameters) override;
  void RestoreSupportData(const DesignManager& designs,
                          const ParameterManager& parameters) override;

  /// Adds an empty design set, or returns the one of that name.
  /// @throws corvath::utils::runtime_error "Empty name for design set is not allowed."
  DesignSet& AddDesignSet(const std::wstring& name);
  bool HasDesignSet(const std::wstring& name) const;
  /// @throws corvath::utils::runtime_error `Design set <name> does not exist.`
  DesignSet& GetDesignSet(const std::wstring& name);
  const DesignSet& GetDesignSet(const std::wstring& name) const;

  std::map<std::wstring, std::uint64_t> design_set_position_map_;  ///< order of display
  std::wstring prefered_design_set_;  ///< the set whose models serve the file
  std::map<std::wstring, AdditionalDesignContainer> additional_designs_;
  DesignSetMap design_sets_map_;

 protected:
  /// A new set of the class that this information holds.
  virtual boost::shared_ptr<DesignSet> MakeDesignSet(const std::wstring& name) const;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()

  /// Calls `change` with each set's models, where there are any, in the order of the map.
  void ForEachContainer(const std::function<void(SurrogateInfoContainer&)>& change);
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::AdditionalDesignContainer, 1)
ZEL_EXPORT_KEY(
    corvath::algorithm::datatypes::AdditionalDesignContainer,
    "corvath::algorithm::datatypes::AlgorithmInfo::SystemsInformation::AdditionalDesignContainer")
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::SystemsInformation, 6)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::SystemsInformation)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::SystemsInformation,
               "corvath::algorithm::datatypes::AlgorithmInfo::SystemsInformation")
