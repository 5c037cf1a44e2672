#include "design/parameters/random_conversion.h"

#include "foundation/exception.h"
#include "stochastics/rv_factory.h"
#include "stochastics/rv_set.h"
#include "support/testing.h"

using namespace corvath::algorithm;
using namespace corvath::algorithm::datatypes;
namespace RandomVariable = corvath::enums::RandomVariable;
using Entry = CDesignEntry;
using Names = std::vector<std::wstring>;

namespace {

constexpr double kNone = -1e99;  // no reference value

RandomProperties Scatter(RandomVariable::eType type = RandomVariable::NORMAL) {
  RandomProperties properties;
  properties.SetType(type);
  properties.SetKind(1);
  return properties;
}

Parameter Stochastic(const std::wstring& name, const RandomProperties& properties,
                     double reference = kNone) {
  Parameter parameter(name);
  parameter.SetRandomProperties(properties);
  if (reference != kNone) parameter.SetReferenceValue(Entry(reference), false);
  return parameter;
}

Parameter Mixed(const std::wstring& name, const RandomProperties& properties,
                double reference = kNone) {
  Parameter parameter = Stochastic(name, properties, reference);
  parameter.SetDeterministicProperty(DeterministicProperties::Continuous(0.0, 100.0));
  return parameter;
}

RandomProperties Normal(double mean, double sd) {
  RandomProperties properties = Scatter();
  properties.SetMoments({mean, sd});
  return properties;
}

/// Parameters in an order that differs from that of the set (mixed first) and from that of names.
ParameterManager BothOrders() {
  ParameterManager manager;
  manager.AddParameter(Stochastic(L"s2", Normal(1.0, 0.1)));
  manager.AddParameter(Mixed(L"m2", Normal(-7.0, 0.2), 2.0));
  manager.AddParameter(Stochastic(L"s1", Normal(3.0, 0.3)));
  Parameter constant = Stochastic(L"constant", Normal(9.0, 0.9));
  constant.SetConst(true);
  manager.AddParameter(constant);
  manager.AddParameter(Mixed(L"m1", Normal(-8.0, 0.4), 4.0));
  Parameter plain(L"plain");
  plain.SetDeterministicProperty(DeterministicProperties::Continuous(0.0, 1.0));
  manager.AddParameter(plain);
  return manager;
}

Design DesignOf(EntrySequence parameters) {
  return Design(std::move(parameters), DesignId(1));
}

/// Expects mean and standard deviation.
void ExpectMoments(const RV& variable, double mean, double deviation) {
  EXPECT_DOUBLE_EQ(variable.GetStat(L"Mean value"), mean);
  EXPECT_DOUBLE_EQ(variable.GetStat(L"Standard deviation"), deviation);
}

}  // namespace

TEST(ParameterToRV, TakesCoefficientThenParametersThenMoments) {
  const auto expect = [](const Parameter& parameter, double mean, double deviation) {
    const auto variable = ParameterToRV(parameter);
    EXPECT_EQ(variable->GetName(), L"x");
    ExpectMoments(*variable, mean, deviation);
  };
  RandomProperties properties = Normal(10.0, 3.0);
  properties.SetParams({1.0, 2.0});
  expect(Stochastic(L"x", properties), 1.0, 2.0);
  properties.SetCov(0.1);
  for (const double mean : {10.0, -10.0}) {
    properties.SetMoments({mean, 3.0});
    expect(Stochastic(L"x", properties), mean, 1.0);
  }
  // A mixed parameter scatters about its reference value.
  expect(Mixed(L"x", Normal(10.0, 3.0), 4.0), 4.0, 3.0);
  expect(Stochastic(L"x", Normal(10.0, 3.0), 4.0), 10.0, 3.0);
  RandomProperties only_cov = Scatter();
  only_cov.SetCov(0.5);
  expect(Stochastic(L"x", only_cov, 8.0), 8.0, 4.0);

  RandomProperties uniform = Scatter(RandomVariable::UNIFORM);
  uniform.SetMoments({5.0, 1.0});
  const auto by_moments = ParameterToRV(Stochastic(L"x", uniform));
  EXPECT_NEAR(by_moments->GetLowerBound(), 5.0 - std::sqrt(3.0), 1e-14);  // mean - sqrt(12) sd / 2
  EXPECT_EQ(*ParameterToRV(Stochastic(L"x", Scatter(RandomVariable::GUMBEL))),
            *RVFactory::GetInstance().Create(RandomVariable::GUMBEL));
}

TEST(ParameterToRV, NamesTheParameterThatFails) {
  const std::string text =
      "An error occured while transforming the parameter \"x\" to the appropriate rv-type.";
  const std::string prefix =
      "An error occured during transformation from a design point to a rvset: ";
  const auto rvset = RVSetFactory::GetInstance().Create(RVSet::kIndependent);
  RandomProperties short_list = Scatter();
  short_list.SetMoments({1.0});
  for (const Parameter& bad : {Stochastic(L"x", Scatter(static_cast<RandomVariable::eType>(8))),
                               Stochastic(L"x", Normal(1.0, -1.0)), Stochastic(L"x", short_list)}) {
    EXPECT_MESSAGE(text, ParameterToRV(bad));
    EXPECT_MESSAGE(prefix + text, AddParameterToRVSet(*rvset, bad));
  }
  EXPECT_EQ(rvset->GetNumRVs(), 0u);
  AddParameterToRVSet(*rvset, Stochastic(L"y", Normal(1.0, 1.0)));
  EXPECT_EQ(GetVariableNames(*rvset), (Names{L"y"}));
}

