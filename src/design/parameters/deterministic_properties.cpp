#include "design/parameters/deterministic_properties.h"

#include "archive/instantiate.h"
#include "design/parameters/discrete_states.h"
#include "foundation/closeness.h"
#include "foundation/exception.h"

#include <algorithm>
#include <stdexcept>

namespace corvath::algorithm::datatypes {

using Kind = DeterministicProperties::Kind;
using Type = enums::DesignEntry;

namespace {

constexpr double kBoundsTolerance = 2.220446049250313e-14;

bool IsByIndex(Kind kind) {
  return kind == Kind::ORDINAL_BY_INDEX || kind == Kind::NOMINAL_BY_INDEX;
}

bool IsDomainType(Type::eType type) {
  return type == Type::BOOL || type == Type::REAL || type == Type::INTEGER || type == Type::STRING;
}

}  // namespace

CDesignEntry ConvertEntry(const CDesignEntry& entry, Type::eType type) {
  CDesignEntry result;
  result.Assign(entry, false, type);
  return result;
}

DeterministicProperties DeterministicProperties::Continuous(double lower, double upper) {
  DeterministicProperties result;
  result.SetBounds(CDesignEntry(lower), CDesignEntry(upper));
  return result;
}

DeterministicProperties DeterministicProperties::Discrete(Kind kind,
                                                          std::vector<CDesignEntry> states) {
  DeterministicProperties result;
  result.ordered_flag_ = kind;
  if (!states.empty()) result.domain_flag_ = states.front().GetType();
  result.SetDiscreteStates(std::move(states), false);
  return result;
}

void DeterministicProperties::CheckBounds(const CDesignEntry& lower, const CDesignEntry& upper,
                                          bool allow_equal) const {
  switch (ordered_flag_) {
    case Kind::CONTINUOUS:
      if (lower.GetType() != Type::REAL || upper.GetType() != Type::REAL)
        throw std::invalid_argument(
            "Boundaries of continuous parameters may only be float type values.");
      if (!allow_equal && math::IsClose(lower.ToDouble(), upper.ToDouble(), kBoundsTolerance))
        throw std::invalid_argument("Lower and Upper bounds may not have the same value.");
      return;
    case Kind::ORDINAL_BY_VALUE:
      return;
    case Kind::ORDINAL_BY_INDEX:
    case Kind::NOMINAL_BY_INDEX: {
      if (lower.GetType() != Type::INTEGER || upper.GetType() != Type::INTEGER)
        throw std::invalid_argument(
            "Boundaries of discrete parameters may only be integer index types.");
      const auto is_position = [this](std::int64_t index) {
        return index >= 0 && static_cast<std::uint64_t>(index) < discrete_states_.size();
      };
      if (!is_position(lower.ToInteger()) || !is_position(upper.ToInteger()))
        throw std::invalid_argument(
            "One or both boundaries are outside the accepted discrete state map index range.");
      return;
    }
  }
  throw std::logic_error("Unknown domain type");
}

void DeterministicProperties::SetBounds(const CDesignEntry& lower, const CDesignEntry& upper,
                                        bool allow_equal) {
  CheckBounds(lower, upper, allow_equal);
  lower_bound_ = lower;
  upper_bound_ = upper;
}

void DeterministicProperties::ConvertBounds() {
  for (CDesignEntry* bound : {&lower_bound_, &upper_bound_})
    if (bound->GetType() != Type::UNINITIALIZED) *bound = ConvertEntry(*bound, domain_flag_);
  if (upper_bound_ < lower_bound_) std::swap(lower_bound_, upper_bound_);
}

/// Two states may become one by the conversion, and another type may sort them in another way.
void DeterministicProperties::ConvertStates() {
  for (CDesignEntry& state : discrete_states_) state = ConvertEntry(state, domain_flag_);
  SortStates(discrete_states_);
  const auto last = std::unique(discrete_states_.begin(), discrete_states_.end());
  discrete_states_.erase(last, discrete_states_.end());
}

void DeterministicProperties::ChangeKind(Kind kind) {
  const Kind old = ordered_flag_;
  ordered_flag_ = kind;
  if (kind != old && kind != Kind::CONTINUOUS && !discrete_states_.empty()) {
    ConvertStates();
    SpanStates();
  }
  if (kind == Kind::CONTINUOUS && domain_flag_ != Type::REAL && IsDomainType(domain_flag_)) {
    domain_flag_ = Type::REAL;
    ConvertBounds();
    ConvertStates();
  }
}

void DeterministicProperties::ChangeDataType(DataType type) {
  domain_flag_ = type;
  if (ordered_flag_ == Kind::CONTINUOUS && type != Type::REAL) ChangeKind(Kind::ORDINAL_BY_VALUE);
  if (!IsByIndex(ordered_flag_)) ConvertBounds();
  if (ordered_flag_ == Kind::CONTINUOUS) return;
  const std::size_t num_states = discrete_states_.size();
  ConvertStates();
  // Positions beyond the states that are left would mean nothing.
  if (IsByIndex(ordered_flag_) && discrete_states_.size() < num_states) SpanStates();
}

void DeterministicProperties::SetKind(Kind kind) {
  DeterministicProperties changed(*this);  // a conversion may fail
  changed.ChangeKind(kind);
  *this = std::move(changed);
}

void DeterministicProperties::SetDataType(DataType type) {
  if (!IsDomainType(type))
    throw std::invalid_argument("The data type of a domain is BOOL, REAL, INTEGER or STRING.");
  if (type == domain_flag_) return;
  DeterministicProperties changed(*this);
  changed.ChangeDataType(type);
  *this = std::move(changed);
}

void DeterministicProperties::SetDiscreteStates(std::vector<CDesignEntry> states, bool convert) {
  if (!convert) {
    if (states.empty())
      throw utils::runtime_error(
          L"A discrete deterministic property requires at least one discrete state but you passed "
          L"an "
          L"empty discrete states vector.");
    if (ordered_flag_ == Kind::CONTINUOUS)
      throw utils::runtime_error(
          L"Cannot set discrete states for a continuous deterministic property");
    for (const CDesignEntry& state : states)
      if (state.GetType() != domain_flag_)
        throw utils::runtime_error(
            L"The data type of each discrete state of a deterministic property must match the data "
            L"type of the parameter");
  }
  DeterministicProperties changed(*this);
  changed.discrete_states_ = std::move(states);
  changed.ConvertStates();
  changed.SpanStates();
  *this = std::move(changed);
}

/// Lets the bounds of a discrete domain span all states; without states they stay.
void DeterministicProperties::SpanStates() {
  if (discrete_states_.empty()) return;
  if (ordered_flag_ == Kind::ORDINAL_BY_VALUE) {
    lower_bound_ = discrete_states_.front();
    upper_bound_ = discrete_states_.back();
  } else if (IsByIndex(ordered_flag_)) {
    lower_bound_ = CDesignEntry(std::int64_t{0});
    upper_bound_ = CDesignEntry(static_cast<std::int64_t>(discrete_states_.size()) - 1);
  }
}

bool DeterministicProperties::operator==(const DeterministicProperties& other) const {
  return ordered_flag_ == other.ordered_flag_ && domain_flag_ == other.domain_flag_ &&
         lower_bound_ == other.lower_bound_ && upper_bound_ == other.upper_bound_ &&
         discrete_states_ == other.discrete_states_ &&
         lower_bound_relative_ == other.lower_bound_relative_ &&
         upper_bound_relative_ == other.upper_bound_relative_;
}

template <class Archive>
void DeterministicProperties::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(ordered_flag_);
  ar& BOOST_SERIALIZATION_NVP(domain_flag_);
  ar& BOOST_SERIALIZATION_NVP(lower_bound_);
  ar& BOOST_SERIALIZATION_NVP(upper_bound_);
  ar& BOOST_SERIALIZATION_NVP(discrete_states_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(lower_bound_relative_);
    ar& BOOST_SERIALIZATION_NVP(upper_bound_relative_);
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::DeterministicProperties)
