#pragma once

#include "archive/serialization.h"
#include "design/criterion.h"
#include "design/designs/design.h"
#include "design/designs/design_entry.h"
#include "design/designs/design_manager.h"
#include "design/hierarchical_id.h"
#include "design/named_sequence.h"
#include "design/parameters/parameter_manager.h"
#include "project/attached_path.h"
#include "project/input_bounds.h"
#include "project/records/algorithm_info.h"

#include <boost/shared_ptr.hpp>
#include <boost/unordered_set.hpp>
#include <boost/uuid/uuid.hpp>

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <utility>

namespace corvath::algorithm::datatypes {

class SurrogateInfo;

/// Class version of a new file.
constexpr unsigned int kVRDBClassVersion = 14;
/// From this class version on the models' support data stand in the designs alone.
constexpr unsigned int kFirstWithoutSupportData = 14;

/// One project in memory: its parameters and designs, the algorithm that produced them with the
/// trained models, and a dictionary of texts. A project file holds exactly one.
///
/// Copies share the algorithm information. There is no lock: a project is filled by one thread and
/// then belongs to its owner; saving counts as a change.
class VRDB {
 public:
  using DesignIds = boost::unordered_set<DesignId>;
  using MetaData = std::map<std::wstring, std::string>;
  using PathMap = std::map<boost::uuids::uuid, VRDBAttachedPath>;
  using Criteria = CriterionSequence;

  /// An empty project of algorithm type 22.
  VRDB();
  /// Reads the project file `path`.
  /// @throws std::runtime_error                `Error while reading ...`: it cannot be opened
  /// @throws boost::archive::archive_exception  it is damaged
  explicit VRDB(const std::wstring& path);
  VRDB(const VRDB&) = default;
  VRDB(VRDB&&) = default;
  VRDB& operator=(const VRDB&) = default;
  VRDB& operator=(VRDB&&) = default;
  virtual ~VRDB();

  ParameterManager& GetParameterManager() { return parameter_manager_; }
  const ParameterManager& GetParameterManager() const { return parameter_manager_; }
  DesignManager& GetDesignContainer() { return design_container_; }
  const DesignManager& GetDesignContainer() const { return design_container_; }
  Design& GetReferenceDesign() { return reference_design_; }
  const Design& GetReferenceDesign() const { return reference_design_; }
  void SetReferenceDesign(Design design) { reference_design_ = std::move(design); }
  boost::shared_ptr<AlgorithmInfo>& GetAlgorithmInfo() { return algorithm_info_; }
  const boost::shared_ptr<AlgorithmInfo>& GetAlgorithmInfo() const { return algorithm_info_; }
  DesignManager& GetValidatedBestDesigns() { return validated_best_designs_; }
  const DesignManager& GetValidatedBestDesigns() const { return validated_best_designs_; }
  DesignManager& GetApproxDesignContainer() { return approx_design_container_; }
  const DesignManager& GetApproxDesignContainer() const { return approx_design_container_; }
  Design& GetNominalDesign() { return nominal_design_; }
  const Design& GetNominalDesign() const { return nominal_design_; }
  PathMap& GetImagePathMap() { return image_path_map_; }
  const PathMap& GetImagePathMap() const { return image_path_map_; }
  PathMap& GetProcessPathMap() { return process_path_map_; }
  const PathMap& GetProcessPathMap() const { return process_path_map_; }
  Criteria& GetCriteria() { return criteria_; }
  const Criteria& GetCriteria() const { return criteria_; }
  /// The designs that are switched off.
  DesignIds& GetDeactivatedDesigns() { return deactivated_designs_; }
  const DesignIds& GetDeactivatedDesigns() const { return deactivated_designs_; }
  /// The JSON header text of the file, UTF-8.
  std::string& GetHeader() { return header_; }
  const std::string& GetHeader() const { return header_; }
  /// Of the archive that filled this project, or that was written last.
  std::uint32_t GetClassVersion() const { return class_version_; }

  const MetaData& GetAllMetaData() const { return meta_data_; }
  /// Texts in UTF-8 by key.
  bool HasMetaData(const std::wstring& key) const;
  /// @throws corvath::utils::runtime_error `No such meta data: <key>`
  const std::string& GetMetaData(const std::wstring& key) const;
  /// Replaces the text of a key that exists.
  void SetMetaData(const std::wstring& key, std::string value);

  /// The range of each input over the designs, see ExtractInputBounds. Worked out at every call.
  /// @throws corvath::utils::runtime_error "Unable to extract bounds."
  InputBounds GetInputBounds() const;
  /// The limits that the parameter itself defines.
  /// @throws corvath::utils::runtime_error  it does not exist or has no deterministic side
  std::pair<CDesignEntry, CDesignEntry> GetParameterLimits(const std::wstring& name) const;
  /// Over which inputs the models run: 1 deterministic, 2 random ones, 0 not known.
  std::int32_t GetSamplingType() const;
  /// The responses that a project of type 18 names in its mapping to cross-validation groups, in
  /// the order of its keys; empty for any other project.
  std::list<std::wstring> GetResponseNames() const;

  /// Notes in the meta data which build saves the project and when, and which designs are switched
  /// off. Saving does this itself; a caller who needs the notes earlier (for the header of a file)
  /// calls it first, and the save that follows keeps them.
  void StampMetaData() const;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()

  /// The value of the meta data that holds the designs that are switched off: an archive.
  std::string PackDeactivatedDesigns() const;
  void UnpackDeactivatedDesigns();
  // Steps of loading an old file.
  void RepairParameters();
  void TakeSurrogateInfos(const std::list<SurrogateInfo>& surrogate_infos);

  ParameterManager parameter_manager_;
  DesignManager design_container_;
  Design reference_design_;
  boost::shared_ptr<AlgorithmInfo> algorithm_info_;
  mutable MetaData meta_data_;  ///< saving stamps it
  DesignManager validated_best_designs_;
  DesignManager approx_design_container_;
  Design nominal_design_;
  PathMap image_path_map_;
  PathMap process_path_map_;
  Criteria criteria_;

  DesignIds deactivated_designs_;  ///< stored inside the meta data
  std::string header_;
  mutable std::uint32_t class_version_ = kVRDBClassVersion;
  mutable bool is_stamped_ = false;  ///< StampMetaData ran for the save that follows
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::VRDB,
                  corvath::algorithm::datatypes::kVRDBClassVersion)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::VRDB)
