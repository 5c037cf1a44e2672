#include "design/designs/design_conversion.h"

#include "support/message_of.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using namespace corvath::algorithm::datatypes;
using Entry = CDesignEntry;
using support::MessageOf;
using Kind = corvath::enums::DeterministicProperties;
using Type = corvath::enums::DesignEntry;
using Names = std::vector<std::wstring>;

namespace {

std::vector<Entry> Texts() {
  return {Entry(L"a"), Entry(L"b"), Entry(L"c")};
}

/// One property of each kind, not in the order of their names.
NamedProperties AllKinds() {
  return {{L"nominal", DeterministicProperties::Discrete(Kind::NOMINAL_BY_INDEX, Texts())},
          {L"value", DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE,
                                                       {Entry(1.0), Entry(2.0), Entry(4.0)})},
          {L"free", DeterministicProperties::Continuous(0.0, 1.0)},
          {L"index", DeterministicProperties::Discrete(Kind::ORDINAL_BY_INDEX, Texts())}};
}

EntrySequence Sequence(double free, double value, const wchar_t* index, const wchar_t* nominal) {
  return {{L"free", Entry(free)},
          {L"value", Entry(value)},
          {L"index", Entry(index)},
          {L"nominal", Entry(nominal)}};
}

Design DesignOf(EntrySequence parameters) {
  return Design(std::move(parameters), DesignId(1));
}

std::string ToMatrixRefusal(const DeterministicProperties& property, const Entry& value) {
  return MessageOf([&] { DesignsToMatrix({DesignOf({{L"x", value}})}, {{L"x", property}}); });
}

}  // namespace

TEST(DesignConversion, TurnsValuesIntoNumbersByName) {
  EntrySequence shuffled{
      {L"index", Entry(L"c")},   {L"unused", Entry(7)},
      {L"nominal", Entry(L"a")}, {L"free", Entry(1)},     // an INTEGER is a number as well
      {L"value", Entry(2.9)},    {L"free", Entry(8.0)}};  // the first of a name counts
  const Eigen::MatrixXd matrix =
      DesignsToMatrix({DesignOf(Sequence(0.25, 4.0, L"a", L"b")), DesignOf(shuffled),
                       DesignOf(Sequence(std::nan(""), 100.0, L"b", L"c"))},
                      AllKinds());
  Eigen::MatrixXd expected(3, 4);  // nominal, value, free, index
  expected << 1, 4, 0.25, 0,       //
      0, 2, 1, 2,                  //
      2, 4, std::nan(""), 1;
  ASSERT_EQ(matrix.rows(), 3);
  ASSERT_EQ(matrix.cols(), 4);
  for (Eigen::Index i = 0; i < 12; ++i) {
    if (i == 8)
      EXPECT_TRUE(std::isnan(matrix(2, 2)));
    else
      EXPECT_EQ(matrix(i % 3, i / 3), expected(i % 3, i / 3)) << i;
  }
  EXPECT_EQ(DesignsToMatrix({}, AllKinds()).cols(), 4);
}

TEST(DesignConversion, TurnsNumbersIntoValuesOfTheDomains) {
  Eigen::MatrixXd matrix(2, 4);
  matrix << 1.4, 3.0, -0.5, 1.5,  //
      17.0, -1.0, 0.125, -3.0;
  const std::vector<EntrySequence> sequences = MatrixToDesigns(matrix, AllKinds());
  const auto sequence = [](const wchar_t* nominal, double value, double free,
                           const wchar_t* index) {
    return EntrySequence{{L"nominal", Entry(nominal)},
                         {L"value", Entry(value)},
                         {L"free", Entry(free)},
                         {L"index", Entry(index)}};
  };
  ASSERT_EQ(sequences.size(), 2u);
  EXPECT_EQ(sequences[0], sequence(L"b", 4.0, -0.5, L"c"));
  EXPECT_EQ(sequences[1], sequence(L"c", 1.0, 0.125, L"a"));
}

