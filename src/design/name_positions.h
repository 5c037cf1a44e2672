#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Looks up a fixed list of names in many sequences that mostly hold the same names in the same
/// order, as the designs of a project do. Such a sequence costs one comparison per element; one
/// that differs from the last costs a hash table. So a table of n designs and m names takes O(n m).
template <class Sequence>
class NamePositions {
 public:
  explicit NamePositions(std::vector<std::wstring> names) : names_(std::move(names)) {}

  const std::vector<std::wstring>& GetNames() const { return names_; }

  /// For each name the position of its first element in `sequence`, or Sequence::npos. Valid until
  /// the next call.
  const std::vector<std::size_t>& In(const Sequence& sequence) {
    if (positions_.empty() || !IsLikeLast(sequence)) Resolve(sequence);
    return positions_;
  }

 private:
  bool IsLikeLast(const Sequence& sequence) const {
    if (sequence.size() != last_.size()) return false;
    for (std::size_t i = 0; i < last_.size(); ++i)
      if (sequence[i].first != last_[i]) return false;
    return true;
  }

  void Resolve(const Sequence& sequence) {
    last_.clear();
    std::unordered_map<std::wstring, std::size_t> first_of_name;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      last_.push_back(sequence[i].first);
      first_of_name.emplace(sequence[i].first, i);
    }
    positions_.clear();
    for (const std::wstring& name : names_) {
      const auto found = first_of_name.find(name);
      positions_.push_back(found == first_of_name.end() ? Sequence::npos : found->second);
    }
  }

  std::vector<std::wstring> names_;
  std::vector<std::wstring> last_;  ///< names of the sequence that `positions_` belongs to
  std::vector<std::size_t> positions_;
};

}  // namespace corvath::algorithm::datatypes
