#include "calculator/parser.h"
#include "training/train_study.h"

#include <algorithm>
#include <utility>

namespace corvath::training {
namespace {

using algorithm::datatypes::Criterion;
using algorithm::datatypes::CriterionDescription;
using algorithm::datatypes::CriterionSequence;

std::wstring Trim(const std::wstring& text) {
  const auto begin = text.find_first_not_of(L" \t");
  if (begin == std::wstring::npos) return {};
  return text.substr(begin, text.find_last_not_of(L" \t") - begin + 1);
}

/// The position of the only "<=" or ">=" outside brackets and strings; npos without one. Those
/// behind a "#if" or "#switch" belong to it: a branch reaches to the end.
std::size_t FindComparison(const std::wstring& text, const std::wstring& name) {
  std::size_t found = std::wstring::npos;
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t c = text[i];
    if (c == L'"') quoted = !quoted;
    if (quoted) continue;
    if (c == L'(' || c == L'[') ++depth;
    if (c == L')' || c == L']') --depth;
    if (c == L'#' && depth == 0) break;
    const bool compares = (c == L'<' || c == L'>') && i + 1 < text.size() && text[i + 1] == L'=';
    if (depth != 0 || !compares) continue;
    if (found != std::wstring::npos)
      throw TrainingError(L"Criterion \"" + name + L"\" compares more than once.", name);
    found = i;
  }
  return found;
}

std::wstring RequireExpression(const std::wstring& text, const std::wstring& name) {
  const std::wstring side = Trim(text);
  if (side.empty()) throw TrainingError(L"Criterion \"" + name + L"\" lacks an expression.", name);
  const std::wstring plain = calculator::DeleteBlanks(side);
  const auto parsed = calculator::Parse(plain);
  if (parsed.full) return side;
  throw TrainingError(L"Criterion \"" + name + L"\": \"" + plain + L"\" is no expression from \"" +
                          plain.substr(parsed.stop) + L"\" on.",
                      name);
}

}  // namespace

void ParseCriterion(const std::wstring& text, CriterionSequence& criteria) {
  const auto colon = text.find(L':');
  const std::wstring name = colon == std::wstring::npos ? L"" : Trim(text.substr(0, colon));
  if (name.empty())
    throw TrainingError(L"Criterion \"" + text + L"\" has no name; write \"name: expression\".");
  if (criteria.Has(name)) throw TrainingError(L"There are two criteria \"" + name + L"\".", name);
  const std::wstring body = text.substr(colon + 1);
  const std::size_t comparison = FindComparison(body, name);
  if (comparison == std::wstring::npos) {
    criteria.Append(name,
                    Criterion(CriterionDescription::RHS_ANY, L"", RequireExpression(body, name)));
    return;
  }
  const auto type = body[comparison] == L'<' ? CriterionDescription::LIMIT_LHS_BELOW_RHS
                                             : CriterionDescription::LIMIT_LHS_ABOVE_RHS;
  criteria.Append(name, Criterion(type, RequireExpression(body.substr(0, comparison), name),
                                  RequireExpression(body.substr(comparison + 2), name)));
}

}  // namespace corvath::training
