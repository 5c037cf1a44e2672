#pragma once

#include "archive/serialization.h"

#include <boost/filesystem/path.hpp>
#include <boost/shared_ptr.hpp>

#include <cstdint>

namespace corvath::algorithm::datatypes {

class DesignManager;
class ParameterManager;

/// What an algorithm left behind in a project: its records and, in the derived classes, the models.
class DetailedInformationBase {
 public:
  /// Values of the sampling type: the inputs over which the models run.
  enum SamplingType : std::int32_t {
    kUnknownSampling = 0,
    kDeterministicSampling = 1,  ///< parameters with deterministic properties
    kStochasticSampling = 2      ///< parameters with random properties
  };

  DetailedInformationBase() = default;
  DetailedInformationBase(const DetailedInformationBase&) = default;
  DetailedInformationBase& operator=(const DetailedInformationBase&) = default;
  virtual ~DetailedInformationBase() = default;

  /// A deep copy: it owns its models.
  virtual boost::shared_ptr<DetailedInformationBase> Clone() const;
  /// Same class as `*this` or derived from it, and the same fields. Null is unequal.
  virtual bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const;
  /// Finds the designs on which the models were built, for files that do not store their ids. A
  /// model whose designs cannot be told keeps none.
  virtual void RecoverUsedDesigns(const DesignManager& designs, const ParameterManager& parameters);
  /// Empties the support data of the models, since the designs hold them; nothing for an unknown
  /// sampling type.
  virtual void ResetSupportData(const DesignManager& designs, const ParameterManager& parameters);
  /// Takes the support data of the models back from the designs.
  virtual void RestoreSupportData(const DesignManager& designs, const ParameterManager& parameters);
  /// Tells the models where the project lies: its directory and its file name without extension. No
  /// model of this library keeps data beside the project, so that there is nothing to pass on.
  virtual void SetFileContext(const boost::filesystem::path& directory,
                              const boost::filesystem::path& stem);

  std::int32_t GetSamplingType() const { return sampling_type_; }
  void SetSamplingType(std::int32_t type) { sampling_type_ = type; }

 protected:
  bool IsPlainSampling() const { return sampling_type_ == kDeterministicSampling; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::int32_t sampling_type_ = kUnknownSampling;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::DetailedInformationBase, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::DetailedInformationBase)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::DetailedInformationBase,
               "corvath::algorithm::datatypes::AlgorithmInfo::DetailedInformationBase")
