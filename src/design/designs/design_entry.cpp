#include "design/designs/design_entry.h"

#include "foundation/closeness.h"
#include "variant/functions/ordering.h"
#include "variant/operators/arithmetic.h"

#include <boost/lexical_cast.hpp>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace corvath::enums {

namespace {

constexpr const wchar_t* kTypeTexts[] = {L"UNINITIALIZED", L"BOOL",   L"REAL",
                                         L"INTEGER",       L"STRING", L"VARIANT"};
constexpr std::int32_t kNumTypes = std::size(kTypeTexts);

[[noreturn]] void ThrowUnknownType() {
  throw std::invalid_argument("Unknown design type");
}

}  // namespace

std::wstring DesignEntry::GetText(eType type) {
  if (type < 0 || type >= kNumTypes) ThrowUnknownType();
  return kTypeTexts[type];
}

DesignEntry::eType DesignEntry::GetType(const std::wstring& text) {
  for (std::int32_t i = 0; i < kNumTypes; ++i)
    if (text == kTypeTexts[i]) return static_cast<eType>(i);
  ThrowUnknownType();
}

}  // namespace corvath::enums

namespace corvath::algorithm::datatypes {

namespace {

using enums::DesignEntry;
using math::Variant;

/// Type of each alternative of DesignEntryData, by its position.
constexpr CDesignEntry::eType kTypeOfAlternative[] = {
    DesignEntry::UNINITIALIZED, DesignEntry::REAL, DesignEntry::INTEGER,
    DesignEntry::STRING,        DesignEntry::BOOL, DesignEntry::VARIANT};

/// The number that the whole of `text` spells, in the notation of the C locale whatever the host's.
/// Like a stream it takes a number that is too small as zero and refuses one that is too large.
std::optional<double> ParseReal(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t c : text) {
    if (c <= L' ' || c > L'~') return std::nullopt;
    narrow.push_back(static_cast<char>(c));
  }
  const char* first = narrow.data();
  const char* const last = first + narrow.size();
  if (last - first > 1 && first[0] == '+' && first[1] != '-') ++first;
  double number = 0.0;
  const auto [end, error] = std::from_chars(first, last, number);
  if (end != last) return std::nullopt;
  if (error == std::errc::result_out_of_range) {  // too large or too small: a stream tells which
    std::istringstream stream(narrow);
    stream.imbue(std::locale::classic());
    if (!(stream >> number)) return std::nullopt;
  } else if (error != std::errc()) {
    return std::nullopt;
  }
  return number;
}

double RealFromText(const std::wstring& text) {
  const std::optional<double> number = ParseReal(text);
  if (!number) throw boost::bad_lexical_cast(typeid(std::wstring), typeid(double));
  return *number;
}

bool EqualsIgnoringCase(const std::wstring& text, const wchar_t* lower) {
  for (const wchar_t c : text) {
    const wchar_t folded = c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
    if (*lower == L'\0' || folded != *lower++) return false;
  }
  return *lower == L'\0';
}

bool BoolFromText(const std::wstring& text) {
  if (EqualsIgnoringCase(text, L"false")) return false;
  if (EqualsIgnoringCase(text, L"true")) return true;
  return boost::lexical_cast<bool>(text);
}

/// Towards zero, held to the range of the integer; a NaN is 0.
std::int64_t Truncated(double number) {
  constexpr double kTwoTo63 = 0x1p63;
  if (std::isnan(number)) return 0;
  if (number >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (number < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

std::wstring RealText(double number) {
  char text[40];
  const auto [end, error] =
      std::to_chars(text, text + sizeof text, number, std::chars_format::general, 17);
  (void)error;  // 17 digits, sign, point and exponent always fit
  return std::wstring(text, end);
}

[[noreturn]] void ThrowNotScalar() {
  throw std::logic_error("Designpoint conversion failed: variant isn't scalar.");
}

/// Real part of a SCALAR, 0 or 1 of a BOOLEAN.
double ScalarNumber(const Variant<double>& value) {
  if (value.IsScalar()) return value.GetScalar().real();
  if (value.IsBoolean()) return value.GetBoolean() ? 1.0 : 0.0;
  ThrowNotScalar();
}

bool IsAnyString(const CDesignEntry& a, const CDesignEntry& b) {
  return a.GetType() == DesignEntry::STRING || b.GetType() == DesignEntry::STRING;
}

/// Calls `use` with both entries as `Variant`, which copies those alone that hold another type.
template <class Use>
auto AsVariants(const CDesignEntry& a, const CDesignEntry& b, Use use) {
  const auto* left = a.Peek<Variant<double>>();
  const auto* right = b.Peek<Variant<double>>();
  if (left && right) return use(*left, *right);
  if (left) return use(*left, b.GetVariant());
  if (right) return use(a.GetVariant(), *right);
  return use(a.GetVariant(), b.GetVariant());
}

/// Equality by `close`, a callable for two doubles and for two Variants.
template <class Close>
bool AreEqual(const CDesignEntry& a, const CDesignEntry& b, Close close) {
  if (a.GetType() != b.GetType()) return !IsAnyString(a, b) && AsVariants(a, b, close);
  switch (a.GetType()) {
    case DesignEntry::REAL:
      return close(*a.Peek<double>(), *b.Peek<double>());
    case DesignEntry::INTEGER:
      return *a.Peek<std::int64_t>() == *b.Peek<std::int64_t>();
    case DesignEntry::STRING:
      return *a.Peek<std::wstring>() == *b.Peek<std::wstring>();
    case DesignEntry::BOOL:
      return *a.Peek<bool>() == *b.Peek<bool>();
    case DesignEntry::VARIANT:
      return close(*a.Peek<Variant<double>>(), *b.Peek<Variant<double>>());
    default:
      return true;  // both hold nothing
  }
}

}  // namespace

CDesignEntry::eType CDesignEntry::GetType() const {
  return kTypeOfAlternative[data_.value.index()];
}

bool CDesignEntry::IsUninitialized() const {
  const Variant* variant = Peek<Variant>();
  return variant ? variant->IsUninitialized() : GetType() == DesignEntry::UNINITIALIZED;
}

bool CDesignEntry::IsScalar() const {
  const Variant* variant = Peek<Variant>();
  if (!variant) return GetType() != DesignEntry::UNINITIALIZED;
  return !variant->IsUninitialized() && variant->Size() == 1;
}

double CDesignEntry::GetScalar() const {
  if (const double* real = Peek<double>()) return *real;
  if (const std::int64_t* integer = Peek<std::int64_t>()) return static_cast<double>(*integer);
  const Variant* variant = Peek<Variant>();
  if (variant && variant->IsScalar()) return variant->GetScalar().real();
  throw std::invalid_argument("GetScalar not supported for this type");
}

CDesignEntry::Variant CDesignEntry::GetVariant() const {
  switch (GetType()) {
    case DesignEntry::UNINITIALIZED:
      return Variant();
    case DesignEntry::BOOL:
      return Variant(*Peek<bool>());
    case DesignEntry::VARIANT:
      return *Peek<Variant>();
    case DesignEntry::STRING:
      throw std::invalid_argument("GetVariant is not supported for this type");
    default:
      return Variant(ToDouble());
  }
}

bool CDesignEntry::ToBool() const {
  if (const bool* truth = Peek<bool>()) return *truth;
  if (const std::int64_t* integer = Peek<std::int64_t>()) return *integer != 0;
  if (const std::wstring* text = Peek<std::wstring>()) {
    bool truth = false;
    return boost::conversion::try_lexical_convert(*text, truth) && truth;
  }
  return GetType() != DesignEntry::UNINITIALIZED && ToDouble() != 0.0;
}

double CDesignEntry::ToDouble() const {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  switch (GetType()) {
    case DesignEntry::REAL:
      return *Peek<double>();
    case DesignEntry::INTEGER:
      return static_cast<double>(*Peek<std::int64_t>());
    case DesignEntry::STRING:
      return ParseReal(*Peek<std::wstring>()).value_or(kNaN);
    case DesignEntry::BOOL:
      return *Peek<bool>() ? 1.0 : 0.0;
    case DesignEntry::VARIANT:
      return ScalarNumber(*Peek<Variant>());
    default:
      return kNaN;
  }
}

std::int64_t CDesignEntry::ToInteger() const {
  if (const std::int64_t* integer = Peek<std::int64_t>()) return *integer;
  if (const std::wstring* text = Peek<std::wstring>()) {
    std::int64_t integer = 0;
    return boost::conversion::try_lexical_convert(*text, integer) ? integer : 0;
  }
  return Truncated(ToDouble());
}

std::wstring CDesignEntry::ToString() const {
  switch (GetType()) {
    case DesignEntry::REAL:
      return RealText(*Peek<double>());
    case DesignEntry::INTEGER:
      return std::to_wstring(*Peek<std::int64_t>());
    case DesignEntry::STRING:
      return *Peek<std::wstring>();
    case DesignEntry::BOOL:
      return *Peek<bool>() ? L"1" : L"0";
    case DesignEntry::VARIANT:
      if (!Peek<Variant>()->IsScalar()) ThrowNotScalar();
      return RealText(Peek<Variant>()->GetScalar().real());
    default:
      return L"uninitialized";
  }
}

CDesignEntry::Variant CDesignEntry::ToVariant() const {
  return GetType() == DesignEntry::STRING ? Variant(ToDouble()) : GetVariant();
}

double CDesignEntry::GetElement(std::size_t index) const {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const Variant* variant = Peek<Variant>();
  if (!variant || variant->IsScalar() || variant->IsBoolean())
    return index == 0 ? ToDouble() : kNaN;
  if (variant->IsVector() && index < variant->Size()) return variant->GetVector()[index].real();
  if (variant->IsMatrix() && index < variant->Size())
    return variant->GetMatrix().data()[index].real();
  return kNaN;
}

void CDesignEntry::Assign(const CDesignEntry& value, bool parse_strings, eType forced_type) {
  const eType own_type = GetType();
  const bool initialised = own_type != DesignEntry::UNINITIALIZED;
  const eType type = initialised ? own_type : forced_type;
  if (value.GetType() == type || type == DesignEntry::UNINITIALIZED) {
    *this = value;
    return;
  }
  if (initialised && IsScalar() != value.IsScalar())
    throw std::logic_error("Cannot assign. Value types do not match.");
  const std::wstring* text = parse_strings ? value.Peek<std::wstring>() : nullptr;
  switch (type) {
    case DesignEntry::BOOL:
      *this = CDesignEntry(text ? BoolFromText(*text) : value.ToBool());
      break;
    case DesignEntry::REAL:
      *this = CDesignEntry(text ? RealFromText(*text) : value.ToDouble());
      break;
    case DesignEntry::INTEGER:
      *this = CDesignEntry(text ? boost::lexical_cast<std::int64_t>(*text) : value.ToInteger());
      break;
    case DesignEntry::STRING:
      *this = CDesignEntry(value.ToString());
      break;
    case DesignEntry::VARIANT:
      *this = CDesignEntry(text ? Variant(RealFromText(*text)) : value.ToVariant());
      break;
    default:
      throw std::invalid_argument("Unknown design type");
  }
}

bool operator==(const CDesignEntry& a, const CDesignEntry& b) {
  return AreEqual(a, b, [](const auto& x, const auto& y) { return math::IsClose(x, y); });
}

bool IsClose(const CDesignEntry& a, const CDesignEntry& b, double tolerance) {
  return AreEqual(
      a, b, [tolerance](const auto& x, const auto& y) { return math::IsClose(x, y, tolerance); });
}

bool operator<(const CDesignEntry& a, const CDesignEntry& b) {
  if (a.GetType() != b.GetType() && IsAnyString(a, b))
    return a.data_.value.index() < b.data_.value.index();
  switch (a.GetType() == b.GetType() ? a.GetType() : DesignEntry::VARIANT) {
    case DesignEntry::REAL:
      return *a.Peek<double>() < *b.Peek<double>();
    case DesignEntry::INTEGER:
      return *a.Peek<std::int64_t>() < *b.Peek<std::int64_t>();
    case DesignEntry::STRING:
      return *a.Peek<std::wstring>() < *b.Peek<std::wstring>();
    case DesignEntry::BOOL:
      return *a.Peek<bool>() < *b.Peek<bool>();
    case DesignEntry::VARIANT:
      return AsVariants(a, b, [](const auto& x, const auto& y) { return math::Less(x, y); });
    default:
      return false;  // both hold nothing
  }
}

CDesignEntry operator-(const CDesignEntry& a, const CDesignEntry& b) {
  if (IsAnyString(a, b)) throw std::logic_error("Substraction not supported for strings");
  if (a.GetType() == b.GetType()) {
    if (const double* left = a.Peek<double>()) return CDesignEntry(*left - *b.Peek<double>());
    if (const bool* left = a.Peek<bool>()) return CDesignEntry(*left != *b.Peek<bool>());
    if (const std::int64_t* left = a.Peek<std::int64_t>()) {
      std::int64_t difference = 0;
      if (!__builtin_sub_overflow(*left, *b.Peek<std::int64_t>(), &difference))
        return CDesignEntry(difference);
      return CDesignEntry(a.ToDouble() - b.ToDouble());
    }
  }
  return CDesignEntry(AsVariants(a, b, [](const auto& x, const auto& y) {
    Variant<double> difference;
    math::Subtract(difference, x, y);
    return difference;
  }));
}

CDesignEntry operator-(const CDesignEntry& a) {
  const CDesignEntry zero =
      a.GetType() == DesignEntry::INTEGER ? CDesignEntry(0) : CDesignEntry(0.0);
  if (const double* real = a.Peek<double>()) return CDesignEntry(-*real);
  return zero - a;
}

}  // namespace corvath::algorithm::datatypes
