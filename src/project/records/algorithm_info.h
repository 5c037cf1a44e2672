#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "design/named_sequence.h"
#include "project/records/signal_info.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <list>
#include <map>
#include <string>

namespace corvath::algorithm::datatypes {

class DetailedInformationBase;
class ZELInformation;
class ZEL3Information;
class SystemsInformation;
class OptimizationInformation;
class ReliabilityInformation;

/// Which algorithm produced a project, and what it left behind: above all the models, which hang
/// below the detailed information.
///
/// The type is a plain number. It decides the class of the detailed information:
/// 0 to 4, 9, 10, 27 OptimizationInformation; 8, 12 to 17 ReliabilityInformation; 18
/// ZELInformation; 28 ZEL3Information; any other SystemsInformation.
class AlgorithmInfo {
 public:
  using DetailedInformationBase = datatypes::DetailedInformationBase;
  using ZELInformation = datatypes::ZELInformation;
  using ZEL3Information = datatypes::ZEL3Information;
  using SystemsInformation = datatypes::SystemsInformation;
  using OptimizationInformation = datatypes::OptimizationInformation;
  using ReliabilityInformation = datatypes::ReliabilityInformation;

  enum Type : std::int32_t {
    kSensitivityDeterministic = 5,
    kSensitivityStochastic = 6,
    kZEL = 18,
    kDefault = 22,
    kSensitivityDeterministic2 = 23,
    kZEL3 = 28
  };

  /// With the empty detailed information of its type, where the type has one.
  explicit AlgorithmInfo(std::int32_t type = kDefault);
  /// A copy owns its models.
  AlgorithmInfo(const AlgorithmInfo& other);
  AlgorithmInfo& operator=(const AlgorithmInfo& other);
  virtual ~AlgorithmInfo();

  std::int32_t GetType() const { return algo_type_; }
  /// Another type gets new detailed information; the same type changes nothing.
  void SetType(std::int32_t type);

  static bool IsReliability(std::int32_t type) { return type == 8 || (type >= 12 && type <= 17); }
  bool IsZEL() const { return algo_type_ == kZEL; }
  bool IsZEL3() const { return algo_type_ == kZEL3; }
  bool IsReliability() const { return IsReliability(algo_type_); }

  /// The detailed information as this class, null if it is of another class. A missing one is made
  /// first if the type fits; for SystemsInformation whatever the type.
  boost::shared_ptr<ZELInformation> GetZELInformation();
  boost::shared_ptr<ZEL3Information> GetZEL3Information();
  boost::shared_ptr<ReliabilityInformation> GetReliabilityInformation();
  boost::shared_ptr<SystemsInformation> GetSystemsInformation();

  /// Null only in a project whose file holds a null pointer.
  const boost::shared_ptr<DetailedInformationBase>& GetDetailedInformation() const {
    return detailed_info_;
  }

  /// Of the detailed information; 0 if there is none.
  std::int32_t GetSamplingType() const;

  EntrySequence& GetAdditionalData() { return additional_data_; }
  const EntrySequence& GetAdditionalData() const { return additional_data_; }
  std::map<std::wstring, SignalInfo>& GetSignalInfos() { return signal_info_container_; }
  const std::map<std::wstring, SignalInfo>& GetSignalInfos() const {
    return signal_info_container_;
  }
  std::list<std::wstring>& GetSignalInfoNames() { return signal_info_names_; }
  const std::list<std::wstring>& GetSignalInfoNames() const { return signal_info_names_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()

  std::int32_t algo_type_;
  EntrySequence additional_data_;
  std::map<std::wstring, SignalInfo> signal_info_container_;
  std::list<std::wstring> signal_info_names_;  ///< the container's keys in the order of display
  boost::shared_ptr<DetailedInformationBase> detailed_info_;
};

/// New detailed information for an algorithm of this type.
boost::shared_ptr<DetailedInformationBase> MakeDetailedInformation(std::int32_t type);

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::AlgorithmInfo, 7)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::AlgorithmInfo)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::AlgorithmInfo,
               "corvath::algorithm::datatypes::AlgorithmInfo")
