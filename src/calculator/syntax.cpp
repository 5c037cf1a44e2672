#include "calculator/syntax.h"

namespace corvath::calculator {

const wchar_t* GetRuleName(Rule rule) {
  switch (rule) {
    case Rule::kExpression:
      return L"expression";
    case Rule::kConstant:
      return L"constant";
    case Rule::kFunction:
      return L"function";
    case Rule::kIdent:
      return L"ident";
    case Rule::kOperand:
      return L"operand";
    case Rule::kUnary:
      return L"unary operation";
    case Rule::kLogical:
      return L"binary greedy[0] operation";
    case Rule::kComparison:
      return L"binary greedy[1] operation";
    case Rule::kSum:
      return L"binary greedy[2] operation";
    case Rule::kProduct:
      return L"binary greedy[3] operation";
    case Rule::kPower:
      return L"binary greedy[4] operation";
    case Rule::kIndex:
      return L"idx_object";
    case Rule::kObject:
      return L"object";
    case Rule::kVector:
      return L"vector";
    case Rule::kMatrix:
      return L"matrix";
    case Rule::kAssign:
      return L"assign";
    case Rule::kString:
      return L"string";
    case Rule::kAssignMacro:
      return L"assign_macro";
    case Rule::kMacro:
      return L"macro";
    case Rule::kIf:
      return L"if";
    case Rule::kSwitch:
      return L"switch";
    case Rule::kParentheses:
    case Rule::kSlice:
      break;
  }
  return L"";
}

SyntaxTree::Index SyntaxTree::Add(Rule rule, std::size_t first, std::size_t last,
                                  const Index* children, std::size_t num_children) {
  nodes_.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last),
                    static_cast<std::uint32_t>(pool_.size()),
                    static_cast<std::uint32_t>(num_children), rule});
  pool_.insert(pool_.end(), children, children + num_children);
  return static_cast<Index>(nodes_.size() - 1);
}

void SyntaxTree::SetRoot(Index root) {
  // Children have smaller numbers: one pass downwards marks, one upwards renumbers.
  constexpr Index kDropped = static_cast<Index>(-1);
  std::vector<Index> number(nodes_.size(), kDropped);
  number[root] = 0;
  for (Index node = root + 1; node-- > 0;)
    if (number[node] != kDropped)
      for (std::size_t i = 0; i < NumChildren(node); ++i) number[Child(node, i)] = 0;
  SyntaxTree kept;
  std::vector<Index> children;
  for (Index node = 0; node <= root; ++node) {
    if (number[node] == kDropped) continue;
    children.clear();
    for (std::size_t i = 0; i < NumChildren(node); ++i) children.push_back(number[Child(node, i)]);
    const Node& old = nodes_[node];
    number[node] = kept.Add(old.rule, old.first, old.last, children.data(), children.size());
  }
  kept.root_ = number[root];
  *this = std::move(kept);
}

}  // namespace corvath::calculator
