#include "stochastics/random_variable.h"

#include "foundation/text.h"
#include "stochastics/marginal_transform.h"
#include "stochastics/rv_set_nataf.h"
#include "stochastics/variables.h"
#include "support/archive_round_trip.h"
#include "support/testing.h"

namespace {

using namespace corvath::algorithm;
using namespace support;
namespace types = corvath::enums::RandomVariable;
using Eigen::VectorXd;

/// Every type with its text and flags.
struct TypeFacts {
  int id;
  const wchar_t* text;
  bool lower, upper, discrete;
};
const TypeFacts kTypes[] = {
    {3, L"UNIFORM", true, true, false},         {4, L"NORMAL", false, false, false},
    {5, L"TRUNCATEDNORMAL", true, true, false}, {6, L"LOGNORMAL", true, false, false},
    {7, L"EXPONENTIAL", true, false, false},    {15, L"TRIANGULAR", true, true, false},
    {16, L"BETA", true, true, false},           {22, L"WEIBULL", true, false, false},
    {30, L"GUMBEL", false, false, false},       {36, L"FRECHET", true, false, false},
    {38, L"POLYMAP", false, false, false},      {39, L"KERNEL", false, false, false},
    {40, L"BERNOULLI", true, true, true},       {41, L"LOGUNIFORM", true, true, false},
    {42, L"DISCRETE", true, true, true},        {43, L"MULTIUNIFORM", true, true, false},
    {44, L"LAMBDA", true, true, false},         {45, L"POISSON", true, false, true},
};

TEST(RandomVariable, FactoryMakesEveryTypeOfTheList) {
  for (const auto& [id, text, lower, upper, discrete] : kTypes) {
    const auto rv = Make(id);
    EXPECT_EQ(rv->GetTypeId(), id);
    EXPECT_EQ(rv->GetTypeName(), text);
    EXPECT_EQ(types::FromText(text), id);
    EXPECT_EQ(rv->HasLowerBound(), lower) << id;
    EXPECT_EQ(rv->HasUpperBound(), upper) << id;
    EXPECT_EQ(rv->IsDiscrete(), discrete) << id;
    EXPECT_EQ(rv->IsParametric(), id != types::KERNEL);
    EXPECT_NE(rv->IsParametric(), rv->IsNonParametric());
    EXPECT_EQ(rv->GetName(), L"RV");
    EXPECT_EQ(std::isfinite(rv->GetLowerBound()), lower) << id;
    EXPECT_EQ(std::isfinite(rv->GetUpperBound()), upper) << id;
    EXPECT_EQ(rv->GetMean(), rv->GetStats()(0));
    EXPECT_NE(rv.get(), Make(id).get());
    EXPECT_EQ(*rv, *Make(id));
  }
  EXPECT_EQ(RefusalOf([] { Make(8); }), "Asking for non existing RV type ident '8'");
  EXPECT_EQ(RefusalOf([] { Make(-1); }), "Asking for non existing RV type ident '-1'");
}

TEST(RandomVariable, NamedAccessRecalculatesTheOtherSide) {
  const auto rv = Make(types::UNIFORM);
  rv->SetParameter(L"Upper bound b", 3.0);
  EXPECT_EQ(rv->GetStat(L"Mean value"), 1.5);
  EXPECT_NEAR(rv->GetStat(L"Standard deviation"), 3.0 / std::sqrt(12.0), 1e-15);
  rv->SetStat(L"Mean value", 11.5);
  EXPECT_NEAR(rv->GetParameter(L"Lower bound a"), 10.0, 1e-14);
  EXPECT_EQ(RefusalOf([&] { rv->GetStat(L"Skewness"); }),
            "Cannot find any unique identifier named 'Skewness' for the random variable instance "
            "'RV' of type 'UNIFORM'");
}

TEST(RandomVariable, CloseValueLeavesTheObjectAlone) {
  const auto rv = Make(types::WEIBULL);
  rv->SetStats(ToVector({7.0, 3.0}));  // which the parameters do not give back to the last bit
  rv->SetParameter(L"Shape parameter k", rv->GetParameter(L"Shape parameter k"));
  EXPECT_EQ(rv->GetStats(), ToVector({7.0, 3.0}));
}

TEST(RandomVariable, RefusedNumberChangesNothing) {
  for (const TypeFacts& facts : kTypes) {
    const int type = facts.id;
    if (type == types::BERNOULLI || type == types::POISSON) continue;  // these ignore it
    const auto rv = Make(type);
    const auto before = rv->Clone();
    EXPECT_NE(RefusalOf([&] { rv->SetStat(L"Standard deviation", 0.0); }), "<no exception>")
        << type;
    const std::wstring name = rv->GetParameterNames().front();
    EXPECT_NE(RefusalOf([&] { rv->SetParameter(name, std::nan("")); }), "<no exception>") << type;
    EXPECT_EQ(*rv, *before) << type;
    EXPECT_EQ(rv->CDF(0.7), before->CDF(0.7)) << type;
  }
}

TEST(RandomVariable, WrongCountsAreNamedByEachType) {
  for (const auto& [type, none, outcome] : LinesOf("counts")) {
    const std::string parameters = outcome.substr(0, outcome.find(" | "));
    const std::string moments = outcome.substr(parameters.size() + 3);
    const auto rv = Make(type);
    rv->SetName(L"x");
    const std::string start = "RV 'x' of type '" + corvath::utils::ToUtf8(rv->GetTypeName()) + "':";
    const VectorXd seven = VectorXd::LinSpaced(7, 1.0, 7.0);
    for (const auto& [text, part] :
         {std::pair(RefusalOf([&] { rv->SetParameters(seven); }), parameters),
          std::pair(RefusalOf([&] { rv->SetStats(seven); }), moments)})
      EXPECT_TRUE(text.find(start) == 0 && text.find(part) < text.size()) << text;
  }
}

TEST(RandomVariable, MomentsOutsideTheDomainAreNamedByEachType) {
  const auto refusal = [](int type, double mean, double sd) {
    const std::string text = RefusalOf([&] { WithStats(type, {mean, sd}); });
    const std::string start = "RV 'RV' of type '" + corvath::utils::ToUtf8(types::ToText(type));
    return text.find(start + "': ") == 0 ? text.substr(start.size() + 3) : text;
  };
  const std::string not_positive = "Standard deviation must be strictly positive.";
  for (const int type : {types::NORMAL, types::UNIFORM, types::LOGNORMAL, types::EXPONENTIAL,
                         types::GUMBEL, types::BETA, types::TRUNCATEDNORMAL, types::TRIANGULAR,
                         types::WEIBULL, types::FRECHET, types::LAMBDA, types::MULTIUNIFORM}) {
    for (const double sd : {0.0, -1.0, 1e-16}) EXPECT_EQ(refusal(type, 1.0, sd), not_positive);
    EXPECT_EQ(refusal(type, 1.0, 9e-7), "Coefficient of variation must be larger than 1e-6.");
    EXPECT_EQ(refusal(type, 1.0, 1e-6), "<no exception>") << type;  // the limit itself is allowed
  }
  for (const auto& [type, moments, text] : LinesOf("refuses"))
    EXPECT_EQ(refusal(type, moments[0], moments[1]), text);
  EXPECT_EQ(RefusalOf([] { Make(types::NORMAL)->Fit(Eigen::MatrixXd::Ones(3, 1)); }),
            "RV 'RV' of type '4' can not be fitted by data. ");
}

TEST(RandomVariable, NumbersBeyondTheRangeAreRefusedAndTheLargestAreUsable) {
  const auto expect_usable = [](const RV& rv, const RV& before, bool refused) {
    EXPECT_TRUE(!refused || rv == before);
    EXPECT_TRUE(rv.GetParameters().allFinite() && rv.GetStats().allFinite()) << rv.GetTypeId();
    if (rv.GetTypeId() == types::KERNEL) return;  // may refuse quantiles next to a lonely sample
    for (const double p : {0.0, 0.5, 1.0}) {
      const double x = rv.InverseCDF(p);
      EXPECT_TRUE(std::isfinite(x) && !std::isnan(rv.CDF(x))) << rv.GetTypeId() << ' ' << p;
    }
  };
  testing::internal::CaptureStdout();  // what is not reached
  for (const TypeFacts& facts : kTypes) {
    SCOPED_TRACE(facts.id);
    const auto start = Make(facts.id);
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1.7e308, -1.7e308, 1.001e300,
                               9e299, -9e299, 1e154, -1e154, 1e-290}) {
      const bool in_range = std::abs(value) <= 1e300;
      for (Eigen::Index i = 0; i < start->GetParameters().size() + start->GetStats().size(); ++i) {
        const auto rv = start->Clone();
        const bool is_moment = i >= rv->GetParameters().size();
        VectorXd values = is_moment ? rv->GetStats() : rv->GetParameters();
        values(is_moment ? i - rv->GetParameters().size() : i) = value;
        const bool refused = RefusalOf([&] {
                               is_moment ? rv->SetStats(values) : rv->SetParameters(values);
                             }) != "<no exception>";
        EXPECT_TRUE(refused || in_range) << value;
        expect_usable(*rv, *start, refused);
      }
    }
  }
  testing::internal::GetCapturedStdout();
}

