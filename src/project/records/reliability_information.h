#pragma once

#include "archive/serialization.h"
#include "project/records/systems_information.h"

#include <Eigen/Core>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Histories as they stood in older files: values by design.
using OldHistoryMap = std::map<std::wstring, std::deque<std::pair<DesignId, double>>>;

/// Figures of a reliability analysis as older files hold them; newer ones hold
/// ReliabilityDesignSet.
struct ReliabilityDesignSetInfo {
  std::uint64_t safe_domain_designs_ = 0;
  std::uint64_t unsafe_domain_designs_ = 0;
  std::uint64_t failed_strings_ = 0;
  std::uint64_t unsuccessful_designs_ = 0;
  std::uint64_t total_designs_ = 0;
  bool design_set_complete_ = false;
  DesignId most_probable_failure_point_id_{0};
  double probability_of_failure_ = 0.0;
  double standard_deviation_error_ = 0.0;
  double reliability_index_ = 0.0;
  double probability_of_failure_form_ = 0.0;
  double reliability_index_form_ = 0.0;
  std::wstring method_name_;
  std::vector<double> error_r2_;
  std::vector<double> error_loo_;
  OldHistoryMap history_map_;  ///< stored below class version 5
  std::map<std::wstring, Eigen::MatrixXd> arsm_ds_map_;
  std::map<std::uint64_t, eALGOINFO_DESIGNTYPE> arsm_ds_types_;
  bool has_valid_data_ = false;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// A design set of a reliability analysis with its result.
class ReliabilityDesignSet : public DesignSet {
 public:
  using DesignSet::DesignSet;
  boost::shared_ptr<DesignSet> Clone() const override;
  bool IsEqual(const DesignSet& other) const override;

  double probability_of_failure_ = 0.0;
  double standard_deviation_error_ = 0.0;
  double reliability_index_ = 0.0;
  std::uint64_t num_total_dir_ = 0;
  std::uint64_t num_done_dir_ = 0;
  std::map<std::wstring, std::vector<double>> arsm_approx_errors_;
  std::map<std::wstring, std::vector<double>> input_importance_values_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// What a reliability analysis left behind.
class ReliabilityInformation : public SystemsInformation {
 public:
  boost::shared_ptr<DetailedInformationBase> Clone() const override;
  bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const override;

  std::wstring reli_method_name_;
  bool is_converged_ = false;
  std::uint64_t num_total_it_ = 0;
  std::uint64_t num_done_it_ = 0;
  bool is_form_converged_ = false;

 protected:
  boost::shared_ptr<DesignSet> MakeDesignSet(const std::wstring& name) const override;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ReliabilityDesignSetInfo, 6)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ReliabilityDesignSetInfo)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::ReliabilityDesignSetInfo,
               "corvath::algorithm::datatypes::AlgorithmInfo::ReliabilityInformation::"
               "ReliabilityDesignSetInfo")
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ReliabilityDesignSet, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ReliabilityDesignSet)
ZEL_EXPORT_KEY(
    corvath::algorithm::datatypes::ReliabilityDesignSet,
    "corvath::algorithm::datatypes::AlgorithmInfo::ReliabilityInformation::ReliabilityDesignSet")
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ReliabilityInformation, 6)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ReliabilityInformation)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::ReliabilityInformation,
               "corvath::algorithm::datatypes::AlgorithmInfo::ReliabilityInformation")
