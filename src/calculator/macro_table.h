#pragma once

#include "calculator/macro.h"
#include "calculator/syntax.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace corvath::calculator {

class ParsedText;

/// The macros of one calculator: those that its texts define, those that it was given, and the
/// built-in ones, looked up in this order.
class MacroTable {
 public:
  using Macro = CalculatorTypeTraits::Macro;
  using Macros = CalculatorTypeTraits::Macros;
  using Index = SyntaxTree::Index;

  /// Null if no macro has this name.
  const Macro* Find(const std::wstring& name) const;
  /// Those whose name is taken are left out.
  void Add(const Macros& macros);
  /// What a text defines takes the place of any macro of its name,
  void Define(Macro macro);
  /// until this brings the others back.
  void ForgetDefined();

  /// What the macros that a text calls, and those that they call, can do to objects.
  struct Reach {
    bool may_define = false;         ///< or nobody can tell, as a macro is not known yet
    std::set<std::wstring> objects;  ///< those that the bodies name, without parameters
  };
  /// Follows calls to any depth; of macros known now.
  Reach FindReach(const ParsedText& text);

  /// The text that a call has become, null at its first evaluation.
  const ParsedText* FindExpansion(const ParsedText& text, Index call) const;
  void ForgetExpansions() { expansions_.clear(); }
  /// Remembers it for the next evaluation; both texts must stay where they are.
  void KeepExpansion(const ParsedText& text, Index call, const ParsedText& expansion);

 private:
  /// What stands in the body of one macro.
  struct Body {
    bool may_define = false;
    std::vector<std::wstring> objects;
    std::vector<std::wstring> macros;
  };
  struct Call {
    const ParsedText* text;
    Index node;
    bool operator==(const Call& other) const { return text == other.text && node == other.node; }
  };
  struct HashOfCall {
    std::size_t operator()(const Call& call) const {
      return std::hash<const void*>()(call.text) * 31 + call.node;
    }
  };

  static Body Inspect(const Macro& macro);
  const Body& GetBody(const std::wstring& name);

  Macros defined_;
  Macros added_;
  std::map<std::wstring, Body> bodies_;
  std::unordered_map<Call, const ParsedText*, HashOfCall> expansions_;
};

}  // namespace corvath::calculator
