#include "design/designs/run_info.h"

#include "archive/instantiate.h"

#include <tuple>
#include <utility>

namespace corvath::algorithm::datatypes {

RunInfoMeta::RunInfoMeta(eRunInfo run_info, std::wstring actor_name, std::wstring response_name,
                         std::list<std::wstring> message)
    : run_info_(run_info),
      actor_name_(std::move(actor_name)),
      response_name_(std::move(response_name)),
      message_(std::move(message)) {}

bool RunInfoMeta::operator==(const RunInfoMeta& other) const {
  return std::tie(run_info_, actor_name_, response_name_, message_) ==
         std::tie(other.run_info_, other.actor_name_, other.response_name_, other.message_);
}

template <class Archive>
void RunInfoMeta::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(run_info_);
  ar& BOOST_SERIALIZATION_NVP(actor_name_);
  ar& BOOST_SERIALIZATION_NVP(response_name_);
  ar& BOOST_SERIALIZATION_NVP(message_);
}

template <class Archive>
void RunInfoContainer::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(run_infos_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::RunInfoMeta)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::RunInfoContainer)
