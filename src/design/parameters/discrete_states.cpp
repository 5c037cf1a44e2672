#include "design/parameters/discrete_states.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace corvath::algorithm::datatypes {

using Type = enums::DesignEntry;

namespace {

constexpr char kNoStates[] = "Can not handle empty list of discrete states";

bool IsNaN(const CDesignEntry& entry) {
  return entry.GetType() == Type::REAL && std::isnan(entry.ToDouble());
}

bool StateLess(const CDesignEntry& left, const CDesignEntry& right) {
  if (IsNaN(left)) return false;
  return IsNaN(right) || left < right;
}

bool IsNumberType(enums::DesignEntry::eType type) {
  return type == Type::BOOL || type == Type::INTEGER || type == Type::REAL;
}

/// Whether entries of the two types have one order in which equal ones are neighbours.
bool IsSearchable(enums::DesignEntry::eType left, enums::DesignEntry::eType right) {
  return (IsNumberType(left) && IsNumberType(right)) ||
         (left == Type::STRING && right == Type::STRING);
}

}  // namespace

std::int64_t RoundToInteger(double value) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr double kTwo63 = 9223372036854775808.0;  // kMax as a double would round up to this
  if (!(value > -kTwo63)) return kMin;              // this way round, NaN ends here
  const double rounded = std::copysign(std::floor(0.5 + std::abs(value)), value);
  if (rounded >= kTwo63) return kMax;
  return rounded <= -kTwo63 ? kMin : static_cast<std::int64_t>(rounded);
}

void SortStates(std::vector<CDesignEntry>& states) {
  // A list of several types need not have an order (a Type::REAL may stand before a STRING, that
  // before a BOOL, and that before the Type::REAL). Merging never leaves the list over it, as quick
  // sort may.
  std::stable_sort(states.begin(), states.end(), StateLess);
}

StatesByValue::StatesByValue(std::vector<CDesignEntry> states) : states_(std::move(states)) {
  SortStates(states_);
}

CDesignEntry StatesByValue::Nearest(const CDesignEntry& value) const {
  if (states_.empty()) throw std::logic_error(kNoStates);
  switch (states_.front().GetType()) {
    case Type::STRING:
      throw std::logic_error("Can not handle string to be ordinal discrete by value");
    case Type::VARIANT:
      throw std::logic_error("Can not handle variant to be ordinal discrete by value");
    case Type::BOOL:
      if (value.GetType() != Type::REAL)
        throw std::logic_error(
            "Error when handling ordinal discrete parameter by value: Entry is not of type REAL.");
      return CDesignEntry(RoundToInteger(value.ToDouble()) == 1);
    case Type::INTEGER:
      if (value.GetType() == Type::REAL)
        return NearestOfSameType(CDesignEntry(RoundToInteger(value.ToDouble())));
      return NearestOfSameType(value);
    default:
      return NearestOfSameType(value);
  }
}

CDesignEntry StatesByValue::NearestOfSameType(const CDesignEntry& value) const {
  if (value.GetType() != states_.front().GetType())
    throw std::logic_error(
        "Error when handling ordinal discrete parameter by value: Inequal domain types.");
  const auto above = std::lower_bound(states_.begin(), states_.end(), value);
  if (above == states_.end()) return states_.back();
  if (above == states_.begin()) return *above;
  const auto below = std::prev(above);
  return value - *below < *above - value ? *below : *above;
}

CDesignEntry NearestDiscreteState(const CDesignEntry& value,
                                  const std::vector<CDesignEntry>& states) {
  return StatesByValue(states).Nearest(value);
}

StatesByIndex::StatesByIndex(std::vector<CDesignEntry> states) : states_(std::move(states)) {
  is_ascending_ = std::all_of(states_.begin(), states_.end(),
                              [this](const CDesignEntry& state) {
                                return IsSearchable(state.GetType(), states_.front().GetType());
                              }) &&
                  std::is_sorted(states_.begin(), states_.end(), StateLess);
}

std::optional<std::size_t> StatesByIndex::Find(const CDesignEntry& value) const {
  auto found = states_.end();
  if (is_ascending_ && !states_.empty() &&
      IsSearchable(value.GetType(), states_.front().GetType())) {
    found = std::lower_bound(states_.begin(), states_.end(), value, StateLess);
    // A state that is close to the value may stand just below it.
    while (found != states_.begin() && *std::prev(found) == value) --found;
    if (found != states_.end() && !(*found == value)) found = states_.end();
  }
  if (found == states_.end()) found = std::find(states_.begin(), states_.end(), value);
  if (found == states_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - states_.begin());
}

const CDesignEntry& StatesByIndex::At(double position) const {
  if (states_.empty()) throw std::logic_error(kNoStates);
  const auto last = static_cast<std::int64_t>(states_.size()) - 1;
  return states_[static_cast<std::size_t>(
      std::clamp(RoundToInteger(position), std::int64_t{0}, last))];
}

}  // namespace corvath::algorithm::datatypes
