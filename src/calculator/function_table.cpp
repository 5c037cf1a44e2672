#include "calculator/function_table.h"

#include "calculator/functions/groups.h"
#include "foundation/until_unload.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace corvath::calculator {

namespace {

utils::UntilUnload<FunctionTable> function_table;

}  // namespace

const wchar_t* GetGroupName(FunctionGroup group) {
  switch (group) {
    case FunctionGroup::kElementary:
      return L"Elementary functions";
    case FunctionGroup::kStatistics:
      return L"Statistics";
    case FunctionGroup::kComplex:
      return L"Complex numbers";
    case FunctionGroup::kLinearAlgebra:
      return L"Linear algebra";
    case FunctionGroup::kModal:
      return L"Modal comparison";
    case FunctionGroup::kConstructors:
      return L"Constructors";
    case FunctionGroup::kSignals:
      return L"Signals";
    case FunctionGroup::kPeaks:
      return L"Peaks";
    case FunctionGroup::kFilters:
      return L"Filters";
    case FunctionGroup::kFourier:
      return L"Fourier transforms";
    case FunctionGroup::kData:
      return L"Tables of numbers";
    case FunctionGroup::kQueries:
      return L"Queries";
  }
  return L"";
}

bool Function::Takes(std::size_t count) const {
  return std::any_of(counts.begin(), counts.end(), [count](int allowed) {
    return allowed == kAnyCount || static_cast<std::size_t>(allowed) == count;
  });
}

FunctionTable::FunctionTable() {
  for (const auto add : {AddElementaryFunctions, AddStatisticsFunctions, AddComplexFunctions,
                         AddLinearAlgebraFunctions, AddModalFunctions, AddConstructorFunctions,
                         AddSignalFunctions, AddPeakFunctions, AddFilterFunctions,
                         AddFourierFunctions, AddTableFunctions, AddQueryFunctions})
    add(*this);
}

const FunctionTable& FunctionTable::Get() {
  return function_table.Get([] { return FunctionTable(); });
}

const Function* FunctionTable::Find(std::wstring_view name) const {
  const auto found = functions_.find(name);
  return found == functions_.end() ? nullptr : &found->second;
}

void FunctionTable::Add(FunctionGroup group, std::initializer_list<const wchar_t*> names,
                        std::vector<int> counts, void (*run)(FunctionCall&, math::Value&)) {
  for (const wchar_t* name : names) functions_[name] = {group, counts, run};
}

}  // namespace corvath::calculator
