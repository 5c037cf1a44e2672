#include "design/criterion.h"

#include "archive/instantiate.h"
#include "foundation/closeness.h"

#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace corvath::algorithm::datatypes {

bool CriterionDescription::operator==(const CriterionDescription& other) const {
  return std::tie(type_, lhs_, rhs_) == std::tie(other.type_, other.lhs_, other.rhs_);
}

template <class Archive>
void CriterionDescription::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(type_);
  ar& BOOST_SERIALIZATION_NVP(lhs_);
  ar& BOOST_SERIALIZATION_NVP(rhs_);
}

bool CriterionValue::operator==(const CriterionValue& other) const {
  return needeval_ == other.needeval_ && value_ == other.value_ && lhs_value_ == other.lhs_value_ &&
         rhs_value_ == other.rhs_value_;
}

template <class Archive>
void CriterionValue::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(value_);
  ar& BOOST_SERIALIZATION_NVP(lhs_value_);
  ar& BOOST_SERIALIZATION_NVP(rhs_value_);
  ar& BOOST_SERIALIZATION_NVP(needeval_);
}

Criterion::Criterion(eType type, std::wstring lhs, std::wstring rhs) {
  description_.type_ = type;
  description_.lhs_ = std::move(lhs);
  description_.rhs_ = std::move(rhs);
}

std::wstring Criterion::GetExpression() const {
  const auto in_brackets = [](const std::wstring& text) {
    return L"(" + (text.empty() ? L"0" : text) + L")";
  };
  const std::wstring lhs = in_brackets(GetLhs());
  const std::wstring rhs = in_brackets(GetRhs());
  switch (GetType()) {
    case CriterionDescription::RHS_ANY:
    case CriterionDescription::RHS:
      return rhs;
    case CriterionDescription::NEGATIVE_RHS:
      return L"-" + rhs;
    case CriterionDescription::RHS_MINUS_LHS:
    case CriterionDescription::LIMIT_LHS_BELOW_RHS:
      return rhs + L"-" + lhs;
    case CriterionDescription::LHS_MINUS_RHS_4:
    case CriterionDescription::LHS_MINUS_RHS_5:
    case CriterionDescription::LIMIT_LHS_ABOVE_RHS:
      return lhs + L"-" + rhs;
  }
  throw std::logic_error("Unhandled type to get expression");
}

bool Criterion::IsLimitState() const {
  return GetType() == CriterionDescription::LIMIT_LHS_BELOW_RHS ||
         GetType() == CriterionDescription::LIMIT_LHS_ABOVE_RHS;
}

void Criterion::Invalidate() {
  value_ = CriterionValue();
}

void Criterion::SetValues(CDesignEntry lhs, CDesignEntry rhs, CDesignEntry value, bool combine) {
  if (combine) {
    const bool is_missing = GetType() == eType::NEGATIVE_RHS && rhs == CDesignEntry();
    value = is_missing ? rhs : CombineSides(GetType(), lhs, rhs);
  }
  value_.value_ = std::move(value);
  value_.lhs_value_ = std::move(lhs);
  value_.rhs_value_ = std::move(rhs);
  value_.needeval_ = false;
}

bool Criterion::IsValueInvalid() const {
  if (NeedsEvaluation()) return false;
  const CDesignEntry& value = GetValue();
  if (value.IsUninitialized()) return true;
  const auto* variant = value.Peek<CDesignEntry::Variant>();
  if (variant && !variant->IsScalar() && !variant->IsBoolean()) return false;
  return !std::isfinite(value.ToDouble());
}

bool Criterion::IsViolated() const {
  if (!IsLimitState() || NeedsEvaluation()) return false;
  double number = std::numeric_limits<double>::quiet_NaN();
  try {
    number = GetValue().ToDouble();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {  // no number, so not a violation
  }
  return number < 0.0 && !math::IsClose(number, 0.0);
}

bool Criterion::operator==(const Criterion& other) const {
  return description_ == other.description_ && value_ == other.value_;
}

template <class Archive>
void Criterion::save(Archive& ar, const unsigned int) const {
  ar << boost::serialization::make_nvp("CriterionDescription", description_);
  ar << boost::serialization::make_nvp("CriterionValue", value_);
}

template <class Archive>
void Criterion::load(Archive& ar, const unsigned int version) {
  if (version >= 3) {
    ar >> boost::serialization::make_nvp("CriterionDescription", description_);
    ar >> boost::serialization::make_nvp("CriterionValue", value_);
    return;
  }
  // Older records are flat.
  *this = Criterion();
  ar >> boost::serialization::make_nvp("type_", description_.type_);
  ar >> boost::serialization::make_nvp("value_", value_.value_);
  ar >> boost::serialization::make_nvp("lhs_", description_.lhs_);
  ar >> boost::serialization::make_nvp("rhs_", description_.rhs_);
  ar >> boost::serialization::make_nvp("needeval_", value_.needeval_);
  if (version >= 1) {
    bool skv3_converted_ = false;  // of no use any more
    ar >> BOOST_SERIALIZATION_NVP(skv3_converted_);
  }
  if (version >= 2) {
    ar >> boost::serialization::make_nvp("lhs_value_", value_.lhs_value_);
    ar >> boost::serialization::make_nvp("rhs_value_", value_.rhs_value_);
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::CriterionDescription)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::CriterionValue)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::Criterion)
