#pragma once

#include "foundation/text.h"

#include <boost/filesystem/path.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_free.hpp>
#include <boost/serialization/version.hpp>

#include <string>

/// A path is one UTF-8 text under "string"; class version 0 held a wide one.
BOOST_CLASS_VERSION(boost::filesystem::path, 1)

namespace boost::serialization {

template <class Archive>
void save(Archive& ar, const filesystem::path& path, const unsigned int) {
  const std::string& string = path.native();
  ar << BOOST_SERIALIZATION_NVP(string);
}

template <class Archive>
void load(Archive& ar, filesystem::path& path, const unsigned int version) {
  if (version < 1) {
    std::wstring string;
    ar >> BOOST_SERIALIZATION_NVP(string);
    path = corvath::utils::ToUtf8(string);
  } else {
    std::string string;
    ar >> BOOST_SERIALIZATION_NVP(string);
    path = string;
  }
}

template <class Archive>
void serialize(Archive& ar, filesystem::path& path, const unsigned int version) {
  split_free(ar, path, version);
}

}  // namespace boost::serialization
