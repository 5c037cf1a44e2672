#include "stochastics/random_variable.h"

#include "foundation/exception.h"
#include "stochastics/rv_factory.h"
#include "support/message_of.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace corvath::algorithm;
namespace types = corvath::enums::RandomVariable;
using Eigen::VectorXd;

VectorXd Vector(std::initializer_list<double> values) {
  return Eigen::Map<const VectorXd>(values.begin(), static_cast<Eigen::Index>(values.size()));
}

boost::shared_ptr<RV> Make(int type) {
  return RVFactory::GetInstance().Create(type);
}

template <class Action>
std::string Refusal(Action action) {
  return support::MessageOfExactly<corvath::utils::runtime_error>(action);
}

std::string RefusalOfParameters(int type, std::initializer_list<double> values) {
  return Refusal([&] { Make(type)->SetParameters(Vector(values)); });
}

std::string RefusalOfStats(int type, std::initializer_list<double> values) {
  return Refusal([&] { Make(type)->SetStats(Vector(values)); });
}

/// Every type with its text and flags.
struct TypeFacts {
  int id;
  const wchar_t* text;
  bool lower, upper, discrete;
};
const TypeFacts kTypes[] = {
    {3, L"UNIFORM", true, true, false},    {4, L"NORMAL", false, false, false},
    {6, L"LOGNORMAL", true, false, false}, {7, L"EXPONENTIAL", true, false, false},
    {16, L"BETA", true, true, false},      {30, L"GUMBEL", false, false, false},
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
  EXPECT_EQ(Refusal([] { Make(8); }), "Asking for non existing RV type ident '8'");
  EXPECT_EQ(Refusal([] { Make(-1); }), "Asking for non existing RV type ident '-1'");
}

TEST(RandomVariable, CloneKeepsEverythingAndEqualityIgnoresTheName) {
  const auto rv = Make(types::GUMBEL);
  rv->SetName(L"wind");
  rv->SetStats(Vector({20.0, 3.0}));
  const auto copy = rv->Clone();
  EXPECT_EQ(copy->GetName(), L"wind");
  EXPECT_EQ(*copy, *rv);
  copy->SetName(L"other");
  EXPECT_EQ(*copy, *rv);
  copy->SetStat(L"Mean value", 20.0 * (1.0 + 1e-15));
  EXPECT_NE(*copy, *rv);
  EXPECT_NE(*Make(types::GUMBEL), *Make(types::LOGNORMAL));  // both have the moments (1, 1)
}

TEST(RandomVariable, NamedAccessRecalculatesTheOtherSide) {
  const auto rv = Make(types::UNIFORM);
  rv->SetParameter(L"Upper bound b", 3.0);
  EXPECT_EQ(rv->GetStat(L"Mean value"), 1.5);
  EXPECT_NEAR(rv->GetStat(L"Standard deviation"), 3.0 / std::sqrt(12.0), 1e-15);
  rv->SetStat(L"Mean value", 11.5);
  EXPECT_NEAR(rv->GetParameter(L"Lower bound a"), 10.0, 1e-14);
  EXPECT_EQ(Refusal([&] { rv->GetStat(L"Skewness"); }),
            "Cannot find any unique identifier named 'Skewness' for the random variable instance "
            "'RV' of type 'UNIFORM'");
}

TEST(RandomVariable, CloseValueLeavesTheObjectAlone) {
  const auto rv = Make(types::NORMAL);
  rv->SetParameters(Vector({5.0, 0.0}));  // s was raised to 5e-6
  const VectorXd before = rv->GetParameters();
  rv->SetParameter(L"Mean value mu", 5.0);
  EXPECT_EQ(rv->GetParameters(), before);
}

TEST(RandomVariable, RefusedMomentChangesNothing) {
  for (const int type : {types::NORMAL, types::LOGNORMAL, types::GUMBEL, types::UNIFORM,
                         types::EXPONENTIAL, types::BETA}) {
    const auto rv = Make(type);
    const auto before = rv->Clone();
    EXPECT_NE(Refusal([&] { rv->SetStat(L"Standard deviation", 0.0); }), "") << type;
    EXPECT_NE(Refusal([&] { rv->SetStat(L"Mean value", 1e9); }), "<no exception>") << type;
    EXPECT_EQ(*rv, *before) << type;
    EXPECT_EQ(rv->CDF(0.7), before->CDF(0.7)) << type;
  }
}

