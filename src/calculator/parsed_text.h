#pragma once

#include "calculator/function_table.h"
#include "calculator/macro_table.h"
#include "calculator/object_table.h"
#include "calculator/syntax.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::calculator {

enum class Operator : std::uint8_t {
  kNone,
  kAdd,
  kSubtract,
  kNegate,
  kMultiply,
  kDivide,
  kModulo,
  kPower,
  kLess,
  kGreater,
  kLessEqual,
  kGreaterEqual,
  kEqual,
  kNotEqual,
  kNot,
  kAnd,
  kOr
};

/// A text with its tree, made ready for evaluation: what names, numbers and operators mean is looked
/// up once.
class ParsedText {
 public:
  using Index = SyntaxTree::Index;

  /// @param text  without blanks
  ParsedText(std::wstring text, SyntaxTree tree, ObjectTable& objects);
  ParsedText(const ParsedText&) = delete;
  ParsedText& operator=(const ParsedText&) = delete;

  const std::wstring& GetText() const { return text_; }
  std::wstring_view GetText(Index node) const { return tree_.Text(node, text_); }
  Index GetRoot() const { return tree_.GetRoot(); }
  Rule GetRule(Index node) const { return tree_[node].rule; }
  std::size_t GetOffset(Index node) const { return tree_[node].first; }
  std::size_t NumChildren(Index node) const { return tree_.NumChildren(node); }
  Index Child(Index node, std::size_t i) const { return tree_.Child(node, i); }

  /// The first node from `node` downwards that does more than to pass its only child on.
  Index GetCore(Index node) const { return meanings_[node].core; }
  Operator GetOperator(Index node) const { return meanings_[node].op; }
  bool IsBinary(Index node) const {
    return meanings_[node].op != Operator::kNone && tree_.NumChildren(node) == 2;
  }
  /// Of a number its value; NaN where the type cannot hold it.
  double GetNumber(Index node) const { return meanings_[node].number; }
  Object& GetObject(Index node) const { return *meanings_[node].object; }
  /// Of a function's node; null if the name is no function's.
  const Function* GetFunction(Index node) const { return meanings_[node].function; }
  /// Whether an evaluation can define objects or macros, apart from the macros that it calls.
  bool Defines() const { return defines_; }
  bool CallsMacros() const { return calls_macros_; }

 private:
  struct Meaning {
    Index core;
    Operator op;
    union {
      double number;
      Object* object;
      const Function* function;
    };
  };

  Meaning Find(Index node, ObjectTable& objects) const;

  const std::wstring text_;
  const SyntaxTree tree_;
  std::vector<Meaning> meanings_;
  bool defines_ = false;
  bool calls_macros_ = false;
};

/// The parsed texts of one calculator, each parsed once. They stay where they are until Clear().
class ParseCache {
 public:
  ParseCache(ObjectTable& objects, MacroTable& macros) : objects_(objects), macros_(macros) {}
  ParseCache(const ParseCache&) = delete;
  ParseCache& operator=(const ParseCache&) = delete;

  /// The tree of `text`, whose blanks do not count.
  /// @throws CExpressionPositionException  the text is no expression; nothing is kept
  /// @throws CCalculatorException          it is too long, or all texts together are
  const ParsedText& Parse(std::wstring_view text);

  std::size_t size() const { return texts_.size(); }
  /// Most characters of all texts together: their trees take some 250 bytes for each.
  void SetMaxLength(std::size_t max_length) { max_length_ = max_length; }
  bool IsHalfFull() const { return length_ > max_length_ / 2; }
  /// Drops all texts.
  void Clear();
  /// Whether one of the texts may define objects or macros, by itself or by what it calls.
  bool MayDefine() const { return may_define_; }

 private:
  ObjectTable& objects_;
  MacroTable& macros_;
  std::map<std::wstring_view, std::unique_ptr<const ParsedText>> texts_;  ///< by their own texts
  std::size_t length_ = 0;
  std::size_t max_length_ = std::size_t{1} << 22;
  bool may_define_ = false;
};

}  // namespace corvath::calculator
