#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "design/named_sequence.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace corvath::zel {

/// What was known of the data when the settings were made.
struct ZELData {
  using EntrySequence = algorithm::datatypes::EntrySequence;

  EntrySequence parameters_;
  EntrySequence responses_;
  std::map<std::wstring, std::pair<double, double>> responses_boundaries_;
  std::map<std::wstring, std::uint64_t> parameter_importance_;
  std::map<std::wstring, bool> responses_usage_;
  std::map<std::wstring, bool> responses_zelability_;

  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()
};

bool operator==(const ZELData& a, const ZELData& b);

}  // namespace corvath::zel

ZEL_CLASS_VERSION(corvath::zel::ZELData, 4)
ZEL_TRACK_ALWAYS(corvath::zel::ZELData)
ZEL_EXPORT_KEY(corvath::zel::ZELData, "corvath::zel::ZELData")
