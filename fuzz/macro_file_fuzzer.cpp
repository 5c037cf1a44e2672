// macros.def: the file is read, what was read is saved and read again, and each macro is called.

#include "calculator/calculator.h"
#include "calculator/macro_file.h"
#include "calculator/workspace.h"
#include "limit.h"
#include "memory_file.h"

#include <boost/filesystem/operations.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

namespace fs = boost::filesystem;
using Macro = CalculatorTypeTraits::Macro;

void Call(CCalculator& calculator, const Macro& macro) {
  std::wstring call = L"$" + macro.macro_id_ + L"(";
  for (std::size_t i = 0; i < macro.arg_names_.size(); ++i) call += i == 0 ? L"a" : L",1+a";
  try {
    calculator.Evaluate(call + L")");
  } catch (const std::exception&) {
    // a refusal
  }
}

/// What the library writes it reads.
void CheckRoundTrip(const CalculatorTypeTraits::Macros& macros) {
  static const fs::path copy = fs::temp_directory_path() / fs::unique_path("macros-%%%%%%%%.def");
  corvath::calculator::SaveMacros(copy, macros);
  const auto content = corvath::calculator::ReadMacroFile(copy);
  fs::remove(copy);
  if (content.macros.size() != macros.size() || !content.problem.empty()) std::abort();
  auto other = content.macros.begin();
  for (const Macro& macro : macros) {
    if (macro.macro_id_ != other->macro_id_ || macro.arg_names_ != other->arg_names_ ||
        macro.expression_ != other->expression_)
      std::abort();
    ++other;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const auto content = corvath::calculator::ReadMacroFile(file.GetPath());
  if (content.macros.empty()) return 0;
  CheckRoundTrip(content.macros);
  CCalculator calculator;
  calculator.AddMacros(content.macros);
  calculator.SetObject(L"a", L"", corvath::math::Value(2.0));
  fuzz::Limit(calculator.GetWorkspace());
  for (const Macro& macro : content.macros)
    if (macro.expression_.find(L"read") == std::wstring::npos) Call(calculator, macro);
  return 0;
}
