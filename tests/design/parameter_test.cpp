#include "design/parameters/parameter.h"

#include "design/parameters/parameter_manager.h"
#include "design/random_uuid.h"
#include "foundation/exception.h"
#include "support/testing.h"

#include <boost/uuid/entropy_error.hpp>

#include <cstring>

using namespace corvath::algorithm::datatypes;
using support::ExpectRefusals, support::MessageOf;
using Entry = CDesignEntry;
using Kind = corvath::enums::DeterministicProperties;
using Type = corvath::enums::DesignEntry;
constexpr auto Continuous = &DeterministicProperties::Continuous;
constexpr auto Discrete = &DeterministicProperties::Discrete;

namespace {

template <class T>
std::vector<CDesignEntry> Entries(std::initializer_list<T> values) {
  std::vector<CDesignEntry> result;
  for (const T& value : values) result.emplace_back(value);
  return result;
}
constexpr auto Texts = &Entries<const wchar_t*>;
constexpr auto Reals = &Entries<double>;

RandomProperties Scatter() {
  RandomProperties properties;
  properties.SetKind(1);
  properties.SetMoments({10.0, 2.0});
  return properties;
}

Parameter Optimization() {
  Parameter parameter(L"p");
  parameter.SetDeterministicProperty(Continuous(0.0, 9.0));
  parameter.SetReferenceValue(Entry(4.0), false);
  return parameter;
}

TEST(RandomUuid, SetsVersionAndVariantOverTheSource) {
  const auto uuid =
      NewRandomUuid([](void* data, std::size_t size) { std::memset(data, 0xff, size); });
  for (std::size_t i = 0; i < 16; ++i)
    EXPECT_EQ(uuid.data[i], i == 6 ? 0x4f : i == 8 ? 0xbf : 0xff) << i;
  const auto zero = NewRandomUuid([](void* data, std::size_t size) { std::memset(data, 0, size); });
  EXPECT_EQ(zero.data[6], 0x40);
  EXPECT_EQ(zero.data[8], 0x80);
  EXPECT_NE(NewRandomUuid(), NewRandomUuid());
  EXPECT_THROW(
      NewRandomUuid([](void*, std::size_t) { throw boost::uuids::entropy_error(5, "source"); }),
      boost::uuids::entropy_error);
}

TEST(RandomProperties, ComparesNumbersUpToRounding) {
  const RandomProperties base = Scatter();
  const auto differs = [&base](auto change) {
    RandomProperties other = base;
    change(other);
    return base != other;
  };
  const double nan = std::nan("");
  EXPECT_FALSE(differs([](auto& p) { p.SetValidated(false); }));
  EXPECT_FALSE(differs([](auto& p) { p.SetMoments({10.0 * (1.0 + 1e-13), 2.0}); }));
  EXPECT_TRUE(differs([](auto& p) { p.SetMoments({10.0 * (1.0 + 1e-12), 2.0}); }));
  EXPECT_TRUE(differs([nan](auto& p) { p.SetMoments({nan, 2.0}); }));

  RandomProperties with_cov = base;
  with_cov.SetCov(0.2);
  with_cov.SetMoments({nan, 2.0});
  RandomProperties other = with_cov;
  other.SetMoments({nan, 3.0});  // the standard deviation follows from the coefficient
  EXPECT_EQ(with_cov, other);
  other.SetCov(0.3);
  EXPECT_NE(with_cov, other);
  EXPECT_MESSAGE("The random property doesn't have a Coefficient of variation (COV) defined.",
                 base.GetCov());
  EXPECT_EQ(GetMomentName(2), L"Standard deviation");
  EXPECT_EQ(GetMomentName(5), L"5-th moment");
}

TEST(DeterministicProperties, ChecksBoundsByKind) {
  const char* const equal = "Lower and Upper bounds may not have the same value.";
  const char* const no_float = "Boundaries of continuous parameters may only be float type values.";
  const char* const no_index = "Boundaries of discrete parameters may only be integer index types.";
  const char* const outside =
      "One or both boundaries are outside the accepted discrete state map index range.";
  const DeterministicProperties continuous;
  const auto by_value = Discrete(Kind::ORDINAL_BY_VALUE, Reals({1, 2}));
  const auto ordinal = Discrete(Kind::ORDINAL_BY_INDEX, Texts({L"a", L"b", L"c"}));
  const auto nominal = Discrete(Kind::NOMINAL_BY_INDEX, Texts({L"a", L"b", L"c"}));
  DeterministicProperties unknown;
  unknown.SetKind(static_cast<Kind::eKind>(4));
  const std::tuple<const DeterministicProperties&, Entry, Entry, const char*> cases[] = {
      {continuous, Entry(1.0), Entry(2.0), ""},
      {continuous, Entry(1.0), Entry(1.0), equal},
      {continuous, Entry(1.0), Entry(1.0 + 2e-14), equal},
      {continuous, Entry(1.0), Entry(1.0 + 3e-14), ""},
      {continuous, Entry(1.0), Entry(2), no_float},
      {by_value, Entry(L"anything"), Entry(7), ""},
      {ordinal, Entry(1), Entry(1), ""},
      {ordinal, Entry(0.0), Entry(2), no_index},
      {ordinal, Entry(-1), Entry(2), outside},
      {nominal, Entry(0), Entry(3), outside},
      {unknown, Entry(1.0), Entry(2.0), "Unknown domain type"},
  };
  for (const auto& [property, lower, upper, text] : cases)
    EXPECT_EQ(MessageOf([&p = property, &l = lower, &u = upper] { p.CheckBounds(l, u, false); }),
              text);
  EXPECT_EQ(MessageOf([&] { continuous.CheckBounds(Entry(1.0), Entry(1.0), true); }), "");
}

TEST(DeterministicProperties, SortsStatesAndSpansThem) {
  const auto by_value = Discrete(Kind::ORDINAL_BY_VALUE, Reals({3, 1, 3, 2}));
  EXPECT_EQ(by_value.GetDiscreteStates(), Reals({1, 2, 3}));
  EXPECT_EQ(by_value.GetLowerBound(), Entry(1.0));
  EXPECT_EQ(by_value.GetUpperBound(), Entry(3.0));

  auto by_index = Discrete(Kind::ORDINAL_BY_INDEX, Texts({L"c", L"a", L"b"}));
  EXPECT_EQ(by_index.GetDiscreteStates(), Texts({L"a", L"b", L"c"}));
  EXPECT_EQ(by_index.GetLowerBound().GetType(), Type::INTEGER);
  EXPECT_EQ(by_index.GetLowerBound(), Entry(0));
  EXPECT_EQ(by_index.GetUpperBound(), Entry(2));

  DeterministicProperties continuous;
  ExpectRefusals<std::invalid_argument>(
      {{[&] { by_index.SetDiscreteStates({}, false); },
        "A discrete deterministic property requires at least one discrete state but you passed "
        "an empty discrete states vector."},
       {[&] { by_index.SetDiscreteStates(Reals({1}), false); },
        "The data type of each discrete state of a deterministic property must match the data "
        "type of the parameter"},
       {[&] { continuous.SetDiscreteStates(Reals({1}), false); },
        "Cannot set discrete states for a continuous deterministic property"}});
  EXPECT_EQ(by_index.GetDiscreteStates().size(), 3u);

  by_index.SetDiscreteStates(Reals({1.5, 0.5}), true);
  EXPECT_EQ(by_index.GetDiscreteStates(), Texts({L"0.5", L"1.5"}));
  EXPECT_EQ(by_index.GetUpperBound(), Entry(1));
}

TEST(DeterministicProperties, BringsBoundsAndStatesInLineWithKindAndType) {
  DeterministicProperties property;
  property.SetBounds(Entry(5.7), Entry(2.1));
  property.SetDataType(Type::INTEGER);
  EXPECT_EQ(property.GetKind(), Kind::ORDINAL_BY_VALUE);
  EXPECT_EQ(property.GetLowerBound(), Entry(2));
  EXPECT_EQ(property.GetUpperBound(), Entry(5));
  EXPECT_EQ(property.GetLowerBound().GetType(), Type::INTEGER);
  property.SetKind(Kind::CONTINUOUS);
  EXPECT_EQ(property.GetDataType(), Type::REAL);
  EXPECT_EQ(property.GetUpperBound().GetType(), Type::REAL);

  auto states = Discrete(Kind::NOMINAL_BY_INDEX, Reals({2, 10, 10.5}));
  states.SetKind(Kind::ORDINAL_BY_VALUE);
  EXPECT_EQ(states.GetLowerBound(), Entry(2.0));
  EXPECT_EQ(states.GetUpperBound(), Entry(10.5));
  states.SetKind(Kind::ORDINAL_BY_INDEX);
  EXPECT_EQ(states.GetUpperBound(), Entry(2));
  states.SetDataType(Type::INTEGER);  // 10 and 10.5 become one state
  EXPECT_EQ(states.GetDiscreteStates().size(), 2u);
  EXPECT_EQ(states.GetUpperBound(), Entry(1));
  states.SetDataType(Type::STRING);  // as texts, "10" stands before "2"
  EXPECT_EQ(states.GetDiscreteStates(), Texts({L"10", L"2"}));
  EXPECT_THROW(states.SetDataType(Type::VARIANT), std::invalid_argument);

  // A NaN or a mixture of types must not lead the sort astray.
  std::vector<CDesignEntry> odd;
  for (int i = 0; i < 100; ++i) {
    odd.emplace_back(i % 3 == 0 ? std::nan("") : 100.0 - i);
    odd.emplace_back(L"text");
    odd.emplace_back(i % 2 == 0);
  }
  property.SetKind(Kind::ORDINAL_BY_VALUE);
  property.SetDiscreteStates(odd, true);
  EXPECT_EQ(property.GetLowerBound(), Entry(0.0));
  EXPECT_TRUE(std::isnan(property.GetDiscreteStates().back().ToDouble()));
}

TEST(Parameter, KeepsItsReferenceValueInTheTypeOfItsSides) {
  Parameter stochastic(L"s"), optimization(L"o"), mixed(L"m");
  stochastic.SetRandomProperties(Scatter());
  optimization.SetDeterministicProperty(Discrete(Kind::ORDINAL_BY_INDEX, Texts({L"a", L"1"})));
  mixed.SetRandomProperties(Scatter());
  mixed.SetDeterministicProperty(Discrete(Kind::ORDINAL_BY_VALUE, {Entry(1)}));
  const std::string refused = "Cannot set reference value for ";
  // An INTEGER domain has no value that is REAL as well.
  const std::string no_value =
      refused + "mixed parameter \"m\". Data type needs to be INTEGER, got ";
  ExpectRefusals<corvath::utils::runtime_error>(
      {{[&] { stochastic.SetReferenceValue(Entry(1), false); },
        refused + "stochastic parameter \"s\". Data type needs to be REAL, got INTEGER"},
       {[&] { optimization.SetReferenceValue(Entry(true), false); },
        refused +
            "optimization parameter \"o\". Data type doesn't match. Awaited STRING, got BOOL"},
       {[&] { mixed.SetReferenceValue(Entry(1), false); }, no_value + "INTEGER"},
       {[&] { mixed.SetReferenceValue(Entry(1.0), false); }, no_value + "REAL"}});
  stochastic.SetReferenceValue(Entry(1), true);
  EXPECT_EQ(stochastic.GetReferenceValue(), Entry(1.0));
  EXPECT_EQ(stochastic.GetReferenceValue().GetType(), Type::REAL);
  optimization.SetReferenceValue(Entry(true), true);
  EXPECT_EQ(optimization.GetReferenceValue(), Entry(L"1"));
}

TEST(Parameter, ChangesTheKindOnlyWhereItCan) {
  Parameter parameter = Optimization();
  parameter.SetDeterministicProperty(L"q", Continuous(1.5, 2.5));
  auto first = Discrete(Kind::ORDINAL_BY_VALUE, {Entry(1), Entry(4)});
  parameter.SetDeterministicProperty(L"p", first);
  parameter.SetKind(Kind::ORDINAL_BY_INDEX);
  EXPECT_EQ(parameter.GetReferenceValue().GetType(), Type::INTEGER);
  EXPECT_EQ(parameter.GetReferenceValue(), Entry(4));
  EXPECT_EQ(parameter.GetDeterministicProperty(L"q").GetDataType(), Type::INTEGER);
  EXPECT_EQ(parameter.GetDeterministicProperty(L"q").GetUpperBound(), Entry(2));
  CDesignEntry lower, upper;
  parameter.GetBounds(lower, upper);
  EXPECT_EQ(upper, Entry(1));

  const std::string refused =
      "Cannot set the deterministic property \"kind\" for the non optimization parameter ";
  Parameter mixed = Optimization();
  mixed.SetRandomProperties(Scatter());
  const Parameter before = mixed;
  EXPECT_MESSAGE(refused + "\"p\"", mixed.SetKind(Kind::ORDINAL_BY_INDEX));
  EXPECT_EQ(mixed, before);
  mixed.SetKind(Kind::ORDINAL_BY_VALUE);
  EXPECT_MESSAGE(refused + "\"unnamed\"", Parameter().SetKind(Kind::CONTINUOUS));
}

TEST(Parameter, NamesTheMissingProperty) {
  const Parameter plain(L"p"), optimization = Optimization();
  ExpectRefusals<corvath::utils::runtime_error>(
      {{[&] { plain.GetDeterministicProperty(L"x"); },
        "the the requested deterministic property x for"},
       {[&] { optimization.GetDeterministicProperty(L"x"); },
        "Cannot find the determinsitic property \"x\" of the parameter \"p\""},
       {[&] { plain.GetDeterministicPropertyName(3); },
        "deterministic property at index 3 for the non"},
       {[&] { optimization.GetDeterministicProperty(1); },
        "of the parameter \"p\" is out of range: "}});
}

TEST(Parameter, ComparesAllButIdentity) {
  const Parameter base = Optimization();
  const Parameter twin = Optimization();  // another identity, hence another origin
  EXPECT_TRUE(base == twin);
  EXPECT_FALSE(base.IsEqual(twin, true));
  Parameter relative = twin;
  relative.SetOrigin(base.GetOrigin());
  EXPECT_TRUE(base.IsEqual(relative, true));

  const auto differs = [&base](auto change) {
    Parameter other = base;
    change(other);
    return base != other;
  };
  const MutableMember second = static_cast<MutableMember>(1);
  EXPECT_FALSE(differs([](auto& p) { p.SetMutable(kFirstMutableMember, false); }));
  EXPECT_FALSE(differs([second](auto& p) { p.SetMutable(second, true); }));
  // Reference values: 4 and nearly 4.
  EXPECT_FALSE(differs([](auto& p) { p.SetReferenceValue(Entry(4.0 * (1.0 + 1e-14)), false); }));
  EXPECT_TRUE(differs([](auto& p) { p.SetReferenceValue(Entry(4.0 * (1.0 + 1e-13)), false); }));

  const auto with_reference = [](const CDesignEntry& value) {
    Parameter parameter(L"free");  // without sides: any type
    parameter.SetReferenceValue(value, false);
    return parameter;
  };
  EXPECT_EQ(with_reference(Entry(2)), with_reference(Entry(2.0)));
  EXPECT_NE(with_reference(Entry(2)), with_reference(Entry(L"2")));
}

using Names = std::vector<std::wstring>;

Parameter Ranged(const std::wstring& name, double upper = 1.0) {
  Parameter parameter(name);
  parameter.SetDeterministicProperty(Continuous(0.0, upper));
  return parameter;
}

ParameterManager Abc() {
  ParameterManager manager;
  for (const wchar_t* name : {L"c", L"a", L"b"}) manager.AddParameter(Ranged(name));
  manager.GetCoherences().Set(L"c", L"b", 0.25);
  manager.GetCoherences().Set(L"a", L"b", 0.5);
  return manager;
}

template <class Parameters>
Names NamesOf(const Parameters& parameters) {
  Names names;
  for (const Parameter& parameter : parameters) names.push_back(parameter.GetName());
  return names;
}

TEST(CorrelationMatrix, HoldsEachPairOnceWhicheverWayRound) {
  const TriangularIndex ab(L"a", L"b");
  const TriangularIndex ba(L"b", L"a");
  EXPECT_EQ(ab, ba);
  EXPECT_TRUE(ab < ba && !(ba < ab));
  EXPECT_NE(ab, TriangularIndex(L"a", L"a"));

  CorrelationMatrix matrix;
  matrix.Set(L"b", L"a", 0.5);
  matrix.Set(L"a", L"b", 0.75);
  EXPECT_EQ(matrix.GetSize(), 1u);
  EXPECT_EQ(matrix.Get(L"b", L"a"), 0.75);
  EXPECT_EQ(matrix.Get(L"a", L"a"), 1.0);
  EXPECT_EQ(matrix.Get(L"a", L"z"), 0.0);
  EXPECT_THROW(matrix.Set(L"a", L"a", 1.0), std::invalid_argument);
}

TEST(ParameterManager, KeepsNamesUniqueAndTellsUnknownOnes) {
  ParameterManager manager = Abc();
  CDesignEntry lower, upper;
  manager.ReplaceParameter(Ranged(L"a", 7.0));
  manager.GetBounds(L"a", lower, upper);
  EXPECT_EQ(upper, Entry(7.0));
  EXPECT_EQ(NamesOf(manager.GetAllParameters()), (Names{L"c", L"a", L"b"}));
  manager.SetKind(L"a", Kind::ORDINAL_BY_VALUE);
  EXPECT_EQ(manager.GetParameter(L"a").GetDeterministicProperty(0).GetKind(),
            Kind::ORDINAL_BY_VALUE);

  ExpectRefusals<corvath::utils::runtime_error>(
      {{[&] { manager.AddParameter(Parameter(L"a")); },
        "Cannot add the parameter \"a\" to the parametermanager because a parameter with the "
        "same name already exists. Parameter name MUST be unique."},
       {[&] { manager.GetParameter(L"z"); }, "Cannot return non existing parameter \"z\""},
       {[&] { manager.GetBounds(L"z", lower, upper); },
        "Cannot set boundaries of the non existing parameter \"z\""},
       {[&] { manager.SetKind(L"z", Kind::CONTINUOUS); },
        "Cannot set the kind of the non existing parameter \"z\""}});
  EXPECT_EQ(manager.GetAllParameters().size(), 3u);
}

TEST(ParameterManager, ListsWithoutConstantAndDependentParameters) {
  ParameterManager manager;
  Parameter constant(L"constant");
  constant.SetConst(true);
  manager.AddParameter(constant);
  EXPECT_TRUE(manager.GetParameters().empty());

  Parameter dependent(L"dependent");
  dependent.SetDependencyExpression(L"free * 2");
  manager.AddParameter(dependent);
  manager.AddParameter(Parameter(L"free"));
  EXPECT_EQ(NamesOf(manager.GetParameters()), (Names{L"dependent", L"free"}));
  EXPECT_EQ(NamesOf(manager.GetParameters(true)), (Names{L"free"}));
}

TEST(ParameterManager, SplitsAndBuildsCompoundKeys) {
  using Pair = std::pair<std::wstring, std::wstring>;
  EXPECT_EQ(SplitKey(L"x#$#y#$#z"), Pair(L"x#$#y", L"z"));
  EXPECT_EQ(SplitKey(L"plain"), Pair(L"plain", L""));
  EXPECT_EQ(SplitKey(L"#$#"), Pair(L"", L""));
  EXPECT_EQ(SplitKey(L"a.b.c", L"."), Pair(L"a.b", L"c"));

  ParameterManager manager;
  Parameter parameter = Ranged(L"p");
  parameter.SetDeterministicProperty(L"q", Continuous(2.0, 3.0));
  manager.AddParameter(parameter);
  const auto properties = manager.GetDeterministicProperties();
  ASSERT_EQ(properties.size(), 2u);
  EXPECT_EQ(properties.at(L"p").GetUpperBound(), Entry(1.0));
  EXPECT_EQ(properties.at(L"p#$#q").GetUpperBound(), Entry(3.0));

  manager.AddParameter(Ranged(L"p#$#q"));
  EXPECT_MESSAGE(
      "Parametermanager: Something went wrong building up the deterministic property "
      "container; guess key problems occured.",
      manager.GetDeterministicProperties());
}

TEST(ParameterManager, TakesSubsetsInTheOrderOfTheKeys) {
  const ParameterManager subset = Abc().GetSubset(Names{L"b", L"c#$#q", L"nothing", L"c", L"b"});
  EXPECT_EQ(NamesOf(subset.GetAllParameters()), (Names{L"b", L"c"}));
  EXPECT_EQ(subset.GetCoherences().GetSize(), 1u);
  EXPECT_EQ(subset.GetCoherences().Get(L"b", L"c"), 0.25);
}

TEST(ParameterManager, ComparesOrderParametersAndCoherences) {
  const ParameterManager base = Abc();
  EXPECT_EQ(base, Abc());
  EXPECT_FALSE(base.IsEqual(Abc(), true));  // other origins
  EXPECT_TRUE(base.IsEqual(ParameterManager(base), true));
  ParameterManager reordered = base.GetSubset(Names{L"a", L"b", L"c"});
  EXPECT_NE(base, reordered);

  ParameterManager changed = base;
  changed.GetCoherences().Set(L"a", L"b", std::nan(""));
  EXPECT_NE(base, changed);
  EXPECT_NE(changed, ParameterManager(changed));
  EXPECT_EQ(changed, changed);
}

}  // namespace
