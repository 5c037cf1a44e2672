#pragma once

#include "archive/serialization.h"

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Parts of one data set of a channel, by name; the list keeps the order of display.
class DataInfo {
 public:
  virtual ~DataInfo() = default;

  std::map<std::wstring, std::vector<double>> data_part_map_;
  std::list<std::wstring> data_part_names_;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// Data sets of one channel of a signal.
class ChannelInfo {
 public:
  virtual ~ChannelInfo() = default;

  std::map<std::wstring, DataInfo> data_info_map_;
  std::list<std::wstring> data_info_names_;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// A signal that an algorithm recorded for display, kept as stored.
class SignalInfo {
 public:
  virtual ~SignalInfo() = default;

  std::vector<double> x_data_;
  std::map<std::wstring, ChannelInfo> channel_info_map_;
  std::list<std::wstring> channel_info_names_;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

bool operator==(const DataInfo& a, const DataInfo& b);
bool operator==(const ChannelInfo& a, const ChannelInfo& b);
bool operator==(const SignalInfo& a, const SignalInfo& b);

/// The keys of `map` in its order: the names of a record that did not store them yet.
template <class T>
std::list<std::wstring> NamesOf(const std::map<std::wstring, T>& map) {
  std::list<std::wstring> names;
  for (const auto& entry : map) names.push_back(entry.first);
  return names;
}

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::DataInfo, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::DataInfo)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ChannelInfo, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ChannelInfo)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::SignalInfo, 1)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::SignalInfo)
