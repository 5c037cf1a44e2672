#include "calculator/function_table.h"

#include <algorithm>
#include <utility>

namespace corvath::calculator {

bool Function::Takes(std::size_t count) const {
  return std::any_of(counts.begin(), counts.end(), [count](int allowed) {
    return allowed == kAnyCount || static_cast<std::size_t>(allowed) == count;
  });
}

FunctionTable::FunctionTable() {
  AddElementaryFunctions(*this);
  AddSignalFunctions(*this);
  AddDataFunctions(*this);
}

const FunctionTable& FunctionTable::Get() {
  static const FunctionTable table;
  return table;
}

const Function* FunctionTable::Find(std::wstring_view name) const {
  const auto found = functions_.find(name);
  return found == functions_.end() ? nullptr : &found->second;
}

void FunctionTable::Add(std::initializer_list<const wchar_t*> names, std::vector<int> counts,
                        void (*run)(FunctionCall&, math::Value&)) {
  for (const wchar_t* name : names) functions_[name] = {counts, run};
}

}  // namespace corvath::calculator