TEST(RandomVariable, NaNPassesThroughEveryFunction) {
  const double nan = std::nan("");
  for (const TypeFacts& facts : kTypes) {
    const auto rv = Make(facts.id);
    for (const double result : {rv->PDF(nan), rv->CDF(nan), rv->InverseCDF(nan),
                                MarginalToGauss(*rv, nan), MarginalFromGauss(*rv, nan)})
      EXPECT_TRUE(std::isnan(result)) << facts.id;
  }
}

TEST(RandomVariable, ParametersOutsideTheirDomainAreMoved) {
  for (const auto& [type, given, outcome] : LinesOf("holds")) {
    const std::vector<double> held = ReadNumbers(outcome);
    const auto rv = WithParameters(type, given);
    for (std::size_t i = 0; i < held.size(); ++i)
      EXPECT_NEAR(rv->GetParameters()(static_cast<Eigen::Index>(i)), held[i],
                  1e-15 * std::abs(held[i]))
          << type << " " << i;
    EXPECT_TRUE(rv->GetParameters().allFinite() && rv->GetStats().allFinite())
        << type << " " << rv->GetParameters().transpose();
    EXPECT_GE(rv->GetStats()(1), std::abs(rv->GetStats()(0)) * 1e-6 * (1.0 - 1e-4));
  }
}

