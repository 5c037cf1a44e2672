#include "project/models/used_designs.h"

#include "design/designs/design_manager.h"
#include "design/designs/input_columns.h"
#include "design/parameters/parameter_manager.h"
#include "metamodel/surrogate.h"
#include "project/models/surrogate_info_container.h"

#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {
namespace {

/// The values of a design in the order of the manager, which adds those that it lacks. Parameters
/// that the manager does not know stay behind.
EntrySequence Completed(EntrySequence values, const ParameterManager& parameters) {
  EntrySequence result;
  for (const Parameter& parameter : parameters.GetAllParameters()) {
    const CDesignEntry* value = values.Find(parameter.GetName());
    result.Append(parameter.GetName(), value ? *value : parameter.GetReferenceValue());
  }
  for (auto& [name, value] : values)
    if (!parameters.FindParameter(name)) result.Append(name, std::move(value));
  return result;
}

std::set<std::wstring> DependentNames(const ParameterManager& parameters) {
  std::set<std::wstring> names;
  for (const Parameter& parameter : parameters.GetAllParameters())
    if (parameter.IsDependent()) names.insert(parameter.GetName());
  return names;
}

SurrogateInfo::HidVector FindUsedDesigns(const SurrogateInfo& info, const DesignManager& designs,
                                         const ParameterManager& parameters,
                                         const UsedDesignSearch& search) {
  if (!info.GetSurrogate()) return {};
  const std::vector<std::wstring> names = info.GetParameterNames();
  const InputColumns columns = search.deterministic
                                   ? InputColumns::Of(parameters, names, InputSide::kDeterministic)
                                   : InputColumns::Plain(names);
  std::vector<Design> wanted;
  for (EntrySequence& values : columns.ToSequences(info.GetSurrogate()->GetPoints())) {
    if (search.complete) values = Completed(std::move(values), parameters);
    wanted.emplace_back(std::move(values), DesignId());
  }
  return designs.ExtractDesignNumbers(wanted, search.reverse, DependentNames(parameters));
}

}  // namespace

void RecoverUsedDesigns(SurrogateInfoContainer& infos, const DesignManager& designs,
                        const ParameterManager& parameters, const UsedDesignSearch& search) {
  infos.Update([&](SurrogateInfo& info) {
    SurrogateInfo::HidVector ids;
    try {
      ids = FindUsedDesigns(info, designs, parameters, search);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {
      // The designs of this model cannot be told; it keeps its support data in later files.
    }
    info.SetUsedHids(std::move(ids));
  });
}

}  // namespace corvath::algorithm::datatypes
