#pragma once

#include "archive/serialization.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>

namespace corvath::utils {

/// Identifier of a design: a path of numbers, top level first, shown as "12.3.1". It has at least
/// one level; a design that a nested algorithm creates has one level more than its parent.
///
/// A chain of nodes: an identifier of one level, by far the most common, takes no memory of its
/// own. Copies are deep. A moved-from identifier keeps its top level alone. Every operation walks
/// the chain in a loop, so its depth is bound by memory only. Instantiated for std::uint64_t.
template <class T>
class CHierachicalId {
 public:
  /// One level with the number 0, the default id.
  CHierachicalId() = default;
  /// One level.
  explicit CHierachicalId(T value) : value_(value) {}

  CHierachicalId(const CHierachicalId& other) : value_(other.value_) {
    if (other.next_) CopyTail(other);
  }
  CHierachicalId(CHierachicalId&& other) noexcept = default;
  CHierachicalId& operator=(const CHierachicalId& other) {
    if (this != &other) *this = CHierachicalId(other);
    return *this;
  }
  CHierachicalId& operator=(CHierachicalId&& other) noexcept {
    if (this != &other) {
      value_ = other.value_;
      std::unique_ptr<CHierachicalId> tail = std::move(other.next_);
      if (next_) DropTail();
      next_ = std::move(tail);
    }
    return *this;
  }
  ~CHierachicalId() {
    if (next_) DropTail();
  }

  /// The number of the top level.
  T GetValue() const { return value_; }
  /// The identifier without its top level; null at the deepest level.
  const CHierachicalId* GetNext() const { return next_.get(); }
  /// The deepest level as an identifier of one level.
  const CHierachicalId& Leaf() const;

  /// Adds one level behind the deepest.
  void Append(T value);
  /// A copy that is one level longer.
  CHierachicalId Appended(T value) const;

  /// All levels and the depth agree: 1 is not 1.0.
  friend bool operator==(const CHierachicalId& a, const CHierachicalId& b) {
    const CHierachicalId* left = &a;
    const CHierachicalId* right = &b;
    while (left->value_ == right->value_) {
      left = left->next_.get();
      right = right->next_.get();
      if (!left || !right) return left == right;
    }
    return false;
  }
  friend bool operator!=(const CHierachicalId& a, const CHierachicalId& b) { return !(a == b); }

  /// Strict total order, level by level from the top; a deeper identifier stands before its own
  /// prefix: 1.2.5, then 1.2, then 1.
  friend bool operator<(const CHierachicalId& a, const CHierachicalId& b) {
    const CHierachicalId* left = &a;
    const CHierachicalId* right = &b;
    while (left->value_ == right->value_) {
      left = left->next_.get();
      right = right->next_.get();
      if (!left) return false;
      if (!right) return true;
    }
    return left->value_ < right->value_;
  }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  void CopyTail(const CHierachicalId& other);
  void DropTail() noexcept;

  T value_ = 0;
  std::unique_ptr<CHierachicalId> next_;  ///< the next deeper level; null at the deepest
};

extern template class CHierachicalId<std::uint64_t>;

/// Levels in decimal, joined by points. The stream's own number formatting applies.
template <class T>
std::wostream& operator<<(std::wostream& stream, const CHierachicalId<T>& id);
extern template std::wostream& operator<<(std::wostream&, const CHierachicalId<std::uint64_t>&);

/// For boost::hash. The same on every platform and with every Boost.
template <class T>
std::size_t hash_value(const CHierachicalId<T>& id);
extern template std::size_t hash_value(const CHierachicalId<std::uint64_t>&);

}  // namespace corvath::utils

namespace corvath::algorithm::datatypes {

/// What identifies a design in its container.
using DesignId = utils::CHierachicalId<std::uint64_t>;

}  // namespace corvath::algorithm::datatypes

// Exported, which alone would make it tracked; the stored form carries no object ids.
ZEL_TRACK_NEVER(corvath::utils::CHierachicalId<std::uint64_t>)
ZEL_PLAIN_VALUE(corvath::utils::CHierachicalId<std::uint64_t>)
ZEL_EXPORT_KEY(corvath::utils::CHierachicalId<std::uint64_t>,
               "corvath::utils::CHierachicalId<corvath::uint64_type>")