TEST(RandomVariable, MessagesOfTheSimpleTypes) {
  struct Case {
    int type;
    const char* parameters;
    const char* moments;
  };
  const Case cases[] = {
      {types::NORMAL, "NORMAL': Wrong number of statistical parameters. Expected: 2, obtained: 3",
       "NORMAL': Wrong number of moments. Expected: 2, obtained: 3"},
      {types::UNIFORM, "UNIFORM': Wrong number of statistical parameters. Expected: 2, obtained: 3",
       "UNIFORM': Wrong number of statistical moments. Expected: 2, obtained: 3"},
      {types::LOGNORMAL,
       "LOGNORMAL': Obtained wrong number of parameters. Expected: 2, obtained: 3",
       "LOGNORMAL': Wrong number of statistical moments. Expected: 2, obtained: 3"},
      {types::EXPONENTIAL,
       "EXPONENTIAL': Obtained wrong number of parameters. Expected: 2, obtained: 3",
       "EXPONENTIAL': Wrong number of statistical moments. Expected: 2, obtained: 3"},
      {types::GUMBEL, "GUMBEL': Obtained wrong number of parameters. Expected: 2, obtained: 3",
       "GUMBEL': Wrong number of statistical moments. Expected: 2, obtained: 3"},
      {types::BETA, "BETA': Obtained wrong number of parameters. Expected: 4, obtained: 3",
       "BETA': Wrong number of statistical moments. Expected: 4, obtained: 3"},
  };
  for (const Case& c : cases) {
    const std::string text =
        std::string(c.parameters).substr(0, std::string(c.parameters).find(':'));
    EXPECT_EQ(RefusalOfParameters(c.type, {1.0, 2.0, 3.0}),
              std::string("RV 'RV' of type '") + c.parameters);
    EXPECT_EQ(RefusalOfStats(c.type, {1.0, 2.0, 3.0}),
              std::string("RV 'RV' of type '") + c.moments);
    const auto stats = [&](double mean, double sd) {
      return Refusal([&] {
        const auto rv = Make(c.type);
        VectorXd moments = rv->GetStats();
        moments.head(2) << mean, sd;
        rv->SetStats(moments);
      });
    };
    const std::string start = "RV 'RV' of type '" + text;
    EXPECT_EQ(stats(1.0, 0.0), start + ": Standard deviation must be strictly positive.");
    EXPECT_EQ(stats(1.0, -1.0), start + ": Standard deviation must be strictly positive.");
    EXPECT_EQ(stats(1.0, 9e-7), start + ": Coefficient of variation must be larger than 1e-6.");
  }
  const std::string lognormal = "RV 'RV' of type 'LOGNORMAL': ";
  EXPECT_EQ(RefusalOfStats(types::LOGNORMAL, {0.0, 1.0}),
            lognormal + "Mean value must be strictly positive.");
  EXPECT_EQ(RefusalOfStats(types::LOGNORMAL, {1.0, 2e20}),
            lognormal + "Coefficient of variation must be smaller than 1e20.");
  EXPECT_EQ(Refusal([] { Make(types::NORMAL)->Fit(Eigen::MatrixXd::Ones(3, 1)); }),
            "RV 'RV' of type '4' can not be fitted by data. ");
}

TEST(RandomVariable, NumbersThatAreNotFiniteAreRefused) {
  for (const TypeFacts& facts : kTypes) {
    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
      const auto rv = Make(facts.id);
      const auto before = rv->Clone();
      for (Eigen::Index i = 0; i < rv->GetParameters().size(); ++i) {
        VectorXd parameters = rv->GetParameters();
        parameters(i) = bad;
        EXPECT_NE(Refusal([&] { rv->SetParameters(parameters); }), "<no exception>") << facts.id;
      }
      for (Eigen::Index i = 0; i < rv->GetStats().size(); ++i) {
        VectorXd moments = rv->GetStats();
        moments(i) = bad;
        EXPECT_NE(Refusal([&] { rv->SetStats(moments); }), "<no exception>") << facts.id;
      }
      EXPECT_EQ(*rv, *before);
    }
  }
}

TEST(RandomVariable, ParametersOutsideTheirDomainAreMoved) {
  struct Case {
    int type;
    std::vector<double> given, held;
  };
  const double eps = std::numeric_limits<double>::epsilon();
  const Case cases[] = {
      {types::NORMAL, {5.0, 0.0}, {5.0, 5e-6}},
      {types::NORMAL, {0.0, -1.0}, {0.0, eps}},
      {types::UNIFORM, {2.0, 1.0}, {1.0, 2.0}},
      {types::LOGNORMAL, {0.0, 20.0}, {0.0, 10.0}},
      {types::LOGNORMAL, {-1.0, 9.0}, {-1.0, 9.0}},
      {types::EXPONENTIAL, {-1.0, 0.0}, {eps, 0.0}},
      {types::GUMBEL,
       {1.0, 0.0},
       {1.0 - 0.57721566490153287 * 1e-6 * std::sqrt(6.0) / M_PI, 1e-6 * std::sqrt(6.0) / M_PI}},
      {types::BETA, {0.0, 1.0, -1.0, 2.0}, {}},
  };
  for (const Case& c : cases) {
    const auto rv = Make(c.type);
    rv->SetParameters(
        Eigen::Map<const VectorXd>(c.given.data(), static_cast<Eigen::Index>(c.given.size())));
    for (std::size_t i = 0; i < c.held.size(); ++i)
      EXPECT_NEAR(rv->GetParameters()(static_cast<Eigen::Index>(i)), c.held[i],
                  1e-15 * std::abs(c.held[i]))
          << c.type << " " << i;
    EXPECT_TRUE(rv->GetParameters().allFinite() && rv->GetStats().allFinite());
    EXPECT_GE(rv->GetStats()(1), std::abs(rv->GetStats()(0)) * 1e-6 * (1.0 - 1e-9));
  }
}

}  // namespace
