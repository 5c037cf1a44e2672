#pragma once

/// What a class header needs to take part in serialisation, without any archive header.
///
/// In the header of class T:
///  - `friend class boost::serialization::access;`
///  - `template <class Archive> void serialize(Archive& ar, unsigned int version);`, or `load` and
///    `save` (const) with `ZEL_SPLIT_SERIALIZE()` in the class;
///  - outside all namespaces ZEL_CLASS_VERSION, ZEL_TRACK_ALWAYS, ZEL_EXPORT_KEY as the class
///  needs.
/// In its .cpp: include "archive/instantiate.h", write the bodies, then ZEL_INSTANTIATE_SERIALIZE
/// or ZEL_INSTANTIATE_LOAD_SAVE, and ZEL_EXPORT_IMPLEMENT for each class that has an export key.

#include <boost/serialization/access.hpp>
#include <boost/serialization/extended_type_info.hpp>
#include <boost/serialization/split_member.hpp>
#include <boost/serialization/tracking.hpp>
#include <boost/serialization/version.hpp>

#include <type_traits>

/// Class version that a writer stores; without it 0.
#define ZEL_CLASS_VERSION(T, N) BOOST_CLASS_VERSION(T, N)

/// Every object of T carries an object id, whether pointers to T are stored or not.
#define ZEL_TRACK_ALWAYS(T) BOOST_CLASS_TRACKING(T, boost::serialization::track_always)

/// No object of T carries an object id, although T has an export key.
#define ZEL_TRACK_NEVER(T) BOOST_CLASS_TRACKING(T, boost::serialization::track_never)

namespace corvath::archive {
template <class T>
struct IsPlainValue : std::false_type {};
}  // namespace corvath::archive

/// T is a value: neither its objects nor their parts are ever tracked. All but the first of an
/// archive are loaded without Boost's look-up of their class.
#define ZEL_PLAIN_VALUE(T)                    \
  namespace corvath::archive {                \
  template <>                                 \
  struct IsPlainValue<T> : std::true_type {}; \
  }

/// The name under which T is stored through pointers to its bases; part of the file format. Stands
/// in the header, so that every file sees the same definition.
#define ZEL_EXPORT_KEY(T, K)                     \
  namespace boost::serialization {               \
  template <>                                    \
  struct guid_defined<T> : boost::mpl::true_ {}; \
  template <>                                    \
  inline const char* guid<T>() {                 \
    return K;                                    \
  }                                              \
  }

/// Inside a class with `load` and `save`: the `serialize` that picks one of them.
#define ZEL_SPLIT_SERIALIZE() BOOST_SERIALIZATION_SPLIT_MEMBER()
