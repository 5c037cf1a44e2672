// The persisted form of a project, class versions 0 to 14.

#include "archive/archive_flags.h"
#include "archive/instantiate.h"
#include "foundation/text_stream.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/legacy_conversion.h"
#include "project/records/reliability_information.h"
#include "project/records/zel_information.h"
#include "project/vrdb.h"

#include <boost/make_shared.hpp>

#include <new>
#include <sstream>

namespace corvath::algorithm::datatypes {
namespace {

constexpr wchar_t kDeactivatedKey[] = L"deactivated_designs";

/// Discrete domains by index became domains by value. Returns whether there is a variable with a
/// deterministic side.
bool MoveToKindByValue(ParameterManager& manager) {
  using Kinds = enums::DeterministicProperties;
  std::list<std::wstring> names;
  bool has_variable = false;
  for (const Parameter& parameter : manager.GetAllParameters()) {
    if (!parameter.IsOptimization()) continue;
    if (!parameter.IsConst()) has_variable = true;
    const auto kind = parameter.GetDeterministicProperty(0).GetKind();
    if (kind == Kinds::ORDINAL_BY_INDEX || kind == Kinds::NOMINAL_BY_INDEX)
      names.push_back(parameter.GetName());
  }
  for (const std::wstring& name : names) manager.SetKind(name, Kinds::ORDINAL_BY_VALUE);
  return has_variable;
}

SurrogateInfoContainer ToContainer(const std::list<SurrogateInfo>& infos) {
  SurrogateInfoContainer container;
  for (const SurrogateInfo& info : infos) container.AddOrReplace(info);
  return container;
}

/// The algorithm information without the support data that the designs hold. The project keeps its
/// own.
boost::shared_ptr<AlgorithmInfo> WithoutSupportData(const boost::shared_ptr<AlgorithmInfo>& info,
                                                    const DesignManager& designs,
                                                    const ParameterManager& parameters) {
  if (!info || !info->GetDetailedInformation()) return info;
  const auto copy = boost::make_shared<AlgorithmInfo>(*info);
  copy->GetDetailedInformation()->ResetSupportData(designs, parameters);
  return copy;
}

}  // namespace

std::string VRDB::PackDeactivatedDesigns() const {
  utils::TextStream stream;
  portable_binary_oarchive archive(stream, 0);
  archive << deactivated_designs_;
  return stream.str();
}

void VRDB::UnpackDeactivatedDesigns() {
  deactivated_designs_.clear();
  const auto place = meta_data_.find(kDeactivatedKey);
  if (place == meta_data_.end()) return;
  const std::string& bytes = place->second;
  if (!archive::IsPortableArchive(bytes.data(), bytes.size())) return;
  try {
    std::istringstream stream(bytes, std::ios::binary);
    portable_binary_iarchive archive(stream, archive::kThrowOnMismatch);
    DesignIds ids;
    archive >> ids;
    deactivated_designs_.swap(ids);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // A project is of use without them.
  }
}

void VRDB::RepairParameters() {
  MoveToKindByValue(parameter_manager_);
  if (!algorithm_info_ || !algorithm_info_->IsZEL()) return;
  const auto information = algorithm_info_->GetZELInformation();
  if (!information) return;
  ParameterManager& manager = information->parameter_manager_;
  if (manager.IsEmpty()) manager = parameter_manager_;
  information->SetSamplingType(MoveToKindByValue(manager)
                                   ? DetailedInformationBase::kDeterministicSampling
                                   : DetailedInformationBase::kStochasticSampling);
}

void VRDB::TakeSurrogateInfos(const std::list<SurrogateInfo>& surrogate_infos) {
  constexpr std::int32_t kReliabilityWithModels = 14;
  if (algorithm_info_->IsZEL()) {
    if (const auto information = algorithm_info_->GetZELInformation())
      information->surrogate_infos_ = ToContainer(surrogate_infos);
  } else if (algorithm_info_->GetType() == kReliabilityWithModels) {
    const auto information = algorithm_info_->GetReliabilityInformation();
    if (!information || information->design_sets_map_.empty()) return;
    const auto& [name, first] = *information->design_sets_map_.begin();
    if (first) first->surrogate_infos_ = ToContainer(surrogate_infos);
  }
}

template <class Archive>
void VRDB::load(Archive& ar, unsigned int version) {
  *this = VRDB();
  class_version_ = version;
  algorithm_info_.reset();

  std::list<SurrogateInfo> surrogate_infos_;
  if (version < 9) ar >> BOOST_SERIALIZATION_NVP(surrogate_infos_);
  ar >> BOOST_SERIALIZATION_NVP(parameter_manager_);
  ar >> BOOST_SERIALIZATION_NVP(design_container_);
  if (version < 10) {
    bool is_consistent_ = false;
    ar >> BOOST_SERIALIZATION_NVP(is_consistent_);
  }
  if (version >= 1)
    ar >> BOOST_SERIALIZATION_NVP(reference_design_);
  else
    reference_design_ = design_container_.BuildTemplate(false);
  if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(algorithm_info_);
  if (version < 11 && algorithm_info_ && algorithm_info_->IsReliability())
    if (const auto information = algorithm_info_->GetReliabilityInformation())
      legacy::RepairReliabilityInformation(*information, design_container_);

  if (version >= 3) ar >> BOOST_SERIALIZATION_NVP(meta_data_);
  if (version >= 4) ar >> BOOST_SERIALIZATION_NVP(validated_best_designs_);
  if (version >= 5) ar >> BOOST_SERIALIZATION_NVP(approx_design_container_);
  if (version >= 6) ar >> BOOST_SERIALIZATION_NVP(nominal_design_);
  if (version >= 7) {
    ar >> BOOST_SERIALIZATION_NVP(image_path_map_);
    ar >> BOOST_SERIALIZATION_NVP(process_path_map_);
  }
  UnpackDeactivatedDesigns();

  const bool has_old_models = !surrogate_infos_.empty();
  if (!algorithm_info_ && has_old_models)
    algorithm_info_ = boost::make_shared<AlgorithmInfo>(AlgorithmInfo::kZEL);
  if (version < 8 && (has_old_models || (algorithm_info_ && algorithm_info_->IsZEL())))
    RepairParameters();
  if (has_old_models) TakeSurrogateInfos(surrogate_infos_);
  const auto information = algorithm_info_ ? algorithm_info_->GetDetailedInformation() : nullptr;
  if (version < 12 && information)
    information->RecoverUsedDesigns(design_container_, parameter_manager_);
  if (version >= kFirstWithoutSupportData && information)
    information->RestoreSupportData(design_container_, parameter_manager_);
  if (!algorithm_info_) algorithm_info_ = boost::make_shared<AlgorithmInfo>();

  if (version >= 13) ar >> BOOST_SERIALIZATION_NVP(criteria_);
  if (criteria_.empty()) criteria_ = design_container_.GetCriteriaTemplate();
}

template <class Archive>
void VRDB::save(Archive& ar, unsigned int version) const {
  if (!is_stamped_) StampMetaData();
  is_stamped_ = false;
  class_version_ = version;

  if (version < 9) {
    const std::list<SurrogateInfo> surrogate_infos_;
    ar << BOOST_SERIALIZATION_NVP(surrogate_infos_);
  }
  ar << BOOST_SERIALIZATION_NVP(parameter_manager_);
  ar << BOOST_SERIALIZATION_NVP(design_container_);
  if (version < 10) {
    const bool is_consistent_ = false;
    ar << BOOST_SERIALIZATION_NVP(is_consistent_);
  }
  if (version >= 1) ar << BOOST_SERIALIZATION_NVP(reference_design_);
  // Lives to the end: the archive knows objects by their addresses.
  const boost::shared_ptr<AlgorithmInfo> algorithm_info =
      version >= kFirstWithoutSupportData
          ? WithoutSupportData(algorithm_info_, design_container_, parameter_manager_)
          : algorithm_info_;
  if (version >= 2) ar << boost::serialization::make_nvp("algorithm_info_", algorithm_info);
  if (version >= 3) ar << BOOST_SERIALIZATION_NVP(meta_data_);
  if (version >= 4) ar << BOOST_SERIALIZATION_NVP(validated_best_designs_);
  if (version >= 5) ar << BOOST_SERIALIZATION_NVP(approx_design_container_);
  if (version >= 6) ar << BOOST_SERIALIZATION_NVP(nominal_design_);
  if (version >= 7) {
    ar << BOOST_SERIALIZATION_NVP(image_path_map_);
    ar << BOOST_SERIALIZATION_NVP(process_path_map_);
  }
  if (version >= 13) ar << BOOST_SERIALIZATION_NVP(criteria_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::VRDB)
