#include "calculator/constants.h"
#include "calculator/function_help.h"
#include "calculator/function_table.h"
#include "commands.h"
#include "foundation/text.h"
#include "standard_output.h"
#include "study/describe/help_text.h"
#include "study/describe/text_table.h"

#include <sstream>

namespace cli {

namespace {

namespace calculator = corvath::calculator;
using corvath::utils::ToUtf8;

TextTable MakeList(const wchar_t* title) {
  TextTable list;
  list.AddColumn(ToUtf8(title), TextTable::Align::kLeft);
  list.AddColumn("", TextTable::Align::kLeft);
  return list;
}

void PrintGroup(std::ostream& out, calculator::FunctionGroup group) {
  TextTable list = MakeList(GetGroupName(group));
  for (const auto& [name, function] : calculator::FunctionTable::Get().GetFunctions())
    if (function.group == group)
      list.AddRow({"  " + ToUtf8(name),
                   FirstSentence(PlainText(calculator::FindFunctionHelp(name)->front().text))});
  list.Print(out, "");
}

void PrintConstants(std::ostream& out) {
  TextTable list = MakeList(L"Constants");
  calculator::ForEachConstant([&](const calculator::Constant& constant) {
    list.AddRow({"  " + ToUtf8(constant.name), DescribeConstant(constant)});
  });
  list.Print(out, "");
}

}  // namespace

void RunFunctions() {
  std::ostringstream out;
  for (int i = 0; i <= static_cast<int>(calculator::kLastFunctionGroup); ++i) {
    PrintGroup(out, static_cast<calculator::FunctionGroup>(i));
    out << '\n';
  }
  PrintConstants(out);
  PrintResult(out.str());
}

}  // namespace cli
