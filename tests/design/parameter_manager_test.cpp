#include "design/parameters/parameter_manager.h"

#include "support/message_of.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using namespace corvath::algorithm::datatypes;
using Names = std::vector<std::wstring>;

namespace {

Parameter Ranged(const std::wstring& name, double upper = 1.0) {
  Parameter parameter(name);
  parameter.SetDeterministicProperty(DeterministicProperties::Continuous(0.0, upper));
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

}  // namespace

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
  EXPECT_EQ(support::MessageOf([&] { manager.AddParameter(Parameter(L"a")); }),
            "Cannot add the parameter \"a\" to the parametermanager because a parameter with the "
            "same name already exists. Parameter name MUST be unique.");
  EXPECT_EQ(NamesOf(manager.GetAllParameters()), (Names{L"c", L"a", L"b"}));

  CDesignEntry lower;
  CDesignEntry upper;
  manager.ReplaceParameter(Ranged(L"a", 7.0));
  manager.GetBounds(L"a", lower, upper);
  EXPECT_EQ(upper, CDesignEntry(7.0));
  EXPECT_EQ(NamesOf(manager.GetAllParameters()), (Names{L"c", L"a", L"b"}));
  manager.SetKind(L"a", corvath::enums::DeterministicProperties::ORDINAL_BY_VALUE);
  EXPECT_EQ(manager.GetParameter(L"a").GetDeterministicProperty(0).GetKind(),
            corvath::enums::DeterministicProperties::ORDINAL_BY_VALUE);

  EXPECT_EQ(support::MessageOf([&] { manager.GetParameter(L"z"); }),
            "Cannot return non existing parameter \"z\"");
  EXPECT_EQ(support::MessageOf([&] { manager.GetBounds(L"z", lower, upper); }),
            "Cannot set boundaries of the non existing parameter \"z\"");
  EXPECT_EQ(support::MessageOf([&] {
              manager.SetKind(L"z", corvath::enums::DeterministicProperties::CONTINUOUS);
            }),
            "Cannot set the kind of the non existing parameter \"z\"");
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
  parameter.SetDeterministicProperty(L"q", DeterministicProperties::Continuous(2.0, 3.0));
  manager.AddParameter(parameter);
  const auto properties = manager.GetDeterministicProperties();
  ASSERT_EQ(properties.size(), 2u);
  EXPECT_EQ(properties.at(L"p").GetUpperBound(), CDesignEntry(1.0));
  EXPECT_EQ(properties.at(L"p#$#q").GetUpperBound(), CDesignEntry(3.0));

  manager.AddParameter(Ranged(L"p#$#q"));
  EXPECT_EQ(support::MessageOf([&] { manager.GetDeterministicProperties(); }),
            "Parametermanager: Something went wrong building up the deterministic property "
            "container; guess key problems occured.");
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
