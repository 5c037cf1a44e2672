#include "design/named_sequence.h"

#include "archive/instantiate.h"
#include "design/criterion.h"
#include "foundation/exception.h"

#include <iterator>
#include <list>

namespace corvath::algorithm::datatypes {

void ThrowUnknownKey(const std::wstring& name) {
  throw utils::invalid_argument(L"Key \"" + name + L"\" does not exist in this sequence");
}

template <class Key, class T, class Header>
template <class Archive>
void CNVPSequence<Key, T, Header>::save(Archive& ar, const unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(header_);
  ar << BOOST_SERIALIZATION_NVP(seq_);
}

template <class Key, class T, class Header>
template <class Archive>
void CNVPSequence<Key, T, Header>::load(Archive& ar, const unsigned int version) {
  ar >> BOOST_SERIALIZATION_NVP(header_);
  if (version == 0) {
    std::list<value_type> elements;
    ar >> boost::serialization::make_nvp("seq_", elements);
    seq_.assign(std::make_move_iterator(elements.begin()), std::make_move_iterator(elements.end()));
  } else {
    ar >> BOOST_SERIALIZATION_NVP(seq_);
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::EntrySequence)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::VariantSequence)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::CriterionSequence)
