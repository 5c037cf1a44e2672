#pragma once

#include "design/design_entry.h"

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

/// The state nearest to `value`; exactly between two it is the upper one. The first state's type
/// decides: BOOL takes a REAL value, true when it rounds to 1; INTEGER a REAL value, which is
/// rounded first, or an INTEGER one; REAL a REAL one. Copies and sorts `states`; for many values
/// see DiscreteStates.
/// @throws std::logic_error  no states, STRING or VARIANT states, or a value of another type
CDesignEntry NearestDiscreteState(const CDesignEntry& value,
                                  const std::vector<CDesignEntry>& states);

/// The states of one domain, prepared for many searches.
class DiscreteStates {
 public:
  explicit DiscreteStates(std::vector<CDesignEntry> states);

  /// As NearestDiscreteState, in O(log n) comparisons.
  CDesignEntry Nearest(const CDesignEntry& value) const;

  /// Position of the first state equal to `value`, in the order given. O(log n) comparisons if the
  /// states are ascending and one is equal, else O(n).
  std::optional<std::size_t> Find(const CDesignEntry& value) const;

  /// The state at `position`, rounded and clamped to the positions that exist.
  /// @throws std::logic_error  there are no states
  const CDesignEntry& At(double position) const;

 private:
  bool IsAscending() const { return sorted_.empty(); }
  CDesignEntry NearestOfSameType(const CDesignEntry& value) const;

  std::vector<CDesignEntry> states_;
  std::vector<CDesignEntry> sorted_;  ///< empty if states_ is ascending
};

}  // namespace corvath::algorithm::datatypes
