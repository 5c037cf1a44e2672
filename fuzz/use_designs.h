#pragma once

#include "design/designs/design_conversion.h"
#include "design/designs/design_manager.h"
#include "design/designs/flat_design.h"
#include "design/designs/input_columns.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "stochastics/rv_set.h"
#include "try.h"

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// All that can be asked of what a project file holds of designs and parameters, whatever it holds.
namespace fuzz {

namespace data = corvath::algorithm::datatypes;
namespace kinds = corvath::enums;

inline void Use(const data::CDesignEntry& entry) {
  Try([&] { entry.ToBool(); });
  Try([&] { entry.ToDouble(); });
  Try([&] { entry.ToInteger(); });
  Try([&] { entry.ToString(); });
  Try([&] { entry.ToVariant(); });
  Try([&] { entry.GetScalar(); });
  Try([&] { entry.GetElement(1); });
  Try([&] { return -entry - entry; });
  Try([&] { IsClose(entry, -entry, 1e-3); });
  Try([&] { entry.IsScalar(); });
  Try([&] { entry.GetVariant(); });
  for (const data::CDesignEntry& other :
       {data::CDesignEntry(true), data::CDesignEntry(std::int64_t{3}), data::CDesignEntry(2.5),
        data::CDesignEntry(L"1e999"), data::CDesignEntry()}) {
    Try([&] { return entry == other || entry < other || other < entry; });
    Try([&] { return other - entry; });
    Try([&] { other.ToString(), other.ToDouble(), other.GetVariant(); });
  }
  for (int type = kinds::DesignEntry::UNINITIALIZED; type <= kinds::DesignEntry::VARIANT; ++type) {
    const auto forced = static_cast<kinds::DesignEntry::eType>(type);
    Try([&] { data::ConvertEntry(entry, forced); });
    Try([&] { data::CDesignEntry().Assign(entry, true, forced); });
    Try([&] { kinds::DesignEntry::GetType(kinds::DesignEntry::GetText(forced)); });
  }
}

/// The distribution with other numbers, and with a coefficient of variation.
inline void UseRandomSide(data::Parameter parameter) {
  data::RandomProperties properties = parameter.GetRandomProperties();
  std::vector<double> moments = properties.GetMoments();
  for (std::size_t i = 0; i < moments.size(); ++i) {
    data::GetMomentName(i + 1);
    moments[i] *= 1.0 + 1e-14;
  }
  properties.SetMoments(moments);
  Try([&] { return properties == parameter.GetRandomProperties(); });
  properties.SetCov(0.5);
  Try([&] { return properties != parameter.GetRandomProperties(); });
  parameter.SetRandomProperties(properties);
  parameter.SetName(L"renamed");
  data::ParameterToRV(parameter);
}

/// Designs of a parameter that has another domain, or of another size.
inline void UseColumns(const data::NamedProperties& properties,
                       const std::vector<data::Design>& designs) {
  Try([&] { data::DesignsToMatrix(designs, properties); });
  Try([&] { data::MatrixToDesigns(Eigen::MatrixXd::Constant(1, 2, 0.5), properties); });
}

inline void Use(const data::Parameter& parameter) {
  Use(parameter.GetReferenceValue());
  data::CDesignEntry lower, upper;
  Try([&] { parameter.GetBounds(lower, upper); });
  Try([&] { data::ParameterToRV(parameter); });
  Try([&] { UseRandomSide(parameter); });
  for (int kind = kinds::DeterministicProperties::CONTINUOUS;
       kind <= kinds::DeterministicProperties::NOMINAL_BY_INDEX; ++kind) {
    const auto other = static_cast<kinds::DeterministicProperties::eKind>(kind);
    data::Parameter copy = parameter;
    Try([&] { copy.SetKind(other); });
    for (const auto& named : parameter.GetDeterministicProperties()) {
      data::DeterministicProperties changed = named.second;
      Try([&] { changed.SetKind(other); });
      Try([&] { changed.SetDataType(kinds::DesignEntry::INTEGER); });
      Try([&] { changed.SetBounds(lower, upper, true); });
      for (const bool convert : {false, true})
        Try([&] { changed.SetDiscreteStates({upper, lower, data::CDesignEntry(0.5)}, convert); });
      Try([&] { copy.SetDeterministicProperty(named.first, changed); });
    }
    Try([&] { copy.SetReferenceValue(upper, kind % 2 == 0); });
    copy.IsEqual(parameter, true);
    Try([&] {
      const data::InputColumns columns(copy.GetDeterministicProperties());
      const auto size = static_cast<Eigen::Index>(columns.GetSize());
      std::vector<data::Design> designs;
      for (data::EntrySequence& inputs : columns.ToSequences(Eigen::MatrixXd::Ones(2, size)))
        designs.emplace_back(std::move(inputs), data::DesignId(1));
      columns.ToMatrix(designs);
      UseColumns(parameter.GetDeterministicProperties(), designs);
    });
  }
}

inline void Use(const data::ParameterManager& manager) {
  std::vector<std::wstring> names;
  for (const data::Parameter& parameter : manager.GetAllParameters()) {
    names.push_back(parameter.GetName());
    Try([&] { Use(parameter); });
    data::CDesignEntry lower, upper;
    Try([&] { manager.GetBounds(names.back(), lower, upper); });
  }
  if (names.size() > 100) return;
  data::ParameterManager copy = manager;
  Try([&] { copy.SetKind(names.at(0), kinds::DeterministicProperties::ORDINAL_BY_VALUE); });
  Try([&] { copy.ReplaceParameter(manager.GetParameter(names.at(0))); });
  Try([&] { copy.AddParameter(data::Parameter(L"other")); });
  copy.IsEqual(manager, true);
  Try([&] { manager.GetSubset(names); });
  Try([&] { manager.GetDeterministicProperties(); });
  Try([&] { manager.GetParameters(true); });
  Try([&] { data::BuildCorrelationMatrix(manager, names); });
  Try([&] {
    data::EntrySequence inputs;
    for (const std::wstring& name : names) inputs.Append(name, data::CDesignEntry(0.5));
    const auto set =
        data::ParameterManagerToRVSet(manager, data::Design(std::move(inputs), data::DesignId(1)));
    const std::size_t count = data::GetVariableNames(*set).size();
    std::vector<data::Design> designs;
    for (data::EntrySequence& values : data::MatrixToDesigns(
             Eigen::MatrixXd::Constant(2, static_cast<Eigen::Index>(count), 0.5), *set))
      designs.emplace_back(std::move(values), data::DesignId(1));
    data::DesignsToMatrix(designs, *set);
    UseColumns({{L"other", data::DeterministicProperties()}}, designs);
  });
  for (const auto& named : manager.GetCoherences().GetEntries())
    Try([&] {
      const data::TriangularIndex mirrored(named.first.GetSecond(), named.first.GetFirst());
      if (mirrored != named.first) std::abort();
      copy.GetCoherences().Set(mirrored.GetFirst(), mirrored.GetSecond(), 0.5);
      const auto& coherences = copy.GetCoherences();
      if (coherences.Get(named.first.GetFirst(), named.first.GetSecond()) != 0.5) std::abort();
    });
  for (const auto side : {data::InputSide::kDeterministic, data::InputSide::kRandom})
    Try([&] {
      const auto columns = data::InputColumns::Of(manager, names, side);
      const auto size = static_cast<Eigen::Index>(columns.GetNames().size());
      std::vector<data::Design> designs;
      for (data::EntrySequence& inputs : columns.ToSequences(Eigen::MatrixXd::Ones(2, size)))
        designs.emplace_back(std::move(inputs), data::DesignId(1));
      columns.ToMatrix(designs);
    });
}

inline void Use(const data::Design& design) {
  Try([&] { data::SDesign(design).ToDesign(); });
  for (const auto& [name, entry] : design.GetParameters()) Use(entry);
  for (const auto& [name, entry] : design.GetResponses()) Use(entry);
  for (const auto& named : design.GetCriteria()) {
    const data::Criterion& criterion = named.second;
    Try([&] { criterion.IsViolated(); });
    Try([&] { criterion.IsValueInvalid(); });
    Try([&] { criterion.GetExpression(); });
    for (int type = data::CriterionDescription::RHS_ANY;
         type <= data::CriterionDescription::LIMIT_LHS_ABOVE_RHS; ++type) {
      data::Criterion other(static_cast<data::Criterion::eType>(type), criterion.GetLhs(),
                            criterion.GetRhs());
      Try([&] {
        other.SetValues(criterion.GetLhsValue(), criterion.GetRhsValue(), {}, /*combine=*/true);
      });
      Try([&] { other.GetExpression(); });
      Try([&] { return other == criterion; });
    }
  }
  data::Design copy(design);
  Try([&] { return copy == design; });
  copy.SetId(design.GetId().Appended(1));
  std::wostringstream() << copy.GetId();
  Try([&] { copy.SetParameters({}); });
  Try([&] { data::Design(design, design.GetParameters()); });
}

inline void Use(const data::DesignManager& manager) {
  if (manager.size() > 100) return;
  std::vector<data::DesignId> ids;
  for (const data::Design& design : manager.GetDesigns()) {
    Use(design);
    ids.push_back(design.GetId());
    manager.Find(ids.back());
    manager.Find(ids.back(), true);
    Try([&] { manager.GetDesign(ids.back().Appended(1)); });
  }
  Try([&] { manager.GetDesigns(ids); });
  Try([&] { manager.FindDesigns(ids); });
  for (const bool check : {false, true}) Try([&] { manager.BuildTemplate(check); });
  Try([&] { manager.GetCriteriaTemplate(); });
  Try([&] { manager.GetLimitStateNames(); });
  for (const bool largest : {false, true})
    Try([&] {
      const auto widths = manager.GetResponseWidths(largest);
      data::DesignManager::GetResponseNames(widths);
      manager.GetResponseMatrix(widths);
    });
  Try([&] { manager.GetModelResponseWidths(); });
  for (const bool reverse : {false, true})
    Try([&] { manager.ExtractDesignNumbers(manager.GetDesigns(), reverse, {L"x"}); });
  data::DesignManager copy = manager;
  for (const data::Design& design : manager.GetDesigns()) {
    Try([&] { copy.AddOrReplace(design); });
    Try([&] { copy.AddOrReplace(design, true); });
    Try([&] { copy.Add(design); });
  }
  Try([&] { return copy == manager; });
  copy.ModifyDesigns();
  Try([&] { return copy == manager; });
}

}  // namespace fuzz
