#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"

#include <cstdint>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace corvath::enums {

/// Kinds of a domain; the numbers are stored.
struct DeterministicProperties {
  enum eKind : std::int32_t {
    CONTINUOUS = 0,        ///< any number between two REAL bounds
    ORDINAL_BY_VALUE = 1,  ///< the state nearest to a number; bounds: smallest and largest state
    ORDINAL_BY_INDEX = 2,  ///< the state at a position; bounds: INTEGER positions
    NOMINAL_BY_INDEX = 3   ///< behaves as ORDINAL_BY_INDEX
  };
};

}  // namespace corvath::enums

namespace corvath::algorithm::datatypes {

/// `entry` as data type `type`; a text is not parsed, see CDesignEntry::ToDouble and its sisters.
CDesignEntry ConvertEntry(const CDesignEntry& entry, enums::DesignEntry::eType type);

/// The deterministic side of a parameter: the domain in which an optimisation may move it.
class DeterministicProperties {
 public:
  using Kind = enums::DeterministicProperties::eKind;
  using DataType = enums::DesignEntry::eType;

  /// A continuous REAL domain without bounds.
  DeterministicProperties() = default;

  /// @throws std::invalid_argument  see CheckBounds
  static DeterministicProperties Continuous(double lower, double upper);
  /// A domain of `states`, whose type is that of the first state; the bounds span all states.
  /// @throws std::invalid_argument  no states, states of several types, or kind CONTINUOUS
  static DeterministicProperties Discrete(Kind kind, std::vector<CDesignEntry> states);

  Kind GetKind() const { return ordered_flag_; }
  DataType GetDataType() const { return domain_flag_; }
  const CDesignEntry& GetLowerBound() const { return lower_bound_; }
  const CDesignEntry& GetUpperBound() const { return upper_bound_; }
  /// Ascending, without doubles.
  const std::vector<CDesignEntry>& GetDiscreteStates() const { return discrete_states_; }
  /// Bounds relative to the reference value.
  const CDesignEntry& GetLowerBoundRelative() const { return lower_bound_relative_; }
  const CDesignEntry& GetUpperBoundRelative() const { return upper_bound_relative_; }

  /// Whether the two entries may bound this domain: REAL and different for a continuous domain
  /// (equal ones only with `allow_equal`), INTEGER positions of states for the kinds by index.
  /// @throws std::invalid_argument  they may not
  /// @throws std::logic_error       the kind is unknown
  void CheckBounds(const CDesignEntry& lower, const CDesignEntry& upper,
                   bool allow_equal = false) const;
  /// Checks, then stores.
  void SetBounds(const CDesignEntry& lower, const CDesignEntry& upper, bool allow_equal = false);

  /// Changes the kind and brings bounds, states and data type in line with it: a continuous domain
  /// exists for REAL alone, and bounds of a discrete one span all states.
  void SetKind(Kind kind);

  /// Changes the data type and converts bounds and states. A continuous domain that stops being
  /// REAL becomes ORDINAL_BY_VALUE.
  /// @throws std::invalid_argument  `type` is not BOOL, REAL, INTEGER or STRING
  void SetDataType(DataType type);

  /// Stores the states ascending and without doubles; the bounds span them all.
  /// @param convert  convert each state to the data type; an empty list and a continuous domain are
  ///                 then accepted, too, and leave the bounds alone
  /// @throws corvath::utils::runtime_error  without `convert`: no states, a continuous domain, or a
  ///                                        state of another type
  void SetDiscreteStates(std::vector<CDesignEntry> states, bool convert);

  bool operator==(const DeterministicProperties& other) const;
  bool operator!=(const DeterministicProperties& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  void ChangeKind(Kind kind);
  void ChangeDataType(DataType type);
  void ConvertBounds();
  void ConvertStates();
  void SpanStates();

  Kind ordered_flag_ = enums::DeterministicProperties::CONTINUOUS;
  DataType domain_flag_ = enums::DesignEntry::REAL;
  CDesignEntry lower_bound_;
  CDesignEntry upper_bound_;
  std::vector<CDesignEntry> discrete_states_;
  CDesignEntry lower_bound_relative_;
  CDesignEntry upper_bound_relative_;
};

/// Properties under their names, in an order that means something: that of a matrix's columns.
using NamedProperties = std::list<std::pair<std::wstring, DeterministicProperties>>;

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::DeterministicProperties, 1)
