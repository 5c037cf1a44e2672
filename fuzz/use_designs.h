#pragma once

#include "design/designs/design_manager.h"
#include "design/designs/flat_design.h"
#include "design/designs/input_columns.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "stochastics/rv_set.h"
#include "try.h"

#include <Eigen/Core>

#include <cstddef>
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
  Try([&] { return entry < data::CDesignEntry(1.0) || IsClose(entry, -entry, 1e-3); });
  for (int type = kinds::DesignEntry::UNINITIALIZED; type <= kinds::DesignEntry::VARIANT; ++type) {
    const auto forced = static_cast<kinds::DesignEntry::eType>(type);
    Try([&] { data::ConvertEntry(entry, forced); });
    Try([&] { data::CDesignEntry().Assign(entry, true, forced); });
    Try([&] { kinds::DesignEntry::GetType(kinds::DesignEntry::GetText(forced)); });
  }
}

inline void Use(const data::Parameter& parameter) {
  Use(parameter.GetReferenceValue());
  data::CDesignEntry lower, upper;
  Try([&] { parameter.GetBounds(lower, upper); });
  Try([&] { data::ParameterToRV(parameter); });
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
      Try([&] { changed.SetDiscreteStates({upper, lower, data::CDesignEntry(0.5)}, true); });
      Try([&] { copy.SetDeterministicProperty(named.first, changed); });
    }
    Try([&] { copy.SetReferenceValue(upper, kind % 2 == 0); });
    copy.IsEqual(parameter, true);
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
    data::MatrixToDesigns(Eigen::MatrixXd::Constant(2, static_cast<Eigen::Index>(count), 0.5),
                          *set);
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
  }
}

inline void Use(const data::DesignManager& manager) {
  if (manager.size() > 100) return;
  std::vector<data::DesignId> ids;
  for (const data::Design& design : manager.GetDesigns()) {
    Use(design);
    ids.push_back(design.GetId());
    manager.Find(ids.back());
    manager.Find(ids.back(), true);
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
  }
}

}  // namespace fuzz
