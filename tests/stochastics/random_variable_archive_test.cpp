#include "stochastics/rv_set_nataf.h"
#include "stochastics/variables.h"
#include "support/archive_round_trip.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace corvath::algorithm;
namespace types = corvath::enums::RandomVariable;
using Eigen::VectorXd;

const int kTypes[] = {
#define ZEL_ID(Class, name, id) id,
    ZEL_DISTRIBUTIONS(ZEL_ID)
#undef ZEL_ID
};

TEST(RandomVariableArchive, EveryTypeComesBackThroughAPointer) {
  RVSet_Nataf set;
  for (const int type : kTypes) {
    const auto rv = support::Make(type);
    VectorXd moments = rv->GetStats();
    moments.head(2) << 3.0, 0.5;
    if (type == types::TRUNCATEDNORMAL) moments(2) = 2.5;  // cut off enough to be seen
    if (type == types::KERNEL)
      rv->SetParameters(Eigen::Vector3d(2.0, 3.0, 5.0));
    else if (type != types::BERNOULLI)
      rv->SetStats(moments);
    rv->GetMean();  // builds the table of names, which is stored
    set.AddRV(rv);
  }
  const auto n = static_cast<Eigen::Index>(set.GetNumRVs());
  set.SetCorrelationMatrix(Eigen::MatrixXd::Identity(n, n));
  const auto loaded = support::Load<RVSet_Nataf>(support::Save(set));
  ASSERT_EQ(loaded.GetNumRVs(), set.GetNumRVs());
  for (std::size_t i = 0; i < set.GetNumRVs(); ++i) {
    const RV& before = *set.GetRVs()[i];
    const RV& after = *loaded.GetRVs()[i];
    EXPECT_EQ(before, after) << before.GetTypeId();
    for (const double p : {0.1, 0.6})
      EXPECT_EQ(before.InverseCDF(p), after.InverseCDF(p)) << before.GetTypeId();
    EXPECT_EQ(before.CDF(2.9), after.CDF(2.9)) << before.GetTypeId();
  }
  EXPECT_EQ(loaded.GetIdent(), L"Nataf set");
  EXPECT_EQ(loaded.GetCorrelationMatrix(), set.GetCorrelationMatrix());
  EXPECT_EQ(loaded.GetStandardCorrelationMatrix(), set.GetStandardCorrelationMatrix());
}

TEST(RandomVariableArchive, KeysStandInTheirOrder) {
  // String annotations, so that the keys can be read off the bytes.
  boost::shared_ptr<RVSet> set = RVSetFactory::GetInstance().Create(RVSet::kIndependent);
  set->AddRV(support::Make(types::LOGNORMAL));
  const std::string bytes = support::Save(set, 0x2000);
  std::size_t position = 0;
  for (const char* key :
       {"corvath::algorithm::RVSet_Independent", "RVSet", "Ident", "Correlation_matrix", "m_c_sq",
        "m_c_sq_inv", "Correlation_determinant", "RVs", "corvath::algorithm::RV_Lognormal", "RV",
        "RV_Parameter", "RV_Statistical_Moments", "RV_internal_parameter_map",
        "RV_internal_moments_map", "RV_Gauss"}) {
    const std::size_t found = bytes.find(key, position);
    ASSERT_NE(found, std::string::npos) << key;
    position = found + std::string(key).size();
  }
}

TEST(RandomVariableArchive, WrongNumberOfParametersIsRefused) {
  // A beta variable under the name of a Gumbel variable.
  boost::shared_ptr<RV> rv = support::Make(types::BETA);
  std::string bytes = support::Save(rv);
  const std::string beta = "corvath::algorithm::RV_Beta";
  bytes.replace(bytes.find(beta) - 2, beta.size() + 2,
                std::string("\x1d\0", 2) + "corvath::algorithm::RV_Gumbel");
  EXPECT_EQ(support::RefusalOf([&] { support::LoadInto(bytes, rv); }),
            "RV 'RV' of type 'GUMBEL': The stored variable has 4 parameters and 4 moments, "
            "expected: 2 and 2");
}

}  // namespace
