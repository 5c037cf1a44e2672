#include "study/expression/language.h"

#include "calculator/builtin_macros.h"
#include "calculator/constants.h"
#include "calculator/function_help.h"
#include "calculator/function_table.h"
#include "calculator/macro_file.h"
#include "foundation/exception.h"
#include "foundation/text.h"
#include "study/describe/help_text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <iterator>

namespace corvath::study {
namespace {

using utils::FromUtf8;
using utils::ToUtf8;
using Macro = CalculatorTypeTraits::Macro;

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

[[noreturn]] void RefuseUnknown(const std::string& wrong) {
  const std::vector<std::string> names = FunctionNames();
  std::vector<std::string> longer;  // that the word is a part of
  std::copy_if(names.begin(), names.end(), std::back_inserter(longer), [&](const auto& name) {
    return wrong.size() > 2 && Lower(name).find(Lower(wrong)) != std::string::npos;
  });
  throw Refusal("no function " + Quoted(wrong) + "; " +
                (longer.empty() ? NameHint(wrong, names, "the functions are")
                                : NameHint(wrong, longer, "near names:")));
}

Json::Value MacroDocument(const Macro& macro, bool is_builtin, bool is_hidden) {
  Json::Value json;
  json["name"] = ToUtf8(macro.macro_id_);
  json["arguments"] = Json::Value(Json::arrayValue);
  for (const std::wstring& name : macro.arg_names_) json["arguments"].append(ToUtf8(name));
  json["text"] = ToUtf8(macro.expression_);
  if (is_builtin) return json;
  json["category"] = ToUtf8(macro.category_);
  json["description"] = ToUtf8(macro.description_);
  json["hidden"] = is_hidden;
  return json;
}

}  // namespace

std::vector<std::string> FunctionNames() {
  std::vector<std::string> names;
  for (const auto& entry : calculator::FunctionTable::Get().GetFunctions())
    names.push_back(ToUtf8(entry.first));
  return names;
}

Json::Value FunctionsDocument() {
  Json::Value document;
  document["groups"] = Json::Value(Json::arrayValue);
  for (int i = 0; i <= static_cast<int>(calculator::kLastFunctionGroup); ++i) {
    const auto group = static_cast<calculator::FunctionGroup>(i);
    Json::Value json;
    json["name"] = ToUtf8(GetGroupName(group));
    json["functions"] = Json::Value(Json::arrayValue);
    for (const auto& [name, function] : calculator::FunctionTable::Get().GetFunctions()) {
      if (function.group != group) continue;
      Json::Value one;
      one["name"] = ToUtf8(name);
      one["text"] = FirstSentence(PlainText(calculator::FindFunctionHelp(name)->front().text));
      json["functions"].append(one);
    }
    document["groups"].append(json);
  }
  document["constants"] = Json::Value(Json::arrayValue);
  calculator::ForEachConstant([&](const calculator::Constant& constant) {
    Json::Value json;
    json["name"] = ToUtf8(constant.name);
    json["text"] = DescribeConstant(constant);
    document["constants"].append(json);
  });
  return document;
}

std::string HelpText(const std::string& function) {
  const std::wstring name = FromUtf8(function);
  std::string text;
  if (const auto* records = calculator::FindFunctionHelp(name)) {
    for (const auto& record : *records) text += (text.empty() ? "" : "\n") + Describe(record);
  } else {
    text = DescribeConstantOf(name);
  }
  if (text.empty()) RefuseUnknown(function);
  return text;
}

Json::Value HelpDocument(const std::string& function) {
  Json::Value document;
  document["name"] = function;
  document["text"] = HelpText(function);
  document["forms"] = Json::Value(Json::arrayValue);
  const auto* const records = calculator::FindFunctionHelp(FromUtf8(function));
  if (records == nullptr) return document;
  for (const auto& record : *records) {
    Json::Value form;
    form["signature"] = PlainText(record.signature);
    form["text"] = PlainText(record.text);
    form["arguments"] = Json::Value(Json::arrayValue);
    for (const auto& argument : record.arguments) {
      Json::Value json;
      json["name"] = ToUtf8(argument.name);
      json["kinds"] = PlainText(argument.types);
      json["values"] = PlainText(argument.values);
      json["optional"] = argument.optional;
      json["text"] = PlainText(argument.description);
      form["arguments"].append(json);
    }
    document["forms"].append(form);
  }
  return document;
}

Json::Value MacrosDocument() {
  Json::Value document;
  document["builtin"] = Json::Value(Json::arrayValue);
  document["user"] = Json::Value(Json::arrayValue);
  document["file"] = Json::Value();
  document["problem"] = Json::Value();
  const auto& builtin = calculator::GetBuiltinMacros();
  for (const Macro& macro : builtin) document["builtin"].append(MacroDocument(macro, true, false));
  try {
    const std::string path = calculator::GetMacroFilePath().string();
    document["file"] = path;
    const auto file = calculator::ReadMacroFile(path);
    for (const Macro& macro : file.macros)
      document["user"].append(MacroDocument(macro, false, builtin.count(macro) > 0));
    if (!file.problem.empty()) document["problem"] = file.problem;
  } catch (const utils::runtime_error& error) {  // no directory of the user
    document["problem"] = ToUtf8(error.GetMessage());
  }
  return document;
}

}  // namespace corvath::study
