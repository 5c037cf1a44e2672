#include "calculator/macro_table.h"

#include "calculator/builtin_macros.h"
#include "calculator/parsed_text.h"
#include "calculator/parser.h"

#include <algorithm>
#include <utility>

namespace corvath::calculator {

const MacroTable::Macro* MacroTable::Find(const std::wstring& name) const {
  Macro key;
  key.macro_id_ = name;
  for (const Macros* macros : {&defined_, &added_, &GetBuiltinMacros()})
    if (const auto found = macros->find(key); found != macros->end()) return &*found;
  return nullptr;
}

void MacroTable::Add(const Macros& macros) {
  for (const Macro& macro : macros)
    if (!Find(macro.macro_id_)) added_.insert(macro);
  bodies_.clear();  // of those that were not known
}

void MacroTable::Define(Macro macro) {
  defined_.erase(macro);
  defined_.insert(std::move(macro));
  bodies_.clear();
  expansions_.clear();
}

void MacroTable::ForgetDefined() {
  if (defined_.empty()) return;
  defined_.clear();
  bodies_.clear();
  expansions_.clear();
}

MacroTable::Body MacroTable::Inspect(const Macro& macro) {
  Body result;
  const std::wstring text = DeleteBlanks(macro.expression_);
  if (text.size() > kMaxTextLength) return {true, {}, {}};
  const ParseResult parsed = Parse(text, Whitespace::kSkip);
  if (!parsed.full) return {true, {}, {}};    // what stands behind the match may mean anything
  const auto& parameters = macro.arg_names_;  // the text of the call has what replaces them
  for (Index node = 0; node <= parsed.tree.GetRoot(); ++node) {
    switch (parsed.tree[node].rule) {
      case Rule::kObject:
        if (const std::wstring name(parsed.tree.Text(node, text));
            std::find(parameters.begin(), parameters.end(), name) == parameters.end())
          result.objects.push_back(name);
        break;
      case Rule::kMacro:
        if (parsed.tree.NumChildren(node) > 0)  // empty parentheses have the number, too
          result.macros.emplace_back(parsed.tree.Text(parsed.tree.Child(node, 0), text));
        break;
      case Rule::kAssign:
      case Rule::kAssignMacro:
        result.may_define = true;
        break;
      default:
        break;
    }
  }
  return result;
}

const MacroTable::Body& MacroTable::GetBody(const std::wstring& name) {
  const auto [entry, is_new] = bodies_.try_emplace(name);
  if (is_new) {
    const Macro* const macro = Find(name);
    entry->second = macro ? Inspect(*macro) : Body{true, {}, {}};
  }
  return entry->second;
}

MacroTable::Reach MacroTable::FindReach(const ParsedText& text) {
  Reach reach;
  std::set<std::wstring> seen;
  std::vector<std::wstring> open;
  for (Index node = 0; node <= text.GetRoot(); ++node)
    if (text.GetRule(node) == Rule::kMacro && text.NumChildren(node) > 0)
      open.emplace_back(text.GetText(text.Child(node, 0)));
  while (!open.empty()) {
    const std::wstring name = std::move(open.back());
    open.pop_back();
    if (!seen.insert(name).second) continue;
    const Body& body = GetBody(name);
    reach.may_define = reach.may_define || body.may_define;
    reach.objects.insert(body.objects.begin(), body.objects.end());
    open.insert(open.end(), body.macros.begin(), body.macros.end());
  }
  return reach;
}

const ParsedText* MacroTable::FindExpansion(const ParsedText& text, Index call) const {
  const auto found = expansions_.find({&text, call});
  return found != expansions_.end() ? found->second : nullptr;
}

void MacroTable::KeepExpansion(const ParsedText& text, Index call, const ParsedText& expansion) {
  expansions_[{&text, call}] = &expansion;
}

}  // namespace corvath::calculator
