#pragma once

#include "archive/serialization.h"

#include <cstdint>

namespace corvath::zel {

/// Numbers of the dialogue that made the models; carried from file to file.
enum eModelComplexityType : std::int32_t {};
enum eVariableReductionType : std::int32_t {};

/// Settings of the automatic mode.
struct ZELAutomaticSettings {
  eModelComplexityType model_complexity_{1};
  eVariableReductionType variables_reduction_{2};
  std::uint64_t num_parallel_ = 4;

  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};

bool operator==(const ZELAutomaticSettings& a, const ZELAutomaticSettings& b);

}  // namespace corvath::zel

ZEL_CLASS_VERSION(corvath::zel::ZELAutomaticSettings, 2)
ZEL_TRACK_ALWAYS(corvath::zel::ZELAutomaticSettings)
ZEL_EXPORT_KEY(corvath::zel::ZELAutomaticSettings, "corvath::zel::ZELAutomaticSettings")
