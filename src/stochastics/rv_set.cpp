#include "stochastics/rv_set.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/until_unload.h"
#include "stochastics/marginal_transform.h"
#include "stochastics/rv_set_nataf.h"

#include <cmath>

namespace corvath::algorithm {

namespace {

std::wstring SizeMessage(const wchar_t* function, Eigen::Index size, std::size_t n) {
  return std::wstring(L"The RVSet can not compute the ") + function +
         L": Vector size of input variables (=" + std::to_wstring(size) +
         L") must match the number of random variables (=" + std::to_wstring(n) +
         L") within this set.";
}

utils::UntilUnload<RVSetFactory> rv_set_factory;

}  // namespace

RVSet::~RVSet() = default;

Eigen::MatrixXd RVSet::GetCorrelationMatrix() const {
  return Correlation_matrix;
}

Eigen::MatrixXd RVSet::GetStandardCorrelationMatrix() const {
  return Correlation_matrix;
}

double RVSet::PDF(const Eigen::VectorXd& x) const {
  if (x.size() != Size()) throw utils::runtime_error(SizeMessage(L"PDF", x.size(), RVs.size()));
  return ProductOfDensities(x);
}

double RVSet::CDF(const Eigen::VectorXd& x) const {
  if (x.size() != Size()) throw utils::runtime_error(SizeMessage(L"CDF", x.size(), RVs.size()));
  double product = 1.0;
  for (Eigen::Index i = 0; i < Size(); ++i) product *= RVs[static_cast<std::size_t>(i)]->CDF(x(i));
  return product;
}

double RVSet::ProductOfDensities(const Eigen::VectorXd& x) const {
  double product = 1.0;
  for (Eigen::Index i = 0; i < Size(); ++i) product *= RVs[static_cast<std::size_t>(i)]->PDF(x(i));
  return product;
}

Eigen::MatrixXd RVSet::ToStandardGauss(const Eigen::MatrixXd& x) const {
  if (x.rows() != Size())
    throw utils::runtime_error(
        L"ToStandardGauss: Matrix rows must match number of random variables in this set.");
  Eigen::MatrixXd u(x.rows(), x.cols());
  for (Eigen::Index sample = 0; sample < x.cols(); ++sample)
    for (Eigen::Index i = 0; i < x.rows(); ++i)
      u(i, sample) = MarginalToGauss(*RVs[static_cast<std::size_t>(i)], x(i, sample));
  return u;
}

Eigen::MatrixXd RVSet::FromStandardGauss(const Eigen::MatrixXd& u) const {
  if (u.rows() != Size())
    throw utils::runtime_error(
        L"Got a rows x cols: " + std::to_wstring(u.rows()) + L" x " + std::to_wstring(u.cols()) +
        L" matrix. But the rows of the matrix given must match the number of random variables,"
        L" which is " +
        std::to_wstring(RVs.size()) + L", in this set.");
  Eigen::MatrixXd x(u.rows(), u.cols());
  for (Eigen::Index i = 0; i < u.rows(); ++i)
    MarginalsFromGauss(*RVs[static_cast<std::size_t>(i)], i, u, x);
  return x;
}

Eigen::MatrixXd RVSet::CorrelateStandardGauss(const Eigen::MatrixXd& u) const {
  return u;
}

std::size_t RVSet::AddRV(const boost::shared_ptr<RV>& variable) {
  if (!variable) throw utils::runtime_error(L"Cannot add a missing random variable to the RVSet.");
  RVs.push_back(variable);
  return RVs.size();
}

void RVSet::CloneVariables() {
  for (boost::shared_ptr<RV>& variable : RVs) variable = variable->Clone();
}

Eigen::MatrixXd RVSet_Independent::GetCorrelationMatrix() const {
  return Eigen::MatrixXd::Identity(Size(), Size());
}

Eigen::MatrixXd RVSet_Independent::GetStandardCorrelationMatrix() const {
  return GetCorrelationMatrix();
}

boost::shared_ptr<RVSet> RVSet_Independent::Clone() const {
  auto copy = boost::make_shared<RVSet_Independent>(*this);
  copy->CloneVariables();
  return copy;
}

void RVSet_Independent::SetCorrelationMatrix(const Eigen::MatrixXd&) {
  throw utils::runtime_error(L"Cannot specify correlation matrix for independent variables.");
}

RVSetFactory& RVSetFactory::GetInstance() {
  return rv_set_factory.Get([] { return RVSetFactory(); });
}

RVSetFactory::RVSetFactory()
    : prototypes_{{RVSet::kIndependent, boost::make_shared<RVSet_Independent>()},
                  {RVSet::kNataf, boost::make_shared<RVSet_Nataf>()}} {}

boost::shared_ptr<RVSet> RVSetFactory::Create(int kind) const {
  const auto found = prototypes_.find(kind);
  if (found == prototypes_.end())
    throw utils::runtime_error(L"Asking for RVset type with ident '" + std::to_wstring(kind) +
                               L"' that is not existing.");
  return found->second->Clone();
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

}  // namespace corvath::algorithm

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RVSet)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RVSet_Independent)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::RVSet_Independent)
