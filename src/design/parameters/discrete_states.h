#pragma once

#include "design/designs/design_entry.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace corvath::algorithm::datatypes {

/// `value` rounded half away from zero and held to the range of the result; NaN gives the smallest
/// number, so that it ends at the first state like a NaN that is searched among REAL states.
std::int64_t RoundToInteger(double value);

/// Sorts ascending by the order of CDesignEntry, NaN behind all numbers; equal states stay in
/// order.
void SortStates(std::vector<CDesignEntry>& states);

/// The states of a domain by value, sorted for many searches.
class StatesByValue {
 public:
  /// In any order; sorted here, O(n log n).
  explicit StatesByValue(std::vector<CDesignEntry> states = {});

  /// The state nearest to `value`; exactly between two it is the upper one. The first state's type
  /// decides: BOOL takes a REAL value, true when it rounds to 1; INTEGER a REAL value, which is
  /// rounded first, or an INTEGER one; REAL a REAL one. Takes O(log n) comparisons.
  /// @throws std::logic_error  no states, STRING or VARIANT states, or a value of another type
  CDesignEntry Nearest(const CDesignEntry& value) const;

 private:
  CDesignEntry NearestOfSameType(const CDesignEntry& value) const;

  std::vector<CDesignEntry> states_;  ///< ascending
};

/// StatesByValue::Nearest for one search.
CDesignEntry NearestDiscreteState(const CDesignEntry& value,
                                  const std::vector<CDesignEntry>& states);

/// The states of a domain by index, in the order given.
class StatesByIndex {
 public:
  /// Kept in this order.
  explicit StatesByIndex(std::vector<CDesignEntry> states = {});

  /// Position of the first state equal to `value`. Takes O(log n) comparisons if the states are
  /// ascending and one is equal, else O(n).
  std::optional<std::size_t> Find(const CDesignEntry& value) const;

  /// The state at `position`, rounded and clamped to the positions that exist.
  /// @throws std::logic_error  there are no states
  const CDesignEntry& At(double position) const;

 private:
  std::vector<CDesignEntry> states_;
  bool is_ascending_;
};

}  // namespace corvath::algorithm::datatypes
