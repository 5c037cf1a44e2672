#include "design/designs/design_conversion.h"

#include "design/parameters/discrete_states.h"
#include "support/points.h"
#include "support/testing.h"

using namespace corvath::algorithm::datatypes;
using Entry = CDesignEntry;
using support::ExpectRefusals, support::MessageOf;
using Value = corvath::math::Variant<double>;
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

TEST(DesignConversion, TurnsValuesIntoNumbersByName) {
  EntrySequence shuffled{
      {L"index", Entry(L"c")},   {L"unused", Entry(7)},
      {L"nominal", Entry(L"a")}, {L"free", Entry(1)},     // an INTEGER is a number as well
      {L"value", Entry(2.9)},    {L"free", Entry(8.0)}};  // the first of a name counts
  const Eigen::MatrixXd matrix =
      DesignsToMatrix({DesignOf(Sequence(0.25, 4.0, L"a", L"b")), DesignOf(shuffled),
                       DesignOf(Sequence(std::nan(""), 100.0, L"b", L"c"))},
                      AllKinds());
  const Eigen::MatrixXd expected{
      {1, 4, 0.25, 0}, {0, 2, 1, 2}, {2, 4, std::nan(""), 1}};  // nominal, value, free, index
  EXPECT_EQ(support::Deviation(matrix, expected), 0.0);
  EXPECT_EQ(DesignsToMatrix({}, AllKinds()).cols(), 4);
}

TEST(DesignConversion, TurnsNumbersIntoValuesOfTheDomains) {
  const Eigen::MatrixXd matrix{{1.4, 3.0, -0.5, 1.5}, {17.0, -1.0, 0.125, -3.0}};
  const std::vector<EntrySequence> sequences = MatrixToDesigns(matrix, AllKinds());
  ASSERT_EQ(sequences.size(), 2u);
  const EntrySequence expected[] = {Sequence(-0.5, 4.0, L"c", L"b"),
                                    Sequence(0.125, 1.0, L"a", L"c")};
  for (std::size_t row = 0; row < 2; ++row)
    for (const wchar_t* name : {L"free", L"value", L"index", L"nominal"})
      EXPECT_EQ(sequences[row].Get(name), expected[row].Get(name)) << row;
}

TEST(DesignConversion, SaysWhichValueDoesNotFit) {
  const DeterministicProperties free;
  const auto by_index = DeterministicProperties::Discrete(Kind::ORDINAL_BY_INDEX, Texts());
  const auto by_value = DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE, Texts());
  const auto nothing = DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE, {Entry()});
  DeterministicProperties unknown;
  unknown.SetKind(static_cast<Kind::eKind>(9));
  const Entry vector{Value(Value::Vector(2, 1.0))};
  const std::tuple<const DeterministicProperties&, Entry, const char*> cases[] = {
      {by_index, Entry(L"steel"), "No matching discrete state found steel for parameter x"},
      {by_value, Entry(L"a"), "Can not handle string to be ordinal discrete by value"},
      {nothing, Entry(), "Discrete states have unsupported domain type."},
      {free, vector, "Designpoint conversion failed: variant isn't scalar."},
      {unknown, Entry(1.0), "Unknown deterministic kind"},
  };
  for (const auto& [property, value, text] : cases) {
    const NamedProperties properties{{L"x", property}};
    EXPECT_EQ(MessageOf([&, &value = value] {
                DesignsToMatrix({DesignOf({{L"x", value}})}, properties);
              }),
              text);
  }
  EXPECT_THROW(DesignsToMatrix({DesignOf({{L"x", Entry(1)}})}, {{L"x", by_index}}),
               std::range_error);
  const NamedProperties high{{L"Höhe", free}}, strange{{L"x", unknown}};
  ExpectRefusals<std::runtime_error>(
      {{[&] { DesignsToMatrix({DesignOf({})}, high); },
        "Parameter \"H\xc3\xb6he\" does not exist in current design."},
       {[&] { MatrixToDesigns(Eigen::MatrixXd::Zero(1, 1), strange); },
        "Unknown deterministic kind"},
       {[] { MatrixToDesigns(Eigen::MatrixXd::Zero(2, 3), AllKinds()); },
        "Exactly as many deterministic properties as design point elements needed!"}});
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

  EXPECT_MESSAGE("The parameter \"index\" does not scatter.",
                 InputColumns::Of(manager, {L"index"}, InputSide::kRandom));
  EXPECT_MESSAGE("Cannot return non existing parameter \"other\"",
                 InputColumns::Of(manager, {L"other"}, InputSide::kDeterministic));
}

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

template <class T>
std::vector<Entry> Entries(std::initializer_list<T> values) {
  std::vector<Entry> result;
  for (const T& value : values) result.emplace_back(value);
  return result;
}

TEST(DiscreteStates, RoundsHalfAwayFromZeroWithinTheIntegers) {
  const std::pair<double, std::int64_t> cases[] = {
      {1.5, 2},          {2.5, 3},
      {-0.5, -1},        {-1.4, -1},
      {0.0, 0},          {1e300, kMax},
      {-1e300, kMin},    {HUGE_VAL, kMax},
      {-HUGE_VAL, kMin}, {std::nan(""), kMin},
      {0x1p63, kMax},    {0x1p63 - 1024.0, kMax - 1023}};
  for (const auto& [value, expected] : cases) EXPECT_EQ(RoundToInteger(value), expected) << value;
}

TEST(DiscreteStates, FindsPositionsInTheOrderGiven) {
  const StatesByIndex texts(Entries({L"a", L"b", L"c"}));
  EXPECT_EQ(texts.Find(Entry(L"b")), 1u);
  EXPECT_FALSE(texts.Find(Entry(L"bb")));
  EXPECT_FALSE(texts.Find(Entry(1.0)));
  const std::pair<double, const wchar_t*> cells[] = {
      {1.4, L"b"}, {1.5, L"c"}, {-3.0, L"a"}, {17.0, L"c"}, {1e300, L"c"}, {std::nan(""), L"a"}};
  for (const auto& [cell, expected] : cells) EXPECT_EQ(texts.At(cell), Entry(expected)) << cell;

  const StatesByIndex unsorted(Entries({3.0, 1.0, 2.0}));
  EXPECT_EQ(unsorted.Find(Entry(1.0)), 1u);
  EXPECT_EQ(unsorted.At(0.0), Entry(3.0));

  const StatesByIndex sorted(Entries({1.0, 2.0, 3.0}));
  EXPECT_EQ(sorted.Find(Entry(std::nextafter(3.0, 4.0))), 2u);
  EXPECT_EQ(sorted.Find(Entry(std::nextafter(3.0, 2.0))), 2u);
  EXPECT_EQ(sorted.Find(Entry(3)), 2u);  // as numbers
  EXPECT_FALSE(sorted.Find(Entry(L"3")));
  EXPECT_FALSE(sorted.Find(Entry(4.0)));
  EXPECT_FALSE(StatesByIndex().Find(Entry(1.0)));
  EXPECT_MESSAGE("Can not handle empty list of discrete states", StatesByIndex().At(0.0));
}

}  // namespace
