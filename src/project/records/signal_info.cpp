#include "project/records/signal_info.h"

#include "archive/instantiate.h"

#include <tuple>

namespace corvath::algorithm::datatypes {

bool operator==(const DataInfo& a, const DataInfo& b) {
  return std::tie(a.data_part_map_, a.data_part_names_) ==
         std::tie(b.data_part_map_, b.data_part_names_);
}
bool operator==(const ChannelInfo& a, const ChannelInfo& b) {
  return std::tie(a.data_info_map_, a.data_info_names_) ==
         std::tie(b.data_info_map_, b.data_info_names_);
}
bool operator==(const SignalInfo& a, const SignalInfo& b) {
  return std::tie(a.x_data_, a.channel_info_map_, a.channel_info_names_) ==
         std::tie(b.x_data_, b.channel_info_map_, b.channel_info_names_);
}

// Version 0 stored no names; only a reader meets it.

template <class Archive>
void DataInfo::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(data_part_map_);
  if (version >= 1)
    ar& BOOST_SERIALIZATION_NVP(data_part_names_);
  else
    data_part_names_ = NamesOf(data_part_map_);
}

template <class Archive>
void ChannelInfo::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(data_info_map_);
  if (version >= 1)
    ar& BOOST_SERIALIZATION_NVP(data_info_names_);
  else
    data_info_names_ = NamesOf(data_info_map_);
}

template <class Archive>
void SignalInfo::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(x_data_);
  ar& BOOST_SERIALIZATION_NVP(channel_info_map_);
  if (version >= 1)
    ar& BOOST_SERIALIZATION_NVP(channel_info_names_);
  else
    channel_info_names_ = NamesOf(channel_info_map_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::DataInfo)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::ChannelInfo)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::SignalInfo)
