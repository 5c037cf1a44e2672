// The persisted forms of this folder's classes and their registration under the export keys.

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "stochastics/distributions/rv_bernoulli.h"
#include "stochastics/distributions/rv_beta.h"
#include "stochastics/distributions/rv_exponential.h"
#include "stochastics/distributions/rv_frechet.h"
#include "stochastics/distributions/rv_general_discrete.h"
#include "stochastics/distributions/rv_gumbel.h"
#include "stochastics/distributions/rv_kernel.h"
#include "stochastics/distributions/rv_lambda.h"
#include "stochastics/distributions/rv_lognormal.h"
#include "stochastics/distributions/rv_loguniform.h"
#include "stochastics/distributions/rv_multi_uniform.h"
#include "stochastics/distributions/rv_normal.h"
#include "stochastics/distributions/rv_poisson.h"
#include "stochastics/distributions/rv_polymap.h"
#include "stochastics/distributions/rv_triangular.h"
#include "stochastics/distributions/rv_truncated_normal.h"
#include "stochastics/distributions/rv_uniform.h"
#include "stochastics/distributions/rv_weibull.h"
#include "stochastics/rv_set_nataf.h"

#include <algorithm>

namespace corvath::algorithm {

namespace {

/// The size that a stored table of `size` numbers must have: pairs, at least two of them.
Eigen::Index WholeTable(Eigen::Index size) {
  return std::max<Eigen::Index>(size - size % 2, 4);
}

}  // namespace

template <class Archive>
void RV::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(RV_Parameter);
  ar& BOOST_SERIALIZATION_NVP(RV_Statistical_Moments);
  ar& BOOST_SERIALIZATION_NVP(RV_internal_parameter_map);
  ar& BOOST_SERIALIZATION_NVP(RV_internal_moments_map);
}

template <class Archive>
void RV_Uniform::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Normal::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Truncatednormal::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  ar& BOOST_SERIALIZATION_NVP(RV_area);
  if (Archive::is_loading::value) RequireSizes(4, 4);
}

template <class Archive>
void RV_Lognormal::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Exponential::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Triangular::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(3, 3);
}

template <class Archive>
void RV_Polymap::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  if (Archive::is_loading::value) RequireSizes(5, 4);
}

template <class Archive>
void RV_Kernel::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  ar& BOOST_SERIALIZATION_NVP(Kernel_width);
  if (Archive::is_loading::value) RequireSizes(std::max<Eigen::Index>(RV_Parameter.size(), 1), 2);
}

template <class Archive>
void RV_Gumbel::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Weibull::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Frechet::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_Bernoulli::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(1, 2);
}

template <class Archive>
void RV_Beta::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(4, 4);
}

template <class Archive>
void RV_Loguniform::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(2, 2);
}

template <class Archive>
void RV_GeneralDiscrete::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(WholeTable(RV_Parameter.size()), 2);
}

template <class Archive>
void RV_MultiUniform::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(WholeTable(RV_Parameter.size()), 2);
}

template <class Archive>
void RV_Lambda::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(4, 4);
}

template <class Archive>
void RV_Poisson::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(*this));
  if (Archive::is_loading::value) RequireSizes(1, 2);
}

template <class Archive>
void RVSet::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(Ident);
  ar& BOOST_SERIALIZATION_NVP(Correlation_matrix);
  ar& BOOST_SERIALIZATION_NVP(m_c_sq);
  ar& BOOST_SERIALIZATION_NVP(m_c_sq_inv);
  ar& BOOST_SERIALIZATION_NVP(Correlation_determinant);
  ar& BOOST_SERIALIZATION_NVP(RVs);
  if (Archive::is_loading::value)
    for (const boost::shared_ptr<RV>& variable : RVs)
      if (!variable) throw utils::runtime_error(L"A random variable of a stored RVSet is missing.");
}

template <class Archive>
void RVSet_Independent::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RVSet", boost::serialization::base_object<RVSet>(*this));
}

template <class Archive>
void RVSet_Nataf::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RVSet", boost::serialization::base_object<RVSet>(*this));
}

}  // namespace corvath::algorithm

#define ZEL_IMPLEMENT(T)       \
  ZEL_INSTANTIATE_SERIALIZE(T) \
  ZEL_EXPORT_IMPLEMENT(T)

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RV)
ZEL_IMPLEMENT(corvath::algorithm::RV_Uniform)
ZEL_IMPLEMENT(corvath::algorithm::RV_Normal)
ZEL_IMPLEMENT(corvath::algorithm::RV_Truncatednormal)
ZEL_IMPLEMENT(corvath::algorithm::RV_Lognormal)
ZEL_IMPLEMENT(corvath::algorithm::RV_Exponential)
ZEL_IMPLEMENT(corvath::algorithm::RV_Triangular)
ZEL_IMPLEMENT(corvath::algorithm::RV_Polymap)
ZEL_IMPLEMENT(corvath::algorithm::RV_Kernel)
ZEL_IMPLEMENT(corvath::algorithm::RV_Gumbel)
ZEL_IMPLEMENT(corvath::algorithm::RV_Weibull)
ZEL_IMPLEMENT(corvath::algorithm::RV_Frechet)
ZEL_IMPLEMENT(corvath::algorithm::RV_Bernoulli)
ZEL_IMPLEMENT(corvath::algorithm::RV_Beta)
ZEL_IMPLEMENT(corvath::algorithm::RV_Loguniform)
ZEL_IMPLEMENT(corvath::algorithm::RV_GeneralDiscrete)
ZEL_IMPLEMENT(corvath::algorithm::RV_MultiUniform)
ZEL_IMPLEMENT(corvath::algorithm::RV_Lambda)
ZEL_IMPLEMENT(corvath::algorithm::RV_Poisson)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RVSet)
ZEL_IMPLEMENT(corvath::algorithm::RVSet_Independent)
ZEL_IMPLEMENT(corvath::algorithm::RVSet_Nataf)
