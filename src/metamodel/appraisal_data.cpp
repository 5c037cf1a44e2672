#include "metamodel/appraisal_data.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/same_figures.h"

namespace corvath::math::metamodel {

namespace {

bool HasEntry(const Eigen::VectorXd& values, Eigen::Index i) {
  return i >= 0 && i < values.size() && !std::isnan(values(i));
}

}  // namespace

double AppraisalData::GetCoP() const {
  if (!HasCoP()) throw utils::runtime_error(L"CoP is not valid.");
  return cop_;
}

bool AppraisalData::HasFirstOrderIndex(Eigen::Index i) const {
  return HasEntry(first_order_indices_, i);
}

double AppraisalData::GetFirstOrderIndex(Eigen::Index i) const {
  if (!HasFirstOrderIndex(i)) throw utils::runtime_error(L"First order index is not valid.");
  return first_order_indices_(i);
}

bool AppraisalData::HasSingleCoP(Eigen::Index i) const {
  return HasEntry(single_cop_, i);
}

double AppraisalData::GetSingleCoP(Eigen::Index i) const {
  if (!HasSingleCoP(i)) throw utils::runtime_error(L"Single CoP is not valid.");
  return single_cop_(i);
}

bool operator==(const AppraisalData& a, const AppraisalData& b) {
  return SameFigure(a.cop_, b.cop_) && SameFigure(a.cod_, b.cod_) &&
         SameFigure(a.codadj_, b.codadj_) && SameFigures(a.single_cop_, b.single_cop_) &&
         SameFigures(a.first_order_indices_, b.first_order_indices_);
}

template <class Archive>
void AppraisalData::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(cop_);
  ar& BOOST_SERIALIZATION_NVP(cod_);
  ar& BOOST_SERIALIZATION_NVP(codadj_);
  ar& BOOST_SERIALIZATION_NVP(single_cop_);
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(first_order_indices_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::AppraisalData)