TEST(DesignConversion, SaysWhichValueDoesNotFit) {
  const DeterministicProperties free;
  const auto by_index = DeterministicProperties::Discrete(Kind::ORDINAL_BY_INDEX, Texts());
  EXPECT_EQ(MessageOf([&] {
              DesignsToMatrix({DesignOf({})}, {{L"Höhe", free}});
            }),
            "Parameter \"H\xc3\xb6he\" does not exist in current design.");
  EXPECT_EQ(ToMatrixRefusal(by_index, Entry(L"steel")),
            "No matching discrete state found steel for parameter x");
  EXPECT_THROW(DesignsToMatrix({DesignOf({{L"x", Entry(1)}})}, {{L"x", by_index}}),
               std::range_error);
  EXPECT_EQ(ToMatrixRefusal(DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE, Texts()),
                            Entry(L"a")),
            "Can not handle string to be ordinal discrete by value");
  auto nothing = DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE, {Entry()});
  EXPECT_EQ(ToMatrixRefusal(nothing, Entry()), "Discrete states have unsupported domain type.");
  const corvath::math::Variant<double> vector(corvath::math::Variant<double>::Vector(2));
  EXPECT_EQ(ToMatrixRefusal(free, Entry(vector)),
            "Designpoint conversion failed: variant isn't scalar.");
  DeterministicProperties unknown;
  unknown.SetKind(static_cast<Kind::eKind>(9));
  EXPECT_EQ(ToMatrixRefusal(unknown, Entry(1.0)), "Unknown deterministic kind");
  EXPECT_EQ(MessageOf([&] {
              MatrixToDesigns(Eigen::MatrixXd::Zero(1, 1), {{L"x", unknown}});
            }),
            "Unknown deterministic kind");
  EXPECT_EQ(MessageOf([] { MatrixToDesigns(Eigen::MatrixXd::Zero(2, 3), AllKinds()); }),
            "Exactly as many deterministic properties as design point elements needed!");
}

TEST(InputColumns, FollowsTheNamesAskedForOnEitherSide) {
  ParameterManager manager;
  for (const auto& [name, property] : AllKinds()) {
    Parameter parameter(name);
    parameter.SetDeterministicProperty(property);
    if (name == L"value" || name == L"free") {
      RandomProperties scatter;
      scatter.SetKind(1);
      parameter.SetRandomProperties(scatter);
    }
    if (name == L"free")
      parameter.SetDeterministicProperty(L"fine", DeterministicProperties::Continuous(0.0, 0.1));
    manager.AddParameter(parameter);
  }
  EntrySequence parameters = Sequence(0.5, 2.9, L"b", L"c");
  parameters.Append(L"free#$#fine", Entry(0.0625));
  const std::vector<Design> designs{DesignOf(parameters)};

  const Names names{L"index", L"free#$#fine", L"value", L"free"};
  const InputColumns deterministic = InputColumns::Of(manager, names, InputSide::kDeterministic);
  EXPECT_EQ(deterministic.GetNames(), names);
  EXPECT_EQ(deterministic.ToMatrix(designs), (Eigen::RowVector4d(1.0, 0.0625, 2.0, 0.5)));
  EXPECT_EQ(deterministic.ToMatrix(std::vector<const Design*>(2, &designs[0])).row(1),
            (Eigen::RowVector4d(1.0, 0.0625, 2.0, 0.5)));
  const auto back = deterministic.ToSequences(Eigen::RowVector4d(2.0, 0.5, 3.5, 0.25));
  EXPECT_EQ(back[0].Get(L"index"), Entry(L"c"));
  EXPECT_EQ(back[0].Get(L"value"), Entry(4.0));

  // On the random side a value keeps its number.
  const InputColumns random = InputColumns::Of(manager, {L"value", L"free"}, InputSide::kRandom);
  EXPECT_EQ(random.ToMatrix(designs), (Eigen::RowVector2d(2.9, 0.5)));

  EXPECT_EQ(MessageOf([&] { InputColumns::Of(manager, {L"index"}, InputSide::kRandom); }),
            "The parameter \"index\" does not scatter.");
  EXPECT_EQ(MessageOf([&] { InputColumns::Of(manager, {L"other"}, InputSide::kDeterministic); }),
            "Cannot return non existing parameter \"other\"");
}
