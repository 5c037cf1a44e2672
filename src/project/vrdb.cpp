#include "project/vrdb.h"

#include "foundation/build_version.h"
#include "foundation/exception.h"
#include "project/records/detailed_information.h"
#include "project/records/zel_information.h"

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/make_shared.hpp>

namespace corvath::algorithm::datatypes {

VRDB::VRDB() : algorithm_info_(boost::make_shared<AlgorithmInfo>()) {}

VRDB::~VRDB() = default;

bool VRDB::HasMetaData(const std::wstring& key) const {
  return meta_data_.count(key) > 0;
}

const std::string& VRDB::GetMetaData(const std::wstring& key) const {
  const auto place = meta_data_.find(key);
  if (place == meta_data_.end()) throw utils::runtime_error(L"No such meta data: " + key);
  return place->second;
}

void VRDB::SetMetaData(const std::wstring& key, std::string value) {
  meta_data_[key] = std::move(value);
}

InputBounds VRDB::GetInputBounds() const {
  return ExtractInputBounds(parameter_manager_, design_container_, GetSamplingType());
}

std::pair<CDesignEntry, CDesignEntry> VRDB::GetParameterLimits(const std::wstring& name) const {
  std::pair<CDesignEntry, CDesignEntry> limits;
  parameter_manager_.GetBounds(name, limits.first, limits.second);
  return limits;
}

std::int32_t VRDB::GetSamplingType() const {
  return algorithm_info_ ? algorithm_info_->GetSamplingType() : 0;
}

std::list<std::wstring> VRDB::GetResponseNames() const {
  std::list<std::wstring> names;
  if (!algorithm_info_ || !algorithm_info_->IsZEL()) return names;
  if (const auto information = algorithm_info_->GetZELInformation())
    for (const auto& [response, group] : information->response_to_cv_mapping_)
      names.push_back(group);
  return names;
}

void VRDB::StampMetaData() const {
  class_version_ = kVRDBClassVersion;
  const utils::BuildVersion& build = utils::GetBuildVersion();
  meta_data_[L"stelvanix version"] = build.text;
  meta_data_[L"stelvanix suffix"] = build.suffix;
  meta_data_[L"stelvanix build date"] = build.date;
  meta_data_[L"stelvanix version_full"] = std::to_string(build.packed);
  meta_data_[L"deactivated_designs"] = PackDeactivatedDesigns();
  meta_data_[L"last_write_time"] =
      boost::posix_time::to_iso_extended_string(boost::posix_time::microsec_clock::local_time());
  is_stamped_ = true;
}

}  // namespace corvath::algorithm::datatypes