TEST(RandomVariable, EveryUniqueNameCanBeSetAlone) {
  for (const TypeFacts& facts : kTypes) {
    if (facts.id == types::DISCRETE || facts.id == types::MULTIUNIFORM) {
      EXPECT_EQ(RefusalOf([&] { Make(facts.id)->GetParameter(L"Value"); }),
                "The random variable instance 'RV' of type '" + corvath::utils::ToUtf8(facts.text) +
                    "' needs unique idents for the individual Get and Set methods. The ident "
                    "'Value' is not unique.");
      continue;
    }
    const auto start = Make(facts.id);
    if (facts.id == types::POLYMAP) start->SetStats(ToVector({1.0, 2.0, 0.3, 1.0}));
    for (const std::wstring& name : start->GetParameterNames()) {
      const auto rv = start->Clone();
      const double old = rv->GetParameter(name);
      const double value = old == 0.0 ? 0.01 : 0.99 * old;
      rv->SetParameter(name, value);
      EXPECT_EQ(rv->GetParameter(name), value) << facts.id << " " << corvath::utils::ToUtf8(name);
      EXPECT_NE(*rv, *start);
    }
    if (facts.id == types::KERNEL) continue;
    const auto rv = Make(facts.id);
    rv->SetStat(L"Mean value", 0.9 * rv->GetMean());
    EXPECT_NEAR(rv->GetMean(), 0.9 * Make(facts.id)->GetMean(), 1e-10) << facts.id;
  }
}

TEST(RandomVariableArchive, EveryTypeComesBackThroughAPointer) {
  RVSet_Nataf set;
  for (const TypeFacts& facts : kTypes) {
    const int type = facts.id;
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
