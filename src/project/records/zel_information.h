#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_properties.h"
#include "foundation/publisher.h"
#include "metamodel/subspace_results.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/detailed_information.h"
#include "project/settings/zel_combined_settings.h"

#include <boost/optional.hpp>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// The models of a project whose purpose was to train them, with what the training recorded.
class ZELInformation : public DetailedInformationBase, public observer_pattern::CPublisher {
 public:
  using SubspaceResultContainer = math::metamodel::SubspaceResultContainer;

  ZELInformation() = default;

  boost::shared_ptr<DetailedInformationBase> Clone() const override;
  bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const override;
  void RecoverUsedDesigns(const DesignManager& designs,
                          const ParameterManager& parameters) override;
  void ResetSupportData(const DesignManager& designs, const ParameterManager& parameters) override;
  void RestoreSupportData(const DesignManager& designs,
                          const ParameterManager& parameters) override;

  std::map<std::wstring, std::vector<std::uint64_t>> cv_indexes_;  ///< validation groups by name
  std::map<std::wstring, std::wstring> response_to_cv_mapping_;
  ParameterManager parameter_manager_;  ///< inputs of the models, if not the project's
  SurrogateInfoContainer surrogate_infos_;
  boost::optional<zel::ZELCombinedSettings> zel_settings_;
  std::uint64_t num_samples_ = 0;
  std::vector<std::wstring> parameter_names_;
  std::vector<std::pair<double, double>> sampling_limits_;
  std::vector<std::pair<CDesignEntry, CDesignEntry>> defined_limits_;
  std::vector<RandomProperties> distribution_settings_;
  boost::shared_ptr<SubspaceResultContainer> calculated_models_;  ///< may be null
  boost::shared_ptr<SubspaceResultContainer> best_models_;        ///< may be null
  std::vector<std::wstring> function_strings_;
  std::vector<double> relative_freq_of_importance_;
  std::vector<std::pair<std::wstring, std::wstring>> custom_zel_logs_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ZELInformation, 9)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ZELInformation)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::ZELInformation,
               "corvath::algorithm::datatypes::AlgorithmInfo::ZELInformation")
