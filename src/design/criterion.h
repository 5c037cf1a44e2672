#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace corvath::algorithm::datatypes {

/// What a criterion asks for: one or two expression texts and how they combine.
struct CriterionDescription {
  /// The expression of a type, with its left and right text, tells what its value is.
  enum eType : std::int32_t {
    RHS_ANY = 0,              ///< (rhs); the only type that accepts any kind of value
    RHS = 1,                  ///< (rhs)
    NEGATIVE_RHS = 2,         ///< -(rhs)
    RHS_MINUS_LHS = 3,        ///< (rhs)-(lhs)
    LHS_MINUS_RHS_4 = 4,      ///< (lhs)-(rhs)
    LHS_MINUS_RHS_5 = 5,      ///< (lhs)-(rhs)
    LIMIT_LHS_BELOW_RHS = 6,  ///< (rhs)-(lhs), violated when negative
    LIMIT_LHS_ABOVE_RHS = 7   ///< (lhs)-(rhs), violated when negative
  };

  eType type_ = RHS_ANY;
  std::wstring lhs_;  ///< left expression, may be empty
  std::wstring rhs_;  ///< right expression, may be empty

  bool operator==(const CriterionDescription& other) const;
  bool operator!=(const CriterionDescription& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// The value of a criterion whose sides have the values `lhs` and `rhs`, numbers or entries.
/// @throws std::logic_error  the type is none of the eight; what the difference of sides throws
template <class Side>
Side CombineSides(CriterionDescription::eType type, const Side& lhs, const Side& rhs) {
  switch (type) {
    case CriterionDescription::RHS_ANY:
    case CriterionDescription::RHS:
      return rhs;
    case CriterionDescription::NEGATIVE_RHS:
      return -rhs;
    case CriterionDescription::RHS_MINUS_LHS:
    case CriterionDescription::LIMIT_LHS_BELOW_RHS:
      return rhs - lhs;
    case CriterionDescription::LHS_MINUS_RHS_4:
    case CriterionDescription::LHS_MINUS_RHS_5:
    case CriterionDescription::LIMIT_LHS_ABOVE_RHS:
      return lhs - rhs;
  }
  throw std::logic_error("Unhandled type to combine the sides of a criterion");
}

/// What a criterion came to.
struct CriterionValue {
  CDesignEntry value_;  ///< combination of the two sides
  CDesignEntry lhs_value_;
  CDesignEntry rhs_value_;
  bool needeval_ = true;  ///< the three values are not up to date

  bool operator==(const CriterionValue& other) const;
  bool operator!=(const CriterionValue& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// An objective, constraint or derived quantity of a design, with its value there. Its name stands
/// in the sequence that holds it.
class Criterion {
 public:
  using eType = CriterionDescription::eType;

  /// Type 0, empty texts, not evaluated.
  Criterion() = default;
  Criterion(eType type, std::wstring lhs, std::wstring rhs);

  const CriterionDescription& GetDescription() const { return description_; }
  eType GetType() const { return description_.type_; }
  const std::wstring& GetLhs() const { return description_.lhs_; }
  const std::wstring& GetRhs() const { return description_.rhs_; }

  const CriterionValue& GetValues() const { return value_; }
  const CDesignEntry& GetValue() const { return value_.value_; }
  const CDesignEntry& GetLhsValue() const { return value_.lhs_value_; }
  const CDesignEntry& GetRhsValue() const { return value_.rhs_value_; }
  /// Whether the values stored with the criterion are not those of its texts.
  bool NeedsEvaluation() const { return value_.needeval_; }

  /// One expression of the criterion, "(rhs)-(lhs)" for example; an empty text counts as "0".
  /// @throws std::logic_error  the type is none of the eight
  std::wstring GetExpression() const;
  /// Limits are violated by a negative value.
  bool IsLimitState() const;

  /// Clears the three values and asks for an evaluation.
  void Invalidate();
  /// Stores the sides and either `value` or, with `combine`, what the type makes of the sides, and
  /// marks the values as up to date. Strong guarantee.
  /// @throws what the difference of entries throws; std::logic_error for a type outside the eight
  void SetValues(CDesignEntry lhs, CDesignEntry rhs, CDesignEntry value, bool combine);
  /// Whether an evaluated criterion has no usable value: none, not a number, or infinite. A value
  /// of several elements is usable.
  bool IsValueInvalid() const;
  /// Whether an evaluated limit is below 0 and not close to it.
  bool IsViolated() const;

  bool operator==(const Criterion& other) const;
  bool operator!=(const Criterion& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  CriterionDescription description_;
  CriterionValue value_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::Criterion, 3)
