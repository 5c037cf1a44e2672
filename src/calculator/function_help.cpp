#include "calculator/function_help.h"

#include "calculator/function_help_records.h"

namespace corvath::calculator {

const HelpTable& GetFunctionHelp() {
  static const HelpTable table = [] {
    HelpTable result;
    help::AddNumberHelp(result);
    help::AddSignalHelp(result);
    return result;
  }();
  return table;
}

const std::vector<FunctionHelp>* FindFunctionHelp(std::wstring_view name) {
  for (const HelpTable* table : {&GetFunctionHelp(), &GetFurtherFunctionHelp()}) {
    const auto found = table->find(name);
    if (found != table->end()) return &found->second;
  }
  return nullptr;
}

}  // namespace corvath::calculator
