#include "analysis/hidden_names.h"

#include "analysis/progress.h"
#include "calculator/calculator.h"
#include "calculator/parsed_text.h"
#include "calculator/parser.h"
#include "calculator/workspace.h"
#include "design/indexed_name.h"

#include <set>

namespace corvath::analysis {

void RefuseHiddenNames(const StudyModel& model, const std::wstring& text) {
  using calculator::ParsedText;
  std::set<std::wstring> names;
  for (const auto& input : model.GetInputs()) names.insert(input.name);
  for (const auto& quantity : model.GetQuantities()) {
    const auto parts = algorithm::datatypes::SplitIndexedName(quantity.name);
    names.insert(parts.GetIndex() ? parts.base : quantity.name);
  }
  const std::wstring plain = calculator::DeleteBlanks(text);
  if (!calculator::Parse(plain).full) return;
  CCalculator parser;
  const ParsedText& parsed = parser.GetWorkspace().texts.Parse(plain);
  for (ParsedText::Index node = 0; node <= parsed.GetRoot(); ++node) {
    if (parsed.GetRule(node) != calculator::Rule::kObject) continue;
    const auto& object = parsed.GetObject(node);
    if (object.constant != nullptr && names.count(object.name) > 0)
      throw AnalysisError(L"\"" + text + L"\": \"" + object.name +
                          L"\" is a constant of expressions and hides what the project calls so; "
                          L"rename it there.");
  }
}

}  // namespace corvath::analysis
