#pragma once

#include "archive/serialization.h"
#include "variant/value/variant.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace corvath::enums {

/// Types of a design's values, as the program reports and other classes store them.
struct DesignEntry {
  enum eType : std::int32_t {
    UNINITIALIZED = 0,
    BOOL = 1,
    REAL = 2,
    INTEGER = 3,
    STRING = 4,
    VARIANT = 5
  };

  /// "REAL" for REAL. @throws std::invalid_argument  the number is none of the table
  static std::wstring GetText(eType type);
  /// REAL for "REAL". @throws std::invalid_argument  no type has that text
  static eType GetType(const std::wstring& text);
};

}  // namespace corvath::enums

namespace corvath::algorithm::datatypes {

/// What an entry without a value holds.
struct UninitializedType {
  template <class Archive>
  void serialize(Archive&, unsigned int) {}
};

/// The tagged value of an entry. Its stored form is that of a boost::variant of the same
/// alternatives: the position `which`, then `value`. Read in place, so that a large `Variant` is
/// never copied.
struct DesignEntryData {
  std::variant<UninitializedType, double, std::int64_t, std::wstring, bool, math::Variant<double>>
      value;

  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()
};

/// One value of a design: nothing, a truth value, a number, a text or a `Variant`.
///
/// The types are numbered twice: GetType() gives the numbers of enums::DesignEntry, a file holds
/// the position of the alternative in DesignEntryData.
class CDesignEntry {
 public:
  using eType = enums::DesignEntry::eType;
  using Variant = math::Variant<double>;

  CDesignEntry() = default;
  /// From bool alone: no pointer or number ends here by conversion.
  template <class Bool, std::enable_if_t<std::is_same_v<Bool, bool>, int> = 0>
  explicit CDesignEntry(Bool value) {
    data_.value = value;
  }
  explicit CDesignEntry(double value) { data_.value = value; }
  /// From every integer type that the signed 64-bit form can hold.
  template <class Int, std::enable_if_t<std::is_integral_v<Int> && !std::is_same_v<Int, bool> &&
                                            (sizeof(Int) < 8 || std::is_signed_v<Int>),
                                        char> = 0>
  explicit CDesignEntry(Int value) {
    data_.value = static_cast<std::int64_t>(value);
  }
  explicit CDesignEntry(std::wstring value) { data_.value = std::move(value); }
  explicit CDesignEntry(const wchar_t* value) { data_.value = std::wstring(value); }
  explicit CDesignEntry(Variant value) { data_.value = std::move(value); }

  eType GetType() const;
  /// The held alternative (double, std::int64_t, std::wstring, bool or Variant) without a copy;
  /// null when the entry holds another one.
  template <class Alternative>
  const Alternative* Peek() const {
    return std::get_if<Alternative>(&data_.value);
  }
  /// Whether there is no value: the entry holds nothing, or a `Variant` of no value.
  bool IsUninitialized() const;
  /// BOOL, REAL, INTEGER or STRING, or a `Variant` that is BOOLEAN, SCALAR or of one element.
  bool IsScalar() const;

  /// The number of a REAL, an INTEGER or a SCALAR `Variant`.
  /// @throws std::invalid_argument  any other type
  double GetScalar() const;
  /// The value as a `Variant`: BOOL as BOOLEAN, numbers as SCALAR, nothing as UNINITIALIZED.
  /// @throws std::invalid_argument  STRING
  Variant GetVariant() const;

  // Conversions, which take the best they can get: nothing is 0, false or NaN, a text that is no
  // number is 0, false or NaN, a number is truncated to an integer (held to the range, NaN is 0).
  // @throws std::logic_error  a `Variant` that is not SCALAR or BOOLEAN; in ToString() also BOOLEAN
  bool ToBool() const;
  double ToDouble() const;
  std::int64_t ToInteger() const;
  /// Reals with 17 significant digits, as "%.17g" prints them.
  std::wstring ToString() const;
  /// As GetVariant(); a text becomes the SCALAR of its number.
  Variant ToVariant() const;
  /// One element as a number: of a VECTOR or MATRIX (row by row) its real part, of a single value
  /// at index 0 the value. NaN for all others, signals among them.
  double GetElement(std::size_t index) const;

  /// Takes `value` over, converted to this entry's type; an uninitialised entry takes `forced_type`
  /// or, without one, the value as it is. With `parse_strings` a text must read as a value of the
  /// type, otherwise the conversions above do their best. Strong guarantee.
  /// @throws std::logic_error        one of the two is scalar, the other is not
  /// @throws boost::bad_lexical_cast the text does not read as a value
  void Assign(const CDesignEntry& value, bool parse_strings,
              eType forced_type = enums::DesignEntry::UNINITIALIZED);

  /// Numbers compare with math::IsClose without tolerance; different types, when none is STRING, as
  /// `Variant`; texts exactly.
  friend bool operator==(const CDesignEntry& a, const CDesignEntry& b);
  friend bool operator!=(const CDesignEntry& a, const CDesignEntry& b) { return !(a == b); }
  /// Equal types by value; different types, when none is STRING, as `Variant`, else by alternative.
  /// @throws what the order of `Variant` throws (signals, complex values, kinds that differ)
  friend bool operator<(const CDesignEntry& a, const CDesignEntry& b);
  /// Difference, for distances: of two BOOL whether they differ; of two INTEGER an INTEGER (REAL
  /// where that overflows); of two REAL a REAL; of other pairs that of their `Variant` forms.
  /// @throws std::logic_error  a STRING on either side
  friend CDesignEntry operator-(const CDesignEntry& a, const CDesignEntry& b);
  /// The negative: numbers keep their type (INTEGER becomes REAL where it overflows), a `Variant`
  /// is negated element by element.
  /// @throws std::logic_error  STRING; CTypeException  nothing or a truth value
  friend CDesignEntry operator-(const CDesignEntry& a);

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  DesignEntryData data_;
};

/// Equality of entries as operator==, but numbers and `Variant` pairs compare with the relative
/// `tolerance` of math::IsClose, under which a NaN equals nothing.
bool IsClose(const CDesignEntry& a, const CDesignEntry& b, double tolerance);

}  // namespace corvath::algorithm::datatypes

// The record of a boost::variant is tracked.
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::DesignEntryData)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::CDesignEntry, 5)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::CDesignEntry)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::CDesignEntry, "corvath::design_entry_type")
