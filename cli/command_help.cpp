#include "calculator/constants.h"
#include "calculator/function_help.h"
#include "commands.h"
#include "foundation/text.h"
#include "standard_output.h"
#include "study/describe/help_text.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <iterator>
#include <vector>

namespace cli {

namespace {

namespace calculator = corvath::calculator;
using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

std::string Describe(const calculator::FunctionHelp& record) {
  std::string text = PlainText(record.signature) + "\n\n" + Wrapped(PlainText(record.text), "  ");
  std::size_t width = 0;
  for (const auto& argument : record.arguments) width = std::max(width, argument.name.size());
  const std::string indent(width + 4, ' ');
  for (const auto& argument : record.arguments) {
    const std::string kinds = PlainText(argument.types) + "; " + PlainText(argument.values) +
                              (argument.optional ? "; optional" : "");
    std::string lines = Wrapped(PlainText(argument.description), indent) + Wrapped(kinds, indent);
    const std::string name = ToUtf8(argument.name);
    lines.replace(2, name.size(), name);  // names are ASCII
    text += "\n" + lines;
  }
  return text;
}

/// The constant of a name in any case; empty if there is none.
std::string DescribeConstantOf(const std::wstring& name) {
  std::wstring upper = name;
  for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
  std::string text;
  calculator::ForEachConstant([&](const calculator::Constant& constant) {
    if (upper == constant.name) text = ToUtf8(upper) + "\n\n  " + DescribeConstant(constant) + "\n";
  });
  return text;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

[[noreturn]] void RefuseUnknown(const std::string& wrong) {
  const std::vector<std::string> names = FunctionNames();
  std::vector<std::string> longer;  // that the word is a part of
  std::copy_if(names.begin(), names.end(), std::back_inserter(longer), [&](const auto& name) {
    return wrong.size() > 2 && Lower(name).find(Lower(wrong)) != std::string::npos;
  });
  throw Refusal("no function " + Quoted(wrong) + "; " +
                (longer.empty() ? NameHint(wrong, names, "zel functions lists all:")
                                : NameHint(wrong, longer, "near names:")));
}

}  // namespace

void RunHelp(const std::string& function) {
  const std::wstring name = FromUtf8(function);
  std::string text;
  if (const auto* records = calculator::FindFunctionHelp(name)) {
    for (const auto& record : *records) text += (text.empty() ? "" : "\n") + Describe(record);
  } else {
    text = DescribeConstantOf(name);
  }
  if (text.empty()) RefuseUnknown(function);
  PrintResult(text);
}

}  // namespace cli