TEST(ParameterManagerToRVSet, PutsMixedBeforeStochasticParameters) {
  ParameterManager manager = BothOrders();
  const auto independent = ParameterManagerToRVSet(manager, Design());
  EXPECT_EQ(independent->GetKind(), RVSet::kIndependent);
  EXPECT_EQ(GetVariableNames(*independent), (Names{L"m2", L"m1", L"s2", L"s1"}));
  const double means[] = {2.0, 4.0, 1.0, 3.0};
  for (std::size_t i = 0; i < 4; ++i)
    ExpectMoments(*independent->GetRVs()[i], means[i], 0.1 * means[i]);

  manager.GetCoherences().Set(L"s1", L"m2", 0.5);
  manager.GetCoherences().Set(L"plain", L"m2", 0.9);
  const auto correlated = ParameterManagerToRVSet(manager, Design());
  EXPECT_EQ(correlated->GetKind(), RVSet::kNataf);
  Eigen::Matrix4d expected = Eigen::Matrix4d::Identity();
  expected(0, 3) = expected(3, 0) = 0.5;
  EXPECT_EQ(correlated->GetCorrelationMatrix(), expected);
  EXPECT_MESSAGE("Build correlation matrix impossible with not unique names",
                 BuildCorrelationMatrix(manager, {L"a", L"b", L"a"}));

  ParameterManager nobody;
  nobody.GetCoherences().Set(L"a", L"b", 0.5);
  EXPECT_EQ(ParameterManagerToRVSet(nobody, Design())->GetNumRVs(), 0u);
}

TEST(ParameterManagerToRVSet, FollowsTheDesignAndTakesItsValuesAsMeans) {
  ParameterManager manager = BothOrders();
  RandomProperties with_cov = Normal(1.0, 0.1);
  with_cov.SetCov(0.25);
  manager.ReplaceParameter(Stochastic(L"s2", with_cov));
  manager.GetCoherences().Set(L"m1", L"s1", -0.25);
  const auto rvset = ParameterManagerToRVSet(
      manager, DesignOf({{L"plain", Entry(0.5)},
                         {L"s1", Entry(30.0)},
                         {L"m1", Entry()},  // not initialised: as if not mentioned
                         {L"s2#$#inner", Entry(-12.0)},
                         {L"s1", Entry(33.0)}}));
  EXPECT_EQ(GetVariableNames(*rvset), (Names{L"s1", L"s2", L"m1", L"m2"}));
  ExpectMoments(*rvset->GetRVs()[0], 33.0, 0.3);
  ExpectMoments(*rvset->GetRVs()[1], -12.0, 3.0);
  ExpectMoments(*rvset->GetRVs()[2], 4.0, 0.4);
  EXPECT_EQ(rvset->GetCorrelationMatrix()(0, 2), -0.25);

  RandomProperties positive = Scatter(RandomVariable::LOGNORMAL);
  positive.SetMoments({1.0, 0.5});
  manager.ReplaceParameter(Stochastic(L"s1", positive));
  EXPECT_NE(support::MessageOf([&] {
              ParameterManagerToRVSet(manager, DesignOf({{L"s1", Entry(-1.0)}}));
            }).find("Mean value must be strictly positive."),
            std::string::npos);
}

TEST(RandomConversion, ValuesGoToTheirOwnNamesInEveryOrder) {
  const ParameterManager manager = BothOrders();
  const auto rvset = ParameterManagerToRVSet(manager, Design());
  const auto design = [](std::initializer_list<std::pair<const wchar_t*, double>> values) {
    EntrySequence parameters;
    for (const auto& [name, value] : values) parameters.Append(name, Entry(value));
    return DesignOf(std::move(parameters));
  };
  const std::vector<Design> designs{
      design({{L"s1", 10}, {L"s2", 20}, {L"plain", 30}, {L"m1", 40}, {L"m2", 50}}),
      design({{L"m2", 51}, {L"m1", 41}, {L"s2", 21}, {L"s1", 11}})};
  const Eigen::MatrixXd in_set_order{{50, 40, 20, 10}, {51, 41, 21, 11}};  // m2, m1, s2, s1
  EXPECT_EQ(DesignsToMatrix(designs, *rvset), in_set_order);

  // A model's columns have an order of their own.
  const Names columns{L"s1", L"m2", L"s2", L"m1"};
  const InputColumns inputs = InputColumns::Of(manager, columns, InputSide::kRandom);
  const Eigen::MatrixXd in_model_order{{10, 50, 20, 40}, {11, 51, 21, 41}};
  EXPECT_EQ(inputs.ToMatrix(designs), in_model_order);

  const auto from_set = MatrixToDesigns(in_set_order, *rvset);
  const auto from_model = inputs.ToSequences(in_model_order);
  for (std::size_t row = 0; row < 2; ++row)
    for (const std::wstring& name : columns) {
      const Entry& value = designs[row].GetParameters().Get(name);
      EXPECT_EQ(from_set[row].Get(name), value);
      EXPECT_EQ(from_model[row].Get(name), value);
    }
  EXPECT_MESSAGE("Exactly as many random properties as design point elements needed!",
                 MatrixToDesigns(Eigen::MatrixXd::Zero(1, 3), *rvset));
}
