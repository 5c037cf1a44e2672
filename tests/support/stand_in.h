#pragma once

#include "archive/instantiate.h"

#include <functional>

namespace support {

/// An object that writes itself field by field as another class, or an older version of it, would:
/// class record with this version and tracking, then whatever `write` puts into the archive. `Tag`
/// tells apart the classes of one archive.
template <class Tag, int Version, bool Tracked = false>
struct StandIn {
  std::function<void(corvath::portable_binary_oarchive&)> write;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    write(ar);
  }
};

/// Writes one field under its name.
template <class T>
void Put(corvath::portable_binary_oarchive& ar, const char* name, const T& value) {
  ar << boost::serialization::make_nvp(name, value);
}

}  // namespace support

namespace boost::serialization {

template <class Tag, int Version, bool Tracked>
struct version<support::StandIn<Tag, Version, Tracked>> {
  using tag = mpl::integral_c_tag;
  using type = mpl::int_<Version>;
  static constexpr int value = Version;
};

template <class Tag, int Version, bool Tracked>
struct tracking_level<support::StandIn<Tag, Version, Tracked>> {
  using tag = mpl::integral_c_tag;
  using type = mpl::int_<Tracked ? track_always : track_selectively>;
  static constexpr int value = Tracked ? track_always : track_selectively;
};

}  // namespace boost::serialization
