#include "calculator/parser.h"

#include "foundation/stack.h"

#include <locale.h>
#include <wctype.h>

#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace corvath::calculator {

std::wstring DeleteBlanks(std::wstring_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (const wchar_t c : text)
    if (c != L' ' && c != L'\t') result += c;
  return result;
}

namespace {

bool IsDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

bool IsAsciiLetter(wchar_t c) {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

bool IsLetter(wchar_t c) {
  if (static_cast<unsigned>(c) < 0x80) return IsAsciiLetter(c);
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return (unicode ? iswalpha_l(static_cast<wint_t>(c), unicode)
                  : iswalpha(static_cast<wint_t>(c))) != 0;
}

wchar_t Lower(wchar_t c) {
  return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
}

/// Appends a decimal digit. False where the number would leave the range of double.
bool AppendDigit(double& number, wchar_t digit) {
  constexpr double kMax = std::numeric_limits<double>::max();
  const double value = digit - L'0';
  if (number > kMax / 10) return false;
  number *= 10;
  if (number > kMax - value) return false;
  number += value;
  return true;
}

class Parser {
 public:
  using Index = SyntaxTree::Index;

  Parser(std::wstring_view text, Whitespace whitespace)
      : text_(text), skip_(whitespace == Whitespace::kSkip), attempts_(text.size() + 1, kNone) {}

  ParseResult Run() {
    ParseResult result;
    Index root = kNone;
    try {
      root = Expression();
    } catch (const TooDeep& place) {
      result.stop = place.position;
      result.too_deep = true;
      return result;
    }
    Skip();
    result.stop = pos_;
    result.match = root != kNone;
    result.full = result.match && pos_ == text_.size();
    if (result.match) {
      tree_.SetRoot(root);
      result.tree = std::move(tree_);
    }
    return result;
  }

 private:
  static constexpr Index kNone = static_cast<Index>(-1);

  struct TooDeep {
    std::size_t position;
  };

  /// What a rule came to at some place. The attempts at one place are linked.
  struct Attempt {
    Rule rule;
    Index next;
    Index node;  ///< kNone: no match
    std::uint32_t stop;
  };

  /// Children of the node under construction: they lie on a stack that all rules share.
  class Children {
   public:
    explicit Children(Parser& parser) : parser_(parser), base_(parser.stack_.size()) {}
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;
    ~Children() { parser_.stack_.resize(base_); }
    /// False for kNone, which is not added.
    bool Add(Index node) {
      if (node == kNone) return false;
      parser_.stack_.push_back(node);
      return true;
    }
    /// An optional part: true when `part` matches; if not, place and children are as before.
    template <class Part>
    bool Try(Part part) {
      const std::size_t pos = parser_.pos_;
      const std::size_t size = parser_.stack_.size();
      if (part()) return true;
      parser_.pos_ = pos;
      parser_.stack_.resize(size);
      return false;
    }
    /// `part`, and again while `separator` and `part` follow.
    template <class Part>
    bool AddList(Part part, const wchar_t* separator) {
      if (!part()) return false;
      while (Try([&] { return parser_.Match(separator) && part(); })) continue;
      return true;
    }
    Index MakeNode(Rule rule, std::size_t first) {
      return parser_.tree_.Add(rule, first, parser_.pos_, parser_.stack_.data() + base_, size());
    }
    /// A node of another text than the one that the rule matched.
    Index MakeNode(Rule rule, const Node& text) {
      return parser_.tree_.Add(rule, text.first, text.last, parser_.stack_.data() + base_, size());
    }
    std::size_t size() const { return parser_.stack_.size() - base_; }

   private:
    Parser& parser_;
    std::size_t base_;
  };

  // A rule returns its node and leaves pos_ behind it. Without a match it returns kNone; pos_ then
  // stands where the rule got stuck, which is what an error shows when nobody takes another way.

  /// The rule at this place, as remembered or by `parse`.
  template <class Parse>
  Index Once(Rule rule, Parse parse) {
    const std::size_t start = pos_;
    for (Index i = attempts_[start]; i != kNone; i = log_[i].next)
      if (log_[i].rule == rule) {
        pos_ = log_[i].stop;
        return log_[i].node;
      }
    if (++nesting_ > kMaxNesting || utils::IsStackLow()) throw TooDeep{start};
    const Index node = parse();
    --nesting_;
    log_.push_back({rule, attempts_[start], node, static_cast<std::uint32_t>(pos_)});
    attempts_[start] = static_cast<Index>(log_.size() - 1);
    return node;
  }

  /// One of several ways: without a match pos_ goes back.
  template <class Way>
  Index Try(Way way) {
    const std::size_t start = pos_;
    const Index node = way();
    if (node == kNone) pos_ = start;
    return node;
  }

  Index Leaf(Rule rule, std::size_t first) { return tree_.Add(rule, first, pos_, nullptr, 0); }
  Index Wrap(Rule rule, std::size_t first, Index child) {
    return child == kNone ? kNone : tree_.Add(rule, first, pos_, &child, 1);
  }

  // Tokens.

  void Skip() {
    if (skip_)
      while (pos_ < text_.size() && iswspace(static_cast<wint_t>(text_[pos_]))) ++pos_;
  }
  bool Match(std::wstring_view token) {
    Skip();
    if (text_.substr(pos_, token.size()) != token) return false;
    pos_ += token.size();
    return true;
  }
  /// In any mix of upper and lower case.
  bool MatchKeyword(std::wstring_view keyword) {
    Skip();
    if (text_.size() - pos_ < keyword.size()) return false;
    for (std::size_t i = 0; i < keyword.size(); ++i)
      if (Lower(text_[pos_ + i]) != keyword[i]) return false;
    pos_ += keyword.size();
    return true;
  }
  wchar_t Peek() {
    Skip();
    return pos_ < text_.size() ? text_[pos_] : L'\0';
  }
  bool MatchName() {
    if (!BeginsName(Peek())) return false;
    for (++pos_; pos_ < text_.size(); ++pos_) {
      const wchar_t c = text_[pos_];
      if (!BeginsName(c) && !IsDigit(c) && c != L'\'' && c != L'.') break;
    }
    return true;
  }
  /// Digits of a number; at one that leaves the range of double they end, and the number is void.
  bool MatchDigits() {
    const std::size_t start = pos_;
    double number = 0.0;
    for (; pos_ < text_.size() && IsDigit(text_[pos_]); ++pos_)
      if (!AppendDigit(number, text_[pos_])) return false;
    return pos_ > start;
  }
  bool MatchSign() {
    if (pos_ == text_.size() || (text_[pos_] != L'+' && text_[pos_] != L'-')) return false;
    ++pos_;
    return true;
  }
  bool MatchNumber() {
    Skip();
    MatchSign();
    const bool has_integer = MatchDigits();
    if (pos_ < text_.size() && text_[pos_] == L'.') {
      ++pos_;
      if (!MatchDigits() && !has_integer) return false;
    } else if (!has_integer) {
      return false;
    }
    if (pos_ == text_.size() || Lower(text_[pos_]) != L'e') return true;
    ++pos_;
    MatchSign();
    return MatchDigits();
  }

  // Rules.

  Index Expression() {
    return Once(Rule::kExpression, [this] {
      const wchar_t c = Peek();
      const std::size_t start = pos_;
      Index node = kNone;
      if (c == L'$') node = Try([this] { return AssignMacro(); });
      if (BeginsName(c)) node = Try([this] { return Assign(); });
      return Wrap(Rule::kExpression, start, node != kNone ? node : Logical());
    });
  }

  Index AssignMacro() {
    Children children(*this);
    const std::size_t start = pos_;
    const auto name = [&] { return children.Add(Ident()); };
    if (!Match(L"$") || !name() || !Match(L"(")) return kNone;
    if (!children.Try([&] { return children.AddList(name, L","); }))
      children.Add(Nothing(Rule::kAssignMacro));
    if (!Match(L")") || !children.Add(Token(L"=", Rule::kAssignMacro)) ||
        !children.Add(Expression()))
      return kNone;
    return children.MakeNode(Rule::kAssignMacro, start);
  }

  Index Assign() {
    Children children(*this);
    const std::size_t start = pos_;
    const auto target = [&] { return children.Add(Object()) && Match(L"="); };
    if (!target()) return kNone;
    while (children.Try(target)) continue;
    if (!children.Add(Expression())) return kNone;
    return children.MakeNode(Rule::kAssign, start);
  }

  Index Logical() {
    return Once(Rule::kLogical, [this] {
      return Chain(Rule::kLogical, {L"&&", L"||"}, [this] { return Comparison(); });
    });
  }
  Index Comparison() {
    return Chain(Rule::kComparison, {L"<=", L">=", L"<", L">", L"==", L"!="},
                 [this] { return Sum(); });
  }
  Index Sum() {
    return Chain(Rule::kSum, {L"+", L"-"}, [this] { return Product(); });
  }
  Index Product() {
    return Chain(Rule::kProduct, {L"*", L"/", L"%"}, [this] { return Unary(); });
  }
  Index Power() {
    return Chain(Rule::kPower, {L"^", L"**"}, [this] {
      const Index slice = Try([this] { return Slice(); });
      return slice != kNone ? slice : IndexObject();
    });
  }

  /// Operands with operators between them, from left to right.
  template <class Next>
  Index Chain(Rule rule, std::initializer_list<std::wstring_view> operators, Next next) {
    Skip();
    const std::size_t start = pos_;
    const Index first = next();
    if (first == kNone) return kNone;
    Index chain = kNone;
    for (;;) {
      const std::size_t save = pos_;
      const Index sign = AnyToken(operators, rule);
      const Index right = sign == kNone ? kNone : next();
      if (right == kNone) {
        pos_ = save;
        return chain != kNone ? chain : Wrap(rule, start, first);
      }
      const Index operands[] = {chain != kNone ? chain : first, right};
      chain = tree_.Add(rule, tree_[sign].first, tree_[sign].last, operands, 2);
    }
  }

  Index Unary() {
    Skip();
    const std::size_t start = pos_;
    const Index sign = AnyToken({L"!", L"-"}, Rule::kUnary);
    const Index operand = Power();
    if (operand == kNone || sign == kNone) return Wrap(Rule::kUnary, start, operand);
    return tree_.Add(Rule::kUnary, tree_[sign].first, tree_[sign].last, &operand, 1);
  }

  Index Slice() {
    Children children(*this);
    Skip();
    const std::size_t start = pos_;
    const auto bound = [&] { return children.Add(Logical()); };
    const auto colon = [&] { return children.Add(Token(L":", Rule::kSlice)); };
    if (!children.Add(Operand()) || !Match(L"[")) return kNone;
    children.Try(bound);
    if (!colon()) return kNone;
    children.Try(bound);
    if (children.Try(colon)) children.Try(bound);
    return Match(L"]") ? children.MakeNode(Rule::kSlice, start) : kNone;
  }

  Index IndexObject() {
    Children children(*this);
    Skip();
    const std::size_t start = pos_;
    if (!children.Add(Operand())) return kNone;
    children.Try([&] {
      const auto index = [&] { return children.Add(Logical()); };
      if (!Match(L"[")) return false;
      children.Try(index);
      children.Try([&] { return children.Add(Token(L",", Rule::kIndex)); });
      children.Try(index);
      return children.size() > 1 && Match(L"]");
    });
    return children.MakeNode(Rule::kIndex, start);
  }

  /// The first character tells the alternatives apart, and all that fail stop at their beginning.
  Index Operand() {
    return Once(Rule::kOperand, [this] {
      const wchar_t c = Peek();
      const std::size_t start = pos_;
      Index node = kNone;
      const auto either = [&](auto way, auto other) {
        node = Try(way);
        if (node == kNone) node = Try(other);
      };
      if (c == L'(')
        node = Try([this] { return Parentheses(); });
      else if (c == L'#')
        either([this] { return If(); }, [this] { return Switch(); });
      else if (c == L'[')
        either([this] { return Matrix(); }, [this] { return Vector(); });
      else if (c == L'$')
        node = Try([this] { return Macro(); });
      else if (!BeginsName(c))
        node = Try([this] { return Constant(); });
      else if ((node = Try([this] { return Function(); })) == kNone)
        node = Object();
      return Wrap(Rule::kOperand, start, node);
    });
  }

  Index Parentheses() {
    const std::size_t start = pos_;
    if (!Match(L"(")) return kNone;
    const Index inner = Logical();
    if (inner == kNone || !Match(L")")) return kNone;
    return Wrap(Rule::kParentheses, start, inner);
  }

  Index Constant() {
    const std::size_t start = pos_;
    return MatchNumber() ? Leaf(Rule::kConstant, start) : kNone;
  }

  Index Function() {
    Children children(*this);
    const Index name = Ident();
    if (name == kNone || !Match(L"(")) return kNone;
    const auto argument = [&] {
      return children.Add(Try([this] { return String(); })) || children.Add(Expression());
    };
    if (!children.Try([&] { return children.AddList(argument, L","); }))
      children.Add(Nothing(Rule::kFunction));
    return Match(L")") ? children.MakeNode(Rule::kFunction, tree_[name]) : kNone;
  }

  Index Macro() {
    Children children(*this);
    const std::size_t start = pos_;
    if (!Match(L"$") || !children.Add(Ident()) || !Match(L"(")) return kNone;
    const auto argument = [&] { return children.Add(Expression()); };
    if (!children.Try([&] { return children.Add(String()); }) &&
        !children.Try([&] { return children.AddList(argument, L","); }))
      children.Add(Nothing(Rule::kMacro));
    return Match(L")") ? children.MakeNode(Rule::kMacro, start) : kNone;
  }

  Index If() {
    Children children(*this);
    const std::size_t start = pos_;
    const auto part = [&] { return children.Add(Logical()); };
    if (!MatchKeyword(L"#if") || !part() || !(MatchKeyword(L"#then") || Match(L":")) || !part() ||
        !MatchKeyword(L"#else") || !part())
      return kNone;
    return children.MakeNode(Rule::kIf, start);
  }

  Index Switch() {
    Children children(*this);
    const std::size_t start = pos_;
    const auto part = [&] { return children.Add(Logical()); };
    const auto one_case = [&] { return MatchKeyword(L"#case") && part() && Match(L":") && part(); };
    if (!MatchKeyword(L"#switch") || !part()) return kNone;
    Match(L":");
    if (!one_case()) return kNone;
    while (children.Try(one_case)) continue;
    Skip();
    const std::size_t keyword = pos_;
    if (!MatchKeyword(L"#default")) return kNone;
    children.Add(Leaf(Rule::kSwitch, keyword));
    Match(L":");
    return part() ? children.MakeNode(Rule::kSwitch, start) : kNone;
  }

  Index Vector() {
    return Once(Rule::kVector, [this] {
      return Rows(
          Rule::kVector, [this] { return Vector(); }, [this] { return Expression(); });
    });
  }
  Index Matrix() {
    return Once(Rule::kMatrix, [this] {
      return Rows(
          Rule::kMatrix, [this] { return Matrix(); }, [this] { return Vector(); });
    });
  }

  /// Parts in brackets, each with an optional one in front of it.
  template <class Prefix, class Part>
  Index Rows(Rule rule, Prefix prefix, Part part) {
    Children children(*this);
    Skip();
    const std::size_t start = pos_;
    const auto row = [&] {
      children.Try([&] { return children.Add(prefix()); });
      return children.Add(part());
    };
    if (!Match(L"[") || !children.AddList(row, L",") || !Match(L"]")) return kNone;
    return children.MakeNode(rule, start);
  }

  Index String() {
    const std::size_t start = pos_;
    if (!Match(L"\"")) return kNone;
    Skip();
    const std::size_t first = pos_;
    while (pos_ < text_.size() && text_[pos_] != L'"') ++pos_;
    if (pos_ == first) return kNone;
    const Index text = Leaf(Rule::kString, first);
    return Match(L"\"") ? Wrap(Rule::kString, start, text) : kNone;
  }

  Index Ident() {
    Skip();
    const std::size_t start = pos_;
    return MatchName() ? Leaf(Rule::kIdent, start) : kNone;
  }

  /// A name, but not the word "if".
  Index Object() {
    Skip();
    const std::size_t start = pos_;
    if (!MatchName()) return kNone;
    if (pos_ - start == 2 && Lower(text_[start]) == L'i' && Lower(text_[start + 1]) == L'f')
      return kNone;  // and the place of the error is behind it
    return Leaf(Rule::kObject, start);
  }

  // Nodes that are no rules of their own.

  Index Token(std::wstring_view token, Rule around) {
    Skip();
    const std::size_t start = pos_;
    return Match(token) ? Leaf(around, start) : kNone;
  }
  Index AnyToken(std::initializer_list<std::wstring_view> tokens, Rule around) {
    for (const std::wstring_view token : tokens)
      if (const Index node = Token(token, around); node != kNone) return node;
    return kNone;
  }
  Index Nothing(Rule around) {
    Skip();
    return Leaf(around, pos_);
  }

  const std::wstring_view text_;
  const bool skip_;
  std::size_t pos_ = 0;
  int nesting_ = 0;
  SyntaxTree tree_;
  std::vector<Index> stack_;
  std::vector<Attempt> log_;
  std::vector<Index> attempts_;  ///< at each place the last one in log_
};

}  // namespace

bool BeginsName(wchar_t c) {
  return c == L'_' || IsLetter(c);
}

ParseResult Parse(std::wstring_view text, Whitespace whitespace) {
  if (text.size() > kMaxTextLength)
    throw std::length_error("Expression text of more than " + std::to_string(kMaxTextLength) +
                            " characters.");
  return Parser(text, whitespace).Run();
}

}  // namespace corvath::calculator
