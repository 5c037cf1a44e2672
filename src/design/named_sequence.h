#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Raises utils::invalid_argument for a name that a sequence does not have.
[[noreturn]] void ThrowUnknownKey(const std::wstring& name);

/// An ordered list of names with values. The order of insertion is kept; names may repeat, and a
/// look-up gives the first. Sequences are short (tens of names), so a look-up walks them; who looks
/// up the same names in many sequences uses NamePositions.
///
/// Instances: T = CDesignEntry, math::Variant<double>, Criterion; Key is std::wstring.
template <class Key, class T, class Header = std::uint64_t>
class CNVPSequence {
 public:
  using value_type = std::pair<Key, T>;
  using const_iterator = typename std::vector<value_type>::const_iterator;
  using iterator = typename std::vector<value_type>::iterator;

  /// Position of a name that is not there.
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  CNVPSequence() = default;
  CNVPSequence(std::initializer_list<value_type> elements) : seq_(elements) {}

  std::size_t size() const { return seq_.size(); }
  bool empty() const { return seq_.empty(); }
  const value_type& operator[](std::size_t position) const { return seq_[position]; }
  value_type& operator[](std::size_t position) { return seq_[position]; }
  const_iterator begin() const { return seq_.begin(); }
  const_iterator end() const { return seq_.end(); }
  iterator begin() { return seq_.begin(); }
  iterator end() { return seq_.end(); }
  void reserve(std::size_t size) { seq_.reserve(size); }
  void clear() { seq_.clear(); }

  /// Position of the first element of that name, or npos.
  std::size_t FindPosition(const Key& name) const {
    for (std::size_t i = 0; i < seq_.size(); ++i)
      if (seq_[i].first == name) return i;
    return npos;
  }
  bool Has(const Key& name) const { return FindPosition(name) != npos; }
  /// The first value of that name, or null.
  const T* Find(const Key& name) const {
    const std::size_t position = FindPosition(name);
    return position == npos ? nullptr : &seq_[position].second;
  }
  T* Find(const Key& name) { return const_cast<T*>(std::as_const(*this).Find(name)); }
  /// The first value of that name. @throws utils::invalid_argument  the name does not exist
  const T& Get(const Key& name) const {
    const T* value = Find(name);
    if (!value) ThrowUnknownKey(name);
    return *value;
  }
  T& Get(const Key& name) { return const_cast<T&>(std::as_const(*this).Get(name)); }

  /// Behind the last element, also where the name is there already: Find() stays with the first.
  void Append(Key name, T value) { seq_.emplace_back(std::move(name), std::move(value)); }
  /// Gives the first element of that name the value; a new name is appended.
  void Set(const Key& name, T value) {
    if (T* known = Find(name))
      *known = std::move(value);
    else
      Append(name, std::move(value));
  }

  /// A number that is stored and copied and has no further use here.
  Header GetHeader() const { return header_; }
  void SetHeader(Header header) { header_ = header; }

  friend bool operator==(const CNVPSequence& a, const CNVPSequence& b) {
    return a.header_ == b.header_ && a.seq_ == b.seq_;
  }
  friend bool operator!=(const CNVPSequence& a, const CNVPSequence& b) { return !(a == b); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  Header header_ = 0;
  std::vector<value_type> seq_;
};

class Criterion;

using EntrySequence = CNVPSequence<std::wstring, CDesignEntry>;
using VariantSequence = CNVPSequence<std::wstring, math::Variant<double>>;
using CriterionSequence = CNVPSequence<std::wstring, Criterion>;

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::EntrySequence, 1)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::VariantSequence, 1)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::CriterionSequence, 1)
