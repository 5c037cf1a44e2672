#pragma once

#include "archive/serialization.h"

#include <boost/serialization/collection_size_type.hpp>
#include <boost/serialization/collection_traits.hpp>
#include <boost/serialization/collections_save_imp.hpp>
#include <boost/serialization/item_version_type.hpp>
#include <boost/serialization/library_version_type.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_free.hpp>
#include <boost/serialization/unordered_collections_save_imp.hpp>
#include <boost/serialization/utility.hpp>
#include <boost/unordered_set.hpp>

#include <algorithm>
#include <deque>
#include <list>
#include <map>
#include <set>
#include <vector>

/// The containers of persisted members, in the bytes that Boost.Serialization's own headers give
/// them. Those headers allocate what a count says before they look at the stream; these check the
/// count against what the stream still holds, and never reserve more memory than that.
namespace boost::serialization {

namespace detail {

inline std::size_t AsSize(const collection_size_type& count) {
  return count;
}

/// Reads "count" and "item_version".
template <class Archive>
std::size_t LoadCount(Archive& ar) {
  collection_size_type count;
  ar >> BOOST_SERIALIZATION_NVP(count);
  const std::size_t size = AsSize(count);
  ar.CheckCount(size);
  if (library_version_type(3) < ar.get_library_version()) {
    item_version_type item_version(0);
    ar >> BOOST_SERIALIZATION_NVP(item_version);
  }
  return size;
}

/// Elements are loaded where they stay.
template <class Archive, class Sequence>
void LoadSequence(Archive& ar, Sequence& sequence, std::size_t count) {
  for (; count > 0; --count) {
    sequence.emplace_back();
    ar >> boost::serialization::make_nvp("item", sequence.back());
  }
}

template <class Archive, class Set>
void LoadSetItems(Archive& ar, Set& set, std::size_t count) {
  for (; count > 0; --count) {
    typename Set::value_type item{};
    ar >> boost::serialization::make_nvp("item", item);
    const void* const read_at = &item;
    const auto place = set.insert(set.end(), std::move(item));
    ar.reset_object_address(&*place, read_at);
  }
}

template <class Archive, class Map>
void LoadMap(Archive& ar, Map& map) {
  map.clear();
  for (std::size_t count = LoadCount(ar); count > 0; --count) {
    typename Map::value_type item{};
    ar >> boost::serialization::make_nvp("item", item);
    const void* const read_at = &item.second;
    const auto place = map.insert(map.end(), std::move(item));
    ar.reset_object_address(&place->second, read_at);
  }
}

}  // namespace detail

// ---- std::vector (std::vector<bool>: archive/bit_vector.h) ----

template <class Archive, class T, class Allocator>
void save(Archive& ar, const std::vector<T, Allocator>& vector, const unsigned int) {
  stl::save_collection(ar, vector);
}
template <class Archive, class T, class Allocator>
void load(Archive& ar, std::vector<T, Allocator>& vector, const unsigned int) {
  vector.clear();
  const std::size_t count = detail::LoadCount(ar);
  constexpr std::size_t kSmall = 256;
  vector.reserve(std::min(count, count <= kSmall ? kSmall : ar.Remaining() / sizeof(T)));
  detail::LoadSequence(ar, vector, count);
}
template <class Archive, class T, class Allocator>
void serialize(Archive& ar, std::vector<T, Allocator>& vector, const unsigned int version) {
  split_free(ar, vector, version);
}

// ---- std::list, std::deque ----

template <class Archive, class T, class Allocator>
void save(Archive& ar, const std::list<T, Allocator>& list, const unsigned int) {
  stl::save_collection(ar, list);
}
template <class Archive, class T, class Allocator>
void load(Archive& ar, std::list<T, Allocator>& list, const unsigned int) {
  list.clear();
  detail::LoadSequence(ar, list, detail::LoadCount(ar));
}
template <class Archive, class T, class Allocator>
void serialize(Archive& ar, std::list<T, Allocator>& list, const unsigned int version) {
  split_free(ar, list, version);
}

template <class Archive, class T, class Allocator>
void save(Archive& ar, const std::deque<T, Allocator>& deque, const unsigned int) {
  stl::save_collection(ar, deque);
}
template <class Archive, class T, class Allocator>
void load(Archive& ar, std::deque<T, Allocator>& deque, const unsigned int) {
  deque.clear();
  detail::LoadSequence(ar, deque, detail::LoadCount(ar));
}
template <class Archive, class T, class Allocator>
void serialize(Archive& ar, std::deque<T, Allocator>& deque, const unsigned int version) {
  split_free(ar, deque, version);
}

// ---- std::set, boost::unordered_set ----

template <class Archive, class Key, class Compare, class Allocator>
void save(Archive& ar, const std::set<Key, Compare, Allocator>& set, const unsigned int) {
  stl::save_collection(ar, set);
}
template <class Archive, class Key, class Compare, class Allocator>
void load(Archive& ar, std::set<Key, Compare, Allocator>& set, const unsigned int) {
  set.clear();
  detail::LoadSetItems(ar, set, detail::LoadCount(ar));
}
template <class Archive, class Key, class Compare, class Allocator>
void serialize(Archive& ar, std::set<Key, Compare, Allocator>& set, const unsigned int version) {
  split_free(ar, set, version);
}

template <class Archive, class Key, class Hash, class Equal, class Allocator>
void save(Archive& ar, const boost::unordered_set<Key, Hash, Equal, Allocator>& set,
          const unsigned int) {
  stl::save_unordered_collection(ar, set);
}
/// "bucket_count" is read and left to the container: it only speeds up filling.
template <class Archive, class Key, class Hash, class Equal, class Allocator>
void load(Archive& ar, boost::unordered_set<Key, Hash, Equal, Allocator>& set, const unsigned int) {
  set.clear();
  collection_size_type count;
  collection_size_type bucket_count;
  ar >> BOOST_SERIALIZATION_NVP(count);
  const std::size_t size = detail::AsSize(count);
  ar.CheckCount(size);
  ar >> BOOST_SERIALIZATION_NVP(bucket_count);
  if (library_version_type(3) < ar.get_library_version()) {
    item_version_type item_version(0);
    ar >> BOOST_SERIALIZATION_NVP(item_version);
  }
  detail::LoadSetItems(ar, set, size);
}
template <class Archive, class Key, class Hash, class Equal, class Allocator>
void serialize(Archive& ar, boost::unordered_set<Key, Hash, Equal, Allocator>& set,
               const unsigned int version) {
  split_free(ar, set, version);
}

// ---- std::map, std::multimap ----

template <class Archive, class Key, class T, class Compare, class Allocator>
void save(Archive& ar, const std::map<Key, T, Compare, Allocator>& map, const unsigned int) {
  stl::save_collection(ar, map);
}
template <class Archive, class Key, class T, class Compare, class Allocator>
void load(Archive& ar, std::map<Key, T, Compare, Allocator>& map, const unsigned int) {
  detail::LoadMap(ar, map);
}
template <class Archive, class Key, class T, class Compare, class Allocator>
void serialize(Archive& ar, std::map<Key, T, Compare, Allocator>& map, const unsigned int version) {
  split_free(ar, map, version);
}

template <class Archive, class Key, class T, class Compare, class Allocator>
void save(Archive& ar, const std::multimap<Key, T, Compare, Allocator>& map, const unsigned int) {
  stl::save_collection(ar, map);
}
template <class Archive, class Key, class T, class Compare, class Allocator>
void load(Archive& ar, std::multimap<Key, T, Compare, Allocator>& map, const unsigned int) {
  detail::LoadMap(ar, map);
}
template <class Archive, class Key, class T, class Compare, class Allocator>
void serialize(Archive& ar, std::multimap<Key, T, Compare, Allocator>& map,
               const unsigned int version) {
  split_free(ar, map, version);
}

}  // namespace boost::serialization

namespace corvath::archive {
/// No pointer to one is ever stored, which alone would make them tracked.
template <class T, class Allocator>
struct IsPlainValue<std::vector<T, Allocator>>
    : std::bool_constant<std::is_arithmetic_v<T> && !std::is_same_v<T, bool>> {};
}  // namespace corvath::archive

// Collections of plain numbers have no class record, as in Boost's own headers.
BOOST_SERIALIZATION_COLLECTION_TRAITS(std::vector)
BOOST_SERIALIZATION_COLLECTION_TRAITS(std::list)
BOOST_SERIALIZATION_COLLECTION_TRAITS(std::deque)
BOOST_SERIALIZATION_COLLECTION_TRAITS(std::set)
