#include "calculator/function_help.h"

#include "calculator/function_table.h"
#include "calculator/functions/groups.h"

#include <initializer_list>

namespace corvath::calculator {

namespace {

const HelpTable& GetAllHelp() {
  static const HelpTable table = [] {
    HelpTable result;
    for (const auto add : {AddElementaryHelp, AddStatisticsHelp, AddComplexHelp,
                           AddLinearAlgebraHelp, AddModalHelp, AddConstructorHelp, AddSignalHelp,
                           AddPeakHelp, AddFilterHelp, AddFourierHelp, AddTableHelp, AddQueryHelp})
      add(result);
    return result;
  }();
  return table;
}

bool IsListed(const std::wstring& name) {
  for (const wchar_t* second : {L"max", L"vec", L"mat", L"series"})
    if (name == second) return false;
  const Function* const function = FunctionTable::Get().Find(name);
  switch (function ? function->group : kLastFunctionGroup) {
    case FunctionGroup::kFilters:
    case FunctionGroup::kFourier:
    case FunctionGroup::kData:
      return false;
    case FunctionGroup::kQueries:
      return name.compare(0, 2, L"is") != 0;
    default:
      return true;
  }
}

HelpTable Select(bool listed) {
  HelpTable result;
  for (const auto& [name, records] : GetAllHelp())
    if (IsListed(name) == listed) result[name] = records;
  return result;
}

}  // namespace

const HelpTable& GetFunctionHelp() {
  static const HelpTable table = Select(true);
  return table;
}

const HelpTable& GetFurtherFunctionHelp() {
  static const HelpTable table = Select(false);
  return table;
}

const std::vector<FunctionHelp>* FindFunctionHelp(std::wstring_view name) {
  const auto found = GetAllHelp().find(name);
  return found != GetAllHelp().end() ? &found->second : nullptr;
}

}  // namespace corvath::calculator
