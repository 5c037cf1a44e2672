#include "calculator/builtin_macros.h"
#include "calculator/macro_file.h"
#include "commands.h"
#include "foundation/exception.h"
#include "foundation/text.h"
#include "standard_output.h"
#include "study/describe/text_table.h"

#include <sstream>

namespace cli {

namespace {

namespace calculator = corvath::calculator;
using Macro = CalculatorTypeTraits::Macro;
using Macros = CalculatorTypeTraits::Macros;

/// `text` in one line.
std::string Line(std::wstring text) {
  for (wchar_t& c : text)
    if (c < L' ') c = L' ';
  return corvath::utils::ToUtf8(text);
}

/// "$NAME(a, b)"
std::string Call(const Macro& macro) {
  std::string call = "$" + Line(macro.macro_id_) + "(";
  const char* separator = "";
  for (const std::wstring& name : macro.arg_names_) {
    call += separator + Line(name);
    separator = ", ";
  }
  return call + ")";
}

void PrintTable(const Macros& macros, bool with_description, std::ostream& out) {
  TextTable table;
  for (const char* title : {"Macro", "Text", "Category", "Description"}) {
    table.AddColumn(title, TextTable::Align::kLeft);
    if (!with_description && title == std::string("Text")) break;
  }
  for (const Macro& macro : macros) {
    std::vector<std::string> cells{Call(macro), Line(macro.expression_)};
    if (with_description) {
      cells.push_back(Line(macro.category_));
      cells.push_back(Line(macro.description_));
    }
    table.AddRow(std::move(cells));
  }
  table.Print(out, "  ");
}

void PrintUserMacros(const std::string& path, const calculator::MacroFileContent& file,
                     std::ostream& out) {
  out << "\nUser macros, from " << path << ":";
  if (!file.exists) {
    out << " no such file\n";
    return;
  }
  Macros usable;
  std::string hidden;
  for (const Macro& macro : file.macros) {
    if (calculator::GetBuiltinMacros().count(macro) == 0)
      usable.insert(macro);
    else
      hidden += (hidden.empty() ? "$" : ", $") + Line(macro.macro_id_);
  }
  out << (usable.empty() ? " none\n" : "\n");
  if (!usable.empty()) PrintTable(usable, true, out);
  if (!hidden.empty())
    out << "  Without effect, as built-in macros have their names: " << hidden << '\n';
}

}  // namespace

void RunMacros() {
  std::ostringstream out;
  out << "Built-in macros:\n";
  PrintTable(calculator::GetBuiltinMacros(), false, out);
  std::string path;
  calculator::MacroFileContent file;
  try {
    path = calculator::GetMacroFilePath().string();
    file = calculator::ReadMacroFile(path);
    PrintUserMacros(path, file, out);
  } catch (const corvath::utils::runtime_error& error) {  // no directory, as for texts
    out << "\nUser macros: none. " << corvath::utils::ToUtf8(error.GetMessage()) << '\n';
  }
  PrintResult(out.str());
  if (!file.problem.empty()) throw Refusal(path + ": " + file.problem);
}

}  // namespace cli
