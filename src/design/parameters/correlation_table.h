#pragma once

#include "archive/serialization.h"

#include <cstddef>
#include <map>
#include <string>

namespace corvath::algorithm::datatypes {

/// A pair of parameter names. As values (a, b) and (b, a) are equal; as keys of a map they are two,
/// because the stored order of keys knows no symmetry.
class TriangularIndex {
 public:
  TriangularIndex() = default;
  TriangularIndex(std::wstring first, std::wstring second)
      : first_(std::move(first)), second_(std::move(second)) {}

  const std::wstring& GetFirst() const { return first_; }
  const std::wstring& GetSecond() const { return second_; }

  bool operator==(const TriangularIndex& other) const;
  bool operator!=(const TriangularIndex& other) const { return !(*this == other); }
  /// By the first name, then by the second.
  bool operator<(const TriangularIndex& other) const;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::wstring first_;
  std::wstring second_;
};

/// Correlations of pairs of parameters by their names. The diagonal is not stored, and a pair that
/// is not stored is not correlated.
class CorrelationMatrix {
 public:
  using Map = std::map<TriangularIndex, double>;

  /// Stores the correlation of a pair once, whichever way round it is given.
  /// @throws std::invalid_argument  the two names are equal
  void Set(const std::wstring& first, const std::wstring& second, double correlation);

  /// The correlation of a pair in either order: 1 for a name with itself, 0 for an unknown pair.
  double Get(const std::wstring& first, const std::wstring& second) const;

  /// The stored pairs, in the order of their keys.
  const Map& GetEntries() const { return matrix_; }
  std::size_t GetSize() const { return matrix_.size(); }
  bool IsEmpty() const { return matrix_.empty(); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  Map matrix_;
};

}  // namespace corvath::algorithm::datatypes
