#include "project/records/algorithm_info.h"

#include "archive/instantiate.h"
#include "project/records/legacy_conversion.h"
#include "project/records/optimization_information.h"
#include "project/records/reliability_information.h"
#include "project/records/systems_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"

#include <boost/make_shared.hpp>

#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {
namespace {

bool IsOptimization(std::int32_t type) {
  return (type >= 0 && type <= 4) || type == 9 || type == 10 || type == 27;
}

/// The sampling type that a new SystemsInformation gets.
std::int32_t SystemsSampling(std::int32_t type) {
  switch (type) {
    case AlgorithmInfo::kSensitivityDeterministic:
    case AlgorithmInfo::kSensitivityDeterministic2:
      return DetailedInformationBase::kDeterministicSampling;
    case AlgorithmInfo::kSensitivityStochastic:
      return DetailedInformationBase::kStochasticSampling;
    default:
      return DetailedInformationBase::kUnknownSampling;
  }
}

/// The sampling type of a file that does not store it: that of its algorithm's type.
std::int32_t UnstoredSampling(std::int32_t type) {
  if (IsOptimization(type)) return DetailedInformationBase::kDeterministicSampling;
  if (AlgorithmInfo::IsReliability(type)) return DetailedInformationBase::kStochasticSampling;
  return SystemsSampling(type);
}

}  // namespace

boost::shared_ptr<DetailedInformationBase> MakeDetailedInformation(std::int32_t type) {
  if (IsOptimization(type)) return boost::make_shared<OptimizationInformation>();
  if (AlgorithmInfo::IsReliability(type)) return boost::make_shared<ReliabilityInformation>();
  if (type == AlgorithmInfo::kZEL) return boost::make_shared<ZELInformation>();
  if (type == AlgorithmInfo::kZEL3) return boost::make_shared<ZEL3Information>();
  const auto information = boost::make_shared<SystemsInformation>();
  information->SetSamplingType(SystemsSampling(type));
  return information;
}

AlgorithmInfo::AlgorithmInfo(std::int32_t type)
    : algo_type_(type), detailed_info_(MakeDetailedInformation(type)) {}

AlgorithmInfo::AlgorithmInfo(const AlgorithmInfo& other)
    : algo_type_(other.algo_type_),
      additional_data_(other.additional_data_),
      signal_info_container_(other.signal_info_container_),
      signal_info_names_(other.signal_info_names_) {
  if (other.detailed_info_) detailed_info_ = other.detailed_info_->Clone();
}

AlgorithmInfo& AlgorithmInfo::operator=(const AlgorithmInfo& other) {
  AlgorithmInfo copy(other);
  std::swap(algo_type_, copy.algo_type_);
  std::swap(additional_data_, copy.additional_data_);
  std::swap(signal_info_container_, copy.signal_info_container_);
  std::swap(signal_info_names_, copy.signal_info_names_);
  std::swap(detailed_info_, copy.detailed_info_);
  return *this;
}

AlgorithmInfo::~AlgorithmInfo() = default;

void AlgorithmInfo::SetType(std::int32_t type) {
  if (type == algo_type_) return;
  detailed_info_ = MakeDetailedInformation(type);
  algo_type_ = type;
}

boost::shared_ptr<ZELInformation> AlgorithmInfo::GetZELInformation() {
  if (!detailed_info_ && IsZEL()) detailed_info_ = MakeDetailedInformation(algo_type_);
  return boost::dynamic_pointer_cast<ZELInformation>(detailed_info_);
}

boost::shared_ptr<ZEL3Information> AlgorithmInfo::GetZEL3Information() {
  if (!detailed_info_ && IsZEL3()) detailed_info_ = MakeDetailedInformation(algo_type_);
  return boost::dynamic_pointer_cast<ZEL3Information>(detailed_info_);
}

boost::shared_ptr<ReliabilityInformation> AlgorithmInfo::GetReliabilityInformation() {
  if (!detailed_info_ && IsReliability()) detailed_info_ = MakeDetailedInformation(algo_type_);
  return boost::dynamic_pointer_cast<ReliabilityInformation>(detailed_info_);
}

boost::shared_ptr<SystemsInformation> AlgorithmInfo::GetSystemsInformation() {
  if (!detailed_info_)
    detailed_info_ = IsZEL() || IsZEL3() ? boost::make_shared<SystemsInformation>()
                                         : MakeDetailedInformation(algo_type_);
  return boost::dynamic_pointer_cast<SystemsInformation>(detailed_info_);
}

std::int32_t AlgorithmInfo::GetSamplingType() const {
  return detailed_info_ ? detailed_info_->GetSamplingType() : 0;
}

template <class Archive>
void AlgorithmInfo::load(Archive& ar, unsigned int version) {
  ar >> BOOST_SERIALIZATION_NVP(algo_type_);
  if (version < 4) {
    std::pair<std::uint64_t, std::uint64_t> complete_directions_pair_;
    std::map<std::wstring, std::vector<DesignId>> design_group_map_;
    ar >> BOOST_SERIALIZATION_NVP(complete_directions_pair_);
    ar >> BOOST_SERIALIZATION_NVP(design_group_map_);
  }
  ar >> BOOST_SERIALIZATION_NVP(additional_data_);
  if (version >= 5) ar >> BOOST_SERIALIZATION_NVP(signal_info_container_);
  if (version >= 7)
    ar >> BOOST_SERIALIZATION_NVP(signal_info_names_);
  else
    signal_info_names_ = NamesOf(signal_info_container_);

  ReliabilityDesignSetInfo reli_total_infos_;
  std::map<std::uint64_t, ReliabilityDesignSetInfo> reli_iteration_infos_;
  legacy::IterationMap desig_iteration_map_;
  EntrySequence zel_cv_indexes_;
  if (version >= 2 && version < 4) {
    ar >> BOOST_SERIALIZATION_NVP(reli_total_infos_);
    ar >> BOOST_SERIALIZATION_NVP(reli_iteration_infos_);
    ar >> BOOST_SERIALIZATION_NVP(desig_iteration_map_);
    ar >> BOOST_SERIALIZATION_NVP(zel_cv_indexes_);
  }
  detailed_info_.reset();
  if (version >= 4) {
    ar >> BOOST_SERIALIZATION_NVP(detailed_info_);
  } else if (IsZEL()) {
    const auto information = boost::make_shared<ZELInformation>();
    information->cv_indexes_ = legacy::ToCvIndexes(zel_cv_indexes_);
    detailed_info_ = information;
  } else if (IsReliability()) {
    detailed_info_ = legacy::ToReliabilityInformation(reli_total_infos_, reli_iteration_infos_,
                                                      desig_iteration_map_);
  }
  if (version == 4 || version == 5) {
    if (detailed_info_) {
      if (const std::int32_t sampling = UnstoredSampling(algo_type_))
        detailed_info_->SetSamplingType(sampling);
    } else if (algo_type_ == kSensitivityDeterministic || algo_type_ == kSensitivityStochastic) {
      detailed_info_ = MakeDetailedInformation(algo_type_);
    }
  }
}

template <class Archive>
void AlgorithmInfo::save(Archive& ar, unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(algo_type_);
  ar << BOOST_SERIALIZATION_NVP(additional_data_);
  ar << BOOST_SERIALIZATION_NVP(signal_info_container_);
  ar << BOOST_SERIALIZATION_NVP(signal_info_names_);
  ar << BOOST_SERIALIZATION_NVP(detailed_info_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::AlgorithmInfo)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::AlgorithmInfo)
