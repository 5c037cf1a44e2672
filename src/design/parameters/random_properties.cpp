#include "design/parameters/random_properties.h"

#include "archive/instantiate.h"
#include "foundation/closeness.h"
#include "foundation/exception.h"

#include <algorithm>
#include <stdexcept>

namespace corvath::algorithm::datatypes {

namespace {

constexpr double kNumberTolerance = 2.22e-13;
constexpr std::size_t kStandardDeviation = 1;  // position among the moments

/// Close up to the tolerance; besides, as IsClose without one treats NaN and infinity.
bool SameNumber(double x, double y) {
  return math::IsClose(x, y, kNumberTolerance) || math::IsClose(x, y);
}

}  // namespace

std::wstring GetMomentName(std::size_t number) {
  switch (number) {
    case 0:
      throw std::out_of_range("Statistical moments are counted from 1.");
    case 1:
      return L"Mean value";
    case 2:
      return L"Standard deviation";
    case 3:
      return L"Skewness";
    case 4:
      return L"Excess kurtosis";
    default:
      return std::to_wstring(number) + L"-th moment";
  }
}

double RandomProperties::GetCov() const {
  if (!has_set_cov_)
    throw utils::runtime_error(
        L"The random property doesn't have a Coefficient of variation (COV) defined.");
  return cov_;
}

void RandomProperties::SetCov(double cov) {
  has_set_cov_ = true;
  cov_ = cov;
}

bool RandomProperties::operator==(const RandomProperties& other) const {
  if (type_ != other.type_ || kind_ != other.kind_ || has_set_cov_ != other.has_set_cov_ ||
      !SameNumber(cov_, other.cov_) || moments_.size() != other.moments_.size())
    return false;
  if (!std::equal(params_.begin(), params_.end(), other.params_.begin(), other.params_.end(),
                  SameNumber))
    return false;
  for (std::size_t i = 0; i < moments_.size(); ++i) {
    const bool derived = has_set_cov_ && i == kStandardDeviation;
    if (!derived && !SameNumber(moments_[i], other.moments_[i])) return false;
  }
  return true;
}

template <class Archive>
void RandomProperties::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(type_);
  ar& BOOST_SERIALIZATION_NVP(kind_);
  ar& BOOST_SERIALIZATION_NVP(params_);
  ar& BOOST_SERIALIZATION_NVP(moments_);
  if (version >= 3) {
    ar& BOOST_SERIALIZATION_NVP(has_set_cov_);
    ar& BOOST_SERIALIZATION_NVP(cov_);
  }
  if (version >= 4) ar& BOOST_SERIALIZATION_NVP(validated_);
  if (version < 2) {
    // Points of the density, once stored for plots and derived from the rest.
    std::vector<std::pair<double, double>> pdf_coords_;
    ar& BOOST_SERIALIZATION_NVP(pdf_coords_);
  }
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::RandomProperties)
