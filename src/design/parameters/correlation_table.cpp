#include "design/parameters/correlation_table.h"

#include "archive/instantiate.h"

#include <stdexcept>
#include <tuple>

namespace corvath::algorithm::datatypes {

bool TriangularIndex::operator==(const TriangularIndex& other) const {
  return (first_ == other.first_ && second_ == other.second_) ||
         (first_ == other.second_ && second_ == other.first_);
}

bool TriangularIndex::operator<(const TriangularIndex& other) const {
  return std::tie(first_, second_) < std::tie(other.first_, other.second_);
}

template <class Archive>
void TriangularIndex::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(first_);
  ar& BOOST_SERIALIZATION_NVP(second_);
}

void CorrelationMatrix::Set(const std::wstring& first, const std::wstring& second,
                            double correlation) {
  if (first == second)
    throw std::invalid_argument("The correlation of a parameter with itself is not stored.");
  const auto mirrored = matrix_.find({second, first});
  if (mirrored != matrix_.end())
    mirrored->second = correlation;
  else
    matrix_[{first, second}] = correlation;
}

double CorrelationMatrix::Get(const std::wstring& first, const std::wstring& second) const {
  if (first == second) return 1.0;
  auto entry = matrix_.find({first, second});
  if (entry == matrix_.end()) entry = matrix_.find({second, first});
  return entry == matrix_.end() ? 0.0 : entry->second;
}

template <class Archive>
void CorrelationMatrix::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(matrix_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::TriangularIndex)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::CorrelationMatrix)
