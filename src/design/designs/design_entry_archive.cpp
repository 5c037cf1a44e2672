#include "archive/instantiate.h"
#include "design/designs/design_entry.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace corvath::algorithm::datatypes {

namespace {

using Alternatives = decltype(DesignEntryData::value);
constexpr std::size_t kVariantAlternative = 5;

template <std::size_t I, class Archive>
void LoadAlternative(Archive& ar, Alternatives& value) {
  ar >> boost::serialization::make_nvp("value", value.emplace<I>());
}

/// Reads `which`, a number below `num_alternatives`, then `value`.
template <class Archive>
void LoadTagged(Archive& ar, Alternatives& value, int num_alternatives) {
  std::int32_t which = 0;
  ar >> BOOST_SERIALIZATION_NVP(which);
  if (which < 0 || which >= num_alternatives)
    throw std::runtime_error("The file holds a design entry of the unknown kind " +
                             std::to_string(which) + ".");
  switch (which) {
    case 0:
      return LoadAlternative<0>(ar, value);
    case 1:
      return LoadAlternative<1>(ar, value);
    case 2:
      return LoadAlternative<2>(ar, value);
    case 3:
      return LoadAlternative<3>(ar, value);
    case 4:
      return LoadAlternative<4>(ar, value);
    default:
      return LoadAlternative<kVariantAlternative>(ar, value);
  }
}

}  // namespace

template <class Archive>
void DesignEntryData::save(Archive& ar, const unsigned int) const {
  const auto which = static_cast<std::int32_t>(value.index());
  ar << BOOST_SERIALIZATION_NVP(which);
  std::visit([&ar](const auto& held) { ar << boost::serialization::make_nvp("value", held); },
             value);
}

template <class Archive>
void DesignEntryData::load(Archive& ar, const unsigned int) {
  LoadTagged(ar, value, std::variant_size_v<Alternatives>);
}

template <class Archive>
void CDesignEntry::save(Archive& ar, const unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(data_);
}

template <class Archive>
void CDesignEntry::load(Archive& ar, const unsigned int version) {
  if (version < 4) {
    LoadTagged(ar, data_.value, kVariantAlternative);  // before there was a `Variant` among them
  } else if (version == 4) {
    ar >> boost::serialization::make_nvp("data_", data_.value.emplace<kVariantAlternative>());
  } else {
    ar >> BOOST_SERIALIZATION_NVP(data_);
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::DesignEntryData)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::CDesignEntry)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::CDesignEntry)
