#include "design/designs/input_columns.h"

#include "design/name_positions.h"
#include "foundation/exception.h"
#include "foundation/text.h"

#include <stdexcept>
#include <unordered_map>

namespace corvath::algorithm::datatypes {

using Kind = DeterministicProperties::Kind;
using Type = enums::DesignEntry;

namespace {

constexpr char kUnknownKind[] = "Unknown deterministic kind";

/// What a message shows of a value: the value, or its type if it has no short text.
std::string DescribeValue(const CDesignEntry& value) {
  try {
    return utils::ToUtf8(value.ToString());
  } catch (const std::logic_error&) {
    return utils::ToUtf8(Type::GetText(value.GetType()));
  }
}

/// The number of a state by value.
double StateNumber(const CDesignEntry& state) {
  switch (state.GetType()) {
    case Type::BOOL:
    case Type::INTEGER:
    case Type::REAL:
      return state.ToDouble();
    case Type::VARIANT:
      if (!state.IsScalar()) throw std::runtime_error("Discrete states are not scalar.");
      return state.ToDouble();
    default:
      throw std::runtime_error("Discrete states have unsupported domain type.");
  }
}

}  // namespace

InputColumns::Column::Column(std::wstring property_name, const DeterministicProperties& property)
    : name(std::move(property_name)), kind(property.GetKind()) {
  if (kind == Kind::ORDINAL_BY_VALUE)
    by_value = StatesByValue(property.GetDiscreteStates());
  else if (kind == Kind::ORDINAL_BY_INDEX || kind == Kind::NOMINAL_BY_INDEX)
    by_index = StatesByIndex(property.GetDiscreteStates());
}

double InputColumns::Column::ToNumber(const CDesignEntry& value) const {
  switch (kind) {
    case Kind::CONTINUOUS:
      return value.ToDouble();
    case Kind::ORDINAL_BY_VALUE:
      return StateNumber(by_value.Nearest(value));
    case Kind::ORDINAL_BY_INDEX:
    case Kind::NOMINAL_BY_INDEX:
      if (const auto position = by_index.Find(value)) return static_cast<double>(*position);
      throw std::range_error("No matching discrete state found " + DescribeValue(value) +
                             " for parameter " + utils::ToUtf8(name));
  }
  throw std::runtime_error(kUnknownKind);
}

CDesignEntry InputColumns::Column::ToEntry(double cell) const {
  switch (kind) {
    case Kind::CONTINUOUS:
      return CDesignEntry(cell);
    case Kind::ORDINAL_BY_VALUE:
      return by_value.Nearest(CDesignEntry(cell));
    case Kind::ORDINAL_BY_INDEX:
    case Kind::NOMINAL_BY_INDEX:
      return by_index.At(cell);
  }
  throw std::runtime_error(kUnknownKind);
}

InputColumns::InputColumns(const NamedProperties& properties) {
  columns_.reserve(properties.size());
  for (const auto& [name, property] : properties) columns_.emplace_back(name, property);
}

InputColumns InputColumns::Plain(const std::vector<std::wstring>& names) {
  InputColumns result;
  result.columns_.reserve(names.size());
  for (const std::wstring& name : names) result.columns_.emplace_back(name);
  return result;
}

InputColumns InputColumns::Of(const ParameterManager& manager,
                              const std::vector<std::wstring>& names, InputSide side) {
  std::unordered_map<std::wstring, const Parameter*> by_name;
  for (const Parameter& parameter : manager.GetAllParameters())
    by_name.emplace(parameter.GetName(), &parameter);

  InputColumns result;
  result.columns_.reserve(names.size());
  for (const std::wstring& name : names) {
    auto found = by_name.find(name);
    std::wstring property = name;
    if (found == by_name.end()) {
      const auto [parameter_name, property_name] = SplitKey(name);
      found = by_name.find(parameter_name);
      property = property_name;
    }
    if (found == by_name.end())
      throw utils::runtime_error(L"Cannot return non existing parameter \"" + name + L"\"");
    const Parameter& parameter = *found->second;
    if (side == InputSide::kDeterministic)
      result.columns_.emplace_back(name, parameter.GetDeterministicProperty(property));
    else if (parameter.HasRandom())
      result.columns_.emplace_back(name);
    else
      throw utils::runtime_error(L"The parameter \"" + name + L"\" does not scatter.");
  }
  return result;
}

std::vector<std::wstring> InputColumns::GetNames() const {
  std::vector<std::wstring> names;
  names.reserve(columns_.size());
  for (const Column& column : columns_) names.push_back(column.name);
  return names;
}

template <class GetDesign>
Eigen::MatrixXd InputColumns::Fill(std::size_t num_designs, const GetDesign& design) const {
  Eigen::MatrixXd result(static_cast<Eigen::Index>(num_designs),
                         static_cast<Eigen::Index>(columns_.size()));
  NamePositions<EntrySequence> positions(GetNames());
  for (std::size_t row = 0; row < num_designs; ++row) {
    const EntrySequence& parameters = design(row).GetParameters();
    const std::vector<std::size_t>& at = positions.In(parameters);
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      if (at[column] == EntrySequence::npos)
        throw std::runtime_error("Parameter \"" + utils::ToUtf8(columns_[column].name) +
                                 "\" does not exist in current design.");
      result(static_cast<Eigen::Index>(row), static_cast<Eigen::Index>(column)) =
          columns_[column].ToNumber(parameters[at[column]].second);
    }
  }
  return result;
}

Eigen::MatrixXd InputColumns::ToMatrix(const std::vector<const Design*>& designs) const {
  return Fill(designs.size(),
              [&designs](std::size_t row) -> const Design& { return *designs[row]; });
}

Eigen::MatrixXd InputColumns::ToMatrix(const std::vector<Design>& designs) const {
  return Fill(designs.size(),
              [&designs](std::size_t row) -> const Design& { return designs[row]; });
}

std::vector<EntrySequence> InputColumns::ToSequences(
    const Eigen::Ref<const Eigen::MatrixXd>& matrix) const {
  if (matrix.cols() != static_cast<Eigen::Index>(columns_.size()))
    throw std::runtime_error(
        "Exactly as many deterministic properties as design point elements needed!");
  std::vector<EntrySequence> result(static_cast<std::size_t>(matrix.rows()));
  for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
    EntrySequence& sequence = result[static_cast<std::size_t>(row)];
    sequence.reserve(columns_.size());
    for (std::size_t column = 0; column < columns_.size(); ++column)
      sequence.Append(columns_[column].name,
                      columns_[column].ToEntry(matrix(row, static_cast<Eigen::Index>(column))));
  }
  return result;
}

}  // namespace corvath::algorithm::datatypes
